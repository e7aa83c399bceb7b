// vantix-sim: runs the simulated hardware of one platform, shows every event
// it raises and takes commands from standard input or a script.

#include "console.h"
#include "platformnames.h"

#include <vantix/system.h>
#include <vantix/vantix_version.h>

#include <qbcommon/appconfig.h>

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QFile>
#include <QSocketNotifier>
#include <QStandardPaths>
#include <QTextStream>

#include <cerrno>
#include <cstdio>
#include <unistd.h>

using namespace TQ_SPAPI;

namespace {
// Splits what arrives on a file descriptor into lines for the console.
class LineReader
{
public:
    LineReader(int fd, Console *console, const QString &source, bool script)
        : m_notifier(fd, QSocketNotifier::Read)
        , m_fd(fd)
        , m_console(console)
        , m_source(source)
        , m_script(script)
    {
        QObject::connect(&m_notifier, &QSocketNotifier::activated, [this] { read(); });
    }

private:
    void read()
    {
        char chunk[4096];
        const ssize_t n = ::read(m_fd, chunk, sizeof chunk);
        if (n < 0 && (errno == EINTR || errno == EAGAIN)) {
            return;
        }
        if (n <= 0) {
            m_notifier.setEnabled(false);
            if (!m_pending.isEmpty()) {
                m_console->feed({QString::fromUtf8(m_pending)}, m_source, m_script);
                m_pending.clear();
            }
            m_console->endOfInput();
            return;
        }
        m_pending.append(chunk, int(n));
        QStringList lines;
        int end = 0;
        while ((end = m_pending.indexOf('\n')) >= 0) {
            lines.append(QString::fromUtf8(m_pending.left(end)));
            m_pending.remove(0, end + 1);
        }
        if (!lines.isEmpty()) {
            m_console->feed(lines, m_source, m_script);
        }
    }

    QSocketNotifier m_notifier;
    int m_fd;
    Console *m_console;
    QString m_source;
    bool m_script;
    QByteArray m_pending;
};
} // namespace

int main(int argc, char *argv[])
{
    QCoreApplication app(argc, argv);
    QCoreApplication::setApplicationName(QStringLiteral("vantix-sim"));
    QCoreApplication::setApplicationVersion(QStringLiteral(VANTIX_VERSION_STRING));
    qSetMessagePattern(QStringLiteral("%{type} %{function}: %{message}"));

    QCommandLineParser parser;
    parser.setApplicationDescription(
        QStringLiteral("Simulated hardware of a Vantix device. Shows the devices and every event they raise, and runs "
                       "commands from standard input, one per line (type help)."));
    parser.addHelpOption();
    parser.addVersionOption();
    const QCommandLineOption platformOption(QStringLiteral("platform"),
        QStringLiteral("Platform to simulate: %1.").arg(PlatformNames::names().join(QStringLiteral(", "))),
        QStringLiteral("name"), QStringLiteral("tolvex-plus"));
    const QCommandLineOption rootOption(QStringLiteral("root"),
        QStringLiteral("Folder for the unit's files (default: $QBCOMMON_ROOT, else %1).")
            .arg(QStandardPaths::writableLocation(QStandardPaths::AppDataLocation)),
        QStringLiteral("dir"));
    const QCommandLineOption exitOption(
        QStringLiteral("exit-after-ready"), QStringLiteral("Print the device table and exit."));
    const QCommandLineOption scriptOption(QStringLiteral("script"),
        QStringLiteral("Run the commands of <file> (- for standard input) and exit; the first KO ends the run with "
                       "exit code 1."),
        QStringLiteral("file"));
    const QCommandLineOption quietOption(QStringLiteral("quiet"), QStringLiteral("Show only the commands' answers."));
    const QCommandLineOption dumpOption(QStringLiteral("dump-json"),
        QStringLiteral("Write every device's properties as JSON to <file> at exit."), QStringLiteral("file"));
    // The library reads these itself; they are listed so the parser accepts them.
    const QCommandLineOption idOption(
        QStringLiteral("id"), QStringLiteral("Product id of a new unit."), QStringLiteral("id"));
    const QCommandLineOption failuresOption(QStringLiteral("diskfailures"),
        QStringLiteral("Disk mounts and unmounts to fail in a row."), QStringLiteral("count"));
    const QCommandLineOption formattedOption(
        QStringLiteral("disksformatted"), QStringLiteral("Start with every disk formatted."));
    parser.addOptions({platformOption, rootOption, exitOption, scriptOption, quietOption, dumpOption, idOption,
        failuresOption, formattedOption});
    parser.process(app);

    System::PlatformType platform = System::PT_UNKNOWN;
    if (!PlatformNames::fromName(parser.value(platformOption), &platform)) {
        std::fprintf(stderr, "vantix-sim: unknown platform \"%s\"; known: %s\n",
            qPrintable(parser.value(platformOption)), qPrintable(PlatformNames::names().join(QStringLiteral(", "))));
        return 2;
    }
    if (parser.isSet(rootOption)) {
        AppConfig::instance()->setRootPath(parser.value(rootOption));
    }

    QStringList scriptLines;
    const QString script = parser.value(scriptOption);
    if (!script.isEmpty() && script != QLatin1String("-")) {
        QFile file(script);
        if (!file.open(QIODevice::ReadOnly | QIODevice::Text)) {
            std::fprintf(
                stderr, "vantix-sim: cannot read %s: %s\n", qPrintable(script), qPrintable(file.errorString()));
            return 2;
        }
        scriptLines = QString::fromUtf8(file.readAll()).split(QLatin1Char('\n'));
    }

    QTextStream out(stdout);
    SystemPlatformType::type = platform;
    System *system = System::instance();
    Console console(out);
    console.setQuiet(parser.isSet(quietOption));
    console.setColour(::isatty(STDOUT_FILENO) && qEnvironmentVariableIsEmpty("NO_COLOR"));

    const QString dumpFile = parser.value(dumpOption);
    QObject::connect(&console, &Console::finished, &app, [&](int exitCode, const QString &message) {
        if (!message.isEmpty()) {
            std::fprintf(stderr, "vantix-sim: %s\n", qPrintable(message));
        }
        QString error;
        if (!dumpFile.isEmpty() && !console.writeDump(dumpFile, &error)) {
            std::fprintf(stderr, "vantix-sim: %s\n", qPrintable(error));
            exitCode = exitCode == 0 ? 2 : exitCode;
        }
        QCoreApplication::exit(exitCode);
    });

    QScopedPointer<LineReader> reader;
    if (parser.isSet(exitOption)) {
        // Nothing to run: the device table is shown, and the run ends.
        console.endOfInput();
    } else if (!script.isEmpty() && script != QLatin1String("-")) {
        console.feed(scriptLines, script, true);
        console.endOfInput();
    } else {
        const bool fromScript = script == QLatin1String("-");
        reader.reset(new LineReader(
            STDIN_FILENO, &console, fromScript ? QStringLiteral("-") : QStringLiteral("stdin"), fromScript));
    }
    // Commands wait for the devices: they run once the system is ready.
    QObject::connect(system, &System::apiReady, &console, &Console::start);
    system->initialize(QStringLiteral("vantix-sim"));

    const int result = QCoreApplication::exec();
    reader.reset();
    System::releaseInstance();
    return result;
}

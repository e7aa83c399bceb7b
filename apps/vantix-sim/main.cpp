// vantix-sim: runs the simulated hardware of one platform, shows every event
// it raises and takes commands from standard input or a script. Like any
// application that links Vantix, it can be driven from outside too.

#include "consoleprinter.h"
#include "faketime.h"
#include "linereader.h"

#include <vantix/system.h>
#include <vantix/vantix_version.h>

#include <vantixcontrol/protocol/event.h>
#include <vantix/platformnames.h>
#include <vantixcontrol/protocol/reply.h>
#include <vantixcontrol/client/scriptrunner.h>
#include <vantixcontrol/engine/engine.h>
#include <vantixcontrol/engine/session.h>

#include <qbcommon/appconfig.h>

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QFile>
#include <QFileInfo>
#include <QJsonDocument>
#include <QPointer>
#include <QScopedPointer>
#include <QStandardPaths>
#include <QTextStream>

#include <cstdio>
#include <memory>
#include <unistd.h>

using namespace TQ_SPAPI;
using namespace VantixControl;

namespace {
bool writeDump(const QJsonObject &state, const QString &path, QString *error)
{
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly | QIODevice::Truncate) ||
        file.write(QJsonDocument(state).toJson(QJsonDocument::Indented)) < 0) {
        *error = QStringLiteral("cannot write %1: %2").arg(path, file.errorString());
        return false;
    }
    return true;
}

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
                       "commands from standard input, one per line (type help). vantix-ctl drives it from elsewhere."));
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
    const QCommandLineOption quietOption(QStringLiteral("quiet"),
        QStringLiteral("Print only the commands' answers (the message log still goes to standard error)."));
    const QCommandLineOption dumpOption(QStringLiteral("dump-json"),
        QStringLiteral("Write every device's properties as JSON to <file> at exit."), QStringLiteral("file"));
    // The library reads these itself; they are listed so the parser accepts them.
    const QCommandLineOption idOption(
        QStringLiteral("id"), QStringLiteral("Product id of a new unit."), QStringLiteral("id"));
    const QCommandLineOption failuresOption(QStringLiteral("diskfailures"),
        QStringLiteral("Disk mounts and unmounts to fail in a row."), QStringLiteral("count"));
    const QCommandLineOption formattedOption(
        QStringLiteral("disksformatted"), QStringLiteral("Start with every disk formatted."));
    const QCommandLineOption speedOption(QStringLiteral("speed"),
        QStringLiteral("Run time <x> times faster (timers, delays, wait, ramp, within), through libfaketime."),
        QStringLiteral("x"));
    parser.addOptions({platformOption, rootOption, exitOption, scriptOption, quietOption, dumpOption, idOption,
        failuresOption, formattedOption, speedOption});
    parser.process(app);
    QString speedError;
    if (parser.isSet(speedOption) && !FakeTime::restartAtSpeed(parser.value(speedOption), argv, &speedError)) {
        std::fprintf(stderr, "vantix-sim: %s\n", qPrintable(speedError));
        return 2;
    }

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
    const bool scriptFile = !script.isEmpty() && script != QLatin1String("-");
    if (scriptFile) {
        QFile file(script);
        if (!file.open(QIODevice::ReadOnly | QIODevice::Text)) {
            std::fprintf(
                stderr, "vantix-sim: cannot read %s: %s\n", qPrintable(script), qPrintable(file.errorString()));
            return 2;
        }
        scriptLines = QString::fromUtf8(file.readAll()).split(QLatin1Char('\n'));
    }

    // Every reading of the host's network configurations (the first one
    // arrives a while after start-up, then one every 10 s) rewrites the Wi-Fi
    // values a script set: a script's outcome must not depend on when they fall.
    if (parser.isSet(scriptOption) && !qEnvironmentVariableIsSet("VANTIX_HOST_WIFI")) {
        qputenv("VANTIX_HOST_WIFI", "off");
    }

    QTextStream out(stdout);
    ConsolePrinter printer(out);
    printer.setQuiet(parser.isSet(quietOption));
    printer.setColour(ConsolePrinter::wantsColour(STDOUT_FILENO));

    SystemPlatformType::type = platform;
    System *system = System::instance();
    system->initialize(QStringLiteral("vantix-sim"));
    QScopedPointer<Session> session(new Session(system));
    QObject::connect(session.data(), &Session::eventRaised, [&printer](const Event &event) { printer.event(event); });

    // A script's relative file names (a feed's CSV) are taken from its own folder.
    const QString folder = scriptFile ? QFileInfo(script).absolutePath() : QString();
    ScriptRunner runner([&session, folder](const QString &line, const std::function<void(const Reply &)> &done) {
        session->execute(line, folder, done);
    });
    // Only this program can be left with quit; in other applications the command does not exist.
    // The command holds nothing of main() by reference: it may run from any client's session.
    const auto quitting = std::make_shared<bool>(false);
    const QPointer<ScriptRunner> stopped(&runner);
    Engine::HostCommand quit;
    quit.name = QStringLiteral("quit");
    quit.help = QStringLiteral("leave the simulator");
    quit.label = QStringLiteral("Quit");
    quit.run = [quitting, stopped](Session &, const QStringList &) {
        *quitting = true;
        // Asked by another client, the simulator ends once that client has its answer.
        if (stopped) {
            QMetaObject::invokeMethod(
                stopped.data(), [stopped] { stopped->stop(0); }, Qt::QueuedConnection);
        }
        return Reply::success();
    };
    Engine::of(system)->addHostCommand(quit);
    QObject::connect(&runner, &ScriptRunner::lineStarted, [&printer](const QString &line, bool fromScript) {
        if (fromScript) {
            printer.echo(line);
        }
    });
    QObject::connect(&runner, &ScriptRunner::answered, [&](const QString &, const Reply &reply) {
        printer.reply(reply);
        if (*quitting) {
            runner.stop(0);
        }
    });

    const QString dumpFile = parser.value(dumpOption);
    QObject::connect(&runner, &ScriptRunner::finished, &app, [&](int exitCode, const QString &message) {
        if (!message.isEmpty()) {
            std::fprintf(stderr, "vantix-sim: %s\n", qPrintable(message));
        }
        QString error;
        if (!dumpFile.isEmpty() && !writeDump(session->dump(), dumpFile, &error)) {
            std::fprintf(stderr, "vantix-sim: %s\n", qPrintable(error));
            exitCode = exitCode == 0 ? 2 : exitCode;
        }
        QCoreApplication::exit(exitCode);
    });

    QScopedPointer<LineReader> reader;
    if (parser.isSet(exitOption)) {
        // Nothing to run: the device table is shown, and the run ends.
        runner.endOfInput();
    } else if (scriptFile) {
        runner.feed(scriptLines, script, true);
        runner.endOfInput();
    } else {
        const bool fromScript = script == QLatin1String("-");
        const QString source = fromScript ? QStringLiteral("-") : QStringLiteral("stdin");
        reader.reset(new LineReader(STDIN_FILENO));
        QObject::connect(reader.data(), &LineReader::linesRead, &runner,
            [&runner, source, fromScript](const QStringList &lines) { runner.feed(lines, source, fromScript); });
        QObject::connect(reader.data(), &LineReader::ended, &runner, &ScriptRunner::endOfInput);
    }

    // Commands wait for the devices: they run once the system is ready.
    QObject::connect(system, &System::apiReady, &runner, [&] {
        if (!printer.isQuiet()) {
            printer.print(QStringLiteral("Platform %1 ready")
                              .arg(QString::fromLatin1(System::PlatformTypeEnum.valueToKey(system->platform()))));
            printer.lines(session->deviceTable());
            printer.print(QStringLiteral("System information:"));
            session->execute(QStringLiteral("sysinfo"), [&printer](const Reply &reply) { printer.lines(reply.lines); });
        }
        session->setEventsEnabled(true);
        runner.start();
    });

    const int result = QCoreApplication::exec();
    reader.reset();
    session.reset();
    System::releaseInstance();
    return result;
}

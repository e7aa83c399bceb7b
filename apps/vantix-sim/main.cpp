// vantix-sim: runs the simulated hardware of one platform and shows it.

#include "devicewatcher.h"
#include "platformnames.h"

#include <vantix/vantix.h>

#include <qbcommon/appconfig.h>

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QTextStream>

#include <cstdio>

using namespace TQ_SPAPI;

namespace {
// One "KEY = value" line per entry; the map keeps its keys sorted.
void printSystemInfo(QTextStream &out, const QVariantMap &info)
{
    out << "System information\n";
    for (auto it = info.cbegin(); it != info.cend(); ++it) {
        const QVariant &value = it.value();
        const QString text = value.userType() == QMetaType::QStringList
            ? value.toStringList().join(QStringLiteral(", "))
            : value.toString();
        out << it.key() << " = " << text << '\n';
    }
    out.flush();
}
} // namespace

int main(int argc, char *argv[])
{
    QCoreApplication app(argc, argv);
    QCoreApplication::setApplicationName(QStringLiteral("vantix-sim"));
    QCoreApplication::setApplicationVersion(QStringLiteral(VANTIX_VERSION));
    qSetMessagePattern(QStringLiteral("%{type} %{function}: %{message}"));

    QCommandLineParser parser;
    parser.setApplicationDescription(QStringLiteral("Simulated hardware of a Vantix device."));
    parser.addHelpOption();
    parser.addVersionOption();
    const QCommandLineOption platformOption(QStringLiteral("platform"),
                                            QStringLiteral("Platform to simulate: %1.")
                                                .arg(PlatformNames::names().join(QStringLiteral(", "))),
                                            QStringLiteral("name"), QStringLiteral("tolvex-plus"));
    const QCommandLineOption rootOption(QStringLiteral("root"), QStringLiteral("Folder for the unit's files."),
                                        QStringLiteral("dir"));
    const QCommandLineOption exitOption(QStringLiteral("exit-after-ready"),
                                        QStringLiteral("Print the device table and exit."));
    // The library reads these itself; they are listed so the parser accepts them.
    const QCommandLineOption idOption(QStringLiteral("id"), QStringLiteral("Product id of a new unit."),
                                      QStringLiteral("id"));
    const QCommandLineOption failuresOption(QStringLiteral("diskfailures"),
                                            QStringLiteral("Disk mounts and unmounts to fail in a row."),
                                            QStringLiteral("count"));
    const QCommandLineOption formattedOption(QStringLiteral("disksformatted"),
                                             QStringLiteral("Start with every disk formatted."));
    parser.addOptions({platformOption, rootOption, exitOption, idOption, failuresOption, formattedOption});
    parser.process(app);

    System::PlatformType platform = System::PT_UNKNOWN;
    if (!PlatformNames::fromName(parser.value(platformOption), &platform)) {
        std::fprintf(stderr, "vantix-sim: unknown platform \"%s\"; known: %s\n",
                     qPrintable(parser.value(platformOption)),
                     qPrintable(PlatformNames::names().join(QStringLiteral(", "))));
        return 2;
    }
    if (parser.isSet(rootOption)) {
        AppConfig::instance()->setRootPath(parser.value(rootOption));
    }

    QTextStream out(stdout);
    SystemPlatformType::type = platform;
    System *system = System::instance();
    DeviceWatcher watcher(system, out);
    const bool exitAfterReady = parser.isSet(exitOption);

    QObject::connect(system, &System::apiReady, &app, [&] {
        out << "Platform " << System::PlatformTypeEnum.valueToKey(system->platform()) << " ready\n";
        watcher.printTable();
        printSystemInfo(out, system->systemInfo());
        if (exitAfterReady) {
            QCoreApplication::quit();
            return;
        }
        watcher.watch();
    });
    system->initialize(QStringLiteral("vantix-sim"));

    const int result = QCoreApplication::exec();
    System::releaseInstance();
    return result;
}

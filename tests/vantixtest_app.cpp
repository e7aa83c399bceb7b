// Helper of tst_vantixtest: an application under test that misbehaves on request.
//
//   --abort-below N   aborts when the first battery's fuel drops below N %
//   --exit-below N    exits with status 3 when it does
//   --silent          never initialises the System, so it never greets
//   --ignore-term     ignores SIGTERM (only SIGKILL stops it)
//   --segv-on-term    crashes with SIGSEGV when asked to stop
//   --claim-root      exits with status 4 when another instance left its mark in
//                     the unit's folder or the USB stick's, and marks both
//
// It prints "vantixtest_app: root <folder>" when the System is ready.

#include <vantix/vantix.h>

#include <qbcommon/appconfig.h>

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QDir>
#include <QFile>

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <unistd.h>

using namespace TQ_SPAPI;

namespace {
void crashOnTerm(int)
{
    std::signal(SIGSEGV, SIG_DFL);
    std::raise(SIGSEGV);
}

// Both folders that parallel instances must never share.
bool claim(const QString &root)
{
    const QString stick = AppConfig::instance()->sharePath(QStringLiteral("usbdisk"));
    QDir().mkpath(stick);
    const QString mark = QStringLiteral("instance-%1").arg(::getpid());
    for (const QString &folder : {root, stick}) {
        const QStringList others = QDir(folder).entryList({QStringLiteral("instance-*")}, QDir::Files);
        if (!others.isEmpty()) {
            std::fprintf(stderr, "vantixtest_app: %s was used by %s\n", qPrintable(folder), qPrintable(others.first()));
            return false;
        }
        QFile file(QDir(folder).filePath(mark));
        if (!file.open(QIODevice::WriteOnly)) {
            return false;
        }
    }
    return true;
}
} // namespace

int main(int argc, char *argv[])
{
    QCoreApplication app(argc, argv);
    QCoreApplication::setApplicationName(QStringLiteral("vantixtest_app"));
    QCommandLineParser parser;
    const QCommandLineOption abortBelow(QStringLiteral("abort-below"), QStringLiteral("abort"), QStringLiteral("n"));
    const QCommandLineOption exitBelow(QStringLiteral("exit-below"), QStringLiteral("exit"), QStringLiteral("n"));
    const QCommandLineOption silent(QStringLiteral("silent"), QStringLiteral("no greeting"));
    const QCommandLineOption ignoreTerm(QStringLiteral("ignore-term"), QStringLiteral("ignore SIGTERM"));
    const QCommandLineOption segvOnTerm(QStringLiteral("segv-on-term"), QStringLiteral("crash on SIGTERM"));
    const QCommandLineOption claimRoot(QStringLiteral("claim-root"), QStringLiteral("check the folders"));
    parser.addOptions({abortBelow, exitBelow, silent, ignoreTerm, segvOnTerm, claimRoot});
    parser.process(app);

    std::fprintf(stderr, "vantixtest_app: started\n");
    if (parser.isSet(ignoreTerm)) {
        std::signal(SIGTERM, SIG_IGN);
    }
    if (parser.isSet(segvOnTerm)) {
        std::signal(SIGTERM, crashOnTerm);
    }
    if (parser.isSet(silent)) {
        return QCoreApplication::exec();
    }

    SystemPlatformType::type = System::PT_TOLVEX_PLUS;
    System *system = System::instance();
    QObject::connect(system, &System::apiReady, &app, [&] {
        const QString root = AppConfig::instance()->rootPath();
        std::printf("vantixtest_app: root %s\n", qPrintable(root));
        std::fflush(stdout);
        if (parser.isSet(claimRoot) && !claim(root)) {
            std::exit(4);
        }
        auto *battery = qobject_cast<IBattery *>(system->device(IDevice::ID_BATTERY_1ST).data());
        QObject::connect(battery, &IBattery::fuelGaugeChanged, &app, [&](int percent) {
            if (parser.isSet(abortBelow) && percent < parser.value(abortBelow).toInt()) {
                std::fprintf(stderr, "vantixtest_app: fuel %d, aborting\n", percent);
                std::abort();
            }
            if (parser.isSet(exitBelow) && percent < parser.value(exitBelow).toInt()) {
                std::fprintf(stderr, "vantixtest_app: fuel %d, exiting\n", percent);
                std::exit(3);
            }
        });
    });
    system->initialize(QStringLiteral("vantixtest_app"));
    const int result = QCoreApplication::exec();
    System::releaseInstance();
    return result;
}

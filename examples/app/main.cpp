// An application of a Tolvex tablet, as a user of Vantix writes one: it
// watches its battery, its wired network and what is plugged, and powers the
// unit off when the battery runs out. Nothing in it knows about the desktop
// simulation, yet vantix-ctl and vantix-panel can drive its hardware while
// it runs:
//
//   example-app [--platform tolvex-plus] &
//   vantix-ctl setbatteryfuel,1,10
//   vantix-ctl --script examples/scenarios/low-battery-shutdown.vsim

#include <vantix/vantix.h>

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QTextStream>

using namespace TQ_SPAPI;

namespace {
void say(const QString &text)
{
    static QTextStream out(stdout);
    out << "example-app: " << text << '\n';
    out.flush();
}

void watchBattery(System *system, IBattery *battery)
{
    QObject::connect(battery, &IBattery::fuelGaugeChanged, system, [system](int percent) {
        say(QStringLiteral("battery at %1 %").arg(percent));
        if (percent <= 5) {
            say(QStringLiteral("battery empty, powering off"));
            system->powerOff();
        } else if (percent <= 10) {
            say(QStringLiteral("battery critical, saving work"));
        }
    });
}
} // namespace

int main(int argc, char *argv[])
{
    QCoreApplication app(argc, argv);
    QCoreApplication::setApplicationName(QStringLiteral("example-app"));
    QCommandLineParser parser;
    const QCommandLineOption platformOption(QStringLiteral("platform"), QStringLiteral("The device it runs on."),
        QStringLiteral("name"), QStringLiteral("tolvex"));
    parser.addOption(platformOption);
    parser.addHelpOption();
    parser.process(app);

    System::PlatformType platform = System::PT_TOLVEX;
    if (!PlatformNames::fromName(parser.value(platformOption), &platform)) {
        say(QStringLiteral("unknown platform %1").arg(parser.value(platformOption)));
        return 2;
    }
    SystemPlatformType::type = platform;
    System *system = System::instance();
    QObject::connect(system, &System::apiReady, &app, [system] {
        say(QStringLiteral("ready with %1 devices").arg(system->devices().size()));
        if (auto *battery = qobject_cast<IBattery *>(system->device(IDevice::ID_BATTERY_1ST).data())) {
            watchBattery(system, battery);
        }
        if (auto *lan = qobject_cast<INetwork *>(system->device(IDevice::ID_NETWORK_LAN).data())) {
            QObject::connect(lan, &INetwork::networkStateChanged, lan, [](INetwork::NetworkState state) {
                say(state == INetwork::NETWORK_STATE_ACTIVATED ? QStringLiteral("network up")
                                                               : QStringLiteral("network down"));
            });
        }
    });
    // The platform's own devices are announced before apiReady; only later arrivals are news.
    static bool started = false;
    QObject::connect(system, &System::apiReady, &app, [] { started = true; });
    QObject::connect(system, &System::deviceDetected, &app, [](const IDevicePtr &device) {
        if (!started) {
            return;
        }
        say(QStringLiteral("plugged: %1")
                .arg(QString::fromLatin1(QMetaEnum::fromType<IDevice::DeviceId>().valueToKey(device->id()))));
    });
    QObject::connect(system, &System::deviceRemoved, &app, [](IDevice::DeviceId id) {
        say(QStringLiteral("unplugged: %1")
                .arg(QString::fromLatin1(QMetaEnum::fromType<IDevice::DeviceId>().valueToKey(id))));
    });
    QObject::connect(system, &System::apiClosed, &app, [] { say(QStringLiteral("powered off")); });
    system->initialize(QStringLiteral("example-app"));
    return QCoreApplication::exec();
}

// Helper of tst_lifecycle: an application that brings up the simulation of one
// platform, plugs devices, leaves work of every delay pending and quits
// without releasing the System, so that the application object's destruction
// has to tear everything down.
//
//   lifecycle_child <platform number>          application object on the stack
//   lifecycle_child <platform number> static   application object in static
//                                              storage, gone after main()
//
// Prints "teardown complete" when the checks after the application's end have
// passed (stack mode), "session complete" when the event loop has ended
// (static mode; the teardown follows at exit). Exits with 0 unless a check failed.

#include "systemprivate_p.h"
#include <vantix/vantixdebug.h>

#include <vantix/vantix.h>

#include <qbcom/parametercontroller.h>
#include <qbcommon/appconfig.h>

#include <QCoreApplication>
#include <QPointer>
#include <QTemporaryDir>
#include <QTimer>

#include <cstdio>
#include <cstring>

using namespace TQ_SPAPI;

namespace {
using D = IDevice;

int failures = 0;

void expect(bool ok, const char *what)
{
    if (!ok) {
        std::fprintf(stderr, "lifecycle_child: %s\n", what);
        ++failures;
    }
}

void send(TQ_QBCom::ParameterController &controller, const char *command)
{
    controller.setValue(QStringLiteral("VantixDebug"), QString::fromLatin1(command));
}

// Runs one application session; returns the System it used and keeps one device in @p kept.
System *runSession(
    QCoreApplication &app, System::PlatformType platform, TQ_QBCom::ParameterController &controller, IDevicePtr *kept)
{
    SystemPlatformType::type = platform;
    System *system = System::instance();
    system->initialize(QStringLiteral("lifecycle"));
    VantixDebug::instance()->setParameterController(controller);
    for (const char *command : {"addbattery,2", "addotga", "addotgb", "activateotgb", "jack", "setwifistate,12"}) {
        send(controller, command);
    }
    VantixDebug::instance()->addUsb();
    // Port A active brings the USB stick 100 ms from now.
    system->device(D::ID_USB_OTG_A)->setAbility(D::F_ACTIVE);
    auto *simulation = system->findChild<SystemPrivate *>();
    simulation->addDevice(D::ID_VIBRATOR, D::DEVICE_VIBRATOR, QString());
    simulation->addDevice(D::ID_TEMP_BATT_2ND, D::DEVICE_TEMPERATURE, QString());
    *kept = system->device(D::ID_BATTERY_2ND);

    QTimer::singleShot(150, &app, [system] {
        // Mounts (250 ms), formats (500 ms), abilities (100 ms) and the flight
        // mode transition (2000 ms) are all still pending when the loop ends.
        for (const IDevicePtr &device : system->devices(D::DEVICE_DISK)) {
            auto *disk = qobject_cast<IDisk *>(device.data());
            disk->format(0);
            disk->mount();
        }
        system->device(D::ID_LED_POWER)->setAbility(D::F_ACTIVE);
        system->setFlightMode(false);
        QCoreApplication::quit();
    });
    expect(app.exec() == 0, "event loop failed");
    return system;
}
} // namespace

int main(int argc, char *argv[])
{
    if (argc < 2) {
        std::fprintf(stderr, "usage: lifecycle_child <platform> [static]\n");
        return 2;
    }
    const auto platform = System::PlatformType(std::atoi(argv[1]));
    const bool staticApp = argc > 2 && std::strcmp(argv[2], "static") == 0;

    // Everything the simulation writes stays in a folder of its own.
    QTemporaryDir root;
    AppConfig::instance()->setRootPath(root.path());
    AppConfig::instance()->setArguments(
        QStringList{QStringLiteral("lifecycle_child"), QStringLiteral("--disksformatted")});

    if (staticApp) {
        // Built before anything of the library, so destroyed after all of it.
        static QCoreApplication app(argc, argv);
        static TQ_QBCom::ParameterController controller;
        static IDevicePtr kept;
        runSession(app, platform, controller, &kept);
        std::puts("session complete");
        return failures == 0 ? 0 : 1;
    }

    TQ_QBCom::ParameterController controller;
    IDevicePtr kept;
    QPointer<System> system;
    {
        QCoreApplication app(argc, argv);
        system = runSession(app, platform, controller, &kept);
    }

    expect(system.isNull(), "System outlived the application object");
    // A device the application still holds stays readable.
    expect(kept && kept->id() == D::ID_BATTERY_2ND, "held device lost");
    expect(kept->status().testFlag(D::F_ENABLE), "held device lost its state");
    // The debug controller now has nothing to act on; none of this may reach freed memory.
    for (const char *command : {"addbattery,2", "rmbattery", "addotga", "rmotga", "addotgb", "activateotgb", "rmotgb",
             "jack", "mic", "pwrpress", "setwifistate,3", "setbatteryfuel,2,40"}) {
        send(controller, command);
    }
    VantixDebug::instance()->addUsb();
    VantixDebug::instance()->rmUsb();
    VantixDebug::instance()->overridePowerConnectedToggle(D::ID_POWER_SUPPLY);
    kept.clear();
    if (failures == 0) {
        std::puts("teardown complete");
    }
    return failures == 0 ? 0 : 1;
}

// Fuzzes the debug command channel. The first byte picks the platform to
// simulate; the rest is text, written to the parameter "VantixDebug" one line
// at a time, as a developer would type commands into it.
//
// The System lives on from one input to the next, so the delayed work of
// earlier commands (abilities, unmounts) runs while later ones arrive, as it
// does in a real session. It is released and built again when the platform
// changes and every InputsPerSystem inputs, so that state stays bounded.

#include "fuzzsupport.h"

#include <vantix/system.h>
#include <vantix/vantixdebug.h>

#include <qbcom/parametercontroller.h>
#include <qbcommon/appconfig.h>

#include <QSet>
#include <QStringList>
#include <QTemporaryDir>

#include <cstddef>
#include <cstdint>

using namespace TQ_SPAPI;

namespace {
using D = IDevice;

constexpr int InputsPerSystem = 256;
// PT_UNKNOWN to PT_VIRTUAL, and one value past them ("any other" platform).
constexpr int PlatformChoices = 8;

// Commands can plug these (batteries, OTG ports) and unplug those plus the USB stick.
const QSet<int> Pluggable{D::ID_BATTERY_1ST, D::ID_BATTERY_2ND, D::ID_USB_OTG_A, D::ID_USB_OTG_B};
const QSet<int> Unpluggable = Pluggable + QSet<int>{D::ID_DISK_USB};

struct Harness
{
    QTemporaryDir root;
    TQ_QBCom::ParameterController controller;
    System::PlatformType platform = System::PT_UNKNOWN;
    QSet<int> initialIds;
    int inputs = 0;
};
Harness *harness = nullptr;

QSet<int> idsOf(const System *system)
{
    QSet<int> ids;
    for (const IDevicePtr &device : system->devices()) {
        FuzzSupport::check(device && device->id() >= 0, "device list holds a null device");
        FuzzSupport::check(system->device(device->id()) == device, "device lookup disagrees with the list",
            QString::number(device->id()));
        ids.insert(device->id());
    }
    return ids;
}

QString describe(const QSet<int> &ids)
{
    QStringList names;
    for (int id : ids) {
        names << QString::number(id);
    }
    return names.join(QLatin1Char(' '));
}

void startSystem(System::PlatformType platform)
{
    System::releaseInstance();
    SystemPlatformType::type = platform;
    System *system = System::instance();
    system->initialize(QStringLiteral("fuzz"));
    harness->platform = platform;
    harness->initialIds = idsOf(system);
}
} // namespace

extern "C" int LLVMFuzzerInitialize(int *argc, char ***argv)
{
    FuzzSupport::startApplication(argc, argv);
    harness = new Harness;
    FuzzSupport::removeAtExit(harness->root.path());
    // Disks and the USB stick's folder live under a throw-away root.
    AppConfig::instance()->setRootPath(harness->root.path());
    AppConfig::instance()->setArguments(QStringList{QStringLiteral("fuzz")});
    VantixDebug::instance()->setParameterController(harness->controller);
    startSystem(System::PT_UNKNOWN);
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    if (size == 0) {
        return 0;
    }
    const auto platform = System::PlatformType(data[0] % PlatformChoices);
    if (platform != harness->platform || ++harness->inputs % InputsPerSystem == 0) {
        startSystem(platform);
    }

    const QString text = QString::fromUtf8(reinterpret_cast<const char *>(data + 1), int(size - 1));
    for (const QString &value : text.split(QLatin1Char('\n'))) {
        harness->controller.setValue(QStringLiteral("VantixDebug"), value);
        QCoreApplication::processEvents();
    }
    // Whatever delayed work has come due by now runs before the next input.
    QCoreApplication::processEvents(QEventLoop::AllEvents, 1);

    // Commands only plug and unplug the devices they name; the rest of the table stays.
    const QSet<int> ids = idsOf(System::instance());
    const QSet<int> lost = (harness->initialIds - Unpluggable) - ids;
    const QSet<int> unknown = ids - harness->initialIds - Pluggable;
    FuzzSupport::check(lost.isEmpty(), "devices vanished:", describe(lost));
    FuzzSupport::check(unknown.isEmpty(), "devices appeared:", describe(unknown));
    return 0;
}

// plug <device> [type] and unplug <device>. Where the debug controller has a
// hot-plug operation for a device, that operation runs, so that what it keeps
// track of (the USB ports, the stick an active port brings) stays true
// whichever way the device came or went.

#include "commandtable_p.h"
#include "devicenames_p.h"
#include "session_p.h"
#include <vantix/vantixdebug.h>

#include <vantix/system.h>

using namespace TQ_SPAPI;

namespace VantixControl {

namespace {
using D = IDevice;

// The debug controller's own way to plug the device, if it has one.
bool plugByController(D::DeviceId id)
{
    VantixDebug *debug = VantixDebug::instance();
    switch (id) {
    case D::ID_BATTERY_1ST:
    case D::ID_BATTERY_2ND:
        debug->addBattery(id);
        return true;
    case D::ID_USB:
        debug->addUsb();
        return true;
    case D::ID_USB_OTG_A:
        debug->addOtgA();
        return true;
    case D::ID_USB_OTG_B:
        debug->addOtgB();
        return true;
    default:
        return false;
    }
}

bool unplugByController(D::DeviceId id)
{
    VantixDebug *debug = VantixDebug::instance();
    switch (id) {
    case D::ID_BATTERY_1ST:
    case D::ID_BATTERY_2ND:
        debug->removeBattery(id);
        return true;
    case D::ID_USB:
        debug->rmUsb();
        return true;
    case D::ID_USB_OTG_A:
        debug->rmOtgA();
        return true;
    case D::ID_USB_OTG_B:
        debug->rmOtgB();
        return true;
    default:
        return false;
    }
}

Reply plug(Invocation &invocation)
{
    System *system = invocation.session.system;
    const auto id = D::DeviceId(invocation.integer(QStringLiteral("device")));
    if (system->device(id)) {
        return Reply::failure(ErrorClass::Failed, QStringLiteral("%1 is already plugged").arg(DeviceNames::name(id)));
    }
    const D::DeviceType defaultType = DeviceNames::defaultType(id);
    const D::DeviceType type = invocation.has(QStringLiteral("type"))
        ? D::DeviceType(int(invocation.integer(QStringLiteral("type"))))
        : defaultType;
    if (type != defaultType || !plugByController(id)) {
        const QString path = type.testFlag(D::DEVICE_DISK) ? DeviceNames::defaultPath(id) : QString();
        VantixDebug::instance()->addDevice(id, type, path);
    }
    if (!system->device(id)) {
        return Reply::failure(ErrorClass::Failed, QStringLiteral("%1 could not be plugged").arg(DeviceNames::name(id)));
    }
    return Reply::success();
}

Reply unplug(Invocation &invocation)
{
    System *system = invocation.session.system;
    const auto id = D::DeviceId(invocation.integer(QStringLiteral("device")));
    if (!system->device(id)) {
        return Reply::failure(
            ErrorClass::UnknownTarget, QStringLiteral("%1 is not plugged").arg(DeviceNames::name(id)));
    }
    if (!unplugByController(id)) {
        VantixDebug::instance()->removeDevice(id);
    }
    if (system->device(id)) {
        return Reply::failure(ErrorClass::Failed, QStringLiteral("%1 could not be removed").arg(DeviceNames::name(id)));
    }
    return Reply::success();
}
} // namespace

void addPlugAndUnplug(CommandTable &table)
{
    CommandEntry plug;
    plug.name = QStringLiteral("plug");
    plug.forms = {
        {required(QStringLiteral("device"), Argument::Device), optional(QStringLiteral("type"), Argument::DeviceType)}};
    plug.help = QStringLiteral("hot-plug a device as the debug controller would; the type flags default to the "
                               "platform's");
    plug.label = QStringLiteral("Plug");
    plug.run = VantixControl::plug;
    table.add(plug);

    CommandEntry unplug;
    unplug.name = QStringLiteral("unplug");
    unplug.forms = {{required(QStringLiteral("device"), Argument::Device)}};
    unplug.help = QStringLiteral("remove a device (a USB port takes its stick along)");
    unplug.label = QStringLiteral("Unplug");
    unplug.run = VantixControl::unplug;
    table.add(unplug);
}

} // namespace VantixControl

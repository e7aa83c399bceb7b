#include "hotplug_p.h"

#include "devicenames_p.h"

#include <vantix/vantixdebug.h>

using namespace TQ_SPAPI;

namespace VantixControl {

namespace {
using D = IDevice;

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
} // namespace

void HotPlug::plug(D::DeviceId id, D::DeviceType type, const QString &path)
{
    if (type != DeviceNames::defaultType(id) || !plugByController(id)) {
        VantixDebug::instance()->addDevice(id, type, path);
    }
}

void HotPlug::unplug(D::DeviceId id)
{
    if (!unplugByController(id)) {
        VantixDebug::instance()->removeDevice(id);
    }
}

} // namespace VantixControl

#ifndef VANTIXCONTROL_HOTPLUG_P_H
#define VANTIXCONTROL_HOTPLUG_P_H

#include <vantix/idevice.h>

#include <QString>

namespace VantixControl {

/**
 * Plugging and unplugging as the debug controller does it. Where it has a
 * hot-plug operation of its own for a device (batteries, the USB device,
 * the OTG ports), that operation runs, so that what it keeps track of (the
 * ports, the stick an active port brings) stays true whichever way the
 * device came or went; any other device goes through its addDevice and
 * removeDevice.
 */
namespace HotPlug {

/// Plugs @p id; the controller's own operation is used when @p type is the id's usual one.
void plug(TQ_SPAPI::IDevice::DeviceId id, TQ_SPAPI::IDevice::DeviceType type, const QString &path);
/// Unplugs @p id (a port takes its stick along).
void unplug(TQ_SPAPI::IDevice::DeviceId id);

} // namespace HotPlug
} // namespace VantixControl

#endif

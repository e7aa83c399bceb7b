#ifndef VANTIXCONTROL_DEVICENAMES_P_H
#define VANTIXCONTROL_DEVICENAMES_P_H

#include <vantix/idevice.h>
#include <vantix/vantix_private_export.h>

#include <QString>
#include <QStringList>

/**
 * The names a user may give a device: its id name (ID_BATTERY_1ST), its
 * number (7) or a short alias (battery1); and what a device plugged by hand
 * is made of when only its name is known.
 */
namespace VantixControl {
namespace DeviceNames {

/// "ID_BATTERY_1ST"; removable disks above ID_DISK_USB read "ID_DISK_USB+1".
VANTIX_PRIVATE_EXPORT QString name(TQ_SPAPI::IDevice::DeviceId id);
/// The short alias ("battery1"), empty when there is none.
VANTIX_PRIVATE_EXPORT QString alias(TQ_SPAPI::IDevice::DeviceId id);
/// Every alias with the id name it stands for, for help texts.
VANTIX_PRIVATE_EXPORT QStringList aliasTable();
/// Every device id the names above know, in id order (removable disks beyond the first left out).
VANTIX_PRIVATE_EXPORT QList<TQ_SPAPI::IDevice::DeviceId> knownIds();

/**
 * Reads a device name: an id name (case-insensitive, "ID_" and a class
 * qualification optional), a number, or an alias. False for anything else.
 */
VANTIX_PRIVATE_EXPORT bool parse(const QString &text, TQ_SPAPI::IDevice::DeviceId *id);

/// The type the platform gives the device, or DEVICE_UNKNOWN for an id it never creates.
VANTIX_PRIVATE_EXPORT TQ_SPAPI::IDevice::DeviceType defaultType(TQ_SPAPI::IDevice::DeviceId id);
/// The folder of a disk: the user data and system disks under the var folder, sticks as the debug controller makes
/// them.
VANTIX_PRIVATE_EXPORT QString defaultPath(TQ_SPAPI::IDevice::DeviceId id);

} // namespace DeviceNames
} // namespace VantixControl

#endif

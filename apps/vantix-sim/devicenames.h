#ifndef VANTIXSIM_DEVICENAMES_H
#define VANTIXSIM_DEVICENAMES_H

#include <vantix/idevice.h>

#include <QString>
#include <QStringList>

/**
 * The names a user may give a device: its id name (ID_BATTERY_1ST), its
 * number (7) or a short alias (battery1); and what a device plugged by hand
 * is made of when only its name is known.
 */
namespace DeviceNames {

/// "ID_BATTERY_1ST"; removable disks above ID_DISK_USB read "ID_DISK_USB+1".
QString name(TQ_SPAPI::IDevice::DeviceId id);
/// The short alias ("battery1"), empty when there is none.
QString alias(TQ_SPAPI::IDevice::DeviceId id);
/// Every alias with the id name it stands for, for help texts.
QStringList aliasTable();

/**
 * Reads a device name: an id name (case-insensitive, "ID_" and a class
 * qualification optional), a number, or an alias. False for anything else.
 */
bool parse(const QString &text, TQ_SPAPI::IDevice::DeviceId *id);

/// The type the platform gives the device, or DEVICE_UNKNOWN for an id it never creates.
TQ_SPAPI::IDevice::DeviceType defaultType(TQ_SPAPI::IDevice::DeviceId id);
/// The folder of a disk, under the unit's var folder; empty for every other device.
QString defaultPath(TQ_SPAPI::IDevice::DeviceId id);

} // namespace DeviceNames

#endif

#ifndef VANTIXCONTROL_DEVICEOPERATIONS_P_H
#define VANTIXCONTROL_DEVICEOPERATIONS_P_H

#include <vantix/idevice.h>

#include <QByteArray>
#include <QString>

class QObject;

namespace TQ_SPAPI {
class System;
}

namespace VantixControl {

struct RestoreWork;
struct SavedDevice;
struct SavedObject;

/**
 * Which operation owns each value of a device, and setting a saved value
 * through it. Each value that differs from the saved one is set by its
 * owner: an override operation of the simulation, an LED's on, off or
 * setFlash, a disk's format, mount or unmount, an ability, or the setter
 * of a writable property. Status bits go last, as the operations before
 * may have changed them.
 */
namespace DeviceOperations {

/// Sets the values of @p device that differ from @p saved.
void restore(TQ_SPAPI::System *system, TQ_SPAPI::IDevice *device, const SavedDevice &saved, RestoreWork *work);
/// Sets the writable properties of @p object that differ from @p saved.
void restoreWritable(QObject *object, const SavedObject &saved, RestoreWork *work);

/// Why no operation sets @p property of @p object to its value in @p saved, or empty when one does.
QString whyNotSettable(const QObject *object, const SavedObject &saved, const QByteArray &property);
/// Whether a difference in @p property is a mark the setting operations leave themselves (a counter).
bool isMark(const QObject *object, const QByteArray &property);
/// Why no operation sets (@p wanted) or clears @p bit in @p device's status, or empty when one does.
QString whyNotSettable(const TQ_SPAPI::IDevice *device, TQ_SPAPI::IDevice::Flags bit, bool wanted);

} // namespace DeviceOperations
} // namespace VantixControl

#endif

#ifndef VANTIXCONTROL_SNAPSHOT_P_H
#define VANTIXCONTROL_SNAPSHOT_P_H

#include <vantix/idevice.h>
#include <vantix/system.h>
#include <vantix/vantix_private_export.h>

#include <QByteArray>
#include <QString>
#include <QVariant>
#include <QVector>

namespace VantixControl {

/// One property's value as it was saved, and as the console writes it, which is what is compared.
struct SavedValue
{
    QByteArray name;
    QVariant value;
    QString text;
};

/// The values of one object (a device, the time settings, the CAN multiplexer), under the name the console gives it.
struct SavedObject
{
    QString name;
    QVector<SavedValue> values;

    const SavedValue *value(const QByteArray &property) const;
};

struct SavedDevice : SavedObject
{
    TQ_SPAPI::IDevice::DeviceId id = TQ_SPAPI::IDevice::ID_UNKNOWN_DEV;
    TQ_SPAPI::IDevice::DeviceType type;
    QString path;
    QByteArray className;
    TQ_SPAPI::IDevice::DeviceFlags status;
};

/**
 * The simulated hardware at one moment: which devices are plugged (with
 * their type and path), every property's value of each device, of the time
 * settings and of the CAN multiplexer, the system information and flight
 * mode. Values that are objects (the access-point and peer lists) are not
 * part of it. A few KB; it holds no pointer to what it describes.
 */
struct VANTIX_PRIVATE_EXPORT Snapshot
{
    QVector<SavedDevice> devices;
    SavedObject timeSettings;
    SavedObject canMux;
    QVariantMap systemInfo;
    TQ_SPAPI::System::FligtModeFlags flightMode;
    /// When it was taken, in ms since initialize().
    qint64 takenMs = 0;

    /// @p system as it is now; taken during a flight-mode transition, flightMode holds that transition.
    static Snapshot take(TQ_SPAPI::System *system);
    /// Whether what was set in motion has taken effect: no flight-mode transition, no ability on its way.
    static bool isSettled(TQ_SPAPI::System *system);
    /// The readable values of @p object that a snapshot holds.
    static QVector<SavedValue> valuesOf(const QObject *object);

    const SavedDevice *device(TQ_SPAPI::IDevice::DeviceId id) const;
};

} // namespace VantixControl

#endif

#ifndef VANTIXCONTROL_TARGETS_P_H
#define VANTIXCONTROL_TARGETS_P_H

#include <vantix/idevice.h>
#include <vantix/vantix_private_export.h>

#include <QString>

namespace TQ_SPAPI {
class System;
}

namespace VantixControl {

class EventWatcher;

/// What a command acts on: a device (held while the command runs), System, or another interface object.
struct Target
{
    QObject *object = nullptr;
    TQ_SPAPI::IDevicePtr device;
    QString name;
};

namespace Targets {

/**
 * Finds what @p name stands for: "system"; a device by id name, number or
 * alias; an object the session's watcher named ("IWifiP2PPeer(02:22:22)");
 * or one of System's interface objects by class or alias ("timesettings").
 * False with a message a user can act on.
 */
VANTIX_PRIVATE_EXPORT bool resolve(
    TQ_SPAPI::System *system, const EventWatcher *watcher, const QString &name, Target *target, QString *error);
/// System's interface objects (time settings, CAN multiplexer, API messages).
VANTIX_PRIVATE_EXPORT QList<QObject *> systemObjects(TQ_SPAPI::System *system);

} // namespace Targets
} // namespace VantixControl

#endif

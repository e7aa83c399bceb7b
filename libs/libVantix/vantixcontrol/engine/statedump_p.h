#ifndef VANTIXCONTROL_STATEDUMP_P_H
#define VANTIXCONTROL_STATEDUMP_P_H

#include <vantix/vantix_private_export.h>

#include <QJsonObject>

class QObject;

namespace TQ_SPAPI {
class System;
}

namespace VantixControl {

class EventWatcher;
class ObjectNamer;

/**
 * The state of the simulation as JSON: the platform, System's properties,
 * every device's properties (keyed by id name) and those of the other
 * interface objects (time settings, CAN multiplexer, list models, peers).
 * Enums and flags are written by name, as the console shows them.
 */
namespace StateDump {

VANTIX_PRIVATE_EXPORT QJsonObject build(TQ_SPAPI::System *system, const EventWatcher *watcher);
/// Every readable property of @p object but objectName.
VANTIX_PRIVATE_EXPORT QJsonObject properties(const QObject *object, const ObjectNamer *namer);

} // namespace StateDump
} // namespace VantixControl

#endif

#ifndef VANTIXSIM_STATEDUMP_H
#define VANTIXSIM_STATEDUMP_H

#include <QJsonObject>

class EventWatcher;
class QObject;

namespace TQ_SPAPI {
class System;
}

/**
 * The state of the simulation as JSON: the platform, System's properties,
 * every device's properties (keyed by id name) and those of the other
 * interface objects (time settings, CAN multiplexer, list models, peers).
 * Enums and flags are written by name, as the console shows them.
 */
namespace StateDump {

QJsonObject build(TQ_SPAPI::System *system, const EventWatcher *watcher);
/// Every readable property of @p object but objectName.
QJsonObject properties(const QObject *object);

} // namespace StateDump

#endif

#ifndef VANTIXCONTROL_SCHEMA_P_H
#define VANTIXCONTROL_SCHEMA_P_H

#include <vantix/vantix_private_export.h>

#include <QJsonArray>
#include <QJsonObject>

class QObject;

namespace TQ_SPAPI {
class System;
}

namespace VantixControl {

class EventWatcher;
class ObjectNamer;

/**
 * What can be done, for front ends that must not hard-code a device: the
 * commands with their arguments, the debug commands and shortcuts, every
 * device id, and every target with its properties (type, writable, effect),
 * methods (argument types) and signals, plus the enums their types name.
 */
namespace Schema {

VANTIX_PRIVATE_EXPORT QJsonObject describe(TQ_SPAPI::System *system, const EventWatcher *watcher);
/// One target: name, class, properties, methods and signals; with values, as "show" gives them.
VANTIX_PRIVATE_EXPORT QJsonObject describeObject(
    const QObject *object, const QString &name, const ObjectNamer *namer, bool withValues);
/// The console commands, in help order.
VANTIX_PRIVATE_EXPORT QJsonArray commands();
/// The debug controller's commands and keyboard shortcuts.
VANTIX_PRIVATE_EXPORT QJsonArray debugCommands();
VANTIX_PRIVATE_EXPORT QJsonArray shortcuts();

} // namespace Schema
} // namespace VantixControl

#endif

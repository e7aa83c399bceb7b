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

class CommandTable;
class EventWatcher;
class ObjectNamer;

/**
 * What can be done, for front ends that must not hard-code a device: the
 * commands with their arguments, the debug commands and shortcuts, every
 * device id, and every target with its properties (type, writable, effect),
 * methods (argument types) and signals, plus the enums their types name.
 */
namespace Schema {

VANTIX_PRIVATE_EXPORT QJsonObject describe(
    TQ_SPAPI::System *system, const CommandTable &commands, const EventWatcher *watcher);
/// One target: name, class, properties, methods and signals; with values, as "show" gives them.
VANTIX_PRIVATE_EXPORT QJsonObject describeObject(
    const QObject *object, const QString &name, const ObjectNamer *namer, bool withValues);
/**
 * The console commands, in help order, and the debug controller's, in one
 * shape: {name, usage: [lines], help, label, arguments: [Argument], forms:
 * [{usage, arguments}], host, debug, readOnly}. arguments are the first
 * form's.
 */
VANTIX_PRIVATE_EXPORT QJsonArray commands(const CommandTable &commands);
VANTIX_PRIVATE_EXPORT QJsonArray debugCommands();
/// The debug controller's keyboard shortcuts: {key, label, help, passedOn}.
VANTIX_PRIVATE_EXPORT QJsonArray shortcuts();

} // namespace Schema
} // namespace VantixControl

#endif

#ifndef VANTIXCONTROL_TEXTRENDERER_P_H
#define VANTIXCONTROL_TEXTRENDERER_P_H

#include <vantix/vantix_private_export.h>

#include <QJsonArray>
#include <QJsonObject>
#include <QStringList>

namespace TQ_SPAPI {
class System;
}

namespace VantixControl {

class ObjectNamer;

/**
 * The lines a person reads, made from the same values a program gets, so
 * the two never disagree. Each function takes the structured value of one
 * kind of reply.
 */
namespace TextRenderer {

/// One object per device: name, number, alias, class, status, type.
VANTIX_PRIVATE_EXPORT QJsonArray deviceRows(TQ_SPAPI::System *system, const ObjectNamer *namer);
/// The device table, headed DEVICE NR ALIAS CLASS STATUS TYPE.
VANTIX_PRIVATE_EXPORT QStringList deviceTable(const QJsonArray &rows);
/// What "show" lists: the header, each property with its value, what can be called and what is signalled.
VANTIX_PRIVATE_EXPORT QStringList objectDescription(const QJsonObject &object);
/// "  KEY = value" per entry.
VANTIX_PRIVATE_EXPORT QStringList keyValues(const QJsonObject &map);
/// Indented JSON, one line per row.
VANTIX_PRIVATE_EXPORT QStringList json(const QJsonObject &object);

} // namespace TextRenderer
} // namespace VantixControl

#endif

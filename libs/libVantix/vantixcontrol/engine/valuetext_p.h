#ifndef VANTIXCONTROL_VALUETEXT_P_H
#define VANTIXCONTROL_VALUETEXT_P_H

#include <vantix/vantix_private_export.h>

#include <QByteArray>
#include <QJsonValue>
#include <QMetaEnum>
#include <QString>
#include <QVariant>

class QObject;
struct QMetaObject;

namespace VantixControl {

/// How a session names the objects it shows; devices by id name and others by class otherwise.
class ObjectNamer
{
public:
    virtual ~ObjectNamer() = default;
    /// Empty when this namer does not know @p object.
    virtual QString nameOf(const QObject *object) const = 0;
};

/**
 * Values as a user reads and types them, for any type the meta-object system
 * knows: enums and flags by name ("F_ENABLE|F_CHARGE", "red"), strings
 * quoted, containers and gadgets spelt out, objects by the name @p namer
 * gives them. Reading is strict: a value is taken whole or refused with what
 * would have been accepted, never wrapped or read in part.
 */
namespace ValueText {

/**
 * The enumerator behind a type name such as "TQ_SPAPI::IDevice::DeviceFlags",
 * "TQ_SPAPI::IDevice::Flags" or "Qt::GlobalColor". @p context (and its base
 * classes) is searched first, for names written without their class.
 */
VANTIX_PRIVATE_EXPORT QMetaEnum findEnum(const QByteArray &typeName, const QMetaObject *context = nullptr);
/// A value by enumerator name; flag sets joined by "|", unnamed bits in hex.
VANTIX_PRIVATE_EXPORT QString enumText(const QMetaEnum &enumerator, int value);
/// "DeviceFlags", "int", "QString": the type a value is described by in replies and schemas.
VANTIX_PRIVATE_EXPORT QString typeName(int typeId, const QByteArray &declared, const QMetaEnum &enumerator);

VANTIX_PRIVATE_EXPORT QString objectName(const QObject *object, const ObjectNamer *namer);
/// The object a value holds as a QObject pointer or a smart pointer to one, else null.
VANTIX_PRIVATE_EXPORT QObject *objectOf(const QVariant &value);
/// Whether values of @p typeId hold a QObject (pointer or smart pointer).
VANTIX_PRIVATE_EXPORT bool holdsObject(int typeId);
/// Whether @p className is @p scope or ends in "::scope"; an empty scope matches any.
VANTIX_PRIVATE_EXPORT bool inScope(const QByteArray &className, const QByteArray &scope);
/// Whether @p typeId is one of the built-in integer types.
VANTIX_PRIVATE_EXPORT bool isIntegral(int typeId);
VANTIX_PRIVATE_EXPORT bool isNumeric(int typeId);
/// The lowest and highest value of a numeric type, as doubles; false for other types.
VANTIX_PRIVATE_EXPORT bool numberRange(int typeId, double *low, double *high);

/// @p enumerator, when valid, names the value (a property's own enum).
VANTIX_PRIVATE_EXPORT QString format(
    const QVariant &value, const QMetaEnum &enumerator = QMetaEnum(), const ObjectNamer *namer = nullptr);
VANTIX_PRIVATE_EXPORT QJsonValue toJson(
    const QVariant &value, const QMetaEnum &enumerator = QMetaEnum(), const ObjectNamer *namer = nullptr);
/// The integer inside an enum or flags value of any registered type, or an int.
VANTIX_PRIVATE_EXPORT int enumValue(const QVariant &value);
/// An enum value read from the pointer a meta-call passes.
VANTIX_PRIVATE_EXPORT int readEnum(const void *data, int typeId);

/**
 * Converts @p text to a value of the given type (an enum if @p enumerator is
 * valid or the type name names one). On failure returns false and sets
 * @p error to what would have been accepted.
 */
VANTIX_PRIVATE_EXPORT bool parse(const QString &text, int typeId, const QByteArray &typeName,
    const QMetaEnum &enumerator, QVariant *out, QString *error);
/// Exact names (also class-qualified), their numbers, and for flags names joined by "|".
VANTIX_PRIVATE_EXPORT bool parseEnum(const QMetaEnum &enumerator, const QString &text, int *value, QString *error);
/// A whole number: an optional "-", then decimal digits or "0x" and hex digits; nothing else.
VANTIX_PRIVATE_EXPORT bool parseInteger(const QString &text, qlonglong *value);

} // namespace ValueText
} // namespace VantixControl

#endif

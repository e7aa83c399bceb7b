#ifndef VANTIXSIM_VALUETEXT_H
#define VANTIXSIM_VALUETEXT_H

#include <QByteArray>
#include <QJsonValue>
#include <QMetaEnum>
#include <QString>
#include <QVariant>

#include <functional>

class QObject;
struct QMetaObject;

/**
 * Values as a user reads and types them, for any type the meta-object system
 * knows: enums and flags by name ("F_ENABLE|F_CHARGE", "red"), strings
 * quoted, containers and gadgets spelt out, objects by their console name.
 */
namespace ValueText {

/// Remembers a class, so that enums declared in it are found by type name later.
void addMetaObject(const QMetaObject *metaObject);
/**
 * The enumerator behind a type name such as "TQ_SPAPI::IDevice::DeviceFlags",
 * "TQ_SPAPI::IDevice::Flags" or "Qt::GlobalColor". @p context (and its base
 * classes) is searched first, for names written without their class.
 */
QMetaEnum findEnum(const QByteArray &typeName, const QMetaObject *context = nullptr);
/// A value by enumerator name; flag sets joined by "|", unnamed bits in hex.
QString enumText(const QMetaEnum &enumerator, int value);

/// How objects held in values are named; by default devices by id name, others by class.
void setObjectNamer(std::function<QString(const QObject *)> namer);
QString objectName(const QObject *object);
/// The object a value holds as a QObject pointer or a smart pointer to one, else null.
QObject *objectOf(const QVariant &value);
/// Whether values of @p typeId hold a QObject (pointer or smart pointer).
bool holdsObject(int typeId);
/// Whether @p typeId is one of the built-in integer types.
bool isIntegral(int typeId);

/// @p enumerator, when valid, names the value (a property's own enum).
QString format(const QVariant &value, const QMetaEnum &enumerator = QMetaEnum());
/// A signal argument given as the pointer a meta-call passes.
QString formatArgument(int typeId, const QByteArray &typeName, const void *data, const QMetaObject *context);
QJsonValue toJson(const QVariant &value, const QMetaEnum &enumerator = QMetaEnum());

/**
 * Converts @p text to a value of the given type (an enum if @p enumerator is
 * valid or the type name names one). On failure returns false and sets
 * @p error to what was expected.
 */
bool parse(const QString &text, int typeId, const QByteArray &typeName, const QMetaEnum &enumerator, QVariant *out,
    QString *error);
bool parseEnum(const QMetaEnum &enumerator, const QString &text, int *value, QString *error);
/// The integer inside an enum or flags value of any registered type, or an int.
int enumValue(const QVariant &value);

} // namespace ValueText

#endif

#ifndef VANTIXCONTROL_REFLECTION_P_H
#define VANTIXCONTROL_REFLECTION_P_H

#include <vantix/vantix_private_export.h>

#include <QList>
#include <QMetaEnum>
#include <QMetaMethod>
#include <QMetaProperty>
#include <QString>
#include <QStringList>

class QObject;

namespace VantixControl {

class ObjectNamer;

/**
 * What the meta-object tells of an object, as the console shows it: its
 * properties, the methods a user may call and the signals it sends. Nothing
 * here knows a device class, so a new one is inspected like the others.
 */
namespace Reflection {

/// "IBattery" for TQ_SPAPI::IBattery.
VANTIX_PRIVATE_EXPORT QString shortClassName(const QObject *object);
VANTIX_PRIVATE_EXPORT QString shortClassName(const QMetaObject *metaObject);
/// "QString &" and "const QString" both name QString: the declared type without const and &.
VANTIX_PRIVATE_EXPORT QByteArray bareType(const QByteArray &type);
/// "QString" for "const QString &", without the TQ_SPAPI:: prefix.
VANTIX_PRIVATE_EXPORT QString shortType(const QByteArray &type);
/// "setFlash(Qt::GlobalColor color, int msOn, int msOff)".
VANTIX_PRIVATE_EXPORT QString methodText(const QMetaMethod &method);

/// The properties past QObject's own, in declaration order.
VANTIX_PRIVATE_EXPORT QList<QMetaProperty> properties(const QMetaObject *metaObject);
/// The public slots and invokables past QObject's own.
VANTIX_PRIVATE_EXPORT QList<QMetaMethod> callableMethods(const QMetaObject *metaObject);
VANTIX_PRIVATE_EXPORT QList<QMetaMethod> signalMethods(const QMetaObject *metaObject);
/// Whether @p metaObject has a signal named @p name.
VANTIX_PRIVATE_EXPORT bool hasSignal(const QMetaObject *metaObject, const QByteArray &name);

/// The property @p name (exact, else ignoring case); false with the names there are.
VANTIX_PRIVATE_EXPORT bool findProperty(
    const QObject *object, const QString &label, const QString &name, QMetaProperty *property, QString *error);
/// The enumerator that names a property's values, if any.
VANTIX_PRIVATE_EXPORT QMetaEnum enumOf(const QObject *object, const QMetaProperty &property);
VANTIX_PRIVATE_EXPORT QString propertyText(
    const QObject *object, const QMetaProperty &property, const ObjectNamer *namer);
/// "int", "DeviceFlags", "QString": the type of a property as replies and schemas give it.
VANTIX_PRIVATE_EXPORT QString propertyType(const QObject *object, const QMetaProperty &property);

} // namespace Reflection
} // namespace VantixControl

#endif

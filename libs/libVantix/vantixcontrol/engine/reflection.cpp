#include "reflection_p.h"

#include "valuetext_p.h"

#include <QObject>

namespace VantixControl {

QString Reflection::shortClassName(const QMetaObject *metaObject)
{
    const QString name = QString::fromLatin1(metaObject->className());
    return name.mid(name.lastIndexOf(QLatin1Char(':')) + 1);
}

QString Reflection::shortClassName(const QObject *object)
{
    return shortClassName(object->metaObject());
}

QByteArray Reflection::bareType(const QByteArray &type)
{
    QByteArray bare = type.trimmed();
    if (bare.startsWith("const ")) {
        bare = bare.mid(6);
    }
    if (bare.endsWith('&')) {
        bare.chop(1);
    }
    return bare.trimmed();
}

QString Reflection::shortType(const QByteArray &type)
{
    return QString::fromLatin1(bareType(type)).remove(QStringLiteral("TQ_SPAPI::"));
}

QString Reflection::methodText(const QMetaMethod &method)
{
    QStringList parameters;
    const QList<QByteArray> types = method.parameterTypes();
    const QList<QByteArray> names = method.parameterNames();
    for (int i = 0; i < types.size(); ++i) {
        parameters.append(names.at(i).isEmpty()
                ? shortType(types.at(i))
                : shortType(types.at(i)) + QLatin1Char(' ') + QString::fromLatin1(names.at(i)));
    }
    return QStringLiteral("%1(%2)").arg(QString::fromLatin1(method.name()), parameters.join(QLatin1String(", ")));
}

QList<QMetaProperty> Reflection::properties(const QMetaObject *metaObject)
{
    QList<QMetaProperty> result;
    for (int i = QObject::staticMetaObject.propertyCount(); i < metaObject->propertyCount(); ++i) {
        result.append(metaObject->property(i));
    }
    return result;
}

QList<QMetaMethod> Reflection::callableMethods(const QMetaObject *metaObject)
{
    QList<QMetaMethod> result;
    for (int i = QObject::staticMetaObject.methodCount(); i < metaObject->methodCount(); ++i) {
        const QMetaMethod m = metaObject->method(i);
        if (m.access() == QMetaMethod::Public &&
            (m.methodType() == QMetaMethod::Slot || m.methodType() == QMetaMethod::Method)) {
            result.append(m);
        }
    }
    return result;
}

QList<QMetaMethod> Reflection::signalMethods(const QMetaObject *metaObject)
{
    QList<QMetaMethod> result;
    for (int i = QObject::staticMetaObject.methodCount(); i < metaObject->methodCount(); ++i) {
        if (metaObject->method(i).methodType() == QMetaMethod::Signal) {
            result.append(metaObject->method(i));
        }
    }
    return result;
}

bool Reflection::hasSignal(const QMetaObject *metaObject, const QByteArray &name)
{
    for (const QMetaMethod &m : signalMethods(metaObject)) {
        if (m.name() == name) {
            return true;
        }
    }
    return false;
}

bool Reflection::findProperty(
    const QObject *object, const QString &label, const QString &name, QMetaProperty *property, QString *error)
{
    // The exact name is the common case; the meta-object finds it without building a list.
    const QMetaObject *metaObject = object->metaObject();
    const int index = metaObject->indexOfProperty(name.toLatin1().constData());
    if (index >= QObject::staticMetaObject.propertyCount()) {
        *property = metaObject->property(index);
        return true;
    }
    const QList<QMetaProperty> all = properties(metaObject);
    for (const QMetaProperty &p : all) {
        if (QString::fromLatin1(p.name()).compare(name, Qt::CaseInsensitive) == 0) {
            *property = p;
            return true;
        }
    }
    QStringList names;
    for (const QMetaProperty &p : all) {
        names.append(QString::fromLatin1(p.name()));
    }
    *error = QStringLiteral("%1 has no property \"%2\"; it has %3")
                 .arg(label, name, names.isEmpty() ? QStringLiteral("none") : names.join(QLatin1String(", ")));
    return false;
}

QMetaEnum Reflection::enumOf(const QObject *object, const QMetaProperty &property)
{
    if (property.isEnumType()) {
        return property.enumerator();
    }
    // Qt's own types (int, QString, ...) are never enums; only the rest needs a search by name.
    const int type = property.userType();
    if (type != QMetaType::UnknownType && type < QMetaType::User) {
        return QMetaEnum();
    }
    return ValueText::findEnum(QByteArray(property.typeName()), object->metaObject());
}

QString Reflection::propertyText(const QObject *object, const QMetaProperty &property, const ObjectNamer *namer)
{
    return ValueText::format(property.read(object), enumOf(object, property), namer);
}

QString Reflection::propertyType(const QObject *object, const QMetaProperty &property)
{
    return ValueText::typeName(property.userType(), QByteArray(property.typeName()), enumOf(object, property));
}

} // namespace VantixControl

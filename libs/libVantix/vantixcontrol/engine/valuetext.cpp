// Showing values to people and programs: enum and flag names, object names, JSON.

#include "valuetext_p.h"

#include "devicenames_p.h"
#include "reflection_p.h"

#include <vantix/vantix.h>

#include <QAssociativeIterable>
#include <QJsonArray>
#include <QJsonObject>
#include <QList>
#include <QLocale>
#include <QMetaObject>
#include <QMetaProperty>
#include <QObject>
#include <QSequentialIterable>
#include <QStringList>

#include <cmath>

namespace VantixControl {

namespace {
using namespace TQ_SPAPI;

// Classes whose enums a type name may point into from elsewhere (ICanMux's
// IDevice::DeviceId): the library's own and Qt's namespace. Fixed, so that
// what one session has seen never changes what another one reads.
const QList<const QMetaObject *> &knownMetaObjects()
{
    static const QList<const QMetaObject *> list{&IDevice::staticMetaObject, &System::staticMetaObject,
        &IAccessPoint::staticMetaObject, &IApiMessage::staticMetaObject, &IAudio::staticMetaObject,
        &IBattery::staticMetaObject, &IBluetooth::staticMetaObject, &IButton::staticMetaObject,
        &ICanMux::staticMetaObject, &IDisk::staticMetaObject, &IDisplay::staticMetaObject,
        &IIOController::staticMetaObject, &ILed::staticMetaObject, &INetwork::staticMetaObject,
        &IPwmEcg::staticMetaObject, &ISensor::staticMetaObject, &ISoundAmplifier::staticMetaObject,
        &ITimeSettings::staticMetaObject, &IUsb::staticMetaObject, &IVibrator::staticMetaObject,
        &IWifi::staticMetaObject, &IWifiP2P::staticMetaObject, &IWifiP2PPeer::staticMetaObject,
        QMetaType::metaObjectForType(qMetaTypeId<Qt::GlobalColor>())};
    return list;
}

constexpr QMetaType::TypeFlags ObjectFlags = QMetaType::PointerToQObject | QMetaType::SharedPointerToQObject |
    QMetaType::WeakPointerToQObject | QMetaType::TrackingPointerToQObject;

QString quoted(const QString &text)
{
    QString escaped = text;
    escaped.replace(QLatin1Char('\\'), QLatin1String("\\\\")).replace(QLatin1Char('"'), QLatin1String("\\\""));
    return QLatin1Char('"') + escaped + QLatin1Char('"');
}

// The enum of a registered type: Q_ENUM types, and QFlags types by name.
QMetaEnum enumOfType(int typeId)
{
    if (typeId < QMetaType::User || (QMetaType::typeFlags(typeId) & (ObjectFlags | QMetaType::IsGadget))) {
        return QMetaEnum();
    }
    return ValueText::findEnum(QByteArray(QMetaType::typeName(typeId)));
}

int readInteger(const void *data, int size)
{
    switch (size) {
    case 1:
        return *static_cast<const qint8 *>(data);
    case 2:
        return *static_cast<const qint16 *>(data);
    case 8:
        return int(*static_cast<const qint64 *>(data));
    default:
        return *static_cast<const int *>(data);
    }
}

QMetaEnum enumIn(const QMetaObject *metaObject, const QByteArray &scope, const QByteArray &name)
{
    if (!metaObject || !ValueText::inScope(metaObject->className(), scope)) {
        return QMetaEnum();
    }
    for (int i = 0; i < metaObject->enumeratorCount(); ++i) {
        const QMetaEnum e = metaObject->enumerator(i);
        // A Q_FLAG is found under its flags name and under its enum's name.
        if (name == e.name() || name == e.enumName()) {
            return e;
        }
    }
    return QMetaEnum();
}

} // namespace

bool ValueText::inScope(const QByteArray &className, const QByteArray &scope)
{
    return scope.isEmpty() || className == scope || className.endsWith("::" + scope);
}

QMetaEnum ValueText::findEnum(const QByteArray &typeName, const QMetaObject *context)
{
    QByteArray name = Reflection::bareType(typeName);
    if (name.startsWith("QFlags<") && name.endsWith('>')) {
        name = name.mid(7, name.size() - 8);
    }
    if (name.isEmpty() || name.endsWith('*') || name.contains('<')) {
        return QMetaEnum();
    }
    const int split = name.lastIndexOf("::");
    const QByteArray scope = split < 0 ? QByteArray() : name.left(split);
    const QByteArray enumName = split < 0 ? name : name.mid(split + 2);

    const int typeId = QMetaType::type(name.constData());
    if (typeId != QMetaType::UnknownType) {
        const QMetaEnum e = enumIn(QMetaType::metaObjectForType(typeId), scope, enumName);
        if (e.isValid()) {
            return e;
        }
    }
    for (const QMetaObject *m = context; m; m = m->superClass()) {
        const QMetaEnum e = enumIn(m, scope, enumName);
        if (e.isValid()) {
            return e;
        }
    }
    // Without a class name only the context may answer: an enum name alone is ambiguous.
    if (scope.isEmpty()) {
        return QMetaEnum();
    }
    for (const QMetaObject *m : knownMetaObjects()) {
        const QMetaEnum e = enumIn(m, scope, enumName);
        if (e.isValid()) {
            return e;
        }
    }
    return QMetaEnum();
}

QString ValueText::enumText(const QMetaEnum &enumerator, int value)
{
    if (!enumerator.isFlag()) {
        const char *key = enumerator.valueToKey(value);
        return key ? QString::fromLatin1(key) : QString::number(value);
    }
    // A key for the whole value wins (F_NOFLAGS for 0, F_ALL for every bit).
    for (int i = 0; i < enumerator.keyCount(); ++i) {
        if (enumerator.value(i) == value) {
            return QString::fromLatin1(enumerator.key(i));
        }
    }
    QStringList names;
    uint covered = 0;
    for (int i = 0; i < enumerator.keyCount(); ++i) {
        const uint bits = uint(enumerator.value(i));
        if (bits != 0 && bits != ~0u && (uint(value) & bits) == bits) {
            names.append(QString::fromLatin1(enumerator.key(i)));
            covered |= bits;
        }
    }
    const uint rest = uint(value) & ~covered;
    if (rest != 0 || names.isEmpty()) {
        names.append(QStringLiteral("0x%1").arg(rest, 0, 16));
    }
    return names.join(QLatin1Char('|'));
}

QString ValueText::typeName(int typeId, const QByteArray &declared, const QMetaEnum &enumerator)
{
    if (enumerator.isValid()) {
        return QString::fromLatin1(enumerator.name());
    }
    return Reflection::shortType(typeId != QMetaType::UnknownType ? QByteArray(QMetaType::typeName(typeId)) : declared);
}

QString ValueText::objectName(const QObject *object, const ObjectNamer *namer)
{
    if (!object) {
        return QStringLiteral("null");
    }
    if (namer) {
        const QString name = namer->nameOf(object);
        if (!name.isEmpty()) {
            return name;
        }
    }
    if (const auto *device = qobject_cast<const IDevice *>(object)) {
        return DeviceNames::name(device->id());
    }
    return Reflection::shortClassName(object);
}

bool ValueText::holdsObject(int typeId)
{
    return typeId == QMetaType::QObjectStar || (QMetaType::typeFlags(typeId) & ObjectFlags);
}

QObject *ValueText::objectOf(const QVariant &value)
{
    const int typeId = value.userType();
    if (!holdsObject(typeId)) {
        return nullptr;
    }
    if (typeId == QMetaType::QObjectStar || (QMetaType::typeFlags(typeId) & QMetaType::PointerToQObject)) {
        return *static_cast<QObject *const *>(value.constData());
    }
    // Smart pointers convert through the converter Qt registers with their type.
    return value.canConvert<QObject *>() ? value.value<QObject *>() : nullptr;
}

int ValueText::enumValue(const QVariant &value)
{
    const int typeId = value.userType();
    if (typeId >= QMetaType::User && value.constData()) {
        return readInteger(value.constData(), QMetaType::sizeOf(typeId));
    }
    return value.toInt();
}

int ValueText::readEnum(const void *data, int typeId)
{
    return readInteger(data, typeId == QMetaType::UnknownType ? int(sizeof(int)) : QMetaType::sizeOf(typeId));
}

QString ValueText::format(const QVariant &value, const QMetaEnum &enumerator, const ObjectNamer *namer)
{
    if (!value.isValid()) {
        return QStringLiteral("(none)");
    }
    if (enumerator.isValid()) {
        return enumText(enumerator, enumValue(value));
    }
    const int typeId = value.userType();
    const QMetaEnum ownEnum = enumOfType(typeId);
    if (ownEnum.isValid()) {
        return enumText(ownEnum, enumValue(value));
    }
    switch (typeId) {
    case QMetaType::Bool:
        return value.toBool() ? QStringLiteral("true") : QStringLiteral("false");
    case QMetaType::QString:
        return quoted(value.toString());
    case QMetaType::QByteArray:
        return quoted(QString::fromUtf8(value.toByteArray()));
    case QMetaType::Double:
    case QMetaType::Float:
        return QString::number(value.toDouble(), 'g', 12);
    case QMetaType::QStringList: {
        QStringList items;
        for (const QString &item : value.toStringList()) {
            items.append(quoted(item));
        }
        return QLatin1Char('[') + items.join(QLatin1String(", ")) + QLatin1Char(']');
    }
    default:
        break;
    }
    if (holdsObject(typeId)) {
        return objectName(objectOf(value), namer);
    }
    if (QMetaType::typeFlags(typeId) & QMetaType::IsGadget) {
        const QMetaObject *metaObject = QMetaType::metaObjectForType(typeId);
        QStringList fields;
        for (int i = 0; metaObject && i < metaObject->propertyCount(); ++i) {
            const QMetaProperty p = metaObject->property(i);
            fields.append(QStringLiteral("%1: %2").arg(
                QString::fromLatin1(p.name()), format(p.readOnGadget(value.constData()), p.enumerator(), namer)));
        }
        return QLatin1Char('{') + fields.join(QLatin1String(", ")) + QLatin1Char('}');
    }
    if (value.canConvert<QVariantMap>()) {
        QStringList fields;
        const QAssociativeIterable map = value.value<QAssociativeIterable>();
        for (auto it = map.begin(); it != map.end(); ++it) {
            fields.append(QStringLiteral("%1: %2").arg(it.key().toString(), format(it.value(), QMetaEnum(), namer)));
        }
        return QLatin1Char('{') + fields.join(QLatin1String(", ")) + QLatin1Char('}');
    }
    if (value.canConvert<QVariantList>()) {
        QStringList items;
        for (const QVariant &item : value.value<QSequentialIterable>()) {
            items.append(format(item, QMetaEnum(), namer));
        }
        return QLatin1Char('[') + items.join(QLatin1String(", ")) + QLatin1Char(']');
    }
    if (value.canConvert<QString>()) {
        return value.toString();
    }
    return QStringLiteral("<%1>").arg(QString::fromLatin1(value.typeName()));
}

QJsonValue ValueText::toJson(const QVariant &value, const QMetaEnum &enumerator, const ObjectNamer *namer)
{
    if (!value.isValid()) {
        return QJsonValue();
    }
    const int typeId = value.userType();
    if (enumerator.isValid() || enumOfType(typeId).isValid()) {
        return format(value, enumerator);
    }
    if (isIntegral(typeId)) {
        return typeId == QMetaType::ULongLong || typeId == QMetaType::ULong ? QJsonValue(value.toDouble())
                                                                            : QJsonValue(value.toLongLong());
    }
    switch (typeId) {
    case QMetaType::Bool:
        return value.toBool();
    case QMetaType::Double:
    case QMetaType::Float: {
        const double d = value.toDouble();
        return std::isfinite(d) ? QJsonValue(d) : QJsonValue();
    }
    case QMetaType::QString:
        return value.toString();
    case QMetaType::QByteArray:
        return QString::fromUtf8(value.toByteArray());
    case QMetaType::QStringList:
        return QJsonArray::fromStringList(value.toStringList());
    default:
        break;
    }
    if (holdsObject(typeId)) {
        QObject *object = objectOf(value);
        return object ? QJsonValue(objectName(object, namer)) : QJsonValue();
    }
    if (QMetaType::typeFlags(typeId) & QMetaType::IsGadget) {
        QJsonObject fields;
        const QMetaObject *metaObject = QMetaType::metaObjectForType(typeId);
        for (int i = 0; metaObject && i < metaObject->propertyCount(); ++i) {
            const QMetaProperty p = metaObject->property(i);
            fields.insert(
                QString::fromLatin1(p.name()), toJson(p.readOnGadget(value.constData()), p.enumerator(), namer));
        }
        return fields;
    }
    if (value.canConvert<QVariantMap>()) {
        QJsonObject fields;
        const QAssociativeIterable map = value.value<QAssociativeIterable>();
        for (auto it = map.begin(); it != map.end(); ++it) {
            fields.insert(it.key().toString(), toJson(it.value(), QMetaEnum(), namer));
        }
        return fields;
    }
    if (value.canConvert<QVariantList>()) {
        QJsonArray items;
        for (const QVariant &item : value.value<QSequentialIterable>()) {
            items.append(toJson(item, QMetaEnum(), namer));
        }
        return items;
    }
    return format(value, QMetaEnum(), namer);
}

} // namespace VantixControl

#include "valuetext.h"

#include "devicenames.h"

#include <vantix/idevice.h>

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
#include <limits>

namespace {

QList<const QMetaObject *> &knownMetaObjects()
{
    // Qt's namespace, for Qt::GlobalColor and the other enums of Qt.
    static QList<const QMetaObject *> list{
        &TQ_SPAPI::IDevice::staticMetaObject, QMetaType::metaObjectForType(qMetaTypeId<Qt::GlobalColor>())};
    return list;
}

std::function<QString(const QObject *)> &namer()
{
    static std::function<QString(const QObject *)> f;
    return f;
}

constexpr QMetaType::TypeFlags ObjectFlags = QMetaType::PointerToQObject | QMetaType::SharedPointerToQObject |
    QMetaType::WeakPointerToQObject | QMetaType::TrackingPointerToQObject;

QString shortClassName(const QMetaObject *metaObject)
{
    const QString name = QString::fromLatin1(metaObject->className());
    return name.mid(name.lastIndexOf(QLatin1Char(':')) + 1);
}

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

bool matchesScope(const QMetaObject *metaObject, const QByteArray &scope)
{
    if (scope.isEmpty()) {
        return true;
    }
    const QByteArray className(metaObject->className());
    return className == scope || className.endsWith("::" + scope);
}

QMetaEnum enumIn(const QMetaObject *metaObject, const QByteArray &scope, const QByteArray &name)
{
    if (!metaObject || !matchesScope(metaObject, scope)) {
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

bool parseInteger(const QString &text, qlonglong *value)
{
    bool ok = false;
    QString t = text.trimmed();
    const bool negative = t.startsWith(QLatin1Char('-'));
    if (negative) {
        t.remove(0, 1);
    }
    if (t.startsWith(QLatin1String("0x"), Qt::CaseInsensitive)) {
        *value = t.mid(2).toLongLong(&ok, 16);
    } else {
        *value = t.toLongLong(&ok, 10);
    }
    if (negative) {
        *value = -*value;
    }
    return ok && !t.isEmpty() && !t.startsWith(QLatin1Char('+'));
}

struct Range
{
    qlonglong low;
    qulonglong high;
};

bool integerRange(int typeId, Range *range)
{
    switch (typeId) {
    case QMetaType::Int:
        *range = {std::numeric_limits<int>::min(), qulonglong(std::numeric_limits<int>::max())};
        return true;
    case QMetaType::UInt:
        *range = {0, std::numeric_limits<uint>::max()};
        return true;
    case QMetaType::Long:
        *range = {std::numeric_limits<long>::min(), qulonglong(std::numeric_limits<long>::max())};
        return true;
    case QMetaType::ULong:
        *range = {0, std::numeric_limits<ulong>::max()};
        return true;
    case QMetaType::LongLong:
        *range = {std::numeric_limits<qlonglong>::min(), qulonglong(std::numeric_limits<qlonglong>::max())};
        return true;
    case QMetaType::ULongLong:
        *range = {0, std::numeric_limits<qulonglong>::max()};
        return true;
    case QMetaType::Short:
        *range = {std::numeric_limits<short>::min(), qulonglong(std::numeric_limits<short>::max())};
        return true;
    case QMetaType::UShort:
        *range = {0, std::numeric_limits<ushort>::max()};
        return true;
    case QMetaType::SChar:
    case QMetaType::Char:
        *range = {-128, 127};
        return true;
    case QMetaType::UChar:
        *range = {0, 255};
        return true;
    default:
        return false;
    }
}

bool parseBool(const QString &text, bool *value)
{
    const QString t = text.trimmed().toLower();
    if (t == QLatin1String("true") || t == QLatin1String("on") || t == QLatin1String("yes") ||
        t == QLatin1String("1")) {
        *value = true;
        return true;
    }
    if (t == QLatin1String("false") || t == QLatin1String("off") || t == QLatin1String("no") ||
        t == QLatin1String("0")) {
        *value = false;
        return true;
    }
    return false;
}

} // namespace

void ValueText::addMetaObject(const QMetaObject *metaObject)
{
    for (; metaObject; metaObject = metaObject->superClass()) {
        if (!knownMetaObjects().contains(metaObject)) {
            knownMetaObjects().append(metaObject);
        }
    }
}

QMetaEnum ValueText::findEnum(const QByteArray &typeName, const QMetaObject *context)
{
    QByteArray name = typeName.trimmed();
    if (name.startsWith("const ")) {
        name = name.mid(6);
    }
    if (name.endsWith('&')) {
        name.chop(1);
    }
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

void ValueText::setObjectNamer(std::function<QString(const QObject *)> f)
{
    namer() = std::move(f);
}

QString ValueText::objectName(const QObject *object)
{
    if (!object) {
        return QStringLiteral("null");
    }
    if (namer()) {
        const QString name = namer()(object);
        if (!name.isEmpty()) {
            return name;
        }
    }
    if (const auto *device = qobject_cast<const TQ_SPAPI::IDevice *>(object)) {
        return DeviceNames::name(device->id());
    }
    return shortClassName(object->metaObject());
}

bool ValueText::isIntegral(int typeId)
{
    switch (typeId) {
    case QMetaType::Int:
    case QMetaType::UInt:
    case QMetaType::Long:
    case QMetaType::ULong:
    case QMetaType::LongLong:
    case QMetaType::ULongLong:
    case QMetaType::Short:
    case QMetaType::UShort:
    case QMetaType::Char:
    case QMetaType::SChar:
    case QMetaType::UChar:
        return true;
    default:
        return false;
    }
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

QString ValueText::format(const QVariant &value, const QMetaEnum &enumerator)
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
        return objectName(objectOf(value));
    }
    if (QMetaType::typeFlags(typeId) & QMetaType::IsGadget) {
        const QMetaObject *metaObject = QMetaType::metaObjectForType(typeId);
        QStringList fields;
        for (int i = 0; metaObject && i < metaObject->propertyCount(); ++i) {
            const QMetaProperty p = metaObject->property(i);
            fields.append(QStringLiteral("%1: %2").arg(
                QString::fromLatin1(p.name()), format(p.readOnGadget(value.constData()), p.enumerator())));
        }
        return QLatin1Char('{') + fields.join(QLatin1String(", ")) + QLatin1Char('}');
    }
    if (typeId != QMetaType::QString && value.canConvert<QVariantMap>()) {
        QStringList fields;
        const QAssociativeIterable map = value.value<QAssociativeIterable>();
        for (auto it = map.begin(); it != map.end(); ++it) {
            fields.append(QStringLiteral("%1: %2").arg(it.key().toString(), format(it.value())));
        }
        return QLatin1Char('{') + fields.join(QLatin1String(", ")) + QLatin1Char('}');
    }
    if (typeId != QMetaType::QString && value.canConvert<QVariantList>()) {
        QStringList items;
        for (const QVariant &item : value.value<QSequentialIterable>()) {
            items.append(format(item));
        }
        return QLatin1Char('[') + items.join(QLatin1String(", ")) + QLatin1Char(']');
    }
    if (value.canConvert<QString>()) {
        return value.toString();
    }
    return QStringLiteral("<%1>").arg(QString::fromLatin1(value.typeName()));
}

QString ValueText::formatArgument(int typeId, const QByteArray &typeName, const void *data, const QMetaObject *context)
{
    if (!data) {
        return QStringLiteral("(none)");
    }
    if (typeId == QMetaType::UnknownType || typeId >= QMetaType::User) {
        const QMetaEnum e = findEnum(typeName, context);
        if (e.isValid()) {
            const int size = typeId == QMetaType::UnknownType ? int(sizeof(int)) : QMetaType::sizeOf(typeId);
            return enumText(e, readInteger(data, size));
        }
    }
    if (typeId == QMetaType::UnknownType) {
        return QStringLiteral("<%1>").arg(QString::fromLatin1(typeName));
    }
    return format(QVariant(typeId, data));
}

QJsonValue ValueText::toJson(const QVariant &value, const QMetaEnum &enumerator)
{
    if (!value.isValid()) {
        return QJsonValue();
    }
    const int typeId = value.userType();
    if (enumerator.isValid() || enumOfType(typeId).isValid()) {
        return format(value, enumerator);
    }
    if (isIntegral(typeId)) {
        return value.toLongLong();
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
        return object ? QJsonValue(objectName(object)) : QJsonValue();
    }
    if (QMetaType::typeFlags(typeId) & QMetaType::IsGadget) {
        QJsonObject fields;
        const QMetaObject *metaObject = QMetaType::metaObjectForType(typeId);
        for (int i = 0; metaObject && i < metaObject->propertyCount(); ++i) {
            const QMetaProperty p = metaObject->property(i);
            fields.insert(QString::fromLatin1(p.name()), toJson(p.readOnGadget(value.constData()), p.enumerator()));
        }
        return fields;
    }
    if (value.canConvert<QVariantMap>()) {
        QJsonObject fields;
        const QAssociativeIterable map = value.value<QAssociativeIterable>();
        for (auto it = map.begin(); it != map.end(); ++it) {
            fields.insert(it.key().toString(), toJson(it.value()));
        }
        return fields;
    }
    if (value.canConvert<QVariantList>()) {
        QJsonArray items;
        for (const QVariant &item : value.value<QSequentialIterable>()) {
            items.append(toJson(item));
        }
        return items;
    }
    return format(value);
}

bool ValueText::parseEnum(const QMetaEnum &enumerator, const QString &text, int *value, QString *error)
{
    const QStringList parts = enumerator.isFlag() ? text.split(QLatin1Char('|')) : QStringList{text};
    int result = 0;
    for (const QString &rawPart : parts) {
        QString part = rawPart.trimmed();
        // Qualified names are accepted: TQ_SPAPI::IDevice::F_ENABLE, Qt::red.
        const int scope = part.lastIndexOf(QLatin1String("::"));
        if (scope >= 0) {
            part = part.mid(scope + 2);
        }
        bool found = false;
        int partValue = 0;
        for (const Qt::CaseSensitivity cs : {Qt::CaseSensitive, Qt::CaseInsensitive}) {
            for (int i = 0; i < enumerator.keyCount() && !found; ++i) {
                if (part.compare(QLatin1String(enumerator.key(i)), cs) == 0) {
                    partValue = enumerator.value(i);
                    found = true;
                }
            }
            if (found) {
                break;
            }
        }
        qlonglong number = 0;
        if (!found && parseInteger(part, &number) && number >= std::numeric_limits<int>::min() &&
            number <= qlonglong(std::numeric_limits<uint>::max())) {
            partValue = int(number);
            found = true;
        }
        if (!found) {
            QStringList keys;
            for (int i = 0; i < enumerator.keyCount(); ++i) {
                keys.append(QString::fromLatin1(enumerator.key(i)));
            }
            *error = QStringLiteral("expected %1 %2%3 or a number, got \"%4\"")
                         .arg(enumerator.isFlag() ? QStringLiteral("names of") : QStringLiteral("one of"),
                             keys.join(QLatin1String(", ")),
                             enumerator.isFlag() ? QStringLiteral(" joined by |,") : QString(), rawPart.trimmed());
            return false;
        }
        result |= partValue;
    }
    *value = result;
    return true;
}

bool ValueText::parse(const QString &text, int typeId, const QByteArray &typeName, const QMetaEnum &enumerator,
    QVariant *out, QString *error)
{
    QMetaEnum e = enumerator;
    if (!e.isValid() && (typeId == QMetaType::UnknownType || typeId >= QMetaType::User)) {
        e = findEnum(typeName);
    }
    if (e.isValid()) {
        int value = 0;
        if (!parseEnum(e, text, &value, error)) {
            return false;
        }
        if (typeId != QMetaType::UnknownType && QMetaType::sizeOf(typeId) == int(sizeof(int))) {
            *out = QVariant(typeId, &value);
        } else {
            *out = value;
        }
        return true;
    }

    Range range{};
    if (integerRange(typeId, &range)) {
        qlonglong number = 0;
        const bool isUnsigned = range.low == 0;
        bool ok = parseInteger(text, &number);
        if (ok && isUnsigned && !text.trimmed().startsWith(QLatin1Char('-'))) {
            // Unsigned values beyond the signed range are still valid.
            bool unsignedOk = false;
            const qulonglong u = text.trimmed().startsWith(QLatin1String("0x"), Qt::CaseInsensitive)
                ? text.trimmed().mid(2).toULongLong(&unsignedOk, 16)
                : text.trimmed().toULongLong(&unsignedOk, 10);
            ok = unsignedOk && u <= range.high;
            if (ok) {
                QVariant v(u);
                v.convert(typeId);
                *out = v;
                return true;
            }
        } else if (ok) {
            ok = number >= range.low && (number < 0 || qulonglong(number) <= range.high);
            if (ok) {
                QVariant v(number);
                v.convert(typeId);
                *out = v;
                return true;
            }
        }
        *error = QStringLiteral("expected %1 from %2 to %3, got \"%4\"")
                     .arg(isUnsigned ? QStringLiteral("a whole number") : QStringLiteral("an integer"))
                     .arg(range.low)
                     .arg(range.high)
                     .arg(text);
        return false;
    }

    switch (typeId) {
    case QMetaType::Bool: {
        bool b = false;
        if (!parseBool(text, &b)) {
            *error = QStringLiteral("expected true or false (on/off, yes/no, 1/0), got \"%1\"").arg(text);
            return false;
        }
        *out = b;
        return true;
    }
    case QMetaType::Double:
    case QMetaType::Float: {
        bool ok = false;
        const double d = QLocale::c().toDouble(text.trimmed(), &ok);
        if (!ok) {
            *error = QStringLiteral("expected a number such as 2.5, got \"%1\"").arg(text);
            return false;
        }
        QVariant v(d);
        v.convert(typeId);
        *out = v;
        return true;
    }
    case QMetaType::QString:
    case QMetaType::QVariant:
        *out = text;
        return true;
    case QMetaType::QByteArray:
        *out = text.toUtf8();
        return true;
    case QMetaType::QStringList:
        *out = text.isEmpty() ? QStringList() : text.split(QLatin1Char(','));
        return true;
    case QMetaType::QChar:
        if (text.size() != 1) {
            *error = QStringLiteral("expected one character, got \"%1\"").arg(text);
            return false;
        }
        *out = text.at(0);
        return true;
    default:
        break;
    }

    // Anything Qt can make from text: QUrl, QDateTime, QUuid, ...
    QVariant v(text);
    if (typeId != QMetaType::UnknownType && v.canConvert(typeId) && v.convert(typeId)) {
        *out = v;
        return true;
    }
    *error = QStringLiteral("cannot make a %1 from text")
                 .arg(QString::fromLatin1(
                     typeId != QMetaType::UnknownType ? QMetaType::typeName(typeId) : typeName.constData()));
    return false;
}

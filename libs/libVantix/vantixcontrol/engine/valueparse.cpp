// Reading values typed by people: whole numbers without wrap or junk, booleans,
// enum and flag names, and the conversion to a property's own type.

#include "valuetext_p.h"

#include <QMetaEnum>
#include <QStringList>
#include <QVariant>

#include <cmath>
#include <limits>

namespace VantixControl {

namespace {
// The sign and size of a whole number written as decimal or 0x-hex digits only.
bool parseMagnitude(const QString &text, bool *negative, qulonglong *magnitude)
{
    QStringView t(text);
    *negative = t.startsWith(QLatin1Char('-'));
    if (*negative) {
        t = t.mid(1);
    }
    int base = 10;
    if (t.startsWith(QLatin1String("0x")) || t.startsWith(QLatin1String("0X"))) {
        base = 16;
        t = t.mid(2);
    }
    if (t.isEmpty()) {
        return false;
    }
    for (const QChar c : t) {
        const bool digit = c >= QLatin1Char('0') && c <= QLatin1Char('9');
        const bool hex =
            (c >= QLatin1Char('a') && c <= QLatin1Char('f')) || (c >= QLatin1Char('A') && c <= QLatin1Char('F'));
        if (!digit && !(base == 16 && hex)) {
            return false;
        }
    }
    bool ok = false;
    *magnitude = t.toString().toULongLong(&ok, base);
    return ok;
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

bool inRange(bool negative, qulonglong magnitude, const Range &range)
{
    if (!negative) {
        return magnitude <= range.high;
    }
    // -magnitude >= low, with low <= 0.
    return magnitude == 0 || (range.low < 0 && magnitude - 1 <= qulonglong(-(range.low + 1)));
}

bool parseBool(const QString &text, bool *value)
{
    const QString t = text.toLower();
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

QStringList keysOf(const QMetaEnum &enumerator)
{
    QStringList keys;
    for (int i = 0; i < enumerator.keyCount(); ++i) {
        keys.append(QString::fromLatin1(enumerator.key(i)));
    }
    return keys;
}

// A number stands for a value the enum has, or for flags a set of its bits.
bool isValidNumber(const QMetaEnum &enumerator, qlonglong number)
{
    if (number < std::numeric_limits<int>::min() || number > qlonglong(std::numeric_limits<uint>::max())) {
        return false;
    }
    const uint value = uint(number);
    if (!enumerator.isFlag()) {
        return enumerator.valueToKey(int(value)) != nullptr;
    }
    uint bits = 0;
    for (int i = 0; i < enumerator.keyCount(); ++i) {
        bits |= uint(enumerator.value(i));
    }
    return (value & ~bits) == 0;
}

bool keyValue(const QMetaEnum &enumerator, const QString &name, int *value)
{
    const QByteArray latin = name.toLatin1();
    const int scope = latin.lastIndexOf("::");
    if (scope >= 0 && !ValueText::inScope(QByteArray(enumerator.scope()), latin.left(scope))) {
        return false;
    }
    const QByteArray key = scope < 0 ? latin : latin.mid(scope + 2);
    for (int i = 0; i < enumerator.keyCount(); ++i) {
        if (key == enumerator.key(i)) {
            *value = enumerator.value(i);
            return true;
        }
    }
    return false;
}
} // namespace

bool ValueText::isIntegral(int typeId)
{
    Range range{};
    return integerRange(typeId, &range);
}

bool ValueText::isNumeric(int typeId)
{
    return isIntegral(typeId) || typeId == QMetaType::Double || typeId == QMetaType::Float;
}

bool ValueText::numberRange(int typeId, double *low, double *high)
{
    Range range{};
    if (integerRange(typeId, &range)) {
        *low = double(range.low);
        *high = double(range.high);
        return true;
    }
    if (typeId == QMetaType::Double || typeId == QMetaType::Float) {
        *high = typeId == QMetaType::Double ? std::numeric_limits<double>::max() : std::numeric_limits<float>::max();
        *low = -*high;
        return true;
    }
    return false;
}

bool ValueText::parseInteger(const QString &text, qlonglong *value)
{
    bool negative = false;
    qulonglong magnitude = 0;
    const Range range{std::numeric_limits<qlonglong>::min(), qulonglong(std::numeric_limits<qlonglong>::max())};
    if (!parseMagnitude(text, &negative, &magnitude) || !inRange(negative, magnitude, range)) {
        return false;
    }
    *value = negative ? qlonglong(0 - magnitude) : qlonglong(magnitude);
    return true;
}

bool ValueText::parseEnum(const QMetaEnum &enumerator, const QString &text, int *value, QString *error)
{
    const QStringList parts = enumerator.isFlag() ? text.split(QLatin1Char('|')) : QStringList{text};
    int result = 0;
    for (const QString &rawPart : parts) {
        const QString part = rawPart.trimmed();
        int partValue = 0;
        qlonglong number = 0;
        bool found = keyValue(enumerator, part, &partValue);
        if (!found && parseInteger(part, &number) && isValidNumber(enumerator, number)) {
            partValue = int(number);
            found = true;
        }
        if (!found) {
            const QString keys = keysOf(enumerator).join(QLatin1String(", "));
            *error = enumerator.isFlag()
                ? QStringLiteral("expected names of %1 joined by |, or a number made of their bits, got \"%2\"")
                      .arg(keys, part)
                : QStringLiteral("expected one of %1, or the number of one, got \"%2\"").arg(keys, part);
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
        bool negative = false;
        qulonglong magnitude = 0;
        if (parseMagnitude(text, &negative, &magnitude) && inRange(negative, magnitude, range)) {
            QVariant v = negative ? QVariant(qlonglong(0 - magnitude)) : QVariant(magnitude);
            v.convert(typeId);
            *out = v;
            return true;
        }
        *error = QStringLiteral("expected %1 from %2 to %3 (decimal, or hex after 0x), got \"%4\"")
                     .arg(range.low == 0 ? QStringLiteral("a whole number") : QStringLiteral("an integer"))
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
        const double d = QLocale::c().toDouble(text, &ok);
        if (!ok || !std::isfinite(d) || text.trimmed() != text) {
            *error = QStringLiteral("expected a finite number such as 2.5, got \"%1\"").arg(text);
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

} // namespace VantixControl

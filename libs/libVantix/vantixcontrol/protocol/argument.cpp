#include "argument.h"

#include <QJsonArray>

namespace VantixControl {

namespace {
struct TypeName
{
    Argument::Type type;
    const char *name;
};

// The names front ends have read since the schema's first version; a new type gets a new name.
constexpr TypeName TypeNames[] = {
    {Argument::Target, "target"},
    {Argument::Device, "device"},
    {Argument::Property, "property"},
    {Argument::Writable, "writable"},
    {Argument::Method, "method"},
    {Argument::Signal, "signal"},
    {Argument::Value, "value"},
    {Argument::Number, "number"},
    {Argument::Integer, "integer"},
    {Argument::Milliseconds, "ms"},
    {Argument::Key, "key"},
    {Argument::File, "file"},
    {Argument::Command, "command"},
    {Argument::Text, "text"},
    {Argument::DeviceType, "DeviceType"},
    {Argument::Choice, "choice"},
    {Argument::Keyword, "keyword"},
};
} // namespace

QString Argument::typeName(Type type)
{
    for (const TypeName &entry : TypeNames) {
        if (entry.type == type) {
            return QLatin1String(entry.name);
        }
    }
    return QString();
}

bool Argument::typeFromName(const QString &name, Type *type)
{
    for (const TypeName &entry : TypeNames) {
        if (name == QLatin1String(entry.name)) {
            *type = entry.type;
            return true;
        }
    }
    return false;
}

QString Argument::usage() const
{
    QString text;
    if (type == Keyword || type == Choice) {
        text = choices.join(QLatin1Char('|'));
        if (!valueName.isEmpty()) {
            text += QStringLiteral(" <%1>").arg(valueName);
        }
    } else if (repeated) {
        return QStringLiteral("[%1...]").arg(name);
    } else {
        text = optional ? name : QStringLiteral("<%1>").arg(name);
    }
    return optional ? QStringLiteral("[%1]").arg(text) : text;
}

QJsonObject Argument::toJson() const
{
    QJsonObject object{{QStringLiteral("name"), name}, {QStringLiteral("type"), typeName(type)},
        {QStringLiteral("optional"), optional || repeated}, {QStringLiteral("repeated"), repeated}};
    if (!choices.isEmpty()) {
        object.insert(QStringLiteral("choices"), QJsonArray::fromStringList(choices));
    }
    if (!valueName.isEmpty()) {
        object.insert(QStringLiteral("value"),
            QJsonObject{{QStringLiteral("name"), valueName}, {QStringLiteral("type"), typeName(valueType)}});
    }
    return object;
}

bool Argument::fromJson(const QJsonObject &object, Argument *argument)
{
    Argument read;
    read.name = object.value(QLatin1String("name")).toString();
    read.optional = object.value(QLatin1String("optional")).toBool();
    read.repeated = object.value(QLatin1String("repeated")).toBool();
    for (const QJsonValue &choice : object.value(QLatin1String("choices")).toArray()) {
        read.choices.append(choice.toString());
    }
    const QJsonObject value = object.value(QLatin1String("value")).toObject();
    read.valueName = value.value(QLatin1String("name")).toString();
    if (read.name.isEmpty() || !typeFromName(object.value(QLatin1String("type")).toString(), &read.type) ||
        (!read.valueName.isEmpty() && !typeFromName(value.value(QLatin1String("type")).toString(), &read.valueType))) {
        return false;
    }
    *argument = read;
    return true;
}

} // namespace VantixControl

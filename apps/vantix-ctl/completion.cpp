#include "completion.h"

#include <QJsonArray>

namespace {
QJsonObject findNamed(const QJsonArray &items, const QString &name)
{
    for (const QJsonValue &value : items) {
        const QJsonObject item = value.toObject();
        if (item.value(QLatin1String("name")).toString().compare(name, Qt::CaseInsensitive) == 0 ||
            (!item.value(QLatin1String("alias")).toString().isEmpty() &&
                item.value(QLatin1String("alias")).toString().compare(name, Qt::CaseInsensitive) == 0)) {
            return item;
        }
    }
    return QJsonObject();
}

QStringList namesOf(const QJsonArray &items, bool withAliases)
{
    QStringList names;
    for (const QJsonValue &value : items) {
        const QJsonObject item = value.toObject();
        names.append(item.value(QLatin1String("name")).toString());
        const QString alias = item.value(QLatin1String("alias")).toString();
        if (withAliases && !alias.isEmpty()) {
            names.append(alias);
        }
    }
    return names;
}

QJsonObject targetOf(const QJsonObject &schema, const QString &name)
{
    if (name.compare(QLatin1String("system"), Qt::CaseInsensitive) == 0) {
        return findNamed(schema.value(QLatin1String("targets")).toArray(), QStringLiteral("System"));
    }
    return findNamed(schema.value(QLatin1String("targets")).toArray(), name);
}

QStringList enumKeys(const QJsonObject &schema, const QString &type)
{
    return schema.value(QLatin1String("enums"))
        .toObject()
        .value(type)
        .toObject()
        .value(QLatin1String("keys"))
        .toObject()
        .keys();
}

QStringList forType(
    const QJsonObject &schema, const QString &type, const QStringList &words, const QStringList &choices)
{
    const QJsonArray targets = schema.value(QLatin1String("targets")).toArray();
    if (type == QLatin1String("target")) {
        return QStringList{QStringLiteral("system")} + namesOf(targets, true);
    }
    if (type == QLatin1String("device")) {
        return namesOf(schema.value(QLatin1String("devices")).toArray(), true);
    }
    if (type == QLatin1String("command")) {
        return namesOf(schema.value(QLatin1String("commands")).toArray(), false);
    }
    if (type == QLatin1String("choice")) {
        return choices;
    }
    if (type == QLatin1String("key")) {
        QStringList keys;
        for (const QJsonValue &shortcut : schema.value(QLatin1String("shortcuts")).toArray()) {
            keys.append(shortcut.toObject().value(QLatin1String("key")).toString());
        }
        return keys;
    }
    const QJsonObject target = words.size() > 1 ? targetOf(schema, words.at(1)) : QJsonObject();
    if (type == QLatin1String("property") || type == QLatin1String("writable")) {
        QStringList names;
        for (const QJsonValue &value : target.value(QLatin1String("properties")).toArray()) {
            const QJsonObject property = value.toObject();
            if (type == QLatin1String("property") || property.value(QLatin1String("writable")).toBool()) {
                names.append(property.value(QLatin1String("name")).toString());
            }
        }
        return names;
    }
    if (type == QLatin1String("method")) {
        QStringList names = namesOf(target.value(QLatin1String("methods")).toArray(), false);
        names.removeDuplicates();
        return names;
    }
    if (type == QLatin1String("value") && words.size() > 2) {
        // A property's value: its enum's names, or true and false.
        const QJsonObject property = findNamed(target.value(QLatin1String("properties")).toArray(), words.at(2));
        const QString propertyType = property.value(QLatin1String("type")).toString();
        if (propertyType == QLatin1String("bool")) {
            return {QStringLiteral("true"), QStringLiteral("false")};
        }
        return enumKeys(schema, propertyType);
    }
    if (!type.isEmpty() && schema.value(QLatin1String("enums")).toObject().contains(type)) {
        return enumKeys(schema, type);
    }
    return {};
}
} // namespace

QStringList Completion::candidates(const QJsonObject &schema, const QStringList &wordsIn)
{
    QStringList words = wordsIn;
    if (words.isEmpty()) {
        words.append(QString());
    }
    const QString partial = words.last();
    QStringList all;
    const QJsonArray commands = schema.value(QLatin1String("commands")).toArray();
    if (words.size() == 1) {
        all = namesOf(commands, false) + namesOf(schema.value(QLatin1String("debugCommands")).toArray(), false);
    } else {
        const QJsonObject command = findNamed(commands, words.first());
        const QJsonArray arguments = command.value(QLatin1String("arguments")).toArray();
        const int index = words.size() - 2;
        QJsonObject argument;
        if (index < arguments.size()) {
            argument = arguments.at(index).toObject();
        } else if (!arguments.isEmpty() && arguments.last().toObject().value(QLatin1String("repeated")).toBool()) {
            argument = arguments.last().toObject();
        }
        QStringList choices;
        for (const QJsonValue &choice : argument.value(QLatin1String("choices")).toArray()) {
            choices.append(choice.toString());
        }
        all = forType(schema, argument.value(QLatin1String("type")).toString(), words, choices);
        if (words.first() == QLatin1String("expect") && index == 1) {
            all += QStringList{QStringLiteral("present"), QStringLiteral("absent"), QStringLiteral("emitted")};
        }
    }
    QStringList result;
    for (const QString &candidate : qAsConst(all)) {
        if (candidate.startsWith(partial, Qt::CaseInsensitive) && !result.contains(candidate)) {
            result.append(candidate);
        }
    }
    return result;
}

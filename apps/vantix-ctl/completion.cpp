#include "completion.h"

#include <vantixcontrol/protocol/argument.h>

#include <QJsonArray>

using VantixControl::Argument;

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

// A command's forms, each a list of arguments; a schema without forms gives its one list.
QList<QVector<Argument>> formsOf(const QJsonObject &command)
{
    QJsonArray lists;
    for (const QJsonValue &form : command.value(QLatin1String("forms")).toArray()) {
        lists.append(form.toObject().value(QLatin1String("arguments")));
    }
    if (lists.isEmpty()) {
        lists.append(command.value(QLatin1String("arguments")));
    }
    QList<QVector<Argument>> forms;
    for (const QJsonValue &list : lists) {
        QVector<Argument> form;
        for (const QJsonValue &value : list.toArray()) {
            Argument argument;
            // A type this client does not know yet is offered as plain text.
            if (!Argument::fromJson(value.toObject(), &argument)) {
                argument.name = value.toObject().value(QLatin1String("name")).toString();
                argument.type = Argument::Text;
            }
            form.append(argument);
        }
        forms.append(form);
    }
    return forms;
}

bool isChoice(const Argument &argument, const QString &word)
{
    for (const QString &choice : argument.choices) {
        if (choice.compare(word, Qt::CaseInsensitive) == 0) {
            return true;
        }
    }
    return false;
}

// What may stand at the place of the word being typed, after the complete
// words[j...] have filled form[i...]; as the engine fits a line, optional
// arguments may be left out and a keyword takes only its own words.
void nextArguments(const QVector<Argument> &form, int i, const QStringList &words, int j, QList<Argument> *next)
{
    if (i == form.size()) {
        return;
    }
    const Argument &a = form.at(i);
    if (j == words.size() || a.repeated) {
        next->append(a);
        if (a.optional && !a.repeated) {
            nextArguments(form, i + 1, words, j, next);
        }
        return;
    }
    if (a.type != Argument::Keyword || isChoice(a, words.at(j))) {
        if (a.valueName.isEmpty()) {
            nextArguments(form, i + 1, words, j + 1, next);
        } else if (j + 1 == words.size()) {
            Argument value;
            value.name = a.valueName;
            value.type = a.valueType;
            next->append(value);
        } else {
            nextArguments(form, i + 1, words, j + 2, next);
        }
    }
    if (a.optional) {
        nextArguments(form, i + 1, words, j, next);
    }
}

/// What an argument of @p type offers; @p words are the line's words (the command first).
QStringList forType(const QJsonObject &schema, const Argument &argument, const QStringList &words)
{
    const QJsonObject target = words.size() > 1 ? targetOf(schema, words.at(1)) : QJsonObject();
    switch (argument.type) {
    case Argument::Target:
        return QStringList{QStringLiteral("system")} + namesOf(schema.value(QLatin1String("targets")).toArray(), true);
    case Argument::Device:
        return namesOf(schema.value(QLatin1String("devices")).toArray(), true);
    case Argument::Command:
        return namesOf(schema.value(QLatin1String("commands")).toArray(), false) +
            namesOf(schema.value(QLatin1String("debugCommands")).toArray(), false);
    case Argument::Choice:
    case Argument::Keyword:
        return argument.choices;
    case Argument::Key: {
        QStringList keys;
        for (const QJsonValue &shortcut : schema.value(QLatin1String("shortcuts")).toArray()) {
            keys.append(shortcut.toObject().value(QLatin1String("key")).toString());
        }
        return keys;
    }
    case Argument::Property:
    case Argument::Writable: {
        QStringList names;
        for (const QJsonValue &value : target.value(QLatin1String("properties")).toArray()) {
            const QJsonObject property = value.toObject();
            if (argument.type == Argument::Property || property.value(QLatin1String("writable")).toBool()) {
                names.append(property.value(QLatin1String("name")).toString());
            }
        }
        return names;
    }
    case Argument::Method:
        return namesOf(target.value(QLatin1String("methods")).toArray(), false);
    case Argument::Signal:
        return namesOf(target.value(QLatin1String("signals")).toArray(), false);
    case Argument::Value: {
        // A property's value: its enum's names, or true and false.
        const QJsonObject property = words.size() > 2
            ? findNamed(target.value(QLatin1String("properties")).toArray(), words.at(2))
            : QJsonObject();
        const QString propertyType = property.value(QLatin1String("type")).toString();
        if (propertyType == QLatin1String("bool")) {
            return {QStringLiteral("true"), QStringLiteral("false")};
        }
        return enumKeys(schema, propertyType);
    }
    case Argument::DeviceType:
        return enumKeys(schema, Argument::typeName(Argument::DeviceType));
    case Argument::Number:
    case Argument::Integer:
    case Argument::Milliseconds:
    case Argument::File:
    case Argument::Text:
        // Nothing to offer: a number, or a file name the shell completes.
        break;
    }
    return {};
}

// A debug command's next comma-separated argument, where it is a choice: "setbatteryfuel," gives ",1" and ",2".
QStringList debugArguments(const QJsonObject &schema, const QString &partial)
{
    const int comma = partial.lastIndexOf(QLatin1Char(','));
    const QStringList pieces = partial.split(QLatin1Char(','));
    const QJsonObject command = findNamed(schema.value(QLatin1String("debugCommands")).toArray(), pieces.first());
    const QVector<Argument> form = formsOf(command).value(0);
    const int index = pieces.size() - 2;
    QStringList result;
    if (index < form.size() && form.at(index).type == Argument::Choice) {
        for (const QString &choice : form.at(index).choices) {
            result.append(partial.left(comma + 1) + choice);
        }
    }
    return result;
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
    if (words.size() == 1 && partial.contains(QLatin1Char(','))) {
        all = debugArguments(schema, partial);
    } else if (words.size() == 1) {
        all = namesOf(commands, false) + namesOf(schema.value(QLatin1String("debugCommands")).toArray(), false);
    } else {
        const QStringList complete = words.mid(1, words.size() - 2);
        for (const QVector<Argument> &form : formsOf(findNamed(commands, words.first()))) {
            QList<Argument> next;
            nextArguments(form, 0, complete, 0, &next);
            for (const Argument &argument : qAsConst(next)) {
                all += forType(schema, argument, words);
            }
        }
    }
    QStringList result;
    for (const QString &candidate : qAsConst(all)) {
        // Names are not case-sensitive: "system" and "System" are one.
        if (candidate.startsWith(partial, Qt::CaseInsensitive) && !result.contains(candidate, Qt::CaseInsensitive)) {
            result.append(candidate);
        }
    }
    return result;
}

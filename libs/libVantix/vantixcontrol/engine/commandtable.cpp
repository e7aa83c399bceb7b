#include "commandtable_p.h"

#include "devicenames_p.h"
#include "keynames_p.h"
#include "session_p.h"
#include "valuetext_p.h"

#include <QDir>
#include <QLocale>

#include <cmath>
#include <limits>

namespace VantixControl {

namespace {
using A = Argument;

QString choiceOf(const Argument &argument, const QString &word)
{
    for (const QString &choice : argument.choices) {
        if (choice.compare(word, Qt::CaseInsensitive) == 0) {
            return choice;
        }
    }
    return QString();
}

// Fits words[j...] to form[i...]. An optional argument takes its word when
// the rest still fits without it; a keyword takes only its own words.
bool fit(const Form &form, int i, const QStringList &words, int j, QHash<QString, QStringList> *bound)
{
    if (i == form.size()) {
        return j == words.size();
    }
    const Argument &a = form.at(i);
    if (a.repeated) {
        if (j < words.size()) {
            bound->insert(a.name, words.mid(j));
        }
        return true;
    }
    const int used = a.valueName.isEmpty() ? 1 : 2;
    const bool takes = j + used <= words.size() && (a.type != A::Keyword || !choiceOf(a, words.at(j)).isEmpty());
    if (takes && fit(form, i + 1, words, j + used, bound)) {
        bound->insert(a.name, {words.at(j)});
        if (used == 2) {
            bound->insert(a.valueName, {words.at(j + 1)});
        }
        return true;
    }
    return a.optional && fit(form, i + 1, words, j, bound);
}

QString alternatives(const QStringList &choices)
{
    if (choices.size() < 2) {
        return choices.value(0);
    }
    return choices.mid(0, choices.size() - 1).join(QLatin1String(", ")) + QStringLiteral(" or ") + choices.last();
}

bool isCommand(const CommandTable &table, const QString &word)
{
    return table.find(word) || debugCommand(word);
}

// Checks @p word as a @p type named @p name; its converted value, if it has one, goes to @p value.
bool check(Argument::Type type, const Argument &argument, const QString &name, const QString &word,
    const CommandTable &table, const QString &folder, QVariant *value, Reply *refusal)
{
    const auto bad = [refusal, &name](const QString &what) {
        *refusal = Reply::failure(ErrorClass::BadValue, QStringLiteral("%1: %2").arg(name, what));
        return false;
    };
    switch (type) {
    case A::Integer:
    case A::Milliseconds: {
        qlonglong number = 0;
        if (type == A::Integer && !ValueText::parseInteger(word, &number)) {
            return bad(QStringLiteral("expected a whole number, got \"%1\"").arg(word));
        }
        if (type == A::Milliseconds &&
            (!ValueText::parseInteger(word, &number) || number < 0 || number > std::numeric_limits<int>::max())) {
            return bad(QStringLiteral("expected a whole number of milliseconds from 0 to %1, got \"%2\"")
                           .arg(std::numeric_limits<int>::max())
                           .arg(word));
        }
        *value = number;
        return true;
    }
    case A::Number: {
        bool ok = false;
        const double number = QLocale::c().toDouble(word, &ok);
        if (!ok || !std::isfinite(number)) {
            return bad(QStringLiteral("expected a finite number such as 2.5, got \"%1\"").arg(word));
        }
        *value = number;
        return true;
    }
    case A::Choice:
    case A::Keyword: {
        const QString choice = choiceOf(argument, word);
        if (choice.isEmpty()) {
            return bad(QStringLiteral("expected %1, got \"%2\"").arg(alternatives(argument.choices), word));
        }
        *value = choice;
        return true;
    }
    case A::Device: {
        TQ_SPAPI::IDevice::DeviceId id = TQ_SPAPI::IDevice::ID_UNKNOWN_DEV;
        if (!DeviceNames::parse(word, &id)) {
            *refusal = Reply::failure(ErrorClass::UnknownTarget,
                QStringLiteral("unknown device \"%1\"; expected an id name, number or alias").arg(word));
            return false;
        }
        *value = int(id);
        return true;
    }
    case A::DeviceType: {
        int bits = 0;
        QString error;
        if (!ValueText::parseEnum(QMetaEnum::fromType<TQ_SPAPI::IDevice::DeviceType>(), word, &bits, &error)) {
            return bad(error);
        }
        *value = bits;
        return true;
    }
    case A::Key: {
        int code = 0;
        Qt::KeyboardModifiers modifiers;
        QString error;
        if (!KeyNames::parse(word, &code, &modifiers, &error)) {
            *refusal = Reply::failure(ErrorClass::BadValue, error);
            return false;
        }
        return true;
    }
    case A::Command:
        if (!isCommand(table, word.toLower())) {
            *refusal = Reply::failure(
                ErrorClass::UnknownCommand, QStringLiteral("no command \"%1\"; help lists the commands").arg(word));
            return false;
        }
        *value = word.toLower();
        return true;
    case A::File:
        if (word.isEmpty()) {
            return bad(QStringLiteral("a file name is needed"));
        }
        // The client's folder, where the user typed the name, not the application's.
        *value = QDir::cleanPath((folder.isEmpty() ? QDir::current() : QDir(folder)).absoluteFilePath(word));
        return true;
    case A::Target:
    case A::Property:
    case A::Writable:
    case A::Method:
    case A::Signal:
    case A::Value:
    case A::Text:
        // Names of what exists now and values of their types: the command looks them up.
        return true;
    }
    return true;
}
} // namespace

QStringList CommandEntry::usageLines() const
{
    QStringList lines;
    for (const Form &form : forms) {
        QString usage = name;
        for (const Argument &argument : form) {
            usage += QLatin1Char(' ') + argument.usage();
        }
        lines.append(usage);
    }
    return lines;
}

CommandTable::CommandTable()
{
#define VANTIX_COMMAND(name) add##name(*this);
#include "commands/commandlist_p.h"
#undef VANTIX_COMMAND
}

void CommandTable::add(const CommandEntry &entry)
{
    m_described = QJsonArray();
    for (CommandEntry &command : m_commands) {
        if (command.name == entry.name) {
            command = entry;
            return;
        }
    }
    m_commands.append(entry);
}

const CommandEntry *CommandTable::find(const QString &name) const
{
    for (const CommandEntry &command : m_commands) {
        if (command.name == name) {
            return &command;
        }
    }
    return nullptr;
}

bool bindArguments(const CommandEntry &command, const CommandTable &table, const QString &folder,
    Invocation *invocation, Reply *refusal)
{
    for (int f = 0; f < command.forms.size(); ++f) {
        const Form &form = command.forms.at(f);
        QHash<QString, QStringList> bound;
        if (!fit(form, 0, invocation->args, 0, &bound)) {
            continue;
        }
        invocation->form = f;
        invocation->bound = bound;
        for (const Argument &argument : form) {
            const QStringList words = bound.value(argument.name);
            for (const QString &word : words) {
                QVariant value;
                if (!check(argument.type, argument, argument.name, word, table, folder, &value, refusal)) {
                    return false;
                }
                if (value.isValid()) {
                    invocation->values.insert(argument.name, value);
                }
            }
            if (!argument.valueName.isEmpty() && bound.contains(argument.valueName)) {
                QVariant value;
                if (!check(argument.valueType, argument, argument.name, bound.value(argument.valueName).first(), table,
                        folder, &value, refusal)) {
                    return false;
                }
                invocation->values.insert(argument.valueName, value);
            }
        }
        return true;
    }
    *refusal = Reply::failure(
        ErrorClass::BadRequest, QStringLiteral("usage: ") + command.usageLines().join(QLatin1String(" | ")));
    return false;
}

} // namespace VantixControl

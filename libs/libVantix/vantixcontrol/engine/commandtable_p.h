#ifndef VANTIXCONTROL_COMMANDTABLE_P_H
#define VANTIXCONTROL_COMMANDTABLE_P_H

#include "argument.h"
#include "reply.h"

#include <vantix/vantix_private_export.h>

#include <QHash>
#include <QJsonArray>
#include <QList>
#include <QString>
#include <QStringList>
#include <QVariant>
#include <QVector>

#include <functional>

namespace VantixControl {

class SessionPrivate;
class TimedJob;

/// One way to write a command: its arguments in order.
using Form = QVector<Argument>;

inline Argument required(const QString &name, Argument::Type type, const QStringList &choices = {})
{
    Argument a;
    a.name = name;
    a.type = type;
    a.choices = choices;
    return a;
}

inline Argument optional(const QString &name, Argument::Type type, const QStringList &choices = {})
{
    Argument a = required(name, type, choices);
    a.optional = true;
    return a;
}

inline Argument repeated(const QString &name, Argument::Type type)
{
    Argument a = optional(name, type);
    a.repeated = true;
    return a;
}

/// A word written as it is: "stop", one of the operators, "--force"; named by @p name.
inline Argument keyword(const QString &name, const QStringList &words, bool isOptional = false)
{
    Argument a = required(name, Argument::Keyword, words);
    a.optional = isOptional;
    return a;
}

/// An optional keyword with a value after it: "[within <ms>]".
inline Argument keywordWithValue(const QString &word, const QString &valueName, Argument::Type valueType)
{
    Argument a = keyword(word, {word}, true);
    a.valueName = valueName;
    a.valueType = valueType;
    return a;
}

/**
 * What a command's handler gets: the session it runs in, the words after
 * the command, and those words bound to the arguments of the form they
 * matched, already checked against their types. Numbers come converted and
 * file names absolute.
 */
struct Invocation
{
    Invocation(SessionPrivate &session, const QStringList &args)
        : session(session)
        , args(args)
    {
    }

    SessionPrivate &session;
    QStringList args;
    /// The index of the form the words matched.
    int form = 0;
    /// The words by argument name (a keyword's value under its value's name).
    QHash<QString, QStringList> bound;
    /// Converted values by argument name: qlonglong, double, an absolute path, a lower-case word.
    QHash<QString, QVariant> values;

    bool has(const QString &name) const { return bound.contains(name); }
    QString word(const QString &name) const { return bound.value(name).value(0); }
    QStringList words(const QString &name) const { return bound.value(name); }
    qlonglong integer(const QString &name) const { return values.value(name).toLongLong(); }
    double number(const QString &name) const { return values.value(name).toDouble(); }
    /// The absolute path of a file argument, or the lower-case keyword, choice or command.
    QString text(const QString &name) const { return values.value(name).toString(); }
};

using Done = std::function<void(const Reply &)>;

/**
 * A console command: the one place its name, forms, help and handler are
 * declared. help, describe, completion and the session's checks all read
 * it. Commands that take time (wait, ramp, expect) make a job instead of an
 * answer; the session starts it.
 */
struct CommandEntry
{
    QString name;
    /// The ways to write it, tried in order; the first one the words fit is used.
    QVector<Form> forms{Form()};
    QString help;
    /// A few words for a button.
    QString label;
    /// It only reads: recordings leave it out.
    bool readOnly = false;
    /// Registered by the program hosting the engine rather than built in.
    bool host = false;
    std::function<Reply(Invocation &)> run;
    /// A job, not started, or null with the reason in @p refusal.
    std::function<TimedJob *(Invocation &, Reply *refusal)> job;

    /// One line per form: "get <target> <property>".
    QStringList usageLines() const;
};

/// The console commands of one engine, in the order help lists them.
class VANTIX_PRIVATE_EXPORT CommandTable
{
public:
    /// The built-in commands.
    CommandTable();

    /// Adds @p entry, or replaces the command of the same name.
    void add(const CommandEntry &entry);
    const CommandEntry *find(const QString &name) const;
    const QList<CommandEntry> &commands() const { return m_commands; }
    /// The commands as JSON, kept once made (help and describe ask often); emptied by add().
    QJsonArray &described() const { return m_described; }

private:
    QList<CommandEntry> m_commands;
    mutable QJsonArray m_described;
};

/**
 * Binds @p words to the first form of @p command they fit and checks each
 * word against its argument's type; false with the answer to give instead:
 * the usage when no form fits, else what is wrong with which word. Relative
 * file names are taken from @p folder (the client's), else from the
 * application's own working folder.
 */
VANTIX_PRIVATE_EXPORT bool bindArguments(const CommandEntry &command, const CommandTable &table, const QString &folder,
    Invocation *invocation, Reply *refusal);

// The built-in commands, one file each (commands/<name>.cpp), declared from their list.
#define VANTIX_COMMAND(name) void add##name(CommandTable &table);
#include "commands/commandlist_p.h"
#undef VANTIX_COMMAND

} // namespace VantixControl

#endif

#ifndef VANTIXCONTROL_COMMANDTABLE_P_H
#define VANTIXCONTROL_COMMANDTABLE_P_H

#include "reply.h"

#include <vantix/vantix_private_export.h>

#include <QList>
#include <QString>
#include <QStringList>
#include <QVector>

#include <functional>

namespace VantixControl {

class SessionPrivate;

/**
 * One argument as the schema describes it. The type tells a front end what
 * to offer: "target", "device", "property", "writable", "method", "signal",
 * "value", "number", "ms", "key", "file", "command", "text", "DeviceType",
 * or "choice" with its choices.
 */
struct ArgumentInfo
{
    ArgumentInfo(const QString &name, const QString &type, bool optional = false, bool repeated = false,
        const QStringList &choices = QStringList())
        : name(name)
        , type(type)
        , optional(optional)
        , repeated(repeated)
        , choices(choices)
    {
    }

    QString name;
    QString type;
    bool optional = false;
    bool repeated = false;
    QStringList choices;
};

/// What a command's handler gets: the session it runs in and the words after the command.
struct Invocation
{
    SessionPrivate &session;
    QStringList args;
};

using Done = std::function<void(const Reply &)>;

/**
 * A console command: the one place its name, arguments, help and handler
 * are declared. help, describe, completion and the dispatcher all read it.
 * Commands that take time (wait, ramp, expect) have start instead of run and
 * report through the callback, once.
 */
struct CommandEntry
{
    QString name;
    QVector<ArgumentInfo> arguments;
    QString help;
    /// Usage lines; made from the arguments when empty.
    QStringList usages;
    std::function<Reply(Invocation &)> run;
    std::function<void(Invocation &, const Done &)> start;
    /// Registered by the program hosting the engine rather than built in.
    bool host = false;

    QStringList usageLines() const;
};

/// Every console command, built in and registered by the host, in the order help lists them.
class VANTIX_PRIVATE_EXPORT CommandTable
{
public:
    static CommandTable &instance();

    /// Adds @p entry, or replaces the command of the same name.
    void add(const CommandEntry &entry);
    const CommandEntry *find(const QString &name) const;
    const QList<CommandEntry> &commands() const { return m_commands; }

private:
    CommandTable();
    QList<CommandEntry> m_commands;
};

// The built-in commands, one file each (commands/<name>.cpp).
void addDevices(CommandTable &table);
void addShow(CommandTable &table);
void addGetAndSet(CommandTable &table);
void addCall(CommandTable &table);
void addPlugAndUnplug(CommandTable &table);
void addFlightMode(CommandTable &table);
void addSysinfo(CommandTable &table);
void addKey(CommandTable &table);
void addWait(CommandTable &table);
void addRamp(CommandTable &table);
void addExpect(CommandTable &table);
void addDump(CommandTable &table);
void addRecord(CommandTable &table);
void addHelp(CommandTable &table);

} // namespace VantixControl

#endif

#include "commandtable_p.h"

namespace VantixControl {

QStringList CommandEntry::usageLines() const
{
    if (!usages.isEmpty()) {
        return usages;
    }
    QString usage = name;
    for (const ArgumentInfo &argument : arguments) {
        const QString shown = argument.choices.isEmpty() ? argument.name : argument.choices.join(QLatin1Char('|'));
        if (argument.repeated) {
            usage += QStringLiteral(" [%1...]").arg(shown);
        } else if (argument.optional) {
            usage += QStringLiteral(" [%1]").arg(shown);
        } else {
            usage += argument.choices.isEmpty() ? QStringLiteral(" <%1>").arg(shown) : QLatin1Char(' ') + shown;
        }
    }
    return {usage};
}

CommandTable &CommandTable::instance()
{
    static CommandTable table;
    return table;
}

CommandTable::CommandTable()
{
    addHelp(*this);
    addDevices(*this);
    addShow(*this);
    addGetAndSet(*this);
    addCall(*this);
    addPlugAndUnplug(*this);
    addFlightMode(*this);
    addSysinfo(*this);
    addKey(*this);
    addWait(*this);
    addRamp(*this);
    addExpect(*this);
    addDump(*this);
    addRecord(*this);
}

void CommandTable::add(const CommandEntry &entry)
{
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

} // namespace VantixControl

#include "commandtable_p.h"

namespace VantixControl {

QStringList CommandSpec::usageLines() const
{
    if (!usages.isEmpty()) {
        return usages;
    }
    QString usage = name;
    for (const ArgumentSpec &argument : arguments) {
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

void CommandTable::add(const CommandSpec &spec)
{
    for (CommandSpec &command : m_commands) {
        if (command.name == spec.name) {
            command = spec;
            return;
        }
    }
    m_commands.append(spec);
}

const CommandSpec *CommandTable::find(const QString &name) const
{
    for (const CommandSpec &command : m_commands) {
        if (command.name == name) {
            return &command;
        }
    }
    return nullptr;
}

} // namespace VantixControl

// help [command]: the commands, from the one table that declares them.

#include "commandtable_p.h"
#include "devicenames_p.h"
#include "schema_p.h"
#include <vantix/vantixdebug.h>

#include <QJsonArray>
#include <QJsonObject>

using TQ_SPAPI::VantixDebug;

namespace VantixControl {

namespace {
Reply help(Invocation &invocation)
{
    if (invocation.args.size() > 1) {
        return Reply::failure(ErrorClass::BadRequest, QStringLiteral("usage: help [command]"));
    }
    const QString wanted = invocation.args.value(0).toLower();
    QStringList lines;
    QJsonArray shown;
    const QJsonArray commands = Schema::commands();
    for (const QJsonValue &value : commands) {
        const QJsonObject command = value.toObject();
        if (!wanted.isEmpty() && wanted != command.value(QLatin1String("name")).toString()) {
            continue;
        }
        shown.append(command);
        for (const QJsonValue &usage : command.value(QLatin1String("usage")).toArray()) {
            lines.append(QStringLiteral("  ") + usage.toString());
        }
        lines.append(QStringLiteral("      ") + command.value(QLatin1String("help")).toString());
    }
    QStringList debugLines;
    for (const QJsonValue &value : Schema::debugCommands()) {
        const QJsonObject command = value.toObject();
        const QString name = command.value(QLatin1String("name")).toString();
        if (wanted.isEmpty() || wanted == name) {
            shown.append(command);
            debugLines.append(QStringLiteral("  %1%2")
                                  .arg(name + command.value(QLatin1String("arguments")).toString(), -36)
                                  .arg(command.value(QLatin1String("help")).toString()));
        }
    }
    if (shown.isEmpty()) {
        return Reply::failure(
            ErrorClass::UnknownCommand, QStringLiteral("no command \"%1\"; help lists the commands").arg(wanted));
    }
    if (!debugLines.isEmpty()) {
        lines.append(QStringLiteral("Debug commands, run as the \"VantixDebug\" parameter runs them:"));
        lines += debugLines;
    }
    if (wanted.isEmpty()) {
        lines.prepend(QStringLiteral("Commands, one per line, each answered with OK or KO: <reason>:"));
        QStringList keys;
        for (const QJsonValue &value : Schema::shortcuts()) {
            keys.append(value.toObject().value(QLatin1String("key")).toString());
        }
        lines.append(QStringLiteral("Keys (key <name>): ") + keys.join(QLatin1String(", ")));
        lines.append(QStringLiteral("Targets: a device by id name (ID_BATTERY_1ST), number (7) or alias; system; "
                                    "System's objects (timesettings, canmux, ...); objects named in events."));
        lines.append(QStringLiteral("Aliases: ") + DeviceNames::aliasTable().join(QLatin1String(", ")));
        lines.append(QStringLiteral("Values: numbers, true/false, text (in double quotes when it has blanks), "
                                    "enum and flag names (F_ENABLE|F_CHARGE, IDevice::F_ACTIVE), colours (red)."));
        lines.append(QStringLiteral("Scripts: one command per line, # starts a comment; the first KO ends the run."));
    }
    return Reply::success().withValue(QStringLiteral("commands"), shown).withLines(lines);
}
} // namespace

void addHelp(CommandTable &table)
{
    CommandEntry entry;
    entry.name = QStringLiteral("help");
    entry.arguments = {{QStringLiteral("command"), QStringLiteral("command"), true}};
    entry.help = QStringLiteral("the commands, or one command in detail");
    entry.run = help;
    table.add(entry);
}

} // namespace VantixControl

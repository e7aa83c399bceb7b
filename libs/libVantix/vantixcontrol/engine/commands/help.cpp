// help [command]: the commands, from the one table that declares them.

#include "commandtable_p.h"
#include "devicenames_p.h"
#include "schema_p.h"
#include "session_p.h"
#include <vantix/vantixdebug.h>

#include <QJsonArray>
#include <QJsonObject>

using TQ_SPAPI::VantixDebug;

namespace VantixControl {

namespace {
Reply help(Invocation &invocation)
{
    const QString wanted = invocation.text(QStringLiteral("command"));
    QStringList lines;
    QJsonArray shown;
    const QJsonArray commands = Schema::commands(*invocation.session.commands());
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
                                  .arg(command.value(QLatin1String("usage")).toArray().at(0).toString(), -36)
                                  .arg(command.value(QLatin1String("help")).toString()));
        }
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
        lines.append(QStringLiteral("Files (dump, record) are new files, named from the client's folder; --force "
                                    "replaces a regular file. A ramp lasts at most 24 hours."));
    }
    return Reply::success().withValue(QStringLiteral("commands"), shown).withLines(lines);
}
} // namespace

void addHelp(CommandTable &table)
{
    CommandEntry entry;
    entry.name = QStringLiteral("help");
    entry.forms = {{optional(QStringLiteral("command"), Argument::Command)}};
    entry.help = QStringLiteral("the commands, or one command in detail");
    entry.label = QStringLiteral("Help");
    entry.readOnly = true;
    entry.run = help;
    table.add(entry);
}

} // namespace VantixControl

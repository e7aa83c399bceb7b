// Lines for the debug controller ("setbatteryfuel,2,40"): run exactly as the
// "VantixDebug" parameter would run them, and answered from what the
// controller says it did, never from its log.

#include "commandtable_p.h"
#include "devicenames_p.h"
#include "session_p.h"
#include <vantix/vantixdebug.h>

using TQ_SPAPI::VantixDebug;

namespace VantixControl {

namespace {
QString commandWord(const QString &line)
{
    return line.section(QLatin1Char(','), 0, 0).trimmed().toLower();
}

const VantixDebug::CommandInfo *debugCommand(const QString &word)
{
    static const QList<VantixDebug::CommandInfo> commands = VantixDebug::commands();
    for (const VantixDebug::CommandInfo &c : commands) {
        if (c.word == word) {
            return &c;
        }
    }
    return nullptr;
}
} // namespace

bool isDebugCommand(const QString &line)
{
    // A debug command's word holds no space: a console command is told apart without a search.
    const QString word = commandWord(line);
    if (!word.contains(QLatin1Char(' ')) && debugCommand(word)) {
        return true;
    }
    // Any other comma command is the debug controller's to judge.
    const QString first = line.section(QLatin1Char(' '), 0, 0, QString::SectionSkipEmpty).toLower();
    return line.contains(QLatin1Char(',')) && !CommandTable::instance().find(first);
}

Reply runDebugCommand(const QString &line)
{
    const VantixDebug::CommandOutcome outcome = VantixDebug::instance()->execute(line);
    const QString device = DeviceNames::name(outcome.device);
    switch (outcome.result) {
    case VantixDebug::CommandApplied:
        return Reply::success();
    case VantixDebug::CommandEmpty:
        return Reply::failure(ErrorClass::BadRequest, QStringLiteral("no command word in \"%1\"").arg(line));
    case VantixDebug::CommandIllegal:
        break;
    case VantixDebug::CommandNoSystem:
        return Reply::failure(ErrorClass::Failed, QStringLiteral("no system is running; nothing changed"));
    case VantixDebug::CommandDeviceMissing:
        return Reply::failure(
            ErrorClass::UnknownTarget, QStringLiteral("%1 is not present; nothing changed").arg(device));
    case VantixDebug::CommandDevicePresent:
        return Reply::failure(ErrorClass::Failed, QStringLiteral("%1 is already plugged; nothing changed").arg(device));
    }
    const QString word = commandWord(line);
    if (const VantixDebug::CommandInfo *known = debugCommand(word)) {
        return Reply::failure(ErrorClass::BadRequest,
            QStringLiteral("illegal command: %1 needs its argument: %2").arg(known->word, known->usage));
    }
    return Reply::failure(ErrorClass::UnknownCommand,
        QStringLiteral("illegal command: the debug controller has no command \"%1\"; help lists them").arg(word));
}

} // namespace VantixControl

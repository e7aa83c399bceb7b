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
QString commandWord(const QString &text)
{
    return text.section(QLatin1Char(','), 0, 0).trimmed().toLower();
}
} // namespace

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

bool isDebugCommand(const QStringList &words, const CommandTable *commands)
{
    if (words.isEmpty()) {
        return false;
    }
    if (debugCommand(commandWord(words.first()))) {
        return true;
    }
    // Any other comma command is the debug controller's to judge.
    bool comma = false;
    for (const QString &word : words) {
        comma = comma || word.contains(QLatin1Char(','));
    }
    return comma && !(commands && commands->find(words.first().toLower()));
}

QString debugCommandText(const QStringList &words)
{
    // "setssid,My Home" is split at its blank like any line; the controller reads the blank back.
    return words.join(QLatin1Char(' '));
}

Reply runDebugCommand(const QString &text)
{
    const VantixDebug::CommandOutcome outcome = VantixDebug::instance()->execute(text);
    const QString device = DeviceNames::name(outcome.device);
    switch (outcome.result) {
    case VantixDebug::CommandApplied:
        return Reply::success();
    case VantixDebug::CommandEmpty:
        return Reply::failure(ErrorClass::BadRequest, QStringLiteral("no command word in \"%1\"").arg(text));
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
    const QString word = commandWord(text);
    if (const VantixDebug::CommandInfo *known = debugCommand(word)) {
        return Reply::failure(ErrorClass::BadRequest,
            QStringLiteral("illegal command: %1 needs its argument: %2").arg(known->word, known->usage));
    }
    return Reply::failure(ErrorClass::UnknownCommand,
        QStringLiteral("illegal command: the debug controller has no command \"%1\"; help lists them").arg(word));
}

} // namespace VantixControl

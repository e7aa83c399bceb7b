// flightmode on|off: System's own switch, with its 2 s transition.

#include "commandtable_p.h"
#include "session_p.h"

#include <vantix/system.h>

using TQ_SPAPI::System;

namespace VantixControl {

namespace {
Reply flightMode(Invocation &invocation)
{
    System *system = invocation.session.system;
    if (system->flightModeStatus().testFlag(System::FLIGHT_MODE_TRANSITION)) {
        return Reply::failure(
            ErrorClass::Failed, QStringLiteral("a flight-mode transition is running; try again when it ends"));
    }
    system->setFlightMode(invocation.text(QStringLiteral("state")) == QLatin1String("on"));
    return Reply::success();
}
} // namespace

void addFlightMode(CommandTable &table)
{
    CommandEntry entry;
    entry.name = QStringLiteral("flightmode");
    entry.forms = {
        {required(QStringLiteral("state"), Argument::Choice, {QStringLiteral("on"), QStringLiteral("off")})}};
    entry.help = QStringLiteral("enter or leave flight mode (a 2 s transition)");
    entry.label = QStringLiteral("Flight mode");
    entry.run = flightMode;
    table.add(entry);
}

} // namespace VantixControl

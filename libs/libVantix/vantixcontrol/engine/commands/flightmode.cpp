// flightmode on|off: System's own switch, with its 2 s transition.

#include "commandtable_p.h"
#include "session_p.h"
#include "valuetext_p.h"

#include <vantix/system.h>

using TQ_SPAPI::System;

namespace VantixControl {

namespace {
Reply flightMode(Invocation &invocation)
{
    QVariant value;
    QString error;
    if (invocation.args.size() != 1 ||
        !ValueText::parse(invocation.args.at(0), QMetaType::Bool, QByteArray(), QMetaEnum(), &value, &error)) {
        return Reply::failure(ErrorClass::BadRequest, QStringLiteral("usage: flightmode on|off"));
    }
    System *system = invocation.session.system;
    if (system->flightModeStatus().testFlag(System::FLIGHT_MODE_TRANSITION)) {
        return Reply::failure(
            ErrorClass::Failed, QStringLiteral("a flight-mode transition is running; try again when it ends"));
    }
    system->setFlightMode(value.toBool());
    return Reply::success();
}
} // namespace

void addFlightMode(CommandTable &table)
{
    CommandEntry entry;
    entry.name = QStringLiteral("flightmode");
    entry.arguments = {{QStringLiteral("state"), QStringLiteral("choice"), false, false,
        {QStringLiteral("on"), QStringLiteral("off")}}};
    entry.help = QStringLiteral("enter or leave flight mode (a 2 s transition)");
    entry.run = flightMode;
    table.add(entry);
}

} // namespace VantixControl

// plug <device> [type] and unplug <device>, as the debug controller plugs
// devices (HotPlug).

#include "commandtable_p.h"
#include "devicenames_p.h"
#include "hotplug_p.h"
#include "session_p.h"

#include <vantix/system.h>

using namespace TQ_SPAPI;

namespace VantixControl {

namespace {
using D = IDevice;

Reply plug(Invocation &invocation)
{
    System *system = invocation.session.system;
    const auto id = D::DeviceId(invocation.integer(QStringLiteral("device")));
    if (system->device(id)) {
        return Reply::failure(ErrorClass::Failed, QStringLiteral("%1 is already plugged").arg(DeviceNames::name(id)));
    }
    const D::DeviceType defaultType = DeviceNames::defaultType(id);
    const D::DeviceType type = invocation.has(QStringLiteral("type"))
        ? D::DeviceType(int(invocation.integer(QStringLiteral("type"))))
        : defaultType;
    HotPlug::plug(id, type, type.testFlag(D::DEVICE_DISK) ? DeviceNames::defaultPath(id) : QString());
    if (!system->device(id)) {
        return Reply::failure(ErrorClass::Failed, QStringLiteral("%1 could not be plugged").arg(DeviceNames::name(id)));
    }
    return Reply::success();
}

Reply unplug(Invocation &invocation)
{
    System *system = invocation.session.system;
    const auto id = D::DeviceId(invocation.integer(QStringLiteral("device")));
    if (!system->device(id)) {
        return Reply::failure(
            ErrorClass::UnknownTarget, QStringLiteral("%1 is not plugged").arg(DeviceNames::name(id)));
    }
    HotPlug::unplug(id);
    if (system->device(id)) {
        return Reply::failure(ErrorClass::Failed, QStringLiteral("%1 could not be removed").arg(DeviceNames::name(id)));
    }
    return Reply::success();
}
} // namespace

void addPlugAndUnplug(CommandTable &table)
{
    CommandEntry plug;
    plug.name = QStringLiteral("plug");
    plug.forms = {
        {required(QStringLiteral("device"), Argument::Device), optional(QStringLiteral("type"), Argument::DeviceType)}};
    plug.help = QStringLiteral("hot-plug a device as the debug controller would; the type flags default to the "
                               "platform's");
    plug.label = QStringLiteral("Plug");
    plug.run = VantixControl::plug;
    table.add(plug);

    CommandEntry unplug;
    unplug.name = QStringLiteral("unplug");
    unplug.forms = {{required(QStringLiteral("device"), Argument::Device)}};
    unplug.help = QStringLiteral("remove a device (a USB port takes its stick along)");
    unplug.label = QStringLiteral("Unplug");
    unplug.run = VantixControl::unplug;
    table.add(unplug);
}

} // namespace VantixControl

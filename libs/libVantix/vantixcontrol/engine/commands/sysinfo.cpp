// sysinfo: the system-information map.

#include "commandtable_p.h"
#include "session_p.h"
#include "textrenderer_p.h"

#include <vantix/system.h>

#include <QJsonObject>

namespace VantixControl {

namespace {
Reply sysinfo(Invocation &invocation)
{
    const QJsonObject info = QJsonObject::fromVariantMap(invocation.session.system->systemInfo());
    return Reply::success().withValue(QStringLiteral("map"), info).withLines(TextRenderer::keyValues(info));
}
} // namespace

void addSysinfo(CommandTable &table)
{
    CommandEntry entry;
    entry.name = QStringLiteral("sysinfo");
    entry.help = QStringLiteral("the system-information map");
    entry.label = QStringLiteral("System information");
    entry.readOnly = true;
    entry.run = sysinfo;
    table.add(entry);
}

} // namespace VantixControl

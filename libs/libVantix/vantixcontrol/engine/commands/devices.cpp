// devices: the device table.

#include "commandtable_p.h"
#include "eventwatcher_p.h"
#include "session_p.h"
#include "textrenderer_p.h"

namespace VantixControl {

namespace {
Reply devices(Invocation &invocation)
{
    const QJsonArray rows = TextRenderer::deviceRows(invocation.session.system, invocation.session.watcher);
    return Reply::success().withValue(QStringLiteral("table"), rows).withLines(TextRenderer::deviceTable(rows));
}
} // namespace

void addDevices(CommandTable &table)
{
    CommandEntry entry;
    entry.name = QStringLiteral("devices");
    entry.help = QStringLiteral("the device table: id name, number, alias, class, status, type");
    entry.label = QStringLiteral("Device table");
    entry.readOnly = true;
    entry.run = devices;
    table.add(entry);
}

} // namespace VantixControl

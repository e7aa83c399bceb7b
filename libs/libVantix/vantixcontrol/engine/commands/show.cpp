// show <target>: every property with its value, what can be called and what is signalled.

#include "commandtable_p.h"
#include "eventwatcher_p.h"
#include "schema_p.h"
#include "session_p.h"
#include "textrenderer_p.h"

namespace VantixControl {

namespace {
Reply show(Invocation &invocation)
{
    Target target;
    QString error;
    if (!invocation.session.resolve(invocation.word(QStringLiteral("target")), &target, &error)) {
        return Reply::failure(ErrorClass::UnknownTarget, error);
    }
    const QJsonObject description =
        Schema::describeObject(target.object, target.name, invocation.session.watcher, true);
    return Reply::success()
        .withValue(QStringLiteral("object"), description)
        .withLines(TextRenderer::objectDescription(description));
}
} // namespace

void addShow(CommandTable &table)
{
    CommandEntry entry;
    entry.name = QStringLiteral("show");
    entry.forms = {{required(QStringLiteral("target"), Argument::Target)}};
    entry.help = QStringLiteral("every property with its value, what can be called and what is signalled");
    entry.label = QStringLiteral("Show");
    entry.readOnly = true;
    entry.run = show;
    table.add(entry);
}

} // namespace VantixControl

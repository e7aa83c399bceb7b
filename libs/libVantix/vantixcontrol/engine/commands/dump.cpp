// dump [file]: every device's and interface object's properties as JSON.

#include "commandtable_p.h"
#include "session_p.h"
#include "textrenderer_p.h"

#include <QFile>
#include <QJsonDocument>

namespace VantixControl {

namespace {
Reply dump(Invocation &invocation)
{
    const QJsonObject state = invocation.session.q->dump();
    if (!invocation.has(QStringLiteral("file"))) {
        return Reply::success().withValue(QStringLiteral("object"), state).withLines(TextRenderer::json(state));
    }
    const QString path = invocation.text(QStringLiteral("file"));
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly | QIODevice::Truncate) ||
        file.write(QJsonDocument(state).toJson(QJsonDocument::Indented)) < 0 || !file.flush()) {
        return Reply::failure(
            ErrorClass::Failed, QStringLiteral("cannot write %1: %2").arg(file.fileName(), file.errorString()));
    }
    return Reply::success(QStringLiteral("written to ") + path).withValue(QStringLiteral("QString"), path);
}
} // namespace

void addDump(CommandTable &table)
{
    CommandEntry entry;
    entry.name = QStringLiteral("dump");
    entry.forms = {{optional(QStringLiteral("file"), Argument::File)}};
    entry.help = QStringLiteral("every device's properties as JSON, shown or written to a file");
    entry.label = QStringLiteral("Dump");
    entry.readOnly = true;
    entry.run = dump;
    table.add(entry);
}

} // namespace VantixControl

// dump [file]: every device's and interface object's properties as JSON.

#include "commandtable_p.h"
#include "session_p.h"
#include "textrenderer_p.h"

#include <QFile>
#include <QFileInfo>
#include <QJsonDocument>

namespace VantixControl {

namespace {
Reply dump(Invocation &invocation)
{
    if (invocation.args.size() > 1) {
        return Reply::failure(ErrorClass::BadRequest, QStringLiteral("usage: dump [file]"));
    }
    const QJsonObject state = invocation.session.q->dump();
    if (invocation.args.isEmpty()) {
        return Reply::success().withValue(QStringLiteral("object"), state).withLines(TextRenderer::json(state));
    }
    QFile file(invocation.args.at(0));
    if (!file.open(QIODevice::WriteOnly | QIODevice::Truncate) ||
        file.write(QJsonDocument(state).toJson(QJsonDocument::Indented)) < 0 || !file.flush()) {
        return Reply::failure(
            ErrorClass::Failed, QStringLiteral("cannot write %1: %2").arg(file.fileName(), file.errorString()));
    }
    const QString path = QFileInfo(file).absoluteFilePath();
    return Reply::success(QStringLiteral("written to ") + path).withValue(QStringLiteral("QString"), path);
}
} // namespace

void addDump(CommandTable &table)
{
    CommandEntry entry;
    entry.name = QStringLiteral("dump");
    entry.arguments = {{QStringLiteral("file"), QStringLiteral("file"), true}};
    entry.help = QStringLiteral("every device's properties as JSON, shown or written to a file");
    entry.run = dump;
    table.add(entry);
}

} // namespace VantixControl

// dump [--force] [file]: every device's and interface object's properties as JSON.

#include "commandtable_p.h"
#include "outputfile_p.h"
#include "session_p.h"
#include "textrenderer_p.h"

#include <QFile>
#include <QJsonDocument>

namespace VantixControl {

namespace {
const QString Force = QStringLiteral("--force");

Reply dump(Invocation &invocation)
{
    const QJsonObject state = invocation.session.q->dump();
    if (!invocation.has(QStringLiteral("file"))) {
        if (invocation.has(Force)) {
            return Reply::failure(ErrorClass::BadRequest, QStringLiteral("--force needs a file to replace"));
        }
        return Reply::success().withValue(QStringLiteral("object"), state).withLines(TextRenderer::json(state));
    }
    const QString path = invocation.text(QStringLiteral("file"));
    QFile file;
    QString error;
    if (!OutputFile::open(&file, path, invocation.has(Force), &error)) {
        return Reply::failure(ErrorClass::Failed, error);
    }
    const QByteArray text = QJsonDocument(state).toJson(QJsonDocument::Indented);
    if (file.write(text) != text.size() || !file.flush()) {
        return Reply::failure(ErrorClass::Failed, QStringLiteral("cannot write %1: %2").arg(path, file.errorString()));
    }
    return Reply::success(QStringLiteral("written to ") + path).withValue(QStringLiteral("QString"), path);
}
} // namespace

void addDump(CommandTable &table)
{
    CommandEntry entry;
    entry.name = QStringLiteral("dump");
    entry.forms = {{keyword(Force, {Force}, true), optional(QStringLiteral("file"), Argument::File)}};
    entry.help = QStringLiteral("every device's properties as JSON, shown or written to a new file (--force replaces "
                                "an existing one)");
    entry.label = QStringLiteral("Dump");
    entry.readOnly = true;
    entry.run = dump;
    table.add(entry);
}

} // namespace VantixControl

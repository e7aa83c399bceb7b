#include "artifacts.h"

#include "outcome.h"
#include "report.h"
#include "suite.h"

#include <QDir>
#include <QJsonDocument>
#include <QSaveFile>

namespace Artifacts {

namespace {
bool writeFile(const QDir &folder, const QString &name, const QByteArray &data, QString *error)
{
    QSaveFile file(folder.filePath(name));
    if (!file.open(QIODevice::WriteOnly) || file.write(data) != data.size() || !file.commit()) {
        *error = QStringLiteral("cannot write %1: %2").arg(folder.filePath(name), file.errorString());
        return false;
    }
    return true;
}

QByteArray lines(const QStringList &list)
{
    return list.isEmpty() ? QByteArray() : (list.join(QLatin1Char('\n')) + QLatin1Char('\n')).toUtf8();
}
} // namespace

QString folderFor(const QString &root, const Scenario &scenario)
{
    QString name = scenario.name.section(QLatin1Char('#'), 0, 0);
    if (name.endsWith(QLatin1String(".vsim"))) {
        name.chop(5);
    }
    if (scenario.run > 1) {
        name += QLatin1Char('-') + QString::number(scenario.run);
    }
    return QDir(root).filePath(name);
}

bool write(const QString &folder, const Scenario &scenario, const Outcome &outcome, QString *error)
{
    QDir dir(folder);
    if (!QDir().mkpath(folder)) {
        *error = QStringLiteral("cannot make the folder %1").arg(folder);
        return false;
    }
    QStringList result = Report::details(outcome);
    result.prepend(QStringLiteral("%1 %2").arg(
        outcome.kind == Outcome::Kind::Failed ? QStringLiteral("FAIL") : QStringLiteral("ERROR"), scenario.path));
    bool ok = writeFile(dir, QStringLiteral("result.txt"), lines(result), error) &&
        writeFile(dir, QStringLiteral("scenario.vsim"), lines(scenario.lines), error) &&
        writeFile(dir, QStringLiteral("stdout.txt"), outcome.standardOutput, error) &&
        writeFile(dir, QStringLiteral("stderr.txt"), outcome.standardError, error) &&
        writeFile(dir, QStringLiteral("events.log"), lines(outcome.events), error) &&
        writeFile(dir, QStringLiteral("messages.log"), lines(outcome.messages), error);
    if (ok && !outcome.dump.isEmpty()) {
        ok = writeFile(
            dir, QStringLiteral("state.json"), QJsonDocument(outcome.dump).toJson(QJsonDocument::Indented), error);
    } else if (ok) {
        // One from an earlier run of the same scenario would mislead.
        dir.remove(QStringLiteral("state.json"));
    }
    return ok;
}

} // namespace Artifacts

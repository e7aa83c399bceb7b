#include "suite.h"

#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QFileInfo>
#include <QRegularExpression>
#include <QSet>

#include <algorithm>

namespace Suite {

namespace {
struct Found
{
    QString path;
    QString name;
    QString group;
};

bool find(const QString &path, QList<Found> *found, QString *error)
{
    const QFileInfo info(path);
    if (!info.exists()) {
        *error = QStringLiteral("cannot read %1: no such file or folder").arg(path);
        return false;
    }
    if (!info.isDir()) {
        found->append({path, info.fileName(), info.absoluteDir().dirName()});
        return true;
    }
    const QDir folder(path);
    const QDir absolute(info.absoluteFilePath());
    QStringList names;
    // Unreadable files are listed too: reading them is an error, not a scenario silently left out.
    QDirIterator it(path, {QStringLiteral("*.vsim")}, QDir::Files | QDir::Hidden, QDirIterator::Subdirectories);
    while (it.hasNext()) {
        names.append(absolute.relativeFilePath(QFileInfo(it.next()).absoluteFilePath()));
    }
    if (names.isEmpty()) {
        *error = QStringLiteral("no scenarios (*.vsim) in %1").arg(path);
        return false;
    }
    std::sort(names.begin(), names.end());
    const QString group = QFileInfo(QDir::cleanPath(info.absoluteFilePath())).fileName();
    for (const QString &name : qAsConst(names)) {
        found->append({QDir::cleanPath(folder.path() + QLatin1Char('/') + name), name, group});
    }
    return true;
}

bool read(const QString &path, QStringList *lines, QString *error)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly | QIODevice::Text)) {
        *error = QStringLiteral("cannot read %1: %2").arg(path, file.errorString());
        return false;
    }
    *lines = QString::fromUtf8(file.readAll()).split(QLatin1Char('\n'));
    return true;
}
} // namespace

bool substitute(const QStringList &lines, const QMap<QString, QString> &defines, const QString &source,
    QStringList *substituted, QString *error)
{
    static const QRegularExpression reference(QStringLiteral("\\$\\{([A-Za-z_][A-Za-z0-9_]*)\\}"));
    substituted->clear();
    for (int i = 0; i < lines.size(); ++i) {
        const QString &line = lines.at(i);
        const bool comment = line.trimmed().startsWith(QLatin1Char('#'));
        QString result;
        int from = 0;
        QRegularExpressionMatchIterator it = reference.globalMatch(line);
        while (it.hasNext()) {
            const QRegularExpressionMatch match = it.next();
            const QString name = match.captured(1);
            result += line.midRef(from, match.capturedStart() - from);
            from = match.capturedEnd();
            if (defines.contains(name)) {
                result += defines.value(name);
            } else if (comment) {
                result += match.captured(0);
            } else {
                *error = QStringLiteral("%1:%2: ${%3} is not defined; give it with --define %3=VALUE")
                             .arg(source, QString::number(i + 1), name);
                return false;
            }
        }
        result += line.midRef(from);
        substituted->append(result);
    }
    return true;
}

bool collect(const QStringList &paths, const QMap<QString, QString> &defines, const Selection &selection,
    QList<Scenario> *scenarios, QString *error)
{
    QList<Found> found;
    for (const QString &path : paths) {
        if (!find(path, &found, error)) {
            return false;
        }
    }
    // A file named twice (on its own and in its folder) runs once, where it came first.
    QSet<QString> seen;
    QList<Found> unique;
    for (const Found &f : qAsConst(found)) {
        const QString canonical = QFileInfo(f.path).canonicalFilePath();
        if (!seen.contains(canonical)) {
            seen.insert(canonical);
            unique.append(f);
        }
    }
    // Every file is read and checked, those of other shards too: each shard of a suite fails alike.
    QList<Scenario> all;
    for (const Found &f : qAsConst(unique)) {
        QStringList lines;
        Scenario scenario{f.path, f.name, f.group, {}, 1};
        if (!read(f.path, &lines, error) || !substitute(lines, defines, f.path, &scenario.lines, error)) {
            return false;
        }
        all.append(scenario);
    }
    scenarios->clear();
    for (int i = selection.shardIndex - 1; i < all.size(); i += selection.shardCount) {
        for (int run = 1; run <= selection.repeat; ++run) {
            Scenario scenario = all.at(i);
            scenario.run = run;
            if (run > 1) {
                scenario.name += QLatin1Char('#') + QString::number(run);
            }
            scenarios->append(scenario);
        }
    }
    return true;
}

} // namespace Suite

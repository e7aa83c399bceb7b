#include "recordedrun.h"

#include <QFile>
#include <QJsonDocument>
#include <QJsonObject>
#include <QSaveFile>

#include <cmath>
#include <cstdio>

namespace VantixBench {

namespace {
QString text(const std::string &s)
{
    return QString::fromStdString(s);
}
} // namespace

bool RecordedRun::load(const std::string &path, std::string *error)
{
    m_values.clear();
    m_date.clear();
    QFile file(text(path));
    if (!file.open(QIODevice::ReadOnly)) {
        *error = file.errorString().toStdString();
        return false;
    }
    QJsonParseError parseError;
    const QJsonDocument document = QJsonDocument::fromJson(file.readAll(), &parseError);
    if (parseError.error != QJsonParseError::NoError || !document.isObject()) {
        *error = "not a JSON object: " + parseError.errorString().toStdString();
        return false;
    }
    const QJsonObject root = document.object();
    m_date = root.value(QLatin1String("date")).toString().toStdString();
    const QJsonObject figures = root.value(QLatin1String("figures")).toObject();
    for (auto it = figures.begin(); it != figures.end(); ++it) {
        const QJsonObject figure = it.value().toObject();
        const QJsonValue value = figure.value(QLatin1String("value"));
        if (value.isDouble()) {
            m_values[it.key().toStdString()] = {
                value.toDouble(), figure.value(QLatin1String("unit")).toString().toStdString()};
        }
    }
    return true;
}

int RecordedRun::comparable(const std::vector<Figure> &figures) const
{
    int n = 0;
    for (const Figure &f : figures) {
        const auto it = m_values.find(f.key);
        n += std::isfinite(f.value) && it != m_values.end() && it->second.unit == f.unit ? 1 : 0;
    }
    return n;
}

std::vector<std::string> RecordedRun::compare(const std::vector<Figure> &figures) const
{
    std::vector<std::string> warnings;
    for (const Figure &f : figures) {
        const auto it = m_values.find(f.key);
        // A figure recorded in another unit (a time, now judged as a ratio) is not comparable.
        if (it == m_values.end() || !std::isfinite(f.value) || it->second.unit != f.unit) {
            continue;
        }
        const double recorded = it->second.value;
        const double worse = f.higherIsBetter ? recorded - f.value : f.value - recorded;
        if (worse <= 0) {
            continue;
        }
        char line[512];
        if (recorded == 0) {
            // Anything above a record of nothing (a lost event, a kept object) is worse by no percentage.
            std::snprintf(line, sizeof line,
                "WARNING: %s is worse than the recorded run by %g (recorded 0, noise %.0f%%)", f.key.c_str(), worse,
                f.noise * 100);
        } else {
            const double fraction = worse / std::fabs(recorded);
            if (fraction <= f.noise) {
                continue;
            }
            std::snprintf(line, sizeof line, "WARNING: %s is worse than the recorded run by %.1f%% (noise %.0f%%)",
                f.key.c_str(), fraction * 100, f.noise * 100);
        }
        warnings.emplace_back(line);
    }
    return warnings;
}

bool RecordedRun::save(const std::string &path, const std::vector<Figure> &figures, const std::string &date,
    const std::string &load, std::string *error) const
{
    // Figures this run did not measure (a filtered run) keep their record.
    QJsonObject all;
    QFile old(text(path));
    if (old.open(QIODevice::ReadOnly)) {
        all = QJsonDocument::fromJson(old.readAll()).object().value(QLatin1String("figures")).toObject();
    }
    for (const Figure &f : figures) {
        if (!std::isfinite(f.value)) {
            continue;
        }
        all.insert(text(f.key),
            QJsonObject{{QStringLiteral("value"), f.value}, {QStringLiteral("unit"), text(f.unit)},
                {QStringLiteral("noise"), f.noise}, {QStringLiteral("higherIsBetter"), f.higherIsBetter}});
    }
    const QJsonObject root{{QStringLiteral("date"), text(date)}, {QStringLiteral("loadAverage"), text(load)},
        {QStringLiteral("figures"), all}};
    QSaveFile file(text(path));
    if (!file.open(QIODevice::WriteOnly) || file.write(QJsonDocument(root).toJson(QJsonDocument::Indented)) < 0 ||
        !file.commit()) {
        *error = file.errorString().toStdString();
        return false;
    }
    return true;
}

} // namespace VantixBench

#include "textrenderer_p.h"

#include "devicenames_p.h"
#include "reflection_p.h"
#include "valuetext_p.h"

#include <vantix/system.h>

#include <QJsonDocument>

#include <algorithm>

using namespace TQ_SPAPI;

namespace VantixControl {

QJsonArray TextRenderer::deviceRows(System *system, const ObjectNamer *namer)
{
    Q_UNUSED(namer)
    const QMetaEnum flags = QMetaEnum::fromType<IDevice::DeviceFlags>();
    const QMetaEnum types = QMetaEnum::fromType<IDevice::DeviceType>();
    QJsonArray rows;
    for (const IDevicePtr &device : system->devices()) {
        rows.append(QJsonObject{
            {QStringLiteral("name"), DeviceNames::name(device->id())},
            {QStringLiteral("number"), int(device->id())},
            {QStringLiteral("alias"), DeviceNames::alias(device->id())},
            {QStringLiteral("class"), Reflection::shortClassName(device.data())},
            {QStringLiteral("status"), ValueText::enumText(flags, int(device->status()))},
            {QStringLiteral("type"), ValueText::enumText(types, int(device->type()))},
        });
    }
    return rows;
}

QStringList TextRenderer::deviceTable(const QJsonArray &rows)
{
    const auto row = [](const QString &name, const QString &number, const QString &alias, const QString &className,
                         const QString &status, const QString &type) {
        return QStringLiteral("%1 %2 %3 %4 %5 %6")
            .arg(name, -22)
            .arg(number, -4)
            .arg(alias, -13)
            .arg(className, -16)
            .arg(status, -28)
            .arg(type)
            .trimmed();
    };
    QStringList lines{row(QStringLiteral("DEVICE"), QStringLiteral("NR"), QStringLiteral("ALIAS"),
        QStringLiteral("CLASS"), QStringLiteral("STATUS"), QStringLiteral("TYPE"))};
    for (const QJsonValue &value : rows) {
        const QJsonObject device = value.toObject();
        lines.append(row(device.value(QLatin1String("name")).toString(),
            QString::number(device.value(QLatin1String("number")).toInt()),
            device.value(QLatin1String("alias")).toString(), device.value(QLatin1String("class")).toString(),
            device.value(QLatin1String("status")).toString(), device.value(QLatin1String("type")).toString()));
    }
    return lines;
}

QStringList TextRenderer::objectDescription(const QJsonObject &object)
{
    QStringList lines;
    const QString name = object.value(QLatin1String("name")).toString();
    const QString className = object.value(QLatin1String("class")).toString();
    if (object.contains(QLatin1String("number"))) {
        const QString alias = object.value(QLatin1String("alias")).toString();
        lines.append(QStringLiteral("%1 (%2%3) %4")
                         .arg(name)
                         .arg(object.value(QLatin1String("number")).toInt())
                         .arg(alias.isEmpty() ? QString() : QStringLiteral(", ") + alias, className));
    } else {
        lines.append(QStringLiteral("%1 %2").arg(name, className));
    }
    const QJsonArray properties = object.value(QLatin1String("properties")).toArray();
    int width = 0;
    for (const QJsonValue &p : properties) {
        width = std::max(width, p.toObject().value(QLatin1String("name")).toString().size());
    }
    for (const QJsonValue &value : properties) {
        const QJsonObject p = value.toObject();
        QString note;
        if (p.value(QLatin1String("writable")).toBool()) {
            note = QStringLiteral("  (writable)");
        } else if (p.value(QLatin1String("effect")).toString() == QLatin1String("none")) {
            note = QStringLiteral("  (its setter has no effect in this build)");
        }
        lines.append(QStringLiteral("  %1 %2%3")
                         .arg(p.value(QLatin1String("name")).toString(), -width)
                         .arg(p.value(QLatin1String("text")).toString(), note));
    }
    QStringList callable;
    for (const QJsonValue &m : object.value(QLatin1String("methods")).toArray()) {
        callable.append(m.toObject().value(QLatin1String("signature")).toString());
    }
    QStringList signalNames;
    for (const QJsonValue &s : object.value(QLatin1String("signals")).toArray()) {
        signalNames.append(s.toObject().value(QLatin1String("signature")).toString());
    }
    lines.append(QStringLiteral("  callable: ") + callable.join(QLatin1String(", ")));
    lines.append(QStringLiteral("  signals: ") + signalNames.join(QLatin1String(", ")));
    return lines;
}

QStringList TextRenderer::keyValues(const QJsonObject &map)
{
    QStringList lines;
    for (auto it = map.begin(); it != map.end(); ++it) {
        lines.append(QStringLiteral("  %1 = %2").arg(it.key(), ValueText::format(it.value().toVariant())));
    }
    return lines;
}

QStringList TextRenderer::json(const QJsonObject &object)
{
    return QString::fromUtf8(QJsonDocument(object).toJson(QJsonDocument::Indented))
        .split(QLatin1Char('\n'), Qt::SkipEmptyParts);
}

} // namespace VantixControl

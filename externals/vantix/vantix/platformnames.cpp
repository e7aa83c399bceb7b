#include "platformnames.h"

#include <QPair>
#include <QVector>

namespace TQ_SPAPI {

namespace {
const QVector<QPair<QString, System::PlatformType>> &table()
{
    static const QVector<QPair<QString, System::PlatformType>> platforms{
        {QStringLiteral("tolvex"), System::PT_TOLVEX},
        {QStringLiteral("tolvex-plus"), System::PT_TOLVEX_PLUS},
        {QStringLiteral("quarnel"), System::PT_QUARNEL},
        {QStringLiteral("quarnel-plus"), System::PT_QUARNEL_PLUS},
        {QStringLiteral("can-cpu"), System::PT_CAN_CPU_MODULE},
        {QStringLiteral("virtual"), System::PT_VIRTUAL},
        {QStringLiteral("unknown"), System::PT_UNKNOWN},
    };
    return platforms;
}
} // namespace

bool PlatformNames::fromName(const QString &name, System::PlatformType *platform)
{
    for (const auto &entry : table()) {
        if (entry.first.compare(name, Qt::CaseInsensitive) == 0) {
            *platform = entry.second;
            return true;
        }
    }
    return false;
}

QString PlatformNames::name(System::PlatformType platform)
{
    for (const auto &entry : table()) {
        if (entry.second == platform) {
            return entry.first;
        }
    }
    return QString::number(int(platform));
}

QStringList PlatformNames::names()
{
    QStringList result;
    for (const auto &entry : table()) {
        result.append(entry.first);
    }
    return result;
}

} // namespace TQ_SPAPI

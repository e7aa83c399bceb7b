#include "timesettingsprivate_p.h"

#include <QDebug>

namespace TQ_SPAPI {

TimeSettingsPrivate::TimeSettingsPrivate(ITimeSettings *q)
    : QObject(q)
    , q(q)
{
}

TimeSettingsPrivate::~TimeSettingsPrivate() = default;

void TimeSettingsPrivate::setTimeZone(const QString &zone)
{
    if (zone == timeZone) {
        return;
    }
    timeZone = zone;
    Q_EMIT q->timeZoneChanged(timeZone);
}

void TimeSettingsPrivate::setNtpEnabled(bool enabled)
{
    if (enabled == ntpEnabled) {
        return;
    }
    ntpEnabled = enabled;
    Q_EMIT q->enabledChanged(ntpEnabled);
}

void TimeSettingsPrivate::setUrlList(const QStringList &urls)
{
    if (urls == urlList) {
        return;
    }
    urlList = urls;
    Q_EMIT q->urlListChanged();
}

void TimeSettingsPrivate::setDateTime(const QDateTime &dateTime)
{
    Q_UNUSED(dateTime)
    qWarning() << "Not supported on Windows";
}

bool TimeSettingsPrivate::isHwClockValid() const
{
    return true;
}

} // namespace TQ_SPAPI

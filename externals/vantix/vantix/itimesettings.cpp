#include "itimesettings.h"

#include "timesettingsprivate_p.h"

namespace TQ_SPAPI {

ITimeSettings::ITimeSettings(QObject *parent)
    : QObject(parent)
    , d(new TimeSettingsPrivate(this))
{
}

ITimeSettings::~ITimeSettings()
{
    // The private goes first, so it never outlives the object it emits on.
    delete d;
}

QString ITimeSettings::timeZone() const
{
    return d->timeZone;
}

void ITimeSettings::setTimeZone(const QString &zone)
{
    d->setTimeZone(zone);
}

bool ITimeSettings::ntpEnabled() const
{
    return d->ntpEnabled;
}

void ITimeSettings::setNtpEnabled(bool enabled)
{
    d->setNtpEnabled(enabled);
}

QStringList ITimeSettings::urlList() const
{
    return d->urlList;
}

void ITimeSettings::setUrlList(const QStringList &urls)
{
    d->setUrlList(urls);
}

QStringList ITimeSettings::getTimeZones() const
{
    return d->timeZones;
}

void ITimeSettings::setDateTime(const QDateTime &dateTime)
{
    d->setDateTime(dateTime);
}

bool ITimeSettings::isHwClockValid() const
{
    return d->isHwClockValid();
}

} // namespace TQ_SPAPI

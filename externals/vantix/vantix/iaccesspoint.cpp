#include "iaccesspoint.h"

#include "accesspointprivate_p.h"

namespace TQ_SPAPI {

IAccessPoint::IAccessPoint(QObject *parent)
    : QObject(parent)
    , d(new AccessPointPrivate(this))
{
}

IAccessPoint::~IAccessPoint()
{
    delete d;
}

QString IAccessPoint::ssid() const
{
    return d->ssid;
}

int IAccessPoint::channel() const
{
    return d->channel;
}

int IAccessPoint::frequency() const
{
    return d->frequency;
}

int IAccessPoint::signalStrength() const
{
    return d->signalStrength;
}

QString IAccessPoint::mac() const
{
    return d->mac;
}

bool IAccessPoint::secure() const
{
    return d->secure;
}

IAccessPoint::SecurityFlags IAccessPoint::securityFlags() const
{
    return d->securityFlags;
}

IAccessPoint::ModeFlags IAccessPoint::modeFlag() const
{
    return d->modeFlag;
}

qlonglong IAccessPoint::lastSeen() const
{
    return d->lastSeen;
}

} // namespace TQ_SPAPI

#include "iwifip2ppeer.h"

#include "wifip2ppeerprivate_p.h"

namespace TQ_SPAPI {

IWifiP2PPeer::IWifiP2PPeer(QObject *parent)
    : QObject(parent)
    , d(new WifiP2PPeerPrivate(this))
{
}

IWifiP2PPeer::~IWifiP2PPeer()
{
    delete d;
}

QString IWifiP2PPeer::bssid() const
{
    return d->bssid;
}

int IWifiP2PPeer::channel() const
{
    return d->channel;
}

int IWifiP2PPeer::signalStrength() const
{
    return d->signalStrength;
}

ConstWifiP2PServiceListPtr IWifiP2PPeer::serviceList()
{
    return &d->serviceList;
}

bool IWifiP2PPeer::isGroupOwner() const
{
    return d->isGroupOwner;
}

IWifiP2PPeer::peerState IWifiP2PPeer::state() const
{
    return d->state;
}

QString IWifiP2PPeer::ip() const
{
    return d->ip;
}

void IWifiP2PPeer::setServiceList(const WifiP2PServiceList &services)
{
    d->setServiceList(services);
}

void IWifiP2PPeer::updateService(
    const QString &serviceName, const QString &serviceType, const QString &key, const QString &value)
{
    d->updateService(serviceName, serviceType, key, value);
}

void IWifiP2PPeer::peerConnect(const QString &pin)
{
    d->peerConnect(pin);
}

void IWifiP2PPeer::peerDisconnect()
{
    d->peerDisconnect();
}

} // namespace TQ_SPAPI

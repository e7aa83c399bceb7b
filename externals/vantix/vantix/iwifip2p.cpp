#include "iwifip2p.h"

#include "wifip2pprivate_p.h"

#include <QMetaType>

namespace TQ_SPAPI {

namespace {
void registerWifiP2PMetaTypes()
{
    // The names in the signatures and properties, for queued connections and QVariant.
    qRegisterMetaType<IWifiP2PPeerPtr>("TQ_SPAPI::IWifiP2PPeerPtr");
    qRegisterMetaType<IWifiP2PPeerPtr>("IWifiP2PPeerPtr");
    qRegisterMetaType<IWifiP2PPeer::peerState>("TQ_SPAPI::IWifiP2PPeer::peerState");
    qRegisterMetaType<ConstWifiP2PPeerListPtr>("TQ_SPAPI::ConstWifiP2PPeerListPtr");
    qRegisterMetaType<ConstWifiP2PServiceListPtr>("TQ_SPAPI::ConstWifiP2PServiceListPtr");
    qRegisterMetaType<WifiP2PService>("TQ_SPAPI::WifiP2PService");
    qRegisterMetaType<WifiP2PServiceList>("TQ_SPAPI::WifiP2PServiceList");
}
} // namespace
Q_CONSTRUCTOR_FUNCTION(registerWifiP2PMetaTypes)

IWifiP2P::IWifiP2P(DeviceId id)
{
    setPrivate(new WifiP2PPrivate(this, id));
}

IWifiP2P::~IWifiP2P() = default;

ConstWifiP2PPeerListPtr IWifiP2P::peerList() const
{
    return &d_func<WifiP2PPrivate>()->peerList;
}

IWifiP2PPeerPtr IWifiP2P::peerList(const QString &bssid) const
{
    return d_func<WifiP2PPrivate>()->findPeer(bssid);
}

void IWifiP2P::findPeers()
{
    d_func<WifiP2PPrivate>()->findPeers();
}

void IWifiP2P::stopFindPeers()
{
    // Discovery has no running state to stop: each request is one answer.
}

void IWifiP2P::addGroup(
    const QString &ssid, const QString &psk, const QString &pin, const QString &ip, bool persistent, int channel)
{
    d_func<WifiP2PPrivate>()->addGroup(ssid, psk, pin, ip, persistent, channel);
}

void IWifiP2P::addGroup(const QString &ssid, const QString &psk, const QString &pin, const QString &ip, bool persistent)
{
    d_func<WifiP2PPrivate>()->addGroup(ssid, psk, pin, ip, persistent, 0);
}

void IWifiP2P::addGroup(const QString &ssid, const QString &psk, const QString &pin, const QString &ip)
{
    d_func<WifiP2PPrivate>()->addGroup(ssid, psk, pin, ip, true, 0);
}

void IWifiP2P::removeGroup()
{
    d_func<WifiP2PPrivate>()->removeGroup();
}

} // namespace TQ_SPAPI

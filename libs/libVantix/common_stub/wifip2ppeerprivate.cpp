#include "wifip2ppeerprivate_p.h"

#include "wifip2pprivate_p.h"

namespace TQ_SPAPI {

WifiP2PPeerPrivate::WifiP2PPeerPrivate(IWifiP2PPeer *owner)
    : QObject(owner)
    // Parented, so tools walking the peer's objects find the model.
    , serviceList(this)
    , owner(owner)
{
}

WifiP2PPeerPrivate::~WifiP2PPeerPrivate() = default;

WifiP2PPrivate *WifiP2PPeerPrivate::manager() const
{
    // Discovered peers are children of their IWifiP2P; the group peer is a
    // child of the device's private and so has no manager to ask.
    auto *device = qobject_cast<IWifiP2P *>(owner->parent());
    return device ? qobject_cast<WifiP2PPrivate *>(DevicePrivate::get(device)) : nullptr;
}

void WifiP2PPeerPrivate::replaceServices(const DBusWifiP2PServiceList &services)
{
    WifiP2PServiceList converted;
    converted.reserve(services.size());
    for (const DBusWifiP2PService &service : services) {
        converted.append(toWifiP2PService(service));
    }
    serviceList.setItems(converted);
}

void WifiP2PPeerPrivate::peerConnect(const QString &pin)
{
    if (WifiP2PPrivate *m = manager()) {
        m->peerConnect(bssid, pin);
    }
}

void WifiP2PPeerPrivate::peerDisconnect()
{
    if (WifiP2PPrivate *m = manager()) {
        m->peerDisconnect(bssid);
    }
}

void WifiP2PPeerPrivate::accept(bool accepted)
{
    if (WifiP2PPrivate *m = manager()) {
        m->peerAccept(bssid, accepted);
    }
}

void WifiP2PPeerPrivate::setServiceList(const WifiP2PServiceList &services)
{
    if (WifiP2PPrivate *m = manager()) {
        m->setServiceList(bssid, services);
    }
}

void WifiP2PPeerPrivate::updateService(
    const QString &serviceName, const QString &serviceType, const QString &key, const QString &value)
{
    if (WifiP2PPrivate *m = manager()) {
        m->updateService(bssid, serviceName, serviceType, key, value);
    }
}

void WifiP2PPeerPrivate::onBssidChanged(QString newBssid)
{
    // The property is constant: it is set once, before anybody sees the peer.
    bssid = newBssid;
}

void WifiP2PPeerPrivate::onSignalStrengthChanged(uint strength)
{
    if (int(strength) != signalStrength) {
        signalStrength = int(strength);
        Q_EMIT owner->signalStrengthChanged(signalStrength);
    }
}

void WifiP2PPeerPrivate::onChannelChanged(uint newChannel)
{
    if (int(newChannel) != channel) {
        channel = int(newChannel);
        Q_EMIT owner->channelChanged(channel);
    }
}

void WifiP2PPeerPrivate::onIsGroupOwnerChanged(bool groupOwner)
{
    if (groupOwner != isGroupOwner) {
        isGroupOwner = groupOwner;
        Q_EMIT owner->isGroupOwnerChanged(isGroupOwner);
    }
}

void WifiP2PPeerPrivate::onStateChanged(uint newState)
{
    const auto s = IWifiP2PPeer::peerState(newState);
    if (s != state) {
        state = s;
        Q_EMIT owner->stateChanged(state);
    }
}

} // namespace TQ_SPAPI

#include "wifip2pprivate_p.h"

#include "wifip2ppeerprivate_p.h"

#include <QDebug>
#include <QTimer>

namespace TQ_SPAPI {

namespace {
// A P2P daemon takes about this long to answer a request.
constexpr int AnswerDelayMs = 200;

// The one device in range: a Quarnel link box, found by discovery and owning every group.
const QLatin1String SimulatedBssid("02:22:22");
constexpr int SimulatedChannel = 4;
constexpr int DiscoveredStrength = 80;

DBusWifiP2PServiceList simulatedServices(const QString &serviceName)
{
    DBusWifiP2PService service;
    service.serviceName = serviceName;
    service.serviceType = QStringLiteral("_bravent._tcp.local.");
    service.servicePort = 7557;
    service.idValuePair.insert(QStringLiteral("cid"), QString());
    service.idValuePair.insert(QStringLiteral("name"), QStringLiteral("Direct-Quarnel1"));
    service.idValuePair.insert(QStringLiteral("manikin"), QStringLiteral("1"));
    service.idValuePair.insert(QStringLiteral("ver"), QStringLiteral("Dummy Version"));
    return DBusWifiP2PServiceList{service};
}

// Peers are QObject children of the device but shared with applications. One
// still held elsewhere when the device goes must not be deleted under a live
// shared pointer; without a parent it simply has no manager any more.
void releasePeersOf(QObject *parent)
{
    const auto peers = parent->findChildren<IWifiP2PPeer *>(QString(), Qt::FindDirectChildrenOnly);
    for (IWifiP2PPeer *peer : peers) {
        peer->setParent(nullptr);
    }
}
} // namespace

WifiP2PPrivate::WifiP2PPrivate(IWifiP2P *q, IDevice::DeviceId id)
    : NetworkPrivate(q, id, IDevice::DEVICE_NETWORK)
    // Parented, so tools walking the device's objects find the model.
    , peerList(this)
{
    // Until the first read of the host interface.
    ipAddress = QStringLiteral("127.0.0.1");
}

WifiP2PPrivate::~WifiP2PPrivate()
{
    releasePeersOf(q);
    releasePeersOf(this);
}

IWifiP2PPeerPtr WifiP2PPrivate::findPeer(const QString &bssid, int *row) const
{
    for (int i = 0; i < peerList.count(); ++i) {
        if (peerList.at(i)->bssid() == bssid) {
            if (row) {
                *row = i;
            }
            return peerList.at(i);
        }
    }
    if (row) {
        *row = -1;
    }
    return IWifiP2PPeerPtr();
}

void WifiP2PPrivate::findPeers()
{
    qDebug();
    QTimer::singleShot(AnswerDelayMs, this, [this] {
        qDebug();
        onPeerFound(
            SimulatedBssid, SimulatedChannel, DiscoveredStrength, simulatedServices(QStringLiteral("Direct-Quarnpel")));
    });
}

void WifiP2PPrivate::addGroup(
    const QString &ssid, const QString &psk, const QString &pin, const QString &ip, bool persistent, int channel)
{
    // The simulated group is always the same, whatever was asked for.
    Q_UNUSED(psk)
    Q_UNUSED(pin)
    Q_UNUSED(ip)
    Q_UNUSED(persistent)
    Q_UNUSED(channel)
    qDebug() << "ssid" << ssid;
    QTimer::singleShot(AnswerDelayMs, this, [this] {
        qDebug();
        onGroupCreated(SimulatedBssid, SimulatedChannel, simulatedServices(QStringLiteral("Direct-Quarnel1")));
    });
}

void WifiP2PPrivate::removeGroup()
{
    qDebug();
    QTimer::singleShot(AnswerDelayMs, this, [this] {
        qDebug();
        onGroupRemoved();
    });
}

void WifiP2PPrivate::peerConnect(const QString &bssid, const QString &pin)
{
    qDebug() << "bssid" << bssid << "psk" << pin;
    QTimer::singleShot(AnswerDelayMs, this, [this, bssid] {
        qDebug();
        onPeerStateChanged(bssid, IWifiP2PPeer::PS_CONNECTED);
    });
}

void WifiP2PPrivate::peerDisconnect(const QString &bssid)
{
    qDebug() << "bssid" << bssid;
    QTimer::singleShot(AnswerDelayMs, this, [this, bssid] {
        qDebug();
        onPeerStateChanged(bssid, IWifiP2PPeer::PS_DISCONNECTED);
    });
}

void WifiP2PPrivate::peerAccept(const QString &bssid, bool accepted)
{
    qDebug() << "bssid" << bssid << "accepted" << accepted;
}

void WifiP2PPrivate::setServiceList(const QString &bssid, const WifiP2PServiceList &services)
{
    qDebug() << "bssid" << bssid;
    // What a daemon would be handed; there is none to take it here.
    DBusWifiP2PServiceList records;
    for (const WifiP2PService &service : services) {
        records.append(toDBusWifiP2PService(service));
    }
}

void WifiP2PPrivate::updateService(const QString &bssid, const QString &serviceName, const QString &serviceType,
    const QString &key, const QString &value)
{
    Q_UNUSED(serviceName)
    Q_UNUSED(serviceType)
    Q_UNUSED(key)
    Q_UNUSED(value)
    qDebug() << "bssid" << bssid;
}

void WifiP2PPrivate::onPeerFound(QString bssid, int channel, int signalStrength, DBusWifiP2PServiceList dbusServiceList)
{
    qDebug() << "bssi" << bssid << "channel" << channel << "signalStrength" << signalStrength << "dbusServiceList"
             << dbusServiceList;
    IWifiP2PPeerPtr peer = findPeer(bssid);
    const bool isNew = !peer;
    if (isNew) {
        // Parented to the public device, through which the peer forwards its requests.
        peer = IWifiP2PPeerPtr(new IWifiP2PPeer(q));
        peer->setObjectName(bssid);
    }
    WifiP2PPeerPrivate *d = WifiP2PPeerPrivate::get(peer.data());
    d->onBssidChanged(bssid);
    d->onChannelChanged(uint(channel));
    d->onSignalStrengthChanged(uint(signalStrength));
    d->onIsGroupOwnerChanged(false);
    d->replaceServices(dbusServiceList);
    if (isNew) {
        peerList.append(peer);
    }
}

void WifiP2PPrivate::onPeerRemoved(QString bssid)
{
    qDebug() << "bssid" << bssid;
    int row = -1;
    if (!findPeer(bssid, &row)) {
        qDebug() << "peer not found" << bssid;
        return;
    }
    peerList.removeAt(row);
}

void WifiP2PPrivate::onGroupCreated(QString bssid, uint channel, DBusWifiP2PServiceList dbusServiceList)
{
    qDebug() << "bssid" << bssid;
    // A child of this private rather than of the public device, so the group
    // owner's own requests reach no manager: the group is run from here.
    const IWifiP2PPeerPtr peer(new IWifiP2PPeer(this));
    peer->setObjectName(bssid);
    WifiP2PPeerPrivate *d = WifiP2PPeerPrivate::get(peer.data());
    d->onBssidChanged(bssid);
    d->onIsGroupOwnerChanged(true);
    d->onChannelChanged(channel);
    d->replaceServices(dbusServiceList);
    // A new group replaces the old one without announcing its removal.
    groupPeer = peer;
    Q_EMIT p2p()->groupCreated(groupPeer);
}

void WifiP2PPrivate::onGroupRemoved()
{
    qDebug();
    groupPeer.reset();
    Q_EMIT p2p()->groupRemoved();
}

void WifiP2PPrivate::onPeerStateChanged(QString bssid, uint state)
{
    qDebug() << "bssid" << bssid << "state" << state;
    if (const IWifiP2PPeerPtr peer = findPeer(bssid)) {
        WifiP2PPeerPrivate::get(peer.data())->onStateChanged(state);
    }
}

} // namespace TQ_SPAPI

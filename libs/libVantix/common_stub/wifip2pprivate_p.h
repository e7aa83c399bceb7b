#ifndef VANTIX_WIFIP2PPRIVATE_P_H
#define VANTIX_WIFIP2PPRIVATE_P_H

#include <vantix/iwifip2p.h>
#include <vantix/iwifip2ppeer.h>
#include <vantix/listmodel.h>
#include <vantix/vantix_private_export.h>
#include <vantix/wifip2pservice.h>

#include "dbuswifip2pservice_p.h"
#include "networkprivate_p.h"

#include <QString>

namespace TQ_SPAPI {

/**
 * The Wi-Fi Direct device of the desktop build. There is no P2P daemon here,
 * so every request is answered 200 ms later by feeding fixed data into the
 * slots a daemon's events would reach: one discoverable Quarnel link box and
 * a group that it owns. The network side polls the wired host interface.
 */
class VANTIX_PRIVATE_EXPORT WifiP2PPrivate : public NetworkPrivate
{
    Q_OBJECT

public:
    WifiP2PPrivate(IWifiP2P *q, IDevice::DeviceId id);
    ~WifiP2PPrivate() override;

    void findPeers();
    void addGroup(
        const QString &ssid, const QString &psk, const QString &pin, const QString &ip, bool persistent, int channel);
    void removeGroup();
    void peerConnect(const QString &bssid, const QString &pin);
    void peerDisconnect(const QString &bssid);
    void peerAccept(const QString &bssid, bool accepted);
    void setServiceList(const QString &bssid, const WifiP2PServiceList &services);
    void updateService(const QString &bssid, const QString &serviceName, const QString &serviceType, const QString &key,
        const QString &value);

    /// The discovered peer with @p bssid and its row, or null and -1.
    IWifiP2PPeerPtr findPeer(const QString &bssid, int *row = nullptr) const;

public Q_SLOTS:
    void onPeerFound(QString bssid, int channel, int signalStrength, DBusWifiP2PServiceList dbusServiceList);
    void onPeerRemoved(QString bssid);
    void onGroupCreated(QString bssid, uint channel, DBusWifiP2PServiceList dbusServiceList);
    void onGroupRemoved();
    void onPeerStateChanged(QString bssid, uint state);

public:
    ListModel<IWifiP2PPeerPtr> peerList;
    IWifiP2PPeerPtr groupPeer;

private:
    IWifiP2P *p2p() const { return static_cast<IWifiP2P *>(q); }

    Q_DISABLE_COPY(WifiP2PPrivate)
};

} // namespace TQ_SPAPI

#endif

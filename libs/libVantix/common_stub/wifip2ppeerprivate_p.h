#ifndef VANTIX_WIFIP2PPEERPRIVATE_P_H
#define VANTIX_WIFIP2PPEERPRIVATE_P_H

#include <vantix/iwifip2ppeer.h>
#include <vantix/listmodel.h>
#include <vantix/vantix_private_export.h>
#include <vantix/wifip2pservice.h>

#include "dbuswifip2pservice_p.h"

#include <QObject>
#include <QString>

namespace TQ_SPAPI {

class WifiP2PPrivate;

/**
 * The values of one peer. The P2P device writes them through the slots, which
 * announce real changes only; requests made on the peer go to the device
 * that is the peer's parent.
 */
class VANTIX_PRIVATE_EXPORT WifiP2PPeerPrivate : public QObject
{
    Q_OBJECT

public:
    explicit WifiP2PPeerPrivate(IWifiP2PPeer *owner);
    ~WifiP2PPeerPrivate() override;

    static WifiP2PPeerPrivate *get(IWifiP2PPeer *peer) { return peer ? peer->d : nullptr; }

    /// Replaces the services with the daemon's records: always a model reset, even for equal lists.
    void replaceServices(const DBusWifiP2PServiceList &services);

    // Forwarded to the device with this peer's bssid first.
    void peerConnect(const QString &pin);
    void peerDisconnect();
    void accept(bool accepted);
    void setServiceList(const WifiP2PServiceList &services);
    void updateService(
        const QString &serviceName, const QString &serviceType, const QString &key, const QString &value);

public Q_SLOTS:
    void onBssidChanged(QString newBssid);
    void onSignalStrengthChanged(uint strength);
    void onChannelChanged(uint newChannel);
    void onIsGroupOwnerChanged(bool groupOwner);
    void onStateChanged(uint newState);

public:
    ListModel<WifiP2PService> serviceList;
    IWifiP2PPeer *owner;
    int channel = 0;
    int signalStrength = 0;
    QString bssid;
    IWifiP2PPeer::peerState state = IWifiP2PPeer::PS_UNKNOWN;
    bool isGroupOwner = false;
    QString ip;

private:
    /// The private of the P2P device that is the owner's parent, or null (the group peer has none).
    WifiP2PPrivate *manager() const;

    Q_DISABLE_COPY(WifiP2PPeerPrivate)
};

} // namespace TQ_SPAPI

#endif

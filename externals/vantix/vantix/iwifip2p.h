#ifndef VANTIX_IWIFIP2P_H
#define VANTIX_IWIFIP2P_H

#include <vantix/inetwork.h>
#include <vantix/iwifip2ppeer.h>
#include <vantix/vantix_export.h>

#include <QString>

namespace TQ_SPAPI {

/**
 * The Wi-Fi Direct device: discovers peers, lists them, and creates and
 * removes a P2P group. The desktop build answers every request 200 ms later
 * with one simulated Quarnel link box.
 */
class VANTIX_EXPORT IWifiP2P : public INetwork
{
    Q_OBJECT
    Q_PROPERTY(TQ_SPAPI::ConstWifiP2PPeerListPtr peerList READ peerList CONSTANT)

public:
    explicit IWifiP2P(DeviceId id);
    ~IWifiP2P() override;

    virtual ConstWifiP2PPeerListPtr peerList() const;
    /// The discovered peer with this bssid, or null. The group peer is not among them.
    virtual IWifiP2PPeerPtr peerList(const QString &bssid) const;

public Q_SLOTS:
    virtual void findPeers();
    virtual void stopFindPeers();
    virtual void addGroup(
        const QString &ssid, const QString &psk, const QString &pin, const QString &ip, bool persistent, int channel);
    virtual void addGroup(
        const QString &ssid, const QString &psk, const QString &pin, const QString &ip, bool persistent);
    virtual void addGroup(const QString &ssid, const QString &psk, const QString &pin, const QString &ip);
    virtual void removeGroup();

Q_SIGNALS:
    /// A group exists; @p wifiP2PPeerPtr is its owner.
    void groupCreated(TQ_SPAPI::IWifiP2PPeerPtr wifiP2PPeerPtr);
    void groupRemoved();

private:
    Q_DISABLE_COPY(IWifiP2P)
};

} // namespace TQ_SPAPI

#endif

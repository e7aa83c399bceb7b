#ifndef VANTIX_INETWORK_H
#define VANTIX_INETWORK_H

#include <vantix/idevice.h>
#include <vantix/vantix_export.h>

#include <QHostAddress>
#include <QString>

namespace TQ_SPAPI {

/**
 * A network interface: its hardware address, its IPv4 address with prefix
 * length ("192.168.1.20/24") and its connection state. The desktop build
 * reads the first host interface named "eth..." once a second.
 */
class VANTIX_EXPORT INetwork : public IDevice
{
    Q_OBJECT
    Q_PROPERTY(QString mac READ mac NOTIFY macChanged)
    Q_PROPERTY(QString ip READ ip NOTIFY ipChanged)
    Q_PROPERTY(NetworkState networkState READ networkState NOTIFY networkStateChanged)

public:
    // A fixed underlying type: the debug controller passes any number on as a
    // state, and a value outside 0..12 must stay a valid value of the type.
    enum NetworkState : int {
        NETWORK_STATE_UNAVAILABLE = 0,
        NETWORK_STATE_FLIGHTMMODE = 1,
        NETWORK_STATE_DEACTIVATING = 2,
        NETWORK_STATE_ACTIVATING = 3,
        NETWORK_STATE_FAILED = 4,
        NETWORK_STATE_NEED_AUTH = 5,
        NETWORK_STATE_DISCONNECTED = 6,
        NETWORK_STATE_ASSOCIATING = 7,
        NETWORK_STATE_ASSOCIATED = 8,
        NETWORK_STATE_AUTHENTICATING = 9,
        NETWORK_STATE_COMPLETED = 10,
        NETWORK_STATE_IP_CONFIG = 11,
        NETWORK_STATE_ACTIVATED = 12,
    };
    Q_ENUM(NetworkState)

    explicit INetwork(DeviceId id);
    ~INetwork() override;

    virtual QString mac() const;
    virtual QString ip() const;
    virtual NetworkState networkState() const;

    virtual void setStaticIp(const QHostAddress &address, const QHostAddress &netmask, const QHostAddress &gateway);
    virtual void setDhcp();

Q_SIGNALS:
    void macChanged(QString newValue);
    void ipChanged(QString newValue);
    void networkStateChanged(TQ_SPAPI::INetwork::NetworkState newValue);

protected:
    /// For interfaces that install a private of their own (Wi-Fi, Wi-Fi P2P).
    INetwork();

private:
    Q_DISABLE_COPY(INetwork)
};

} // namespace TQ_SPAPI

#endif

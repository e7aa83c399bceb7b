#ifndef VANTIX_NETWORKPRIVATE_P_H
#define VANTIX_NETWORKPRIVATE_P_H

#include <vantix/inetwork.h>
#include <vantix/vantix_private_export.h>

#include "deviceprivate_p.h"
#include "networkconfigurations_p.h"

#include <QLatin1String>
#include <QNetworkInterface>
#include <QPointer>
#include <QString>

class QTimer;

namespace TQ_SPAPI {

/**
 * A network device backed by a host interface: after initialize() it reads
 * the interface's address and state once a second. The first override stops
 * that polling for good, so simulated values are not overwritten by the host.
 * Every accessor is virtual so that the Wi-Fi devices can reuse the rest.
 */
class VANTIX_PRIVATE_EXPORT NetworkPrivate : public DevicePrivate
{
    Q_OBJECT

public:
    NetworkPrivate(INetwork *q, IDevice::DeviceId id, IDevice::DeviceType type);
    ~NetworkPrivate() override;

    void initialize() override;

    /// Chooses the host interface: the first one named "eth...".
    virtual void findInterface();
    virtual void setStaticIp(const QHostAddress &address, const QHostAddress &netmask, const QHostAddress &gateway);
    virtual void setDhcp();
    virtual QString mac() const;
    virtual QString ip() const;
    virtual INetwork::NetworkState networkState() const;
    virtual void overrideNetworkState(INetwork::NetworkState state);
    virtual void overrideIP(const QString &ip);

public Q_SLOTS:
    /// Reads address and state of the chosen interface and announces what changed.
    virtual void updateInfo();

public:
    // Named apart from the accessors above, which return them.
    QString macAddress;
    QString ipAddress;
    INetwork::NetworkState state = INetwork::NETWORK_STATE_DISCONNECTED;
    QPointer<NetworkConfigurations> configurations;
    int interfaceIndex = -1;
    QTimer *pollTimer = nullptr;

protected:
    INetwork *network() const { return static_cast<INetwork *>(q); }
    /// Index of the first host interface whose name begins with @p prefix, or -1.
    static int firstInterfaceIndex(QLatin1String prefix);
    /// The host interface with the stored index, as Qt finds it now; invalid without one.
    QNetworkInterface hostInterface() const;
    /// Deletes the poll timer; the device never polls again.
    void stopPolling();

private:
    bool pollingStopped = false;

    Q_DISABLE_COPY(NetworkPrivate)
};

} // namespace TQ_SPAPI

#endif

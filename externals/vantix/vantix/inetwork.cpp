#include "inetwork.h"

#include "networkprivate_p.h"

#include <QMetaType>

namespace TQ_SPAPI {

namespace {
void registerNetworkMetaTypes()
{
    // The name in the signal's signature, for queued connections.
    qRegisterMetaType<INetwork::NetworkState>("TQ_SPAPI::INetwork::NetworkState");
}
} // namespace
Q_CONSTRUCTOR_FUNCTION(registerNetworkMetaTypes)

INetwork::INetwork() = default;

INetwork::INetwork(DeviceId id)
{
    setPrivate(new NetworkPrivate(this, id, DEVICE_NETWORK));
}

INetwork::~INetwork() = default;

QString INetwork::mac() const
{
    return d_func<NetworkPrivate>()->mac();
}

QString INetwork::ip() const
{
    return d_func<NetworkPrivate>()->ip();
}

INetwork::NetworkState INetwork::networkState() const
{
    return d_func<NetworkPrivate>()->networkState();
}

void INetwork::setStaticIp(const QHostAddress &address, const QHostAddress &netmask, const QHostAddress &gateway)
{
    d_func<NetworkPrivate>()->setStaticIp(address, netmask, gateway);
}

void INetwork::setDhcp()
{
    d_func<NetworkPrivate>()->setDhcp();
}

} // namespace TQ_SPAPI

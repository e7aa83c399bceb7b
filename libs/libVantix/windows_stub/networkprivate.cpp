#include "networkprivate_p.h"

#include "metaenum_p.h"

#include <QDebug>
#include <QNetworkInterface>
#include <QTimer>

namespace TQ_SPAPI {

namespace {
constexpr int PollIntervalMs = 1000;
} // namespace

NetworkPrivate::NetworkPrivate(INetwork *q, IDevice::DeviceId id, IDevice::DeviceType type)
    : DevicePrivate(q, id, type)
    , configurations(NetworkConfigurations::instance())
{
}

NetworkPrivate::~NetworkPrivate()
{
    qDebug() << enumKey(id).constData();
}

void NetworkPrivate::initialize()
{
    findInterface();
    // Read once: the hardware address of an interface does not change while it exists.
    macAddress = hostInterface().hardwareAddress();
    updateInfo();
    if (pollTimer || pollingStopped) {
        return;
    }
    pollTimer = new QTimer(this);
    pollTimer->setInterval(PollIntervalMs);
    connect(pollTimer, &QTimer::timeout, this, &NetworkPrivate::updateInfo);
    pollTimer->start();
}

void NetworkPrivate::findInterface()
{
    interfaceIndex = firstInterfaceIndex(QLatin1String("eth"));
}

int NetworkPrivate::firstInterfaceIndex(QLatin1String prefix)
{
    const auto interfaces = QNetworkInterface::allInterfaces();
    for (const QNetworkInterface &iface : interfaces) {
        if (iface.name().startsWith(prefix, Qt::CaseSensitive)) {
            return iface.index();
        }
    }
    return -1;
}

QNetworkInterface NetworkPrivate::hostInterface() const
{
    // Qt lists every interface of the host to answer a lookup by index, even
    // for -1, which no interface has; without a chosen interface the answer is
    // the invalid interface anyway, so the host is not asked.
    return interfaceIndex < 0 ? QNetworkInterface() : QNetworkInterface::interfaceFromIndex(interfaceIndex);
}

void NetworkPrivate::setStaticIp(const QHostAddress &address, const QHostAddress &netmask, const QHostAddress &gateway)
{
    // The host's addressing belongs to the host; a desktop build leaves it alone.
    Q_UNUSED(address)
    Q_UNUSED(netmask)
    Q_UNUSED(gateway)
}

void NetworkPrivate::setDhcp() { }

QString NetworkPrivate::mac() const
{
    return macAddress;
}

QString NetworkPrivate::ip() const
{
    return ipAddress;
}

INetwork::NetworkState NetworkPrivate::networkState() const
{
    return state;
}

void NetworkPrivate::overrideNetworkState(INetwork::NetworkState newState)
{
    stopPolling();
    state = newState;
    Q_EMIT network()->networkStateChanged(state);
}

void NetworkPrivate::overrideIP(const QString &newIp)
{
    stopPolling();
    ipAddress = newIp;
    Q_EMIT network()->ipChanged(ipAddress);
}

void NetworkPrivate::stopPolling()
{
    pollingStopped = true;
    delete pollTimer;
    pollTimer = nullptr;
}

void NetworkPrivate::updateInfo()
{
    // An index of -1, or of an interface gone meanwhile, gives an invalid
    // interface: no addresses and no flags.
    const QNetworkInterface iface = hostInterface();

    QString newIp;
    const auto entries = iface.addressEntries();
    for (const QNetworkAddressEntry &entry : entries) {
        if (entry.ip().protocol() == QAbstractSocket::IPv4Protocol) {
            newIp = entry.ip().toString() + QLatin1Char('/') + QString::number(entry.prefixLength());
        }
    }
    if (newIp != ipAddress) {
        ipAddress = newIp;
        Q_EMIT network()->ipChanged(ipAddress);
    }

    const QNetworkInterface::InterfaceFlags flags = iface.flags();
    const INetwork::NetworkState newState =
        flags.testFlag(QNetworkInterface::IsRunning) && flags.testFlag(QNetworkInterface::IsUp)
        ? INetwork::NETWORK_STATE_ACTIVATED
        : INetwork::NETWORK_STATE_DISCONNECTED;
    if (newState != networkState()) {
        state = newState;
        Q_EMIT network()->networkStateChanged(state);
    }
}

} // namespace TQ_SPAPI

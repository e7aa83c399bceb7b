// The wired network device against real kernel interfaces. Runs only inside
// the private network namespace that netns/run-in-netns.sh sets up (a veth
// pair eth0 <-> wlan0), because it changes addresses and links.

#include "fakenetworkconfigurations.h"
#include "networkprivate_p.h"

#include <vantix/inetwork.h>
#include <vantix/iwifi.h>

#include <QNetworkInterface>
#include <QProcess>
#include <QSignalSpy>
#include <QStandardPaths>
#include <QtTest>

#include <unistd.h>

using namespace TQ_SPAPI;

namespace {
constexpr int PollWaitMs = 3500; // a few poll periods
bool s_isolated = false;

// Fails closed: only a fresh namespace of the wrapper's making will do.
QString whyNotIsolated()
{
    const QByteArray outer = qgetenv("VANTIX_TEST_NETNS");
    if (outer.isEmpty()) {
        return QString("not started by tests/netns/run-in-netns.sh; refusing to change the host's interfaces");
    }
    char own[128] = {};
    if (::readlink("/proc/self/ns/net", own, sizeof(own) - 1) <= 0 || outer == own) {
        return QString("not in a network namespace of its own; refusing to change the host's interfaces");
    }
    QStringList names;
    for (const QNetworkInterface &iface : QNetworkInterface::allInterfaces()) {
        names.append(iface.name());
    }
    names.sort();
    if (names != QStringList({"eth0", "lo", "wlan0"})) {
        return QString("unexpected interfaces %1; refusing to change them").arg(names.join(QLatin1Char(',')));
    }
    return QString();
}

bool ip(const char *command)
{
    const QStringList arguments = QString::fromLatin1(command).split(QLatin1Char(' '));
    if (!s_isolated) {
        qWarning() << "refusing to run ip" << arguments << "outside the test namespace";
        return false;
    }
    static const QString program = QStandardPaths::findExecutable("ip", {"/usr/sbin", "/sbin"});
    QProcess process;
    process.start(program, arguments);
    if (!process.waitForFinished(10000) || process.exitStatus() != QProcess::NormalExit || process.exitCode() != 0) {
        qWarning() << "ip" << arguments << "failed:" << process.readAllStandardError();
        return false;
    }
    return true;
}

bool isRunning(const char *name)
{
    return QNetworkInterface::interfaceFromName(QLatin1String(name)).flags().testFlag(QNetworkInterface::IsRunning);
}

NetworkPrivate *priv(INetwork &network)
{
    return qobject_cast<NetworkPrivate *>(DevicePrivate::get(&network));
}

INetwork::NetworkState stateAt(const QSignalSpy &spy, int i)
{
    return spy.at(i).at(0).value<INetwork::NetworkState>();
}
} // namespace

class TestNetwork : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase()
    {
        const QString reason = whyNotIsolated();
        if (!reason.isEmpty()) {
            QSKIP(qPrintable(reason));
        }
        s_isolated = true;
        NetworkConfigurations::setInstance(&m_configurations);
    }

    // Both ends up with known hardware addresses and no IPv4 address, carrier on.
    void init()
    {
        for (const char *command : {"link set eth0 down", "link set wlan0 down",
                 "link set eth0 address 02:00:00:00:00:05", "link set wlan0 address 02:00:00:00:00:06",
                 "addr flush dev eth0", "addr flush dev wlan0", "link set eth0 up", "link set wlan0 up"}) {
            QVERIFY(ip(command));
        }
        QTRY_VERIFY(isRunning("eth0") && isRunning("wlan0"));
    }

    void followsTheHostInterface()
    {
        QVERIFY(ip("addr add 10.0.0.5/8 dev eth0"));
        QVERIFY(ip("addr add 10.0.0.6/8 dev wlan0"));
        INetwork lan(IDevice::ID_NETWORK_LAN);
        IWifi wifi(IDevice::ID_NETWORK_WIFI);
        QCOMPARE(lan.networkState(), INetwork::NETWORK_STATE_DISCONNECTED);
        QVERIFY(lan.ip().isEmpty());

        QSignalSpy macSpy(&lan, &INetwork::macChanged);
        lan.initialize();
        wifi.initialize();
        QCOMPARE(lan.ip() + ' ' + lan.mac() + ' ' + wifi.ip() + ' ' + wifi.mac(),
            QString("10.0.0.5/8 02:00:00:00:00:05 10.0.0.6/8 02:00:00:00:00:06"));
        QCOMPARE(lan.networkState(), INetwork::NETWORK_STATE_ACTIVATED);
        QCOMPARE(macSpy.count(), 0);

        QSignalSpy stateSpy(&lan, &INetwork::networkStateChanged);
        QSignalSpy ipSpy(&lan, &INetwork::ipChanged);
        // Cable pulled: the peer's carrier is gone, the address stays.
        QVERIFY(ip("link set wlan0 down"));
        QTRY_COMPARE_WITH_TIMEOUT(stateSpy.count(), 1, PollWaitMs);
        QCOMPARE(stateAt(stateSpy, 0), INetwork::NETWORK_STATE_DISCONNECTED);
        QCOMPARE(lan.ip(), QString("10.0.0.5/8"));
        QTRY_COMPARE_WITH_TIMEOUT(wifi.networkState(), INetwork::NETWORK_STATE_DISCONNECTED, PollWaitMs);

        QVERIFY(ip("link set wlan0 up"));
        QTRY_COMPARE_WITH_TIMEOUT(stateSpy.count(), 2, PollWaitMs);
        QCOMPARE(stateAt(stateSpy, 1), INetwork::NETWORK_STATE_ACTIVATED);
        QCOMPARE(ipSpy.count(), 0);

        // Of several IPv4 addresses the last in Qt's order counts; IPv6 never does.
        QVERIFY(ip("addr add 192.168.7.9/24 dev eth0"));
        QVERIFY(ip("addr add fd00::5/64 dev eth0 nodad"));
        QStringList order;
        for (const QNetworkAddressEntry &e : QNetworkInterface::interfaceFromName("eth0").addressEntries()) {
            if (e.ip().protocol() == QAbstractSocket::IPv4Protocol) {
                order.append(e.ip().toString() + QLatin1Char('/') + QString::number(e.prefixLength()));
            }
        }
        QCOMPARE(order.size(), 2);
        QTRY_COMPARE_WITH_TIMEOUT(lan.ip(), order.last(), PollWaitMs);

        QVERIFY(ip("addr flush dev eth0"));
        QTRY_VERIFY_WITH_TIMEOUT(lan.ip().isEmpty(), PollWaitMs);
        QCOMPARE(stateSpy.count(), 2);
    }

    void overridesStopPolling()
    {
        QVERIFY(ip("addr add 10.0.0.5/8 dev eth0"));
        INetwork byIp(IDevice::ID_NETWORK_LAN);
        INetwork byState(IDevice::ID_NETWORK_LAN);
        INetwork witness(IDevice::ID_NETWORK_LAN);
        for (INetwork *lan : {&byIp, &byState, &witness}) {
            lan->initialize();
            QVERIFY(priv(*lan)->pollTimer);
        }
        // Taken as it is, and the polling ends for good.
        priv(byIp)->overrideIP("10.1.2.3.4/24");
        priv(byState)->overrideNetworkState(INetwork::NETWORK_STATE_ACTIVATED);
        QVERIFY(!priv(byIp)->pollTimer && !priv(byState)->pollTimer);
        QSignalSpy ipSpy(&byIp, &INetwork::ipChanged);
        QSignalSpy stateSpy(&byState, &INetwork::networkStateChanged);

        QVERIFY(ip("addr del 10.0.0.5/8 dev eth0"));
        QVERIFY(ip("link set wlan0 down"));
        // The witness polls on the same beat as the overridden devices did.
        QTRY_VERIFY_WITH_TIMEOUT(witness.ip().isEmpty(), PollWaitMs);
        QTRY_COMPARE_WITH_TIMEOUT(witness.networkState(), INetwork::NETWORK_STATE_DISCONNECTED, PollWaitMs);
        QCOMPARE(byIp.ip() + ' ' + byState.ip(), QString("10.1.2.3.4/24 10.0.0.5/8"));
        QCOMPARE(byIp.networkState(), INetwork::NETWORK_STATE_ACTIVATED);
        QCOMPARE(byState.networkState(), INetwork::NETWORK_STATE_ACTIVATED);
        QCOMPARE(ipSpy.count() + stateSpy.count(), 0);

        // A state no host reports passes unchanged.
        priv(byState)->overrideNetworkState(INetwork::NetworkState(99));
        QCOMPARE(int(byState.networkState()), 99);
    }

private:
    FakeNetworkConfigurations m_configurations;
};

QTEST_GUILESS_MAIN(TestNetwork)
#include "tst_network.moc"

// The Wi-Fi station on made-up host configurations, and its place in System;
// the Wi-Fi Direct device with its simulated daemon answers, peers and services.

#include "fakenetworkconfigurations.h"
#include "logcapture.h"
#include "systemprivate_p.h"
#include "testroot.h"
#include "testsystem.h"
#include "wifip2ppeerprivate_p.h"
#include "wifip2pprivate_p.h"
#include "wifiprivate_p.h"

#include <vantix/devicelist.h>
#include <vantix/iaccesspoint.h>
#include <vantix/iwifi.h>
#include <vantix/iwifip2p.h>
#include <vantix/system.h>

#include <QElapsedTimer>
#include <QPointer>
#include <QRegularExpression>
#include <QSignalSpy>
#include <QtTest>

#include <cstdlib>
#include <functional>

using namespace TQ_SPAPI;

namespace {
using D = IDevice;
const int Scanning = D::F_ENABLESCANNING;
const int EnabledScanning = D::F_ENABLE | D::F_ENABLESCANNING;

constexpr auto wlan = &FakeNetworkConfigurations::wlan;

WifiPrivate *priv(IWifi &wifi)
{
    return qobject_cast<WifiPrivate *>(DevicePrivate::get(&wifi));
}

const QString Bssid = "02:22:22";

// A P2P device made by the factory, as System makes it.
struct Device
{
    DeviceList list;
    IWifiP2P *p2p = nullptr;
    WifiP2PPrivate *d = nullptr;
    Device()
    {
        p2p = qobject_cast<IWifiP2P *>(list.add(IDevice::ID_NETWORK_WIFI_P2P, IDevice::DEVICE_NETWORK, {}, 0).data());
        d = p2p ? qobject_cast<WifiP2PPrivate *>(DevicePrivate::get(p2p)) : nullptr;
    }
};

DBusWifiP2PService record(const char *name, int port, QHash<QString, QString> pairs)
{
    return DBusWifiP2PService{QLatin1String(name), "_t._tcp.", port, pairs};
}
} // namespace

class TestWifi : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        m_host.configurations.clear();
        m_host.updateRequests = 0;
        NetworkConfigurations::setInstance(&m_host);
        WifiPrivate::firstUpdate = true;
        std::srand(20240611);
    }

    void cleanup()
    {
        NetworkConfigurations::setInstance(nullptr);
        System::releaseInstance();
    }

    void listsTheHostNetworks()
    {
        NetworkConfigurations::Configuration cable = wlan("Cable", true);
        cable.wlan = false;
        NetworkConfigurations::Configuration unknown = wlan("Ghost", false);
        unknown.defined = false;
        m_host.configurations = {wlan("Home", false), wlan("Lab", true), cable, unknown};

        IWifi wifi(D::ID_NETWORK_WIFI);
        QCOMPARE(wifi.type(), D::DEVICE_NETWORK | D::DEVICE_FIGHT_MODE);
        QCOMPARE(int(wifi.status()), Scanning);
        priv(wifi)->updateWifiInfo();

        // The network in use comes first, whatever the host's order.
        ConstAccessPointListPtr list = wifi.accessPoints();
        QCOMPARE(list->count(), 2);
        QCOMPARE(list->at(0)->ssid() + list->at(1)->ssid(), QString("LabHome"));
        QCOMPARE(
            QVariantList({wifi.wifiSsid(), wifi.wifiChannel(), wifi.wifiFrequency()}), QVariantList({"Lab", 8, 0}));
        QVERIFY(wifi.wifiSignalStrength() >= 80 && wifi.wifiSignalStrength() <= 99);

        const QRegularExpression mac(QString("^[0-9a-f]{2}(:[0-9a-f]{2}){5}$"));
        for (IAccessPoint *ap : list->items) {
            QVERIFY2(mac.match(ap->mac()).hasMatch(), qPrintable(ap->mac()));
            QVERIFY(ap->channel() >= 1 && ap->channel() <= 13);
            QVERIFY(ap->frequency() >= 2411 && ap->frequency() <= 2510);
            QVERIFY(ap->signalStrength() >= 20 && ap->signalStrength() <= 99);
            QVERIFY(ap->secure());
            QCOMPARE(int(ap->securityFlags()) + int(ap->modeFlag()) + ap->lastSeen(), 0);
            QCOMPARE(ap->parent(), priv(wifi));
        }
        QCOMPARE(wifi.property("accessPoints").value<ConstAccessPointListPtr>(), list);
    }

    void networksDriftComeAndGo()
    {
        m_host.configurations = {wlan("Home", false), wlan("Lab", true)};
        IWifi wifi(D::ID_NETWORK_WIFI);
        priv(wifi)->updateWifiInfo();
        // Known from now on, so found by a later scan only.
        m_host.configurations.append(wlan("Late", false));

        ConstAccessPointListPtr list = wifi.accessPoints();
        QHash<QString, int> added, removed;
        QList<QPointer<IAccessPoint>> gone;
        QList<QPair<QString, int>> changed;
        QSignalSpy removedRows(list, &AbstractListModel::rowsRemoved);
        QSignalSpy changes(list, &AbstractListModel::dataChanged);
        connect(list, &AbstractListModel::rowsInserted, this, [&](int first, int last) {
            // A network out of use joins at the end.
            QVERIFY(first == last && first == list->count() - 1);
            ++added[list->at(first)->ssid()];
        });
        connect(list, &AbstractListModel::rowsAboutToBeRemoved, this, [&](int first, int last) {
            QVERIFY(first == last && first >= 0 && first < list->count());
            ++removed[list->at(first)->ssid()];
            gone.append(list->at(first));
        });
        connect(list, &AbstractListModel::dataChanged, this, [&](int row) {
            QVERIFY(row >= 0 && row < list->count());
            changed.append({list->at(row)->ssid(), list->at(row)->signalStrength()});
        });

        for (int i = 0; i < 3000; ++i) {
            QHash<QString, int> before;
            for (IAccessPoint *ap : list->items) {
                before.insert(ap->ssid(), ap->signalStrength());
            }
            changed.clear();
            priv(wifi)->updateWifiInfo();
            QCOMPARE(list->at(0)->ssid(), QString("Lab"));
            for (const auto &c : changed) {
                QVERIFY(c.second >= 0 && c.second <= 100 && qAbs(c.second - before.value(c.first)) <= 4);
            }
        }

        // About one update in twenty finds a missing network or loses a listed
        // one, so an inactive network is listed about half of the time.
        for (const char *ssid : {"Late", "Home"}) {
            QVERIFY2(added.value(ssid) > 40 && added.value(ssid) < 115, qPrintable(QString::number(added.value(ssid))));
            QVERIFY(qAbs(added.value(ssid) - removed.value(ssid)) <= 1);
        }
        QVERIFY(!added.contains("Lab") && !removed.contains("Lab"));
        // Re-measured with the same odds: Lab alone about 140 times.
        QVERIFY2(changes.count() > 150 && changes.count() < 400, qPrintable(QString::number(changes.count())));
        QCOMPARE(removedRows.count(), gone.size());
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        QVERIFY(std::all_of(gone.begin(), gone.end(), [](const QPointer<IAccessPoint> &ap) { return ap.isNull(); }));
    }

    void strengthStaysInRange()
    {
        m_host.configurations = {wlan("Lab", true)};
        IWifi wifi(D::ID_NETWORK_WIFI);
        WifiPrivate *d = priv(wifi);
        // From the top for a while, then from the bottom until it reaches zero.
        d->overrideWifiSignalStrength(100);
        int previous = 100;
        for (int i = 0; previous != 0 && i < 100000; ++i) {
            if (i == 300) {
                d->overrideWifiSignalStrength(previous = 1);
            }
            d->updateWifiInfo();
            const int now = wifi.wifiSignalStrength();
            QVERIFY2(now >= 0 && now <= 100 && qAbs(now - previous) <= 1, qPrintable(QString::number(now)));
            previous = now;
        }
        QCOMPARE(previous, 0);
        // At zero the network counts as just found and starts over.
        d->updateWifiInfo();
        QVERIFY(wifi.wifiSignalStrength() >= 80 && wifi.wifiSignalStrength() <= 99);
    }

    void startUpAndHostChanges()
    {
        m_host.configurations = {wlan("Lab", true)};
        IWifi wifi(D::ID_NETWORK_WIFI);
        QSignalSpy status(&wifi, &IDevice::statusChanged);
        QStringList changes;
        connect(&wifi, &IWifi::wifiSsidChanged, this, [&](const QString &v) { changes << QLatin1String("ssid ") + v; });
        connect(
            &wifi, &IWifi::wifiSignalStrengthChanged, this, [&](int v) { changes << QString("strength %1").arg(v); });
        connect(&wifi, &IWifi::wifiChannelChanged, this, [&](int v) { changes << QString("channel %1").arg(v); });

        wifi.initialize();
        QCOMPARE(statusWords(status), QList<int>{EnabledScanning});
        QCOMPARE(m_host.updateRequests, 1);
        QVERIFY(priv(wifi)->pollTimer);
        // Two updates: the first finds the network, the second may move the strength.
        QCOMPARE(changes.first(), QString("ssid Lab"));
        QCOMPARE(changes.count("channel 8"), 1);
        QCOMPARE(changes.filter("ssid").size(), 1);

        // Each of the host's signals brings an update.
        m_host.configurations = {wlan("Lab", false)};
        changes.clear();
        Q_EMIT m_host.configurationChanged();
        QCOMPARE(changes, QStringList({"ssid ", "strength 0", "channel 0"}));
        m_host.configurations = {wlan("Office", true)};
        Q_EMIT m_host.configurationRemoved();
        QCOMPARE(wifi.wifiSsid(), QString("Office"));
        m_host.configurations.clear();
        Q_EMIT m_host.updateCompleted();
        QCOMPARE(wifi.wifiSsid(), QString());
        QCOMPARE(status.count(), 1);
    }

    void overrides()
    {
        struct Override
        {
            std::function<void(WifiPrivate *)> apply;
            const char *property;
            QVariant value;
        };
        const auto row = [](auto method, auto value, const char *property) {
            return Override{[=](WifiPrivate *p) { (p->*method)(value); }, property, QVariant::fromValue(value)};
        };
        const QList<Override> overrides{row(&WifiPrivate::overrideSSID, QString("Lab"), "wifiSsid"),
            row(&WifiPrivate::overrideWifiChannel, 8, "wifiChannel"),
            row(&WifiPrivate::overrideWifiFrequency, 2437, "wifiFrequency"),
            row(&WifiPrivate::overrideWifiSignalStrength, 42, "wifiSignalStrength"),
            row(&WifiPrivate::overrideWifiCountry, QString("DK"), "wifiCountry"),
            row(&WifiPrivate::overrideIP, QString("1.2.3.4/5"), "ip"),
            row(&WifiPrivate::overrideNetworkState, INetwork::NETWORK_STATE_FAILED, "networkState")};
        m_host.configurations = {wlan("Lab", true)};
        for (const Override &o : overrides) {
            IWifi wifi(D::ID_NETWORK_WIFI);
            wifi.initialize();
            const QMetaObject *mo = wifi.metaObject();
            QSignalSpy spy(&wifi, mo->property(mo->indexOfProperty(o.property)).notifySignal());
            // Always announced, changed or not, and the polling ends for good.
            o.apply(priv(wifi));
            o.apply(priv(wifi));
            QCOMPARE(spy.count(), 2);
            QCOMPARE(spy.at(1).at(0), o.value);
            QCOMPARE(wifi.property(o.property), o.value);
            QVERIFY2(!priv(wifi)->pollTimer, o.property);
        }

        IWifi wifi(D::ID_NETWORK_WIFI);
        wifi.initialize();
        QSignalSpy country(&wifi, &IWifi::wifiCountryChanged);
        wifi.setWifiCountry("DK");
        QVERIFY(wifi.setProperty("wifiCountry", QString("SE")));
        QVERIFY(wifi.wifiCountry().isEmpty() && country.isEmpty());

        // Switched at once, and only on a real change.
        QSignalSpy status(&wifi, &IDevice::statusChanged);
        priv(wifi)->overrideWifiEnabled(false);
        priv(wifi)->overrideWifiEnabled(false);
        QVERIFY(!priv(wifi)->pollTimer);
        priv(wifi)->overrideWifiEnabled(true);
        // The two radio bits, one signal each; anything else is not this device's.
        wifi.clearAbility(D::F_ALL);
        wifi.setAbility(D::F_ACTIVE);
        wifi.setAbility(D::F_ALL);
        QCOMPARE(
            statusWords(status), QList<int>({Scanning, EnabledScanning, Scanning, 0, D::F_ENABLE, EnabledScanning}));

        // The host's own changes still come through after an override.
        priv(wifi)->overrideSSID("Ops");
        Q_EMIT m_host.configurationChanged();
        QCOMPARE(wifi.wifiSsid(), QString("Lab"));
    }

    void connectionRequestsAreTraced()
    {
        IWifi wifi(D::ID_NETWORK_WIFI);
        QSignalSpy ssid(&wifi, &IWifi::wifiSsidChanged);
        LogCapture log;
        const QString lab = "Lab";
        wifi.connectToWifiAccessPoint(lab, "pw", "me");
        wifi.connectToWifiAccessPoint(lab);
        wifi.connectToWifiBss("aa:bb");
        wifi.connectToWifiAdhoc(lab);
        wifi.connectToWifiAdhoc();
        QVERIFY(QMetaObject::invokeMethod(&wifi, "requestScan"));
        QCOMPARE(log.messages(),
            QStringList({"ssid \"Lab\" password \"pw\" username \"me\"", "ssid \"Lab\" password \"\" username \"\"",
                "bssid \"aa:bb\" password \"\"", "ssid \"Lab\" channel 1", "ssid \"Bravent\" channel 1", ""}));
        QVERIFY(log.records().last().function.contains(QLatin1String("WifiPrivate::requestScan")));
        QVERIFY(ssid.isEmpty() && wifi.wifiSsid().isEmpty());
    }

    void systemReachesNetworkDevices()
    {
        TestRoot root;
        System *system = startSystem(System::PT_UNKNOWN);
        auto *sys = system->findChild<SystemPrivate *>();
        // The P2P device is a network device too, so the network overrides reach it.
        const IDevicePtr p2p = sys->addDevice(D::ID_NETWORK_WIFI_P2P, D::DEVICE_NETWORK, QString());
        QVERIFY(qobject_cast<IWifiP2P *>(p2p.data()));
        sys->overrideIP(D::ID_NETWORK_WIFI_P2P, "10.2.2.2/8");
        QCOMPARE(p2p->property("ip").toString(), QString("10.2.2.2/8"));
        sys->overrideWifiEnabled(false);
        QCOMPARE(int(system->device(D::ID_NETWORK_WIFI)->status()), Scanning);
        // Missing devices and devices of another class are left alone.
        sys->overrideNetworkState(D::ID_AUDIO, INetwork::NETWORK_STATE_FAILED);
        sys->overrideIP(D::ID_BATTERY_2ND, "x");

        LogCapture log;
        sys->removeDevice(D::ID_NETWORK_LAN);
        // Gone once the queued announcements let go of it.
        QTRY_COMPARE(log.messages(), QStringList{"ID_NETWORK_LAN"});
        QVERIFY(log.records().at(0).function.contains("NetworkPrivate::~NetworkPrivate"));
    }

    void discovery()
    {
        Device dev;
        QCOMPARE(dev.p2p->property("peerList").value<ConstWifiP2PPeerListPtr>(), dev.p2p->peerList());
        QCOMPARE(dev.p2p->peerList()->count(), 0);
        LogCapture log;
        QSignalSpy inserted(dev.p2p->peerList(), &AbstractListModel::rowsInserted);
        dev.p2p->findPeers();
        QCOMPARE(inserted.count(), 0);
        QTRY_COMPARE(inserted.count(), 1);
        QCOMPARE(inserted.at(0), (QVariantList{0, 0}));
        IWifiP2PPeerPtr peer = dev.p2p->peerList(Bssid);
        QVERIFY(peer && peer == dev.p2p->peerList()->at(0));
        QCOMPARE(QVariantList({peer->objectName(), peer->channel(), peer->signalStrength(), peer->isGroupOwner()}),
            QVariantList({Bssid, 4, 80, false}));
        QCOMPARE(peer->parent(), dev.p2p);
        const WifiP2PServiceList services{{"Direct-Quarnpel", "_bravent._tcp.local.", 7557,
            {{"cid", ""}, {"name", "Direct-Quarnel1"}, {"manikin", "1"}, {"ver", "Dummy Version"}}}};
        QVERIFY(peer->serviceList()->items == services);

        // The action's own trace, then the entry point's with the record as printed.
        QCOMPARE(log.messages().at(log.messages().size() - 2), QString());
        QVERIFY(log.records().at(log.records().size() - 2).function.contains("findPeers()::<lambda"));
        QVERIFY(log.messages().last().startsWith("bssi \"02:22:22\" channel 4 signalStrength 80 dbusServiceList "
                                                 "(serviceName= \"Direct-Quarnpel\" serviceType= "));

        // Rediscovery refreshes the same row: no new row, no unchanged values, but a fresh service model.
        QSignalSpy values(peer.data(), &IWifiP2PPeer::channelChanged);
        QSignalSpy strength(peer.data(), &IWifiP2PPeer::signalStrengthChanged);
        QSignalSpy owner(peer.data(), &IWifiP2PPeer::isGroupOwnerChanged);
        QSignalSpy reset(peer->serviceList(), &AbstractListModel::modelReset);
        dev.p2p->findPeers();
        dev.p2p->findPeers();
        QTRY_COMPARE(reset.count(), 2);
        QCOMPARE(values.count() + strength.count() + owner.count(), 0);
        QCOMPARE(inserted.count(), 1);
        QCOMPARE(dev.p2p->peerList()->count(), 1);
        QVERIFY(peer->serviceList()->items == services);

        // A daemon's events arrive queued, so the service types must travel; a removal releases the peer.
        QVERIFY(QMetaObject::invokeMethod(dev.d, "onPeerFound", Qt::QueuedConnection, Q_ARG(QString, QString("b2")),
            Q_ARG(int, 6), Q_ARG(int, 50), Q_ARG(DBusWifiP2PServiceList, {})));
        QTRY_COMPARE(dev.p2p->peerList()->count(), 2);
        QVERIFY(!dev.p2p->peerList("B2"));
        QPointer<IWifiP2PPeer> gone = peer.data();
        peer.reset();
        QSignalSpy removed(dev.p2p->peerList(), &AbstractListModel::rowsRemoved);
        QVERIFY(QMetaObject::invokeMethod(dev.d, "onPeerRemoved", Q_ARG(QString, Bssid)));
        QCOMPARE(removed, QList<QVariantList>({{0, 0}}));
        QVERIFY(gone.isNull() && dev.p2p->peerList()->at(0)->bssid() == QString("b2"));
    }

    void connectAndDisconnect()
    {
        Device dev;
        LogCapture log;
        const QString connected = "bssid \"02:22:22\" state 2";
        // Asked before anything is discovered: the answer finds no peer.
        dev.d->peerConnect(Bssid, "0000");
        QTRY_COMPARE(log.count(connected), 1);
        QCOMPARE(dev.p2p->peerList()->count(), 0);
        dev.p2p->findPeers();
        QTRY_COMPARE(dev.p2p->peerList()->count(), 1);
        const IWifiP2PPeerPtr peer = dev.p2p->peerList(Bssid);
        QCOMPARE(peer->state(), IWifiP2PPeer::PS_UNKNOWN);

        QSignalSpy states(peer.data(), &IWifiP2PPeer::stateChanged);
        QElapsedTimer clock;
        clock.start();
        peer->peerConnect("1234");
        QVERIFY(log.contains("bssid \"02:22:22\" psk \"1234\""));
        QCOMPARE(states.count(), 0);
        QTRY_COMPARE(states.count(), 1);
        QVERIFY(clock.elapsed() >= 190);
        QCOMPARE(states.at(0).at(0).value<IWifiP2PPeer::peerState>(), IWifiP2PPeer::PS_CONNECTED);
        // Already connected: the answer changes nothing.
        peer->peerConnect("1234");
        QTRY_COMPARE(log.count(connected), 3);
        QCOMPARE(states.count(), 1);

        peer->peerDisconnect();
        QTRY_COMPARE(states.count(), 2);
        QCOMPARE(peer->state(), IWifiP2PPeer::PS_DISCONNECTED);
        QCOMPARE(log.count("bssid \"02:22:22\" state 6"), 1);
    }

    void groups()
    {
        Device dev;
        LogCapture log;
        QSignalSpy created(dev.p2p, &IWifiP2P::groupCreated);
        QSignalSpy removed(dev.p2p, &IWifiP2P::groupRemoved);
        // Removing a group that never existed is still answered.
        dev.p2p->removeGroup();
        QCOMPARE(removed.count(), 0);
        QTRY_COMPARE(removed.count(), 1);

        dev.p2p->addGroup("a", "b", "c", "d");
        dev.p2p->addGroup("x", "", "", "", false, 11);
        QTRY_COMPARE(created.count(), 2);
        QCOMPARE(removed.count(), 1);
        const auto first = created.at(0).at(0).value<IWifiP2PPeerPtr>();
        const auto group = created.at(1).at(0).value<IWifiP2PPeerPtr>();
        QVERIFY(first && group && first != group);
        QCOMPARE(dev.d->groupPeer, group);
        QCOMPARE(QVariantList({group->bssid(), group->objectName(), group->channel(), group->isGroupOwner(),
                     int(group->state()), group->signalStrength(), group->ip()}),
            QVariantList({Bssid, Bssid, 4, true, int(IWifiP2PPeer::PS_UNKNOWN), 0, QString()}));
        QCOMPARE(group->serviceList()->at(0).serviceName, QString("Direct-Quarnel1"));
        QCOMPARE(group->parent(), dev.d);
        QVERIFY(!dev.p2p->peerList(Bssid) && dev.p2p->peerList()->count() == 0);

        // The group owner has no manager to forward to: nothing is traced, nothing answered.
        log.clear();
        group->peerConnect("1");
        group->peerDisconnect();
        group->setServiceList({WifiP2PService()});
        group->updateService("a", "b", "c", "d");
        WifiP2PPeerPrivate::get(group.data())->accept(true);
        QCOMPARE(log.messages(), QStringList());
        dev.p2p->removeGroup();
        QTRY_COMPARE(removed.count(), 2);
        QVERIFY(!dev.d->groupPeer);
        QCOMPARE(group->state(), IWifiP2PPeer::PS_UNKNOWN);
        QCOMPARE(log.messages(), QStringList({QString(), QString(), QString()}));
    }

    void traces()
    {
        Device dev;
        WifiP2PPrivate *d = dev.d;
        const QString aa = "aa", traced = "bssid \"aa\"";
        const struct
        {
            const char *function;
            std::function<void()> call;
            QStringList messages;
        } rows[] = {
            {"findPeers", [&] { dev.p2p->findPeers(); }, {QString()}},
            {"addGroup", [&] { dev.p2p->addGroup("net", aa, aa, aa); }, {"ssid \"net\""}},
            {"removeGroup", [&] { dev.p2p->removeGroup(); }, {QString()}},
            {"peerConnect", [&] { d->peerConnect(aa, "12"); }, {traced + " psk \"12\""}},
            {"peerDisconnect", [&] { d->peerDisconnect(aa); }, {traced}},
            {"peerAccept", [&] { d->peerAccept(aa, false); }, {traced + " accepted false"}},
            {"setServiceList", [&] { d->setServiceList(aa, {WifiP2PService()}); }, {traced}},
            {"updateService", [&] { d->updateService(aa, aa, aa, aa, aa); }, {traced}},
            {"onPeerRemoved", [&] { d->onPeerRemoved(aa); }, {traced, "peer not found \"aa\""}},
            {"onPeerStateChanged", [&] { d->onPeerStateChanged(aa, 3); }, {traced + " state 3"}},
            {"onGroupRemoved", [&] { d->onGroupRemoved(); }, {QString()}},
            {"onGroupCreated", [&] { d->onGroupCreated(aa, 1, {}); }, {traced}},
            {"stopFindPeers", [&] { dev.p2p->stopFindPeers(); }, {}},
        };
        for (const auto &row : rows) {
            LogCapture log;
            row.call();
            QVERIFY2(log.messages() == row.messages, row.function);
            for (const LogRecord &r : log.records()) {
                QCOMPARE(r.type, QtDebugMsg);
                QVERIFY2(r.function.contains(QLatin1String("WifiP2PPrivate::") + QLatin1String(row.function)),
                    qPrintable(r.function));
            }
        }
    }

    void servicePrinting()
    {
        LogCapture log;
        const DBusWifiP2PService a = record("A", 1, {{"k", "v w"}});
        qDebug() << a;
        qDebug() << DBusWifiP2PServiceList{a, record("B", 2, {})};
        qDebug() << DBusWifiP2PServiceList();
        const QString textA =
            QString("serviceName= \"A\" serviceType= \"_t._tcp.\" servicePort 1 idValuePair= QHash((\"k\", \"v w\"))");
        QCOMPARE(log.messages(),
            QStringList({textA,
                QLatin1Char('(') + textA +
                    QString(", serviceName= \"B\" serviceType= \"_t._tcp.\" servicePort 2 idValuePair= QHash())"),
                QString("()")}));
    }

    void destroyedWhileAnswerPending()
    {
        auto *p2p = new IWifiP2P(IDevice::ID_NETWORK_WIFI_P2P);
        QCOMPARE(p2p->ip(), QString("127.0.0.1")); // until initialize() reads the host
        p2p->findPeers();
        p2p->addGroup("", "", "", "");
        QSignalSpy created(p2p, &IWifiP2P::groupCreated);
        QTRY_COMPARE(created.count(), 1);
        QTRY_COMPARE(p2p->peerList()->count(), 1);
        IWifiP2PPeerPtr peer = p2p->peerList(Bssid);
        IWifiP2PPeerPtr group = created.at(0).at(0).value<IWifiP2PPeerPtr>();

        p2p->findPeers();
        p2p->addGroup("", "", "", "");
        p2p->removeGroup();
        peer->peerConnect(QString());
        peer->peerDisconnect();
        delete p2p;
        LogCapture log;
        QTest::qWait(400); // twice the answer delay
        QCOMPARE(log.messages(), QStringList());
        // Peers held past their device stay readable and ask nobody.
        QVERIFY(peer->bssid() == Bssid && !peer->parent() && !group->parent());
        peer->peerConnect(QString());
        QCOMPARE(log.messages(), QStringList());
        QPointer<IWifiP2PPeer> guard = peer.data();
        peer.reset();
        QVERIFY(guard.isNull());
    }

private:
    FakeNetworkConfigurations m_host;
};

QTEST_GUILESS_MAIN(TestWifi)
#include "tst_wifi.moc"

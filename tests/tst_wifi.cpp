// The Wi-Fi station on made-up host configurations, and its place in System.

#include "fakenetworkconfigurations.h"
#include "logcapture.h"
#include "systemprivate_p.h"
#include "testroot.h"
#include "testsystem.h"
#include "wifiprivate_p.h"

#include <vantix/iaccesspoint.h>
#include <vantix/iwifi.h>
#include <vantix/iwifip2p.h>
#include <vantix/system.h>

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
        QCOMPARE(statusWords(status), QList<int>{Scanning});
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

private:
    FakeNetworkConfigurations m_host;
};

QTEST_GUILESS_MAIN(TestWifi)
#include "tst_wifi.moc"

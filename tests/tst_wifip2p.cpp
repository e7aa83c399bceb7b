// The Wi-Fi Direct device with its simulated daemon answers, its peers and their services.

#include "logcapture.h"
#include "wifip2ppeerprivate_p.h"
#include "wifip2pprivate_p.h"

#include <vantix/devicelist.h>
#include <vantix/iwifip2p.h>

#include <QElapsedTimer>
#include <QPointer>
#include <QSignalSpy>
#include <QtTest>

#include <functional>

using namespace TQ_SPAPI;

namespace {
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

class TestWifiP2P : public QObject
{
    Q_OBJECT

private Q_SLOTS:
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
        QCOMPARE(peer->serviceList()->count(), 1);
        const WifiP2PService s1 = peer->serviceList()->at(0);
        const QHash<QString, QString> pairs{
            {"cid", ""}, {"name", "Direct-Quarnel1"}, {"manikin", "1"}, {"ver", "Dummy Version"}};
        QVERIFY(s1 == (WifiP2PService{"Direct-Quarnpel", "_bravent._tcp.local.", 7557, pairs}));

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
        QVERIFY(peer->serviceList()->at(0) == s1);

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
};

QTEST_GUILESS_MAIN(TestWifiP2P)
#include "tst_wifip2p.moc"

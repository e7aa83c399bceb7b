// The device registry and factory, and the list models.

#include "logcapture.h"

#include <vantix/devicelist.h>
#include <vantix/listmodel.h>

#include <QPointer>
#include <QSignalSpy>
#include <QtTest>

using namespace TQ_SPAPI;
using D = IDevice;

class TestDeviceList : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void addIsAnnouncedQueuedOnce()
    {
        DeviceList list;
        const IDevicePtr device = list.add(D::ID_AUDIO, D::DEVICE_AUDIO, QString(), 0);
        // Connected after add() returned, still in time.
        QSignalSpy added(&list, &DeviceList::deviceAdded);
        LogCapture log;
        QCOMPARE(list.add(D::ID_AUDIO, D::DEVICE_LED, "/y", 0), device);
        QCOMPARE(log.messages(), QStringList{"ID already exist!! ID_AUDIO"});
        QCOMPARE(log.records().at(0).type, QtWarningMsg);
        QCOMPARE(added.count(), 0);
        QTRY_COMPARE(added.count(), 1);
        QCOMPARE(added.at(0).at(0).value<IDevicePtr>(), device);
        QTest::qWait(20);
        QCOMPARE(added.count(), 1);
        QCOMPARE(list.allDevices().size(), 1);
    }

    void onlyOrdinaryDevicesAreEnabled()
    {
        DeviceList list;
        const IDevicePtr radio = list.add(D::ID_POWER_MANIKIN_5V, D::DEVICE_POWER | D::DEVICE_FIGHT_MODE, QString(), 0);
        const IDevicePtr supply = list.add(D::ID_POWER_SUPPLY, D::DEVICE_POWER, "/x", 0);
        QCOMPARE(list.device(D::ID_POWER_SUPPLY), supply);
        QCOMPARE(supply->status(), D::DeviceFlags());
        QTRY_COMPARE(supply->status(), D::DeviceFlags(D::F_ENABLE));
        QCOMPARE(radio->status(), D::DeviceFlags());
    }

    void disksAreKeyedByIndex()
    {
        DeviceList list;
        const IDevicePtr stick = list.add(D::ID_DISK_USB, D::DEVICE_DISK, "/s1", 1);
        QCOMPARE(list.device(257), stick);
        QVERIFY(!list.device(256));
        // Key 256 is free, so the bare id is not taken for a duplicate.
        const IDevicePtr first = list.add(D::ID_DISK_USB, D::DEVICE_DISK, "/s0", 0);
        QVERIFY(first != stick);
        QCOMPARE(list.device(256), first);
        QVERIFY(list.remove(256));
        QCOMPARE(list.device(257), stick);
        // Only disks take the index.
        const IDevicePtr led = list.add(D::ID_LED_POWER, D::DEVICE_LED, QString(), 5);
        QCOMPARE(list.device(D::ID_LED_POWER), led);
        QVERIFY(!list.device(D::ID_LED_POWER + 5));
    }

    void factory_data()
    {
        QTest::addColumn<int>("id");
        QTest::addColumn<int>("type");
        QTest::addColumn<QByteArray>("className");
        QTest::addColumn<bool>("keepsPath");
        const auto row = [](const char *name, int id, int type, const char *className, bool keepsPath) {
            QTest::newRow(name) << id << type << QByteArray("TQ_SPAPI::") + className << keepsPath;
        };
        row("audio", D::ID_AUDIO, D::DEVICE_AUDIO, "IAudio", false);
        row("amplifier", D::ID_SOUND_AMPLIFIER, D::DEVICE_AUDIO, "ISoundAmplifier", false);
        row("other audio", D::ID_VIBRATOR, D::DEVICE_AUDIO, "IDevice", true);
        row("battery", D::ID_BATTERY_1ST, D::DEVICE_BATTERY, "IBattery", false);
        row("bluetooth", D::ID_BLUETOOTH, D::DEVICE_BUS | D::DEVICE_FIGHT_MODE, "IBluetooth", false);
        row("can bus", D::ID_CAN_BUS, D::DEVICE_CAN | D::DEVICE_BUS, "IDevice", true);
        row("display", D::ID_DISPLAY, D::DEVICE_DISPLAY, "IDisplay", false);
        row("led", D::ID_LED_WIFI, D::DEVICE_LED, "ILed", false);
        row("wired", D::ID_NETWORK_LAN, D::DEVICE_NETWORK, "INetwork", false);
        row("wifi", D::ID_NETWORK_WIFI, D::DEVICE_NETWORK | D::DEVICE_FIGHT_MODE, "IWifi", false);
        row("p2p", D::ID_NETWORK_WIFI_P2P, D::DEVICE_NETWORK, "IWifiP2P", false);
        row("io controller", D::ID_IOCONTROLLER, D::DEVICE_SERIAL | D::DEVICE_HOST, "IIOController", false);
        row("serial", D::ID_MANIKIN_SERIAL, D::DEVICE_SERIAL, "IDevice", false);
        row("serial before disk", D::ID_CAN_SERIAL, D::DEVICE_SERIAL | D::DEVICE_DISK, "IDevice", false);
        row("sensor", D::ID_TEMP_CPU, D::DEVICE_TEMPERATURE, "ISensor", false);
        row("disk", D::ID_DISK_SYSTEM, D::DEVICE_DISK, "IDisk", true);
        row("vibrator", D::ID_VIBRATOR, D::DEVICE_VIBRATOR, "IVibrator", false);
        row("button", D::ID_BUTTON_POWER, D::DEVICE_BUTTON, "IButton", false);
        row("pwm", D::ID_PWM, D::DEVICE_PWM, "IPwmEcg", false);
        row("usb", D::ID_USB_OTG_B, D::DEVICE_USB, "IUsb", false);
        row("power", D::ID_POWER_SUPPLY, D::DEVICE_POWER, "IDevice", true);
        row("unknown type", D::ID_UNKNOWN_DEV, 0, "IDevice", true);
    }

    void factory()
    {
        QFETCH(int, id);
        QFETCH(int, type);
        QFETCH(QByteArray, className);
        QFETCH(bool, keepsPath);
        DeviceList list;
        const IDevicePtr device = list.add(D::DeviceId(id), D::DeviceType(type), "/given", 0);
        QCOMPARE(QByteArray(device->metaObject()->className()), className);
        QCOMPARE(device->id(), D::DeviceId(id));
        QCOMPARE(device->type(), D::DeviceType(type));
        QCOMPARE(device->path(), keepsPath ? QString("/given") : QString());
    }

    void removeIsDirectAndReleases()
    {
        DeviceList list;
        QSignalSpy removed(&list, &DeviceList::deviceRemoved);
        QPointer<IDevice> guard = list.add(D::ID_DISK_USB, D::DEVICE_DISK, "/stick", 2).data();
        QVERIFY(!list.remove(D::ID_DISK_USB));
        QCOMPARE(removed.count(), 0);
        QTRY_VERIFY(guard); // the queued announcement holds it until delivered
        QVERIFY(list.remove(D::ID_DISK_USB + 2));
        QCOMPARE(removed.count(), 1);
        // The id sent is the device's own, not the key.
        QCOMPARE(removed.at(0).at(0).value<D::DeviceId>(), D::ID_DISK_USB);
        QCOMPARE(removed.at(0).at(1).toString(), QString("/stick"));
        QTRY_VERIFY(guard.isNull());
        QVERIFY(!list.remove(D::ID_DISK_USB + 2));
    }

    void devicesMatchEveryBit()
    {
        DeviceList list;
        list.add(D::ID_NETWORK_WIFI_P2P, D::DEVICE_NETWORK, QString(), 0);
        list.add(D::ID_NETWORK_LAN, D::DEVICE_NETWORK, QString(), 0);
        list.add(D::ID_NETWORK_WIFI, D::DEVICE_NETWORK | D::DEVICE_FIGHT_MODE, QString(), 0);
        list.add(D::ID_UNKNOWN_DEV, D::DeviceType(), QString(), 0);
        list.add(D::ID_POWER_SUPPLY, D::DEVICE_POWER, QString(), 0);
        const auto ids = [](const QList<IDevicePtr> &devices) {
            QList<int> result;
            for (const IDevicePtr &d : devices) {
                result.append(d->id());
            }
            return result;
        };
        QCOMPARE(ids(list.devices(D::DEVICE_NETWORK)), (QList<int>{9, 10, 11}));
        QCOMPARE(ids(list.devices(D::DEVICE_NETWORK | D::DEVICE_FIGHT_MODE)), QList<int>{9});
        QCOMPARE(ids(list.devices(D::DEVICE_UNKNOWN)), QList<int>{0});
        QCOMPARE(ids(list.devices(D::DEVICE_ALL)), QList<int>{});
        QCOMPARE(ids(list.allDevices()), (QList<int>{0, 9, 10, 11, 29}));
    }

    void listModelRowSignals()
    {
        ListModel<QString> model;
        QStringList events;
        const auto log = [&](const char *what) {
            return [&events, &model, what](int f, int l) {
                events << QString("%1 %2 %3 count %4").arg(what).arg(f).arg(l).arg(model.count());
            };
        };
        connect(&model, &AbstractListModel::rowsAboutToBeInserted, this, log("aboutToInsert"));
        connect(&model, &AbstractListModel::rowsInserted, this, log("inserted"));
        connect(&model, &AbstractListModel::rowsAboutToBeRemoved, this, log("aboutToRemove"));
        connect(&model, &AbstractListModel::rowsRemoved, this, log("removed"));
        model.append("a");
        model.append("c");
        model.insert(1, "b");
        model.removeAt(5);
        model.removeAt(0);
        QCOMPARE(events,
            QStringList({"aboutToInsert 0 0 count 0", "inserted 0 0 count 1", "aboutToInsert 1 1 count 1",
                "inserted 1 1 count 2", "aboutToInsert 1 1 count 2", "inserted 1 1 count 3",
                "aboutToRemove 5 5 count 3", "removed 5 5 count 3", "aboutToRemove 0 0 count 3",
                "removed 0 0 count 2"}));
        QCOMPARE(model.items, QList<QString>({"b", "c"}));
        QCOMPARE(model.first + model.last, 0);
    }

    void listModelReset()
    {
        ListModel<int> model;
        model.append(7);
        QStringList events;
        connect(
            &model, &AbstractListModel::modelAboutToBeReset, this, [&] { events << QString::number(model.count()); });
        connect(&model, &AbstractListModel::modelReset, this, [&] { events << QString::number(model.count()); });
        QSignalSpy inserted(&model, &AbstractListModel::rowsInserted);
        model.setItems({1, 2, 3});
        QCOMPARE(events, QStringList({"1", "3"}));
        QCOMPARE(inserted.count(), 0);
        QCOMPARE(model.items, QList<int>({1, 2, 3}));
        QCOMPARE(model.at(2), 3);
    }
};

QTEST_GUILESS_MAIN(TestDeviceList)
#include "tst_devicelist.moc"

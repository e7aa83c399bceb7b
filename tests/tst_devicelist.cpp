// The device registry and factory, and the list models.

#include "logcapture.h"

#include <vantix/devicelist.h>
#include <vantix/listmodel.h>

#include <QPointer>
#include <QSignalSpy>
#include <QtTest>

using namespace TQ_SPAPI;

class TestDeviceList : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void addStoresInitialisesAndEnables();
    void deviceAddedIsQueued();
    void duplicateIdReturnsStoredDevice();
    void disksAreKeyedByIndex();
    void factoryPaths_data();
    void factoryPaths();
    void removeIsDirectAndReleases();
    void devicesMatchEveryBit();
    void flightModeDevicesAreNotEnabled();
    void listModelRowSignals();
    void listModelReset();
};

void TestDeviceList::addStoresInitialisesAndEnables()
{
    DeviceList list;
    const IDevicePtr device = list.add(IDevice::ID_POWER_SUPPLY, IDevice::DEVICE_POWER, QStringLiteral("/x"), 0);
    QVERIFY(device);
    QCOMPARE(list.device(IDevice::ID_POWER_SUPPLY), device);
    QCOMPARE(device->status(), IDevice::DeviceFlags());
    QTRY_COMPARE(device->status(), IDevice::DeviceFlags(IDevice::F_ENABLE));
}

void TestDeviceList::deviceAddedIsQueued()
{
    DeviceList list;
    const IDevicePtr device = list.add(IDevice::ID_AUDIO, IDevice::DEVICE_AUDIO, QString(), 0);
    // Connected after add() returned, still in time.
    QSignalSpy added(&list, &DeviceList::deviceAdded);
    QCOMPARE(added.count(), 0);
    QTRY_COMPARE(added.count(), 1);
    QCOMPARE(added.at(0).at(0).value<IDevicePtr>(), device);
}

void TestDeviceList::duplicateIdReturnsStoredDevice()
{
    DeviceList list;
    QSignalSpy added(&list, &DeviceList::deviceAdded);
    const IDevicePtr first = list.add(IDevice::ID_AUDIO, IDevice::DEVICE_AUDIO, QString(), 0);
    LogCapture log;
    const IDevicePtr second = list.add(IDevice::ID_AUDIO, IDevice::DEVICE_LED, QStringLiteral("/y"), 0);
    QCOMPARE(second, first);
    QCOMPARE(log.messages(), QStringList{QStringLiteral("ID already exist!! ID_AUDIO")});
    QCOMPARE(log.records().at(0).type, QtWarningMsg);
    QTRY_COMPARE(added.count(), 1);
    QTest::qWait(20);
    QCOMPARE(added.count(), 1);
    QCOMPARE(list.allDevices().size(), 1);
}

void TestDeviceList::disksAreKeyedByIndex()
{
    DeviceList list;
    const IDevicePtr stick = list.add(IDevice::ID_DISK_USB, IDevice::DEVICE_DISK, QStringLiteral("/s1"), 1);
    QCOMPARE(list.device(257), stick);
    QVERIFY(!list.device(256));
    // Key 256 is free, so the bare id is not taken for a duplicate.
    const IDevicePtr first = list.add(IDevice::ID_DISK_USB, IDevice::DEVICE_DISK, QStringLiteral("/s0"), 0);
    QVERIFY(first != stick);
    QCOMPARE(list.device(256), first);
    QVERIFY(list.remove(256));
    QCOMPARE(list.device(257), stick);
    // Only disks take the index.
    const IDevicePtr led = list.add(IDevice::ID_LED_POWER, IDevice::DEVICE_LED, QString(), 5);
    QCOMPARE(list.device(IDevice::ID_LED_POWER), led);
    QVERIFY(!list.device(IDevice::ID_LED_POWER + 5));
}

void TestDeviceList::factoryPaths_data()
{
    QTest::addColumn<int>("id");
    QTest::addColumn<int>("type");
    QTest::addColumn<bool>("keepsPath");

    QTest::newRow("power keeps path") << int(IDevice::ID_POWER_SUPPLY) << int(IDevice::DEVICE_POWER) << true;
    QTest::newRow("can keeps path") << int(IDevice::ID_CAN_BUS) << int(IDevice::DEVICE_CAN | IDevice::DEVICE_BUS)
                                    << true;
    QTest::newRow("disk keeps path") << int(IDevice::ID_DISK_SYSTEM) << int(IDevice::DEVICE_DISK) << true;
    QTest::newRow("unknown type keeps path") << int(IDevice::ID_UNKNOWN_DEV) << 0 << true;
    QTest::newRow("serial drops path") << int(IDevice::ID_MANIKIN_SERIAL) << int(IDevice::DEVICE_SERIAL) << false;
    QTest::newRow("serial before disk") << int(IDevice::ID_CAN_SERIAL)
                                        << int(IDevice::DEVICE_SERIAL | IDevice::DEVICE_DISK) << false;
    QTest::newRow("led drops path") << int(IDevice::ID_LED_WIFI) << int(IDevice::DEVICE_LED) << false;
    QTest::newRow("battery drops path") << int(IDevice::ID_BATTERY_1ST) << int(IDevice::DEVICE_BATTERY) << false;
}

void TestDeviceList::factoryPaths()
{
    QFETCH(int, id);
    QFETCH(int, type);
    QFETCH(bool, keepsPath);
    DeviceList list;
    const IDevicePtr device = list.add(IDevice::DeviceId(id), IDevice::DeviceType(type), QStringLiteral("/given"), 0);
    QCOMPARE(device->id(), IDevice::DeviceId(id));
    QCOMPARE(device->path(), keepsPath ? QStringLiteral("/given") : QString());
}

void TestDeviceList::removeIsDirectAndReleases()
{
    DeviceList list;
    QSignalSpy removed(&list, &DeviceList::deviceRemoved);
    QPointer<IDevice> guard =
        list.add(IDevice::ID_DISK_USB, IDevice::DEVICE_DISK, QStringLiteral("/stick"), 2).data();
    QVERIFY(!list.remove(IDevice::ID_DISK_USB));
    QCOMPARE(removed.count(), 0);
    QTRY_VERIFY(guard); // the queued announcement holds it until delivered
    QVERIFY(list.remove(IDevice::ID_DISK_USB + 2));
    QCOMPARE(removed.count(), 1);
    // The id sent is the device's own, not the key.
    QCOMPARE(removed.at(0).at(0).value<IDevice::DeviceId>(), IDevice::ID_DISK_USB);
    QCOMPARE(removed.at(0).at(1).toString(), QStringLiteral("/stick"));
    QTRY_VERIFY(guard.isNull());
    QVERIFY(!list.remove(IDevice::ID_DISK_USB + 2));
}

void TestDeviceList::devicesMatchEveryBit()
{
    DeviceList list;
    list.add(IDevice::ID_NETWORK_WIFI_P2P, IDevice::DEVICE_NETWORK, QString(), 0);
    list.add(IDevice::ID_NETWORK_LAN, IDevice::DEVICE_NETWORK, QString(), 0);
    list.add(IDevice::ID_NETWORK_WIFI, IDevice::DEVICE_NETWORK | IDevice::DEVICE_FIGHT_MODE, QString(), 0);
    list.add(IDevice::ID_UNKNOWN_DEV, IDevice::DeviceType(), QString(), 0);
    list.add(IDevice::ID_POWER_SUPPLY, IDevice::DEVICE_POWER, QString(), 0);

    const auto ids = [](const QList<IDevicePtr> &devices) {
        QList<int> result;
        for (const IDevicePtr &d : devices) {
            result.append(d->id());
        }
        return result;
    };
    QCOMPARE(ids(list.devices(IDevice::DEVICE_NETWORK)), (QList<int>{9, 10, 11}));
    QCOMPARE(ids(list.devices(IDevice::DEVICE_NETWORK | IDevice::DEVICE_FIGHT_MODE)), QList<int>{9});
    QCOMPARE(ids(list.devices(IDevice::DEVICE_UNKNOWN)), QList<int>{0});
    QCOMPARE(ids(list.devices(IDevice::DEVICE_ALL)), QList<int>{});
    QCOMPARE(ids(list.allDevices()), (QList<int>{0, 9, 10, 11, 29}));
}

void TestDeviceList::flightModeDevicesAreNotEnabled()
{
    DeviceList list;
    const IDevicePtr radio =
        list.add(IDevice::ID_POWER_MANIKIN_5V, IDevice::DEVICE_POWER | IDevice::DEVICE_FIGHT_MODE, QString(), 0);
    const IDevicePtr supply = list.add(IDevice::ID_POWER_SUPPLY, IDevice::DEVICE_POWER, QString(), 0);
    QTRY_COMPARE(supply->status(), IDevice::DeviceFlags(IDevice::F_ENABLE));
    QCOMPARE(radio->status(), IDevice::DeviceFlags());
}

void TestDeviceList::listModelRowSignals()
{
    ListModel<QString> model;
    QStringList events;
    connect(&model, &AbstractListModel::rowsAboutToBeInserted, this, [&](int f, int l) {
        events << QStringLiteral("aboutToInsert %1 %2 count %3").arg(f).arg(l).arg(model.count());
    });
    connect(&model, &AbstractListModel::rowsInserted, this,
            [&](int f, int l) { events << QStringLiteral("inserted %1 %2 count %3").arg(f).arg(l).arg(model.count()); });
    connect(&model, &AbstractListModel::rowsAboutToBeRemoved, this, [&](int f, int l) {
        events << QStringLiteral("aboutToRemove %1 %2 count %3").arg(f).arg(l).arg(model.count());
    });
    connect(&model, &AbstractListModel::rowsRemoved, this,
            [&](int f, int l) { events << QStringLiteral("removed %1 %2 count %3").arg(f).arg(l).arg(model.count()); });

    model.append(QStringLiteral("a"));
    model.append(QStringLiteral("c"));
    model.insert(1, QStringLiteral("b"));
    model.removeAt(5);
    model.removeAt(0);
    QCOMPARE(events,
             (QStringList{QStringLiteral("aboutToInsert 0 0 count 0"), QStringLiteral("inserted 0 0 count 1"),
                          QStringLiteral("aboutToInsert 1 1 count 1"), QStringLiteral("inserted 1 1 count 2"),
                          QStringLiteral("aboutToInsert 1 1 count 2"), QStringLiteral("inserted 1 1 count 3"),
                          QStringLiteral("aboutToRemove 5 5 count 3"), QStringLiteral("removed 5 5 count 3"),
                          QStringLiteral("aboutToRemove 0 0 count 3"), QStringLiteral("removed 0 0 count 2")}));
    QCOMPARE(model.items, (QList<QString>{QStringLiteral("b"), QStringLiteral("c")}));
    QCOMPARE(model.first, 0);
    QCOMPARE(model.last, 0);
}

void TestDeviceList::listModelReset()
{
    ListModel<int> model;
    model.append(7);
    QStringList events;
    connect(&model, &AbstractListModel::modelAboutToBeReset, this,
            [&] { events << QStringLiteral("aboutToReset %1").arg(model.count()); });
    connect(&model, &AbstractListModel::modelReset, this,
            [&] { events << QStringLiteral("reset %1").arg(model.count()); });
    QSignalSpy inserted(&model, &AbstractListModel::rowsInserted);
    model.setItems({1, 2, 3});
    QCOMPARE(events, (QStringList{QStringLiteral("aboutToReset 1"), QStringLiteral("reset 3")}));
    QCOMPARE(inserted.count(), 0);
    QCOMPARE(model.items, (QList<int>{1, 2, 3}));
    QCOMPARE(model.at(2), 3);
}

QTEST_GUILESS_MAIN(TestDeviceList)
#include "tst_devicelist.moc"

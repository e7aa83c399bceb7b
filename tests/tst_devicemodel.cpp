// The device base (status, path and error setters, the delayed ability bits,
// the value-file readers), the device registry and factory, and the list models.

#include "deviceprivate_p.h"
#include "logcapture.h"
#include "testfiles.h"
#include "testsystem.h"

#include <vantix/devicelist.h>
#include <vantix/idevice.h>
#include <vantix/listmodel.h>

#include <QAbstractEventDispatcher>
#include <QElapsedTimer>
#include <QFile>
#include <QPointer>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QtTest>

#include <cmath>

using namespace TQ_SPAPI;
using D = IDevice;

namespace {
D::Flags bits(D::DeviceFlags flags)
{
    return D::Flags(int(flags));
}

DevicePrivate *priv(IDevice &device)
{
    return DevicePrivate::get(&device);
}
} // namespace

class TestDeviceModel : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void settersCompareFirst()
    {
        IDevice device(D::ID_LED_POWER, D::DEVICE_LED, "/p");
        QCOMPARE(device.type(), D::DeviceType(D::DEVICE_LED));
        QCOMPARE(device.status(), D::DeviceFlags(D::F_NOFLAGS));
        QCOMPARE(device.error(), D::E_NO_ERROR);
        // The private is a QObject child of the public object it emits on.
        QCOMPARE(priv(device)->parent(), &device);
        QCOMPARE(priv(device)->q, &device);
        QSignalSpy status(&device, &D::statusChanged);
        QSignalSpy path(&device, &D::pathChanged);
        QSignalSpy errors(&device, QOverload<D::DeviceError>::of(&D::error));

        priv(device)->setStatus(D::F_ACTIVE | D::F_CHARGE);
        priv(device)->setStatus(D::F_ACTIVE | D::F_CHARGE);
        QCOMPARE(statusWords(status), QList<int>{D::F_ACTIVE | D::F_CHARGE});

        priv(device)->setPath("/p");
        priv(device)->setPath("/a");
        priv(device)->onPathChanged("/b");
        QCOMPARE(path, QList<QVariantList>({{"/a"}, {"/b"}}));
        QCOMPARE(device.path(), QString("/b"));

        // No automatic return to E_NO_ERROR; only another value is announced.
        priv(device)->setError(D::E_INVALID_COLOR);
        priv(device)->setError(D::E_INVALID_COLOR);
        priv(device)->setError(D::E_DISK_NOT_READY);
        priv(device)->setError(D::E_INVALID_COLOR);
        QCOMPARE(errors.count(), 3);
        QCOMPARE(errors.at(2).at(0).value<D::DeviceError>(), D::E_INVALID_COLOR);
        QCOMPARE(device.error(), D::E_INVALID_COLOR);
    }

    void abilityAppearsAfterDelayOnce()
    {
        IDevice device(D::ID_AUDIO, D::DEVICE_AUDIO, QString());
        QSignalSpy status(&device, &D::statusChanged);
        QElapsedTimer clock;
        clock.start();
        device.setAbility(D::F_ENABLE);
        // A request overlapping one still pending is dropped whole.
        device.setAbility(D::F_ENABLE);
        device.setAbility(bits(D::F_ENABLE | D::F_ACTIVE));
        QCOMPARE(device.status(), D::DeviceFlags());
        QTRY_COMPARE(status.count(), 1);
        QVERIFY2(clock.elapsed() >= 95, qPrintable(QString::number(clock.elapsed())));
        QCOMPARE(device.status(), D::DeviceFlags(D::F_ENABLE));
        QTest::qWait(150);
        QCOMPARE(status.count(), 1);
    }

    void abilityRequestsQueueBehindEachOther()
    {
        IDevice device(D::ID_AUDIO, D::DEVICE_AUDIO, QString());
        QSignalSpy status(&device, &D::statusChanged);
        device.setAbility(D::F_ACTIVE);
        priv(device)->setStatus(D::F_CHARGE); // set meanwhile: kept
        QTest::qWait(20);
        device.clearAbility(D::F_ACTIVE);
        QTRY_COMPARE(status.count(), 3);
        QCOMPARE(statusWords(status), QList<int>({D::F_CHARGE, D::F_CHARGE | D::F_ACTIVE, D::F_CHARGE}));

        // Requested in the same instant, they still apply in the order asked.
        status.clear();
        device.setAbility(D::F_ACTIVE);
        device.clearAbility(D::F_ACTIVE);
        QTRY_COMPARE(status.count(), 2);
        QCOMPARE(statusWords(status), QList<int>({D::F_CHARGE | D::F_ACTIVE, D::F_CHARGE}));
    }

    void resetAndClearAbilityChangeNothing()
    {
        IDevice device(D::ID_AUDIO, D::DEVICE_AUDIO, QString());
        QSignalSpy status(&device, &D::statusChanged);
        // reset() only leaves a trace.
        LogCapture log;
        device.reset();
        QCOMPARE(log.records().size(), 1);
        QCOMPARE(log.records().at(0).type, QtDebugMsg);
        QVERIFY(log.records().at(0).message.isEmpty());
        QVERIFY2(log.records().at(0).function.contains("reset"), qPrintable(log.records().at(0).function));
        // A clear is never dropped. Nothing to clear: no signal, but the request bit goes.
        priv(device)->abilities = D::F_ENABLE;
        device.clearAbility(D::F_ENABLE);
        QCOMPARE(priv(device)->abilities, D::DeviceFlags());
        QTest::qWait(150);
        QCOMPARE(status.count(), 0);
        // So a later request works again.
        device.setAbility(D::F_ENABLE);
        QTRY_COMPARE(status.count(), 1);
        QCOMPARE(device.status(), D::DeviceFlags(D::F_ENABLE));
    }

    void deviceDeletedBeforeTimer()
    {
        const QAbstractEventDispatcher *dispatcher = QAbstractEventDispatcher::instance();
        const int timerObjects = dispatcher->children().size();
        QPointer<IDevice> device = new IDevice(D::ID_AUDIO, D::DEVICE_AUDIO, QString());
        int changes = 0;
        connect(device, &D::statusChanged, this, [&changes] { ++changes; });
        device->setAbility(D::F_ENABLE);
        device->clearAbility(D::F_ACTIVE);
        delete device;
        // The pending requests went with the device: nothing waits out the
        // delay for it, however many devices come and go in that time.
        QCOMPARE(dispatcher->children().size(), timerObjects);
        QTest::qWait(200);
        QCOMPARE(changes, 0);
    }

    void readers_data()
    {
        QTest::addColumn<QByteArray>("content"); // null: no file at all
        QTest::addColumn<double>("milli");
        QTest::addColumn<bool>("convertWarning");
        QTest::addColumn<bool>("readWarning");
        QTest::addColumn<QString>("text");

        QTest::newRow("thousandths") << QByteArray("12345\n") << 12.345 << false << false << "12345";
        QTest::newRow("negative, blanks") << QByteArray("  -2500 \n") << -2.5 << false << false << "-2500";
        QTest::newRow("up to NUL") << QByteArray("700\0garbage", 11) << 0.7 << false << false << "700";
        QTest::newRow("not a number") << QByteArray("abc") << 0.0 << true << true << "abc";
        QTest::newRow("Latin-1, first line")
            << QByteArray("  BQ27\xe9x \nsecond line\n") << 0.0 << true << true << QString::fromLatin1("BQ27\xe9x");
        QTest::newRow("empty file") << QByteArray("") << 0.0 << true << true << "";
        QTest::newRow("missing file") << QByteArray() << 0.0 << false << true << QString();
    }

    void readers()
    {
        QFETCH(QByteArray, content);
        QFETCH(double, milli);
        QFETCH(bool, convertWarning);
        QFETCH(bool, readWarning);
        QFETCH(QString, text);

        QTemporaryDir dir;
        const QString fileName = dir.path() + "/value";
        QVERIFY(content.isNull() || writeFile(fileName, content));
        IDevice device(D::ID_TEMP_CPU, D::DEVICE_TEMPERATURE, dir.path());
        const QString convert = QString("Could not convert read value from \"%1\" to an integer").arg(fileName);
        const QString read = QString("Could not read value from %1").arg(fileName);

        LogCapture log;
        QCOMPARE(priv(device)->readqrealFromMilli("value"), milli);
        QCOMPARE(log.contains(convert, QtWarningMsg), convertWarning);
        QCOMPARE(log.contains(read, QtWarningMsg), readWarning);
        QCOMPARE(log.records().size(), int(convertWarning) + int(readWarning));
        log.clear();
        QCOMPARE(priv(device)->readqrealFromMicro("value"), milli / 1000);
        QCOMPARE(log.contains(read, QtWarningMsg), readWarning);

        // The trying readers give NaN instead, and warn only about bad content.
        log.clear();
        QCOMPARE(std::isnan(priv(device)->tryToReadqrealFromMilli("value")), readWarning);
        QCOMPARE(log.records().size(), int(convertWarning));
        QCOMPARE(std::isnan(priv(device)->tryToReadqrealFromMicro("value")), readWarning);

        // Text is the first line, trimmed; only a missing file gives a null string.
        log.clear();
        const QString firstLine = priv(device)->readString("value");
        QCOMPARE(firstLine, text);
        QCOMPARE(firstLine.isNull(), content.isNull());
        QVERIFY(log.records().isEmpty());
    }

    void enumValues()
    {
        QCOMPARE(QList<int>({D::ID_DISK_USB, D::DEVICE_FIGHT_MODE, D::F_RESETTING, D::E_NOT_SUPORTED}),
            QList<int>({256, 0x20000, 0x40000000, 13}));
        QCOMPARE(QMetaEnum::fromType<D::DeviceId>().keyCount(), 32);
        QCOMPARE(QMetaEnum::fromType<D::DeviceError>().keyCount(), 17);
    }

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

    void listModelSignals()
    {
        ListModel<QString> model;
        QStringList events;
        const auto log = [&](const char *what) {
            return [&events, &model, what](int f = -1, int l = -1) {
                events << QString("%1 %2 %3 count %4").arg(what).arg(f).arg(l).arg(model.count());
            };
        };
        connect(&model, &AbstractListModel::rowsAboutToBeInserted, this, log("aboutToInsert"));
        connect(&model, &AbstractListModel::rowsInserted, this, log("inserted"));
        connect(&model, &AbstractListModel::rowsAboutToBeRemoved, this, log("aboutToRemove"));
        connect(&model, &AbstractListModel::rowsRemoved, this, log("removed"));
        connect(&model, &AbstractListModel::modelAboutToBeReset, this, [f = log("aboutToReset")] { f(); });
        connect(&model, &AbstractListModel::modelReset, this, [f = log("reset")] { f(); });
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

        // A reset announces the whole list, not its rows.
        events.clear();
        model.setItems({"x", "y", "z"});
        QCOMPARE(events, QStringList({"aboutToReset -1 -1 count 2", "reset -1 -1 count 3"}));
        QCOMPARE(model.items, QList<QString>({"x", "y", "z"}));
        QCOMPARE(model.at(2), QString("z"));
    }
};

QTEST_GUILESS_MAIN(TestDeviceModel)
#include "tst_devicemodel.moc"

#include <vantix/devicelist.h>
#include <vantix/iaudio.h>
#include <vantix/ibutton.h>
#include <vantix/idisplay.h>
#include <vantix/iiocontroller.h>
#include <vantix/ipwmecg.h>
#include <vantix/system.h>

#include <qbcommon/appconfig.h>

#include "audioprivate_p.h"
#include "bluetoothprivate_p.h"
#include "buttonprivate_p.h"
#include "systemprivate_p.h"

#include "logcapture.h"
#include "testroot.h"

#include <QMetaEnum>
#include <QSignalSpy>
#include <QtTest>

#include <functional>

using namespace TQ_SPAPI;
using D = IDevice;

using Setter = std::function<void(IDevice *, const QVariant &)>;
Q_DECLARE_METATYPE(Setter)

namespace {
template<typename P>
P *privateOf(IDevice *device)
{
    return qobject_cast<P *>(DevicePrivate::get(device));
}

Setter viaProperty(const char *name)
{
    return [name](IDevice *device, const QVariant &value) { QVERIFY(device->setProperty(name, value)); };
}

void setterRow(const char *name, D::DeviceId id, D::DeviceType type, const char *property, const Setter &set,
    const QVariant &value, bool alwaysEmits)
{
    QTest::newRow(name) << id << type << QByteArray(property) << set << value << alwaysEmits;
}

} // namespace

class TestPeripherals : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    // Compare-first setters announce changes only; the others announce every call.
    void setterRules_data()
    {
        QTest::addColumn<D::DeviceId>("id");
        QTest::addColumn<D::DeviceType>("type");
        QTest::addColumn<QByteArray>("property");
        QTest::addColumn<Setter>("set");
        QTest::addColumn<QVariant>("value");
        QTest::addColumn<bool>("alwaysEmits");
        const D::DeviceType bluetooth = D::DEVICE_BUS | D::DEVICE_FIGHT_MODE;
        setterRow("brightnes", D::ID_DISPLAY, D::DEVICE_DISPLAY, "brightnes", viaProperty("brightnes"), 40u, false);
        setterRow("backlight", D::ID_DISPLAY, D::DEVICE_DISPLAY, "backlight", viaProperty("backlight"), true, false);
        setterRow("io mode", D::ID_IOCONTROLLER, D::DEVICE_SERIAL, "mode", viaProperty("mode"),
            QVariant::fromValue(IIOController::IOC_PROGRAMMING), false);
        setterRow(
            "jack", D::ID_AUDIO, D::DEVICE_AUDIO, "jackFlags",
            [](D *d, const QVariant &v) { privateOf<AudioPrivate>(d)->setJackFlags(v.value<IAudio::JackFlags>()); },
            QVariant::fromValue(IAudio::JackFlags(IAudio::JACK_MIC)), false);
        setterRow(
            "vibrator", D::ID_VIBRATOR, D::DEVICE_VIBRATOR, "modulationHz", viaProperty("modulationHz"), 12.5, true);
        setterRow("name alias", D::ID_BLUETOOTH, bluetooth, "nameAlias", viaProperty("nameAlias"),
            QStringLiteral("Quarnel 7"), true);
        setterRow(
            "address", D::ID_BLUETOOTH, bluetooth, "address",
            [](D *d, const QVariant &v) { privateOf<BluetoothPrivate>(d)->onAddressChanged(v.toString()); },
            QStringLiteral("00:1A:7D:DA:71:13"), true);
        setterRow(
            "pressed", D::ID_BUTTON_POWER, D::DEVICE_BUTTON, "pressed",
            [](D *d, const QVariant &v) { privateOf<ButtonPrivate>(d)->setPressed(v.toBool()); }, true, true);
    }

    void setterRules()
    {
        QFETCH(D::DeviceId, id);
        QFETCH(D::DeviceType, type);
        QFETCH(QByteArray, property);
        QFETCH(Setter, set);
        QFETCH(QVariant, value);
        QFETCH(bool, alwaysEmits);
        DeviceList list;
        const IDevicePtr device = list.add(id, type, QString());
        const QMetaObject *meta = device->metaObject();
        QSignalSpy spy(device.data(), meta->property(meta->indexOfProperty(property)).notifySignal());
        QVERIFY(device->property(property) != value);

        set(device.data(), device->property(property));
        QCOMPARE(spy.count(), alwaysEmits ? 1 : 0);
        set(device.data(), value);
        set(device.data(), value);
        QCOMPARE(spy.count(), alwaysEmits ? 3 : 1);
        QCOMPARE(spy.last().first(), value);
        QCOMPARE(device->property(property), value);
    }

    void display16BitBrightnes()
    {
        IDisplay display(D::ID_DISPLAY);
        QSignalSpy spy(&display, &IDisplay::brightnesChanged);
        display.setBrightnes(65636); // 100, the start value, once the high bits are dropped
        QCOMPARE(spy.count(), 0);
        display.setBrightnes(65543);
        display.setBrightnes(500); // no clamping to the maximum
        QCOMPARE(spy, (QList<QVariantList>{{7u}, {500u}}));
        QCOMPARE(display.maxBrightness(), 100u);
        QCOMPARE(display.steps(), 10u);
    }

    void quietOperations()
    {
        IPwmEcg pwm(D::ID_PWM);
        QSignalSpy pwmSpy(&pwm, &IPwmEcg::pwmChanged);
        pwm.setPwm(10, 20);
        pwm.setPwmDirectly(30);
        QCOMPARE(pwm.pwm() + pwm.updateInterval(), 0u);
        QCOMPARE(pwmSpy.count(), 0);

        IIOController controller(D::ID_IOCONTROLLER, D::DEVICE_SERIAL);
        QSignalSpy modeSpy(&controller, &IIOController::modeChanged);
        LogCapture log;
        controller.restart();
        QCOMPARE(log.messages(), QStringList{"stub!"});
        QCOMPARE(log.records().first().type, QtDebugMsg);
        QCOMPARE(modeSpy.count(), 0);

        QCOMPARE(IButton(D::ID_BUTTON_POWER).keyId(), 0x0100003Au);
    }

    // The setter and platform tables reach every class through the factory; these are the leftovers.
    void factoryFallbacks()
    {
        DeviceList list;
        const QString path = QStringLiteral("/nonexistent");
        const IDevicePtr audio = list.add(D::ID_VIBRATOR, D::DEVICE_AUDIO, path);
        const IDevicePtr bus = list.add(D::ID_CAN_BUS, D::DEVICE_BUS | D::DEVICE_CAN, path);
        QCOMPARE(QByteArray(audio->metaObject()->className()), QByteArray("TQ_SPAPI::IDevice"));
        QCOMPARE(QByteArray(bus->metaObject()->className()), QByteArray("TQ_SPAPI::IDevice"));
        QCOMPARE(audio->path() + bus->path(), path + path);
        const IDevicePtr io = list.add(D::ID_IOCONTROLLER, D::DEVICE_SERIAL | D::DEVICE_HOST, path);
        QVERIFY(io.objectCast<IIOController>() && io->path().isEmpty());
        QCOMPARE(io->type(), D::DEVICE_SERIAL | D::DEVICE_HOST);
    }

    void overrides()
    {
        SystemPrivate system(System::instance());
        system.overrideJack(IAudio::JACK_HEADPHONE); // no device yet: skipped
        const IDevicePtr audio = system.addDevice(D::ID_AUDIO, D::DEVICE_AUDIO, {});
        const IDevicePtr button = system.addDevice(D::ID_BUTTON_POWER, D::DEVICE_BUTTON, {});
        connect(audio.data(), SIGNAL(jackFlagsChanged(TQ_SPAPI::IAudio::JackFlags)), this, SLOT(record()));
        connect(audio.data(), SIGNAL(statusChanged(TQ_SPAPI::IDevice::DeviceFlags)), this, SLOT(record()));
        QSignalSpy pressed(button.data(), SIGNAL(pressedChanged(bool)));

        system.overrideJack(IAudio::JACK_HEADPHONE | IAudio::JACK_MIC);
        system.overrideJack(IAudio::JACK_HEADPHONE | IAudio::JACK_MIC);
        system.overrideJack(IAudio::JACK_NOT_CONNECTED);
        QCOMPARE(m_events, (QStringList{"jackFlagsChanged", "statusChanged", "jackFlagsChanged", "statusChanged"}));
        QCOMPARE(audio->status(), D::DeviceFlags());

        system.overrideButton(D::ID_BUTTON_POWER, false);
        system.overrideButton(D::ID_BUTTON_POWER, false);
        QCOMPARE(pressed.count(), 2);
        // A device of another class is left alone.
        system.overrideButton(D::ID_AUDIO, true);
        QCOMPARE(pressed.count(), 2);
    }

    void platformDevices_data()
    {
        QTest::addColumn<System::PlatformType>("platform");
        QTest::addColumn<QStringList>("expected");
        const QStringList common{"ID_LED_POWER ILed", "ID_AUDIO IAudio"};
        const QStringList tolvex =
            common + QStringList{"ID_DISK_USER_DATA IDisk", "ID_DISK_SYSTEM IDisk", "ID_DISPLAY IDisplay"};
        const QStringList quarnel =
            common + QStringList{"ID_LED_WIFI ILed", "ID_BUTTON_POWER IButton", "ID_PWM IPwmEcg"};
        const QString bluetooth = QStringLiteral("ID_BLUETOOTH IBluetooth");
        QTest::newRow("unknown") << System::PT_UNKNOWN << common;
        QTest::newRow("tolvex") << System::PT_TOLVEX << tolvex;
        QTest::newRow("tolvex plus") << System::PT_TOLVEX_PLUS << tolvex + QStringList{bluetooth};
        QTest::newRow("quarnel") << System::PT_QUARNEL << quarnel;
        QTest::newRow("quarnel plus") << System::PT_QUARNEL_PLUS << quarnel + QStringList{bluetooth};
        QTest::newRow("can cpu") << System::PT_CAN_CPU_MODULE
                                 << common + QStringList{"ID_LED_WIFI ILed", "ID_SOUND_AMPLIFIER ISoundAmplifier"};
    }

    void platformDevices()
    {
        QFETCH(System::PlatformType, platform);
        QFETCH(QStringList, expected);
        TestRoot root;
        SystemPlatformType::type = platform;
        System *system = System::instance();
        QSignalSpy ready(system, &System::apiReady);
        system->initialize(QStringLiteral("tst_peripherals"));

        // Every kind built here, with the class it must have where the platform has it.
        QMap<D::DeviceId, QByteArray> classes;
        for (const QString &entry : expected) {
            const QStringList parts = entry.split(' ');
            const int id = QMetaEnum::fromType<D::DeviceId>().keyToValue(parts.at(0).toLatin1());
            classes.insert(D::DeviceId(id), "TQ_SPAPI::" + parts.at(1).toLatin1());
        }
        for (D::DeviceId id :
            {D::ID_LED_POWER, D::ID_LED_WIFI, D::ID_BLUETOOTH, D::ID_AUDIO, D::ID_VIBRATOR, D::ID_DISPLAY, D::ID_PWM,
                D::ID_SOUND_AMPLIFIER, D::ID_USB_OTG_A, D::ID_USB_OTG_B, D::ID_DISK_USER_DATA, D::ID_IOCONTROLLER,
                D::ID_BUTTON_POWER, D::ID_USB, D::ID_DISK_SYSTEM, D::ID_DISK_USB}) {
            const IDevicePtr device = system->device(id);
            QCOMPARE(device ? QByteArray(device->metaObject()->className()) : QByteArray(), classes.value(id));
        }
        if (IDevicePtr disk = system->device(D::ID_DISK_USER_DATA)) {
            QCOMPARE(disk->path(), AppConfig::instance()->varPath(QStringLiteral("data")));
        }

        // apiReady comes after every start-up ability request has been served; Bluetooth had none.
        QTRY_COMPARE(ready.count(), 1);
        QVERIFY(system->device(D::ID_LED_POWER)->status().testFlag(D::F_ENABLE));
        if (IDevicePtr bluetooth = system->device(D::ID_BLUETOOTH)) {
            QCOMPARE(bluetooth->status(), D::DeviceFlags(D::F_NOFLAGS));
        }
    }

    void cleanup()
    {
        System::releaseInstance();
        SystemPlatformType::type = System::PT_UNKNOWN;
        m_events.clear();
    }

public Q_SLOTS:
    void record() { m_events << QString::fromLatin1(sender()->metaObject()->method(senderSignalIndex()).name()); }

private:
    QStringList m_events;
};

QTEST_GUILESS_MAIN(TestPeripherals)
#include "tst_peripherals.moc"

#include <vantix/devicelist.h>
#include <vantix/iaudio.h>
#include <vantix/ibluetooth.h>
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

// The ids of the kinds built here; any other kind is someone else's to check.
const QList<IDevice::DeviceId> peripheralIds{
    IDevice::ID_LED_POWER,
    IDevice::ID_LED_WIFI,
    IDevice::ID_BLUETOOTH,
    IDevice::ID_AUDIO,
    IDevice::ID_VIBRATOR,
    IDevice::ID_DISPLAY,
    IDevice::ID_PWM,
    IDevice::ID_SOUND_AMPLIFIER,
    IDevice::ID_USB_OTG_A,
    IDevice::ID_USB_OTG_B,
    IDevice::ID_DISK_USER_DATA,
    IDevice::ID_IOCONTROLLER,
    IDevice::ID_BUTTON_POWER,
    IDevice::ID_USB,
    IDevice::ID_DISK_SYSTEM,
    IDevice::ID_DISK_USB,
};
} // namespace

class TestPeripherals : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    // Compare-first setters announce changes only; the others announce every call.
    void setterRules_data()
    {
        QTest::addColumn<IDevice::DeviceId>("id");
        QTest::addColumn<IDevice::DeviceType>("type");
        QTest::addColumn<QByteArray>("property");
        QTest::addColumn<Setter>("set");
        QTest::addColumn<QVariant>("value");
        QTest::addColumn<bool>("alwaysEmits");

        using D = IDevice;
        QTest::newRow("display brightnes")
            << D::ID_DISPLAY << D::DeviceType(D::DEVICE_DISPLAY) << QByteArray("brightnes") << viaProperty("brightnes")
            << QVariant(40u) << false;
        QTest::newRow("display backlight")
            << D::ID_DISPLAY << D::DeviceType(D::DEVICE_DISPLAY) << QByteArray("backlight") << viaProperty("backlight")
            << QVariant(true) << false;
        QTest::newRow("io controller mode")
            << D::ID_IOCONTROLLER << D::DeviceType(D::DEVICE_SERIAL) << QByteArray("mode") << viaProperty("mode")
            << QVariant::fromValue(IIOController::IOC_PROGRAMMING) << false;
        QTest::newRow("audio jack") << D::ID_AUDIO << D::DeviceType(D::DEVICE_AUDIO) << QByteArray("jackFlags")
                                    << Setter([](D *d, const QVariant &v) {
                                           privateOf<AudioPrivate>(d)->setJackFlags(v.value<IAudio::JackFlags>());
                                       })
                                    << QVariant::fromValue(IAudio::JackFlags(IAudio::JACK_MIC)) << false;
        QTest::newRow("vibrator modulation")
            << D::ID_VIBRATOR << D::DeviceType(D::DEVICE_VIBRATOR) << QByteArray("modulationHz")
            << viaProperty("modulationHz") << QVariant(12.5) << true;
        QTest::newRow("bluetooth name alias")
            << D::ID_BLUETOOTH << (D::DEVICE_BUS | D::DEVICE_FIGHT_MODE) << QByteArray("nameAlias")
            << viaProperty("nameAlias") << QVariant(QStringLiteral("Quarnel 7")) << true;
        QTest::newRow("bluetooth address")
            << D::ID_BLUETOOTH << (D::DEVICE_BUS | D::DEVICE_FIGHT_MODE) << QByteArray("address")
            << Setter([](D *d, const QVariant &v) { privateOf<BluetoothPrivate>(d)->onAddressChanged(v.toString()); })
            << QVariant(QStringLiteral("00:1A:7D:DA:71:13")) << true;
        QTest::newRow("button pressed") << D::ID_BUTTON_POWER << D::DeviceType(D::DEVICE_BUTTON)
                                        << QByteArray("pressed") << Setter([](D *d, const QVariant &v) {
                                               privateOf<ButtonPrivate>(d)->setPressed(v.toBool());
                                           })
                                        << QVariant(true) << true;
    }

    void setterRules()
    {
        QFETCH(IDevice::DeviceId, id);
        QFETCH(IDevice::DeviceType, type);
        QFETCH(QByteArray, property);
        QFETCH(Setter, set);
        QFETCH(QVariant, value);
        QFETCH(bool, alwaysEmits);

        DeviceList list;
        const IDevicePtr device = list.add(id, type, QString());
        const QMetaProperty meta = device->metaObject()->property(device->metaObject()->indexOfProperty(property));
        QVERIFY(meta.hasNotifySignal());
        QSignalSpy spy(device.data(), meta.notifySignal());
        const QVariant start = device->property(property);
        QVERIFY(start != value);

        set(device.data(), start);
        QCOMPARE(spy.count(), alwaysEmits ? 1 : 0);
        set(device.data(), value);
        QCOMPARE(spy.count(), alwaysEmits ? 2 : 1);
        QCOMPARE(spy.last().first(), value);
        QCOMPARE(device->property(property), value);
        set(device.data(), value);
        QCOMPARE(spy.count(), alwaysEmits ? 3 : 1);
    }

    void audioJackDrivesActive()
    {
        IAudio audio(IDevice::ID_AUDIO);
        QStringList events;
        connect(&audio, &IAudio::jackFlagsChanged, this,
            [&](IAudio::JackFlags f) { events << QStringLiteral("jack %1").arg(int(f)); });
        connect(&audio, &IDevice::statusChanged, this,
            [&](IDevice::DeviceFlags s) { events << QStringLiteral("status %1").arg(int(s)); });
        AudioPrivate *d = privateOf<AudioPrivate>(&audio);
        QCOMPARE(audio.jackFlags(), IAudio::JackFlags(IAudio::JACK_NOT_CONNECTED));

        d->setJackFlags(IAudio::JACK_HEADPHONE);
        d->setJackFlags(IAudio::JACK_HEADPHONE | IAudio::JACK_MIC);
        d->setJackFlags(IAudio::JACK_NOT_CONNECTED);
        QCOMPARE(events, (QStringList{"jack 1", "status 2", "jack 3", "jack 0", "status 0"}));
    }

    void display16BitBrightnes_data()
    {
        QTest::addColumn<uint>("requested");
        QTest::addColumn<uint>("stored");
        QTest::newRow("wraps to the start value") << 65636u << 100u;
        QTest::newRow("wraps to 7") << 65543u << 7u;
        QTest::newRow("no clamping to the maximum") << 500u << 500u;
        QTest::newRow("high bits dropped") << 0xFFFF0000u << 0u;
    }

    void display16BitBrightnes()
    {
        QFETCH(uint, requested);
        QFETCH(uint, stored);
        IDisplay display(IDevice::ID_DISPLAY);
        QSignalSpy spy(&display, &IDisplay::brightnesChanged);
        display.setBrightnes(requested);
        QCOMPARE(display.brightnes(), stored);
        QCOMPARE(spy.count(), stored == 100u ? 0 : 1);
        if (!spy.isEmpty()) {
            QCOMPARE(spy.first().first().toUInt(), stored);
        }
        QCOMPARE(display.maxBrightness(), 100u);
        QCOMPARE(display.steps(), 10u);
        QCOMPARE(display.status(), IDevice::DeviceFlags());
    }

    void fixedValues()
    {
        IButton button(IDevice::ID_BUTTON_POWER);
        QCOMPARE(button.keyId(), 0x0100003Au);
        QCOMPARE(button.pressed(), false);
        privateOf<ButtonPrivate>(&button)->setKeyId(42);
        QCOMPARE(button.keyId(), 42u);

        IPwmEcg pwm(IDevice::ID_PWM);
        QSignalSpy pwmSpy(&pwm, &IPwmEcg::pwmChanged);
        QSignalSpy intervalSpy(&pwm, &IPwmEcg::updateIntervalChanged);
        pwm.setPwm(10, 20);
        pwm.setPwmDirectly(30);
        QCOMPARE(pwm.pwm(), 0u);
        QCOMPARE(pwm.updateInterval(), 0u);
        QCOMPARE(pwmSpy.count() + intervalSpy.count(), 0);
    }

    void ioControllerRestartOnlyLogs()
    {
        IIOController controller(IDevice::ID_IOCONTROLLER, IDevice::DEVICE_SERIAL | IDevice::DEVICE_HOST);
        QCOMPARE(controller.type(), IDevice::DEVICE_SERIAL | IDevice::DEVICE_HOST);
        QSignalSpy modeSpy(&controller, &IIOController::modeChanged);
        QSignalSpy statusSpy(&controller, &IDevice::statusChanged);
        LogCapture log;
        controller.restart();
        QCOMPARE(log.messages(), QStringList{"stub!"});
        QCOMPARE(log.records().first().type, QtDebugMsg);
        QCOMPARE(modeSpy.count() + statusSpy.count(), 0);
        QCOMPARE(controller.mode(), IIOController::IOC_NORMAL);
    }

    void factoryRows_data()
    {
        QTest::addColumn<IDevice::DeviceId>("id");
        QTest::addColumn<IDevice::DeviceType>("type");
        QTest::addColumn<QByteArray>("className");
        QTest::addColumn<bool>("keepsPath");

        using D = IDevice;
        const auto row = [](const char *name, D::DeviceId id, D::DeviceType type, const char *cls, bool keepsPath) {
            QTest::newRow(name) << id << type << QByteArray("TQ_SPAPI::") + cls << keepsPath;
        };
        row("audio", D::ID_AUDIO, D::DEVICE_AUDIO, "IAudio", false);
        row("sound amplifier", D::ID_SOUND_AMPLIFIER, D::DEVICE_AUDIO, "ISoundAmplifier", false);
        row("other audio", D::ID_VIBRATOR, D::DEVICE_AUDIO, "IDevice", true);
        row("bluetooth", D::ID_BLUETOOTH, D::DEVICE_BUS | D::DEVICE_FIGHT_MODE, "IBluetooth", false);
        row("other bus", D::ID_CAN_BUS, D::DEVICE_BUS | D::DEVICE_CAN, "IDevice", true);
        row("display", D::ID_DISPLAY, D::DEVICE_DISPLAY, "IDisplay", false);
        row("led", D::ID_LED_WIFI, D::DEVICE_LED, "ILed", false);
        row("io controller", D::ID_IOCONTROLLER, D::DEVICE_SERIAL, "IIOController", false);
        row("other serial", D::ID_MANIKIN_SERIAL, D::DEVICE_SERIAL, "IDevice", false);
        row("disk", D::ID_DISK_USER_DATA, D::DEVICE_DISK, "IDisk", true);
        row("vibrator", D::ID_VIBRATOR, D::DEVICE_VIBRATOR, "IVibrator", false);
        row("button", D::ID_BUTTON_POWER, D::DEVICE_BUTTON, "IButton", false);
        row("pwm", D::ID_PWM, D::DEVICE_PWM, "IPwmEcg", false);
        row("usb", D::ID_USB_OTG_A, D::DEVICE_USB, "IUsb", false);
        // The audio bit is tested first, so it wins over the LED bit.
        row("audio before led", D::ID_AUDIO, D::DEVICE_AUDIO | D::DEVICE_LED, "IAudio", false);
    }

    void factoryRows()
    {
        QFETCH(IDevice::DeviceId, id);
        QFETCH(IDevice::DeviceType, type);
        QFETCH(QByteArray, className);
        QFETCH(bool, keepsPath);
        const QString path = QStringLiteral("/nonexistent/vantix-device");
        DeviceList list;
        const IDevicePtr device = list.add(id, type, path);
        QCOMPARE(QByteArray(device->metaObject()->className()), className);
        QCOMPARE(device->id(), id);
        QCOMPARE(device->path(), keepsPath ? path : QString());
        if (className != "TQ_SPAPI::IAudio") {
            QCOMPARE(device->type(), type);
        }
    }

    void bluetoothNeverGainsEnable()
    {
        DeviceList list;
        const IDevicePtr bluetooth =
            list.add(IDevice::ID_BLUETOOTH, IDevice::DEVICE_BUS | IDevice::DEVICE_FIGHT_MODE, {});
        const IDevicePtr audio = list.add(IDevice::ID_AUDIO, IDevice::DEVICE_AUDIO, {});
        QSignalSpy spy(bluetooth.data(), &IDevice::statusChanged);
        // The audio device was added later, so any timer for Bluetooth would have fired first.
        QTRY_VERIFY(audio->status().testFlag(IDevice::F_ENABLE));
        QCOMPARE(bluetooth->status(), IDevice::DeviceFlags(IDevice::F_NOFLAGS));
        QCOMPARE(spy.count(), 0);
    }

    void overrides()
    {
        SystemPrivate system(System::instance());
        // Missing devices are skipped.
        system.overrideJack(IAudio::JACK_HEADPHONE);
        system.overrideButton(IDevice::ID_BUTTON_POWER, true);

        const IDevicePtr audio = system.addDevice(IDevice::ID_AUDIO, IDevice::DEVICE_AUDIO, {});
        const IDevicePtr button = system.addDevice(IDevice::ID_BUTTON_POWER, IDevice::DEVICE_BUTTON, {});
        QSignalSpy jackSpy(audio.data(), SIGNAL(jackFlagsChanged(TQ_SPAPI::IAudio::JackFlags)));
        QSignalSpy pressedSpy(button.data(), SIGNAL(pressedChanged(bool)));

        system.overrideJack(IAudio::JACK_HEADPHONE | IAudio::JACK_MIC);
        system.overrideJack(IAudio::JACK_HEADPHONE | IAudio::JACK_MIC);
        QCOMPARE(jackSpy.count(), 1);
        QCOMPARE(audio->status() & IDevice::F_ACTIVE, IDevice::DeviceFlags(IDevice::F_ACTIVE));

        system.overrideButton(IDevice::ID_BUTTON_POWER, false);
        system.overrideButton(IDevice::ID_BUTTON_POWER, false);
        QCOMPARE(pressedSpy.count(), 2);
        system.overrideButton(IDevice::ID_BUTTON_POWER, true);
        QCOMPARE(pressedSpy.last().first().toBool(), true);

        // A device of another class is left alone.
        const IDevicePtr led = system.addDevice(IDevice::ID_LED_POWER, IDevice::DEVICE_LED, {});
        QSignalSpy ledStatus(led.data(), &IDevice::statusChanged);
        system.overrideButton(IDevice::ID_LED_POWER, true);
        QCOMPARE(ledStatus.count(), 0);
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
        QTest::newRow("unknown") << System::PT_UNKNOWN << common;
        QTest::newRow("virtual") << System::PT_VIRTUAL << common;
        QTest::newRow("tolvex") << System::PT_TOLVEX << tolvex;
        QTest::newRow("tolvex plus") << System::PT_TOLVEX_PLUS << tolvex + QStringList{"ID_BLUETOOTH IBluetooth"};
        QTest::newRow("quarnel") << System::PT_QUARNEL << quarnel;
        QTest::newRow("quarnel plus") << System::PT_QUARNEL_PLUS << quarnel + QStringList{"ID_BLUETOOTH IBluetooth"};
        QTest::newRow("can cpu module") << System::PT_CAN_CPU_MODULE
                                        << common +
                QStringList{"ID_LED_WIFI ILed", "ID_SOUND_AMPLIFIER ISoundAmplifier"};
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

        QMap<int, QByteArray> classes;
        for (const QString &entry : expected) {
            const QStringList parts = entry.split(QLatin1Char(' '));
            const int id = QMetaEnum::fromType<IDevice::DeviceId>().keyToValue(parts.at(0).toLatin1());
            classes.insert(id, "TQ_SPAPI::" + parts.at(1).toLatin1());
        }
        for (IDevice::DeviceId id : peripheralIds) {
            const IDevicePtr device = system->device(id);
            if (!classes.contains(id)) {
                QVERIFY2(!device, QTest::toString(id));
                continue;
            }
            QVERIFY2(device, QTest::toString(id));
            QCOMPARE(QByteArray(device->metaObject()->className()), classes.value(id));
        }
        if (IDevicePtr disk = system->device(IDevice::ID_DISK_USER_DATA)) {
            QCOMPARE(disk->path(), AppConfig::instance()->varPath(QStringLiteral("data")));
        }

        // apiReady comes after every start-up ability request has been served.
        QTRY_COMPARE(ready.count(), 1);
        QVERIFY(system->device(IDevice::ID_LED_POWER)->status().testFlag(IDevice::F_ENABLE));
        if (IDevicePtr bluetooth = system->device(IDevice::ID_BLUETOOTH)) {
            QCOMPARE(bluetooth->status(), IDevice::DeviceFlags(IDevice::F_NOFLAGS));
        }
    }

    void cleanup()
    {
        System::releaseInstance();
        SystemPlatformType::type = System::PT_UNKNOWN;
    }
};

QTEST_GUILESS_MAIN(TestPeripherals)
#include "tst_peripherals.moc"

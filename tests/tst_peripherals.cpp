// The simple peripherals: the LED's signal order and errors, the setter rules
// of the others, their quiet operations and the debug overrides; and the CAN
// multiplexer with its delayed switching.

#include <vantix/devicelist.h>
#include <vantix/iaudio.h>
#include <vantix/ibutton.h>
#include <vantix/icanmux.h>
#include <vantix/idisplay.h>
#include <vantix/iiocontroller.h>
#include <vantix/iled.h>
#include <vantix/ipwmecg.h>
#include <vantix/system.h>

#include "audioprivate_p.h"
#include "bluetoothprivate_p.h"
#include "buttonprivate_p.h"
#include "canmuxprivate_p.h"
#include "metaenum_p.h"
#include "systemprivate_p.h"

#include "logcapture.h"
#include "testroot.h"
#include "testsystem.h"

#include <QElapsedTimer>
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

// Sets @p property through the meta-object, unless a private setter is given.
void setterRow(const char *name, D::DeviceId id, D::DeviceType type, const char *property, const QVariant &value,
    bool alwaysEmits, Setter set = {})
{
    if (!set) {
        set = [property](IDevice *device, const QVariant &v) { QVERIFY(device->setProperty(property, v)); };
    }
    QTest::newRow(name) << id << type << QByteArray(property) << set << value << alwaysEmits;
}

// Every change signal of an LED in the order emitted, as "signal:value"; take() hands them over.
class LedEvents
{
public:
    explicit LedEvents(ILed *led)
    {
        QObject::connect(led, &ILed::colorChanged, led, [this](Qt::GlobalColor c) { add("color", enumKey(c)); });
        QObject::connect(led, &ILed::modeChanged, led, [this](ILed::LedMode m) { add("mode", enumKey(m)); });
        QObject::connect(led, &ILed::msOnChanged, led, [this](int ms) { add("msOn", QByteArray::number(ms)); });
        QObject::connect(led, &ILed::msOffChanged, led, [this](int ms) { add("msOff", QByteArray::number(ms)); });
        QObject::connect(
            led, &IDevice::statusChanged, led, [this](IDevice::DeviceFlags s) { add("status", flagKeys(s)); });
        QObject::connect(led, qOverload<IDevice::DeviceError>(&IDevice::error), led,
            [this](IDevice::DeviceError e) { add("error", enumKey(e)); });
    }
    QStringList take() { return std::exchange(m_events, {}); }

private:
    void add(const char *signal, const QByteArray &value) { m_events << QString::fromLatin1(signal + (':' + value)); }
    QStringList m_events;
};

// Milliseconds until the next status change of @p device, -1 if none comes.
qint64 nextStatusChange(const IDevicePtr &device)
{
    QSignalSpy spy(device.data(), &D::statusChanged);
    QElapsedTimer clock;
    clock.start();
    return spy.wait(1000) ? clock.elapsed() : -1;
}
} // namespace

class TestPeripherals : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void onSignalOrder()
    {
        QCOMPARE(ILed(D::ID_LED_POWER).getColors(), QList<Qt::GlobalColor>({Qt::cyan, Qt::red, Qt::green}));
        QCOMPARE(ILed(D::ID_LED_WIFI).getColors(), QList<Qt::GlobalColor>({Qt::blue, Qt::green}));
        QVERIFY(ILed(D::ID_TEMP_CPU).getColors().isEmpty());
        ILed led(D::ID_LED_POWER);
        LedEvents events(&led);
        led.on(Qt::red);
        QCOMPARE(events.take(), (QStringList{"color:red", "status:F_ENABLE", "mode:LED_ON"}));
        led.on(Qt::red);
        QCOMPARE(events.take(), QStringList());
        led.on(Qt::cyan);
        QCOMPARE(events.take(), QStringList{"color:cyan"});

        // Green is the start colour: only the mode and status change.
        ILed fresh(IDevice::ID_LED_POWER);
        LedEvents freshEvents(&fresh);
        fresh.on(Qt::green);
        QCOMPARE(freshEvents.take(), (QStringList{"status:F_ENABLE", "mode:LED_ON"}));
    }

    void invalidColourIsStored()
    {
        ILed led(IDevice::ID_LED_WIFI);
        LedEvents events(&led);
        led.on(Qt::red);
        QCOMPARE(events.take(), QStringList{"error:E_INVALID_COLOR"});
        QCOMPARE(led.mode(), ILed::LED_DEFAULT);
        QCOMPARE(led.color(), Qt::green);
        QCOMPARE(led.status(), IDevice::DeviceFlags());

        // Neither a second failure nor a success in between announces the error again.
        led.setFlash(Qt::cyan, 100, 100);
        led.on(Qt::blue);
        led.on(Qt::red);
        QCOMPARE(events.take(), (QStringList{"color:blue", "status:F_ENABLE", "mode:LED_ON"}));
        QCOMPARE(led.error(), IDevice::E_INVALID_COLOR);
        QCOMPARE(led.msOn(), 0);

        ILed other(IDevice::ID_TEMP_CPU);
        LedEvents otherEvents(&other);
        other.setFlash(Qt::green, 1, 1);
        QCOMPARE(otherEvents.take(), QStringList{"error:E_INVALID_COLOR"});
    }

    void flashReportsOffTimeOnOnTimeSignal()
    {
        ILed led(IDevice::ID_LED_WIFI);
        LedEvents events(&led);
        led.setFlash(Qt::green, 500, 250);
        QCOMPARE(events.take(), (QStringList{"mode:LED_FLASH", "msOn:500", "msOn:250"}));
        QCOMPARE(led.msOff(), 250);
        QCOMPARE(led.status(), IDevice::DeviceFlags());
        led.setFlash(Qt::blue, 500, 300);
        QCOMPARE(events.take(), (QStringList{"color:blue", "msOn:300"}));

        // Flashing keeps F_ENABLE as it is; off() clears it and keeps colour and times.
        led.on(Qt::blue);
        led.setFlash(Qt::blue, 500, 300);
        QCOMPARE(events.take(), (QStringList{"status:F_ENABLE", "mode:LED_ON", "mode:LED_FLASH"}));
        led.off();
        led.off();
        QCOMPARE(events.take(), (QStringList{"status:F_NOFLAGS", "mode:LED_OFF"}));
        QCOMPARE(led.color(), Qt::blue);
        QCOMPARE(led.msOn(), 500);
    }

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
        setterRow("brightnes", D::ID_DISPLAY, D::DEVICE_DISPLAY, "brightnes", 40u, false);
        setterRow("backlight", D::ID_DISPLAY, D::DEVICE_DISPLAY, "backlight", true, false);
        setterRow("io mode", D::ID_IOCONTROLLER, D::DEVICE_SERIAL, "mode",
            QVariant::fromValue(IIOController::IOC_PROGRAMMING), false);
        setterRow("jack", D::ID_AUDIO, D::DEVICE_AUDIO, "jackFlags",
            QVariant::fromValue(IAudio::JackFlags(IAudio::JACK_MIC)), false,
            [](D *d, const QVariant &v) { privateOf<AudioPrivate>(d)->setJackFlags(v.value<IAudio::JackFlags>()); });
        setterRow("vibrator", D::ID_VIBRATOR, D::DEVICE_VIBRATOR, "modulationHz", 12.5, true);
        setterRow("name alias", D::ID_BLUETOOTH, bluetooth, "nameAlias", QString("Quarnel 7"), true);
        setterRow("address", D::ID_BLUETOOTH, bluetooth, "address", QString("00:1A:7D:DA:71:13"), true,
            [](D *d, const QVariant &v) { privateOf<BluetoothPrivate>(d)->onAddressChanged(v.toString()); });
        setterRow("pressed", D::ID_BUTTON_POWER, D::DEVICE_BUTTON, "pressed", true, true,
            [](D *d, const QVariant &v) { privateOf<ButtonPrivate>(d)->setPressed(v.toBool()); });
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

    void displayAndQuietOperations()
    {
        IDisplay display(D::ID_DISPLAY);
        QSignalSpy spy(&display, &IDisplay::brightnesChanged);
        display.setBrightnes(65636); // 100, the start value, once the high bits are dropped
        QCOMPARE(spy.count(), 0);
        display.setBrightnes(65543);
        display.setBrightnes(500); // no clamping to the maximum
        QCOMPARE(spy, (QList<QVariantList>{{7u}, {500u}}));
        QCOMPARE(QList<uint>({display.maxBrightness(), display.steps()}), QList<uint>({100u, 10u}));

        // Operations without effect on the desktop.
        IPwmEcg pwm(D::ID_PWM);
        QSignalSpy pwmSpy(&pwm, &IPwmEcg::pwmChanged);
        pwm.setPwm(10, 20);
        pwm.setPwmDirectly(30);
        QCOMPARE(pwm.pwm() + pwm.updateInterval(), 0u);

        IIOController controller(D::ID_IOCONTROLLER, D::DEVICE_SERIAL);
        QSignalSpy modeSpy(&controller, &IIOController::modeChanged);
        LogCapture log;
        controller.restart();
        QCOMPARE(log.messages(), QStringList{"stub!"});
        QCOMPARE(log.records().first().type, QtDebugMsg);
        QCOMPARE(modeSpy.count() + pwmSpy.count(), 0);

        QCOMPARE(IButton(D::ID_BUTTON_POWER).keyId(), 0x0100003Au);
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
        // Each call is announced; a device of another class is left alone.
        system.overrideButton(D::ID_AUDIO, true);
        QCOMPARE(pressed.count(), 2);
    }

    void cleanup()
    {
        System::releaseInstance();
        m_events.clear();
    }

    void canMuxPlatformsAndMissingDevices()
    {
        TestRoot root;
        // platform -> which CAN devices its multiplexer holds ("" for no multiplexer)
        const QList<QPair<System::PlatformType, QString>> rows{{System::PT_UNKNOWN, ""}, {System::PT_QUARNEL, ""},
            {System::PT_QUARNEL_PLUS, "bus serial"}, {System::PT_CAN_CPU_MODULE, "bus"}};
        for (const auto &row : rows) {
            System *system = startSystem(row.first);
            const CanMuxPrivate *d = CanMuxPrivate::get(system->canMux());
            QCOMPARE(d ? QString(d->canSerial ? "bus serial" : "bus") : QString(), row.second);
            if (d) {
                QCOMPARE(system->canMux()->parent()->parent(), system);
                QCOMPARE(d->canBus, system->device(D::ID_CAN_BUS));
                QCOMPARE(d->canSerial, system->device(D::ID_CAN_SERIAL));
            }
        }

        // The CAN CPU module has no serial device, a multiplexer of its own none at all.
        LogCapture log;
        System::instance()->canMux()->setActiveDevice(D::ID_CAN_SERIAL);
        ICanMux empty;
        empty.setActiveDevice(D::ID_CAN_BUS);
        empty.setTermination(ICanMux::CAN_TERM_ON);
        empty.setActiveDevice(D::DeviceId(999));
        QCOMPARE(log.messages(),
            QStringList({"No can serial exist in CanMux object!", "No can bus exist in CanMux object!",
                "No can bus exist in CanMux object!", "Invalid can device ID: 999"}));
    }

    void canMuxActiveDevice()
    {
        TestRoot root;
        ICanMux *mux = startSystem(System::PT_QUARNEL_PLUS)->canMux();
        const IDevicePtr serial = System::instance()->device(D::ID_CAN_SERIAL);
        const IDevicePtr bus = System::instance()->device(D::ID_CAN_BUS);
        QTRY_VERIFY(serial->status() & D::F_ENABLE && bus->status() & D::F_ENABLE);
        serial->clearAbility(D::F_ENABLE);
        QVERIFY(nextStatusChange(serial) > 0);
        QSignalSpy active(mux, &ICanMux::activeDeviceChanged);
        QSignalSpy busStatus(bus.data(), &D::statusChanged);

        LogCapture log;
        mux->setActiveDevice(D::ID_AUDIO);
        QVERIFY(log.contains("Invalid can device ID: ID_AUDIO", QtWarningMsg));
        mux->setActiveDevice(D::ID_CAN_SERIAL);
        QVERIFY(log.contains("Activate can device ID_CAN_SERIAL"));
        QVERIFY(nextStatusChange(serial) >= 95);
        QVERIFY(serial->status() & D::F_ENABLE);
        QCOMPARE(busStatus.count() + active.count(), 0);
        QCOMPARE(mux->activeDevice(), D::ID_UNKNOWN_DEV);
    }

    void canMuxTermination()
    {
        TestRoot root;
        ICanMux *mux = startSystem(System::PT_CAN_CPU_MODULE)->canMux();
        const IDevicePtr bus = System::instance()->device(D::ID_CAN_BUS);
        QTRY_VERIFY(bus->status() & D::F_ENABLE);
        QSignalSpy terminated(mux, &ICanMux::terminationChanged);
        LogCapture log;

        mux->setTermination(ICanMux::CAN_TERM_ON);
        QVERIFY(!(bus->status() & D::F_TERMINATE));
        QVERIFY(nextStatusChange(bus) >= 95);
        QVERIFY(bus->status() & D::F_TERMINATE);

        // A second ON is dropped: with the bit lost meanwhile, it does not come back.
        DevicePrivate::get(bus.data())->setStatus(bus->status() & ~D::DeviceFlags(D::F_TERMINATE));
        mux->setTermination(ICanMux::CAN_TERM_ON);
        bus->setAbility(D::F_ACTIVE); // its timer runs out after the dropped one would have
        QVERIFY(nextStatusChange(bus) >= 95);
        QCOMPARE(bus->status() & (D::F_TERMINATE | D::F_ACTIVE), D::DeviceFlags(D::F_ACTIVE));
        QCOMPARE(log.count("Terminate can bus ON"), 2);

        // OFF is always carried out, and lets the next ON through.
        mux->setTermination(ICanMux::CAN_TERM_OFF);
        mux->setTermination(ICanMux::CAN_TERM_ON);
        QVERIFY(nextStatusChange(bus) >= 95);
        QVERIFY(bus->status() & D::F_TERMINATE);
        mux->setTermination(ICanMux::CAN_TERM_OFF);
        QVERIFY(nextStatusChange(bus) >= 95);
        QVERIFY(!(bus->status() & D::F_TERMINATE));
        QCOMPARE(log.count("Terminate can bus OFF"), 2);
        QCOMPARE(mux->termination(), ICanMux::CAN_TERM_OFF);
        QCOMPARE(terminated.count(), 0);
    }

public Q_SLOTS:
    void record() { m_events << QString::fromLatin1(sender()->metaObject()->method(senderSignalIndex()).name()); }

private:
    QStringList m_events;
};

QTEST_GUILESS_MAIN(TestPeripherals)
#include "tst_peripherals.moc"

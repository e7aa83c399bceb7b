#include <vantix/devicelist.h>
#include <vantix/iaudio.h>
#include <vantix/ibutton.h>
#include <vantix/idisplay.h>
#include <vantix/iiocontroller.h>
#include <vantix/ipwmecg.h>
#include <vantix/system.h>

#include "audioprivate_p.h"
#include "bluetoothprivate_p.h"
#include "buttonprivate_p.h"
#include "systemprivate_p.h"

#include "logcapture.h"

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

    void cleanup()
    {
        System::releaseInstance();
        m_events.clear();
    }

public Q_SLOTS:
    void record() { m_events << QString::fromLatin1(sender()->metaObject()->method(senderSignalIndex()).name()); }

private:
    QStringList m_events;
};

QTEST_GUILESS_MAIN(TestPeripherals)
#include "tst_peripherals.moc"

#include <vantix/iled.h>

#include <QMetaEnum>
#include <QtTest>

using namespace TQ_SPAPI;

namespace {
template<typename E>
QString key(E value)
{
    const QMetaEnum meta = QMetaEnum::fromType<E>();
    return QString::fromLatin1(meta.isFlag() ? meta.valueToKeys(int(value)) : QByteArray(meta.valueToKey(int(value))));
}

// Every change signal of an LED in the order emitted, as "signal:value"; take() hands them over.
class LedEvents
{
public:
    explicit LedEvents(ILed *led)
    {
        QObject::connect(led, &ILed::colorChanged, led, [this](Qt::GlobalColor c) { add("color", key(c)); });
        QObject::connect(led, &ILed::modeChanged, led, [this](ILed::LedMode m) { add("mode", key(m)); });
        QObject::connect(led, &ILed::msOnChanged, led, [this](int ms) { add("msOn", QString::number(ms)); });
        QObject::connect(led, &ILed::msOffChanged, led, [this](int ms) { add("msOff", QString::number(ms)); });
        QObject::connect(led, &IDevice::statusChanged, led, [this](IDevice::DeviceFlags s) { add("status", key(s)); });
        QObject::connect(led, qOverload<IDevice::DeviceError>(&IDevice::error), led,
            [this](IDevice::DeviceError e) { add("error", key(e)); });
    }
    QStringList take() { return std::exchange(m_events, {}); }

private:
    void add(const char *signal, const QString &value) { m_events << QLatin1String(signal) + ':' + value; }
    QStringList m_events;
};
} // namespace

class TestLed : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void colorsById()
    {
        QCOMPARE(ILed(IDevice::ID_LED_POWER).getColors(), (QList<Qt::GlobalColor>{Qt::cyan, Qt::red, Qt::green}));
        QCOMPARE(ILed(IDevice::ID_LED_WIFI).getColors(), (QList<Qt::GlobalColor>{Qt::blue, Qt::green}));
        QVERIFY(ILed(IDevice::ID_TEMP_CPU).getColors().isEmpty());
    }

    void onSignalOrder()
    {
        ILed led(IDevice::ID_LED_POWER);
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
};

QTEST_GUILESS_MAIN(TestLed)
#include "tst_led.moc"

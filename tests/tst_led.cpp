#include <vantix/iled.h>

#include <QMetaEnum>
#include <QSignalSpy>
#include <QtTest>

using namespace TQ_SPAPI;

namespace {
template<typename E>
QString key(E value)
{
    return QString::fromLatin1(QMetaEnum::fromType<E>().valueToKey(int(value)));
}

// Every change signal of an LED, in the order emitted, as "signal:value".
class LedEvents
{
public:
    explicit LedEvents(ILed *led)
    {
        QObject::connect(led, &ILed::colorChanged, led, [this](Qt::GlobalColor c) { add("color", key(c)); });
        QObject::connect(led, &ILed::modeChanged, led, [this](ILed::LedMode m) { add("mode", key(m)); });
        QObject::connect(led, &ILed::msOnChanged, led, [this](int ms) { add("msOn", QString::number(ms)); });
        QObject::connect(led, &ILed::msOffChanged, led, [this](int ms) { add("msOff", QString::number(ms)); });
        QObject::connect(led, &IDevice::statusChanged, led, [this](IDevice::DeviceFlags s) {
            add("status", QString::fromLatin1(QMetaEnum::fromType<IDevice::DeviceFlags>().valueToKeys(int(s))));
        });
        QObject::connect(led, qOverload<IDevice::DeviceError>(&IDevice::error), led,
            [this](IDevice::DeviceError e) { add("error", key(e)); });
    }
    // The events since the last call.
    QStringList take() { return std::exchange(m_events, {}); }

private:
    void add(const char *signal, const QString &value) { m_events << QLatin1String(signal) + QLatin1Char(':') + value; }
    QStringList m_events;
};

const QStringList none;
} // namespace

class TestLed : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void colorsById_data()
    {
        QTest::addColumn<IDevice::DeviceId>("id");
        QTest::addColumn<QList<Qt::GlobalColor>>("colors");
        QTest::newRow("power") << IDevice::ID_LED_POWER << QList<Qt::GlobalColor>{Qt::cyan, Qt::red, Qt::green};
        QTest::newRow("wifi") << IDevice::ID_LED_WIFI << QList<Qt::GlobalColor>{Qt::blue, Qt::green};
        QTest::newRow("other id") << IDevice::ID_TEMP_CPU << QList<Qt::GlobalColor>{};
    }

    void colorsById()
    {
        QFETCH(IDevice::DeviceId, id);
        QFETCH(QList<Qt::GlobalColor>, colors);
        ILed led(id);
        QCOMPARE(led.getColors(), colors);
        QCOMPARE(led.type(), IDevice::DeviceType(IDevice::DEVICE_LED));
        QCOMPARE(led.mode(), ILed::LED_DEFAULT);
        QCOMPARE(led.color(), Qt::green);
        QCOMPARE(led.msOn(), 0);
        QCOMPARE(led.msOff(), 0);
        QVERIFY(led.path().isEmpty());
    }

    void onSignalOrder()
    {
        ILed led(IDevice::ID_LED_POWER);
        LedEvents events(&led);
        led.on(Qt::red);
        QCOMPARE(events.take(), (QStringList{"color:red", "status:F_ENABLE", "mode:LED_ON"}));
        led.on(Qt::red);
        QCOMPARE(events.take(), none);
        led.on(Qt::cyan);
        QCOMPARE(events.take(), QStringList{"color:cyan"});
        QCOMPARE(led.mode(), ILed::LED_ON);
    }

    void onStartColourOnlySwitchesMode()
    {
        ILed led(IDevice::ID_LED_POWER);
        LedEvents events(&led);
        led.on(Qt::green);
        QCOMPARE(events.take(), (QStringList{"status:F_ENABLE", "mode:LED_ON"}));
        QCOMPARE(led.status(), IDevice::DeviceFlags(IDevice::F_ENABLE));
    }

    void invalidColourIsReportedOnceAndChangesNothing()
    {
        ILed led(IDevice::ID_LED_WIFI);
        LedEvents events(&led);
        led.on(Qt::red);
        QCOMPARE(events.take(), QStringList{"error:E_INVALID_COLOR"});
        QCOMPARE(led.error(), IDevice::E_INVALID_COLOR);
        QCOMPARE(led.mode(), ILed::LED_DEFAULT);
        QCOMPARE(led.color(), Qt::green);
        QCOMPARE(led.status(), IDevice::DeviceFlags());

        // The error stays stored: neither a second failure nor a success in between announces it again.
        led.setFlash(Qt::cyan, 100, 100);
        QCOMPARE(events.take(), none);
        QCOMPARE(led.msOn(), 0);
        led.on(Qt::blue);
        QCOMPARE(events.take(), (QStringList{"color:blue", "status:F_ENABLE", "mode:LED_ON"}));
        led.on(Qt::red);
        QCOMPARE(events.take(), none);
        QCOMPARE(led.color(), Qt::blue);

        ILed other(IDevice::ID_TEMP_CPU);
        LedEvents otherEvents(&other);
        other.setFlash(Qt::green, 1, 1);
        QCOMPARE(otherEvents.take(), QStringList{"error:E_INVALID_COLOR"});
        QCOMPARE(other.mode(), ILed::LED_DEFAULT);
    }

    void flashReportsOffTimeOnOnTimeSignal()
    {
        ILed led(IDevice::ID_LED_WIFI);
        LedEvents events(&led);
        led.setFlash(Qt::green, 500, 250);
        QCOMPARE(events.take(), (QStringList{"mode:LED_FLASH", "msOn:500", "msOn:250"}));
        QCOMPARE(led.msOn(), 500);
        QCOMPARE(led.msOff(), 250);
        QCOMPARE(led.status(), IDevice::DeviceFlags());

        led.setFlash(Qt::blue, 500, 250);
        QCOMPARE(events.take(), QStringList{"color:blue"});
        led.setFlash(Qt::blue, 500, 300);
        QCOMPARE(events.take(), QStringList{"msOn:300"});
        led.setFlash(Qt::green, 100, 200);
        QCOMPARE(events.take(), (QStringList{"color:green", "msOn:100", "msOn:200"}));
    }

    void flashKeepsEnableAndOffClearsIt()
    {
        ILed led(IDevice::ID_LED_POWER);
        LedEvents events(&led);
        led.on(Qt::cyan);
        events.take();
        led.setFlash(Qt::cyan, 10, 20);
        QCOMPARE(events.take(), (QStringList{"mode:LED_FLASH", "msOn:10", "msOn:20"}));
        QCOMPARE(led.status(), IDevice::DeviceFlags(IDevice::F_ENABLE));

        led.off();
        QCOMPARE(events.take(), (QStringList{"status:F_NOFLAGS", "mode:LED_OFF"}));
        QCOMPARE(led.status(), IDevice::DeviceFlags());
        QCOMPARE(led.color(), Qt::cyan);
        QCOMPARE(led.msOn(), 10);
        QCOMPARE(led.msOff(), 20);
        led.off();
        QCOMPARE(events.take(), none);

        // From the start mode, off() switches the mode even though nothing was lit.
        ILed fresh(IDevice::ID_LED_WIFI);
        LedEvents freshEvents(&fresh);
        fresh.off();
        QCOMPARE(freshEvents.take(), QStringList{"mode:LED_OFF"});
    }
};

QTEST_GUILESS_MAIN(TestLed)
#include "tst_led.moc"

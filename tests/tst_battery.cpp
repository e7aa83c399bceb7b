// Batteries and their temperature sensors: start values, debug overrides,
// pairing, and the sensors' limit reports.

#include <vantix/devicelist.h>
#include <vantix/ibattery.h>
#include <vantix/isensor.h>
#include <vantix/system.h>

#include "batteryprivate_p.h"
#include "logcapture.h"
#include "metaenum_p.h"
#include "sensorprivate_p.h"
#include "testroot.h"
#include "testsystem.h"
#include <vantix/vantixdebug.h>

#include <QMetaProperty>
#include <QSignalSpy>
#include <QTest>

using namespace TQ_SPAPI;
using D = IDevice;

class tst_Battery : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void startStateAndOverrides()
    {
        DeviceList list;
        const auto battery = list.add(D::ID_BATTERY_2ND, D::DEVICE_BATTERY, "/sys/battery").objectCast<IBattery>();
        QCOMPARE(battery->status(), D::DeviceFlags(D::F_CHARGE));
        QCOMPARE(battery->fuelGauge(), 100);
        QCOMPARE(battery->voltage() + battery->current() + battery->currentAvg() + battery->chargeCounter(), 0.0);
        QCOMPARE(battery->modelName() + battery->manufacturer() + battery->label() + battery->path(), QString());
        QVERIFY(battery->temperature().isNull());
        QTRY_COMPARE(battery->status(), D::F_CHARGE | D::F_ENABLE);

        auto *d = qobject_cast<BatteryPrivate *>(DevicePrivate::get(battery.data()));
        QSignalSpy status(battery.data(), &IDevice::statusChanged);
        QSignalSpy counter(battery.data(), &IBattery::chargeCounterChanged);
        QSignalSpy fuel(battery.data(), &IBattery::fuelGaugeChanged);
        QSignalSpy current(battery.data(), &IBattery::currentChanged);
        // Forced values are announced even when they repeat, and never clamped.
        for (int value : {150, 150, -5}) {
            d->overrideFuelGauge(value);
            QCOMPARE(battery->fuelGauge(), value);
            QCOMPARE(fuel.takeFirst().at(0).toInt(), value);
        }

        // Each override sets the mark again, so clear it in between.
        d->setStatus(D::F_ENABLE | D::F_CHARGE);
        d->overrideCurrent(0.5);
        QCOMPARE(current, QList<QVariantList>({{0.5}}));
        QCOMPARE(battery->current(), 0.5);
        d->setStatus(D::F_ENABLE | D::F_CHARGE);
        d->overrideChargeToggle(); // off: no charge start
        QCOMPARE(counter.count(), 0);
        d->overrideChargeToggle();
        QCOMPARE(counter, QList<QVariantList>({{1}}));
        d->setStatus(D::F_ENABLE | D::F_CHARGE);
        d->overridePowerConnectedToggle();
        d->overridePowerConnectedToggle();
        const int e = D::F_ENABLE, c = D::F_CHARGE, o = D::F_OVERRIDE, p = D::F_POWER_CONNECTED;
        QCOMPARE(statusWords(status),
            QList<int>({e | c | o, e | c, e | c | o, e | c, e | o, e | c | o, e | c, e | c | o | p, e | c | o}));
        QCOMPARE(battery->chargeCounter(), 1);
        QCOMPARE(battery->voltage() + battery->currentAvg(), 0.0);
    }

    void powerConnectedToggleThroughSystem()
    {
        TestRoot root;
        System *system = startSystem(System::PT_TOLVEX);
        VantixDebug *debug = VantixDebug::instance();
        const IDevicePtr battery = system->device(D::ID_BATTERY_1ST);
        const IDevicePtr supply = system->device(D::ID_POWER_SUPPLY);
        QTRY_COMPARE(battery->status(), D::F_ENABLE | D::F_CHARGE);
        QSignalSpy status(supply.data(), &IDevice::statusChanged);

        // Missing devices are skipped silently.
        LogCapture log;
        debug->overrideFuelGauge(D::ID_BATTERY_2ND, 40);
        debug->overrideChargeToggle(D::ID_BATTERY_2ND);
        debug->overrideCurrent(D::ID_BATTERY_2ND, 2.5);
        debug->overridePowerConnectedToggle(D::ID_BATTERY_2ND);
        debug->overridePowerConnectedToggle(D::ID_POWER_MANIKIN_5V);
        QVERIFY(log.records().isEmpty());

        // A battery marks the override; any other device only has the bit flipped.
        debug->overridePowerConnectedToggle(D::ID_BATTERY_1ST);
        QCOMPARE(battery->status(), D::F_ENABLE | D::F_CHARGE | D::F_OVERRIDE | D::F_POWER_CONNECTED);
        debug->overridePowerConnectedToggle(D::ID_POWER_SUPPLY);
        QCOMPARE(supply->status(), D::F_ENABLE | D::F_POWER_CONNECTED);
        debug->overridePowerConnectedToggle(D::ID_POWER_SUPPLY);
        QCOMPARE(supply->status(), D::DeviceFlags(D::F_ENABLE));
        QCOMPARE(status.count(), 2);
        System::releaseInstance();
    }

    void pairing()
    {
        DeviceList list;
        const auto add = [&list](D::DeviceId id) {
            const bool isBattery = id == D::ID_BATTERY_1ST || id == D::ID_BATTERY_2ND;
            return list.add(id, isBattery ? D::DEVICE_BATTERY : D::DEVICE_TEMPERATURE, QString());
        };
        const auto first = qSharedPointerObjectCast<IBattery>(add(D::ID_BATTERY_1ST));
        const IDevicePtr secondSensor = add(D::ID_TEMP_BATT_2ND);
        add(D::ID_TEMP_CPU);
        add(D::ID_TEMP_BOARD);
        QVERIFY(first->temperature().isNull());
        const IDevicePtr firstSensor = add(D::ID_TEMP_BATT_1ST);
        QCOMPARE(first->temperature().data(), firstSensor.data());
        const auto second = qSharedPointerObjectCast<IBattery>(add(D::ID_BATTERY_2ND));
        QCOMPARE(second->temperature().data(), secondSensor.data());

        // Removed devices are out of reach: neither a new battery nor a new sensor finds them.
        QVERIFY(list.remove(D::ID_TEMP_BATT_1ST) && list.remove(D::ID_BATTERY_1ST));
        const auto replacement = qSharedPointerObjectCast<IBattery>(add(D::ID_BATTERY_1ST));
        QVERIFY(replacement->temperature().isNull());
        const IDevicePtr newSensor = add(D::ID_TEMP_BATT_1ST);
        QCOMPARE(replacement->temperature().data(), newSensor.data());
        QCOMPARE(first->temperature().data(), firstSensor.data());
    }

    void sensorStartValues_data()
    {
        QTest::addColumn<int>("id");
        QTest::addColumn<QList<double>>("values"); // value, high, low, critical, threshold, pollMs
        QTest::addColumn<int>("status");
        const int watched = D::F_ENABLE | D::F_ENABLEHIGH;

        QTest::newRow("first battery") << int(D::ID_TEMP_BATT_1ST) << QList<double>{35, 80, -20, 100, 0, 0} << watched;
        QTest::newRow("second battery") << int(D::ID_TEMP_BATT_2ND) << QList<double>{50, 80, -20, 100, 0, 0} << watched;
        QTest::newRow("board") << int(D::ID_TEMP_BOARD) << QList<double>{45, 80, 0, 100, 0, 0} << watched;
        QTest::newRow("CPU") << int(D::ID_TEMP_CPU) << QList<double>{45, 80, 0, 100, 0, 0} << int(D::F_ENABLEHIGH);
        QTest::newRow("other") << int(D::ID_LED_POWER) << QList<double>{0, 0, 0, 0, 0, 0} << 0;
    }

    void sensorStartValues()
    {
        QFETCH(int, id);
        QFETCH(QList<double>, values);
        QFETCH(int, status);

        ISensor s(D::DeviceId(id), D::DEVICE_TEMPERATURE | D::DEVICE_HOST);
        QCOMPARE(s.type(), D::DEVICE_TEMPERATURE | D::DEVICE_HOST);
        const QList<double> actual{
            s.value(), s.highLimit(), s.lowLimit(), s.criticalLimit(), s.threshold(), double(s.pollMs())};
        QCOMPARE(actual, values);
        QCOMPARE(int(s.status()), status);
    }

    void sensorSetters_data()
    {
        QTest::addColumn<QByteArray>("name");
        QTest::addColumn<QVariant>("newValue");
        QTest::addColumn<bool>("marksOverride");

        QTest::newRow("pollMs") << QByteArray("pollMs") << QVariant(500u) << false;
        QTest::newRow("threshold") << QByteArray("threshold") << QVariant(1.0) << true;
        QTest::newRow("highLimit") << QByteArray("highLimit") << QVariant(90.5) << true;
        QTest::newRow("lowLimit") << QByteArray("lowLimit") << QVariant(-5.0) << true;
    }

    void sensorSetters()
    {
        QFETCH(QByteArray, name);
        QFETCH(QVariant, newValue);
        QFETCH(bool, marksOverride);

        ISensor sensor(D::ID_TEMP_CPU, D::DEVICE_TEMPERATURE);
        const QMetaObject *meta = sensor.metaObject();
        QSignalSpy changed(&sensor, meta->property(meta->indexOfProperty(name)).notifySignal());
        QSignalSpy status(&sensor, &IDevice::statusChanged);
        QVERIFY(sensor.setProperty(name, sensor.property(name))); // the start value again: no change
        QVERIFY(sensor.setProperty(name, newValue));
        QVERIFY(sensor.setProperty(name, newValue));
        QCOMPARE(changed.count(), 1);
        QCOMPARE(changed.at(0).at(0), newValue);
        QCOMPARE(sensor.property(name), newValue);
        QCOMPARE(sensor.status(), marksOverride ? D::F_ENABLEHIGH | D::F_OVERRIDE : D::F_ENABLEHIGH);
        QCOMPARE(status.count(), marksOverride ? 1 : 0);
    }

    void sensorLimits_data()
    {
        // One expectation per polled value: the signals in emission order, then the state bits.
        QTest::addColumn<int>("id");
        QTest::addColumn<int>("mode");
        QTest::addColumn<QList<double>>("values");
        QTest::addColumn<QStringList>("expected");
        const int cpu = D::ID_TEMP_CPU; // high 80, low 0, critical 100
        const int other = D::ID_UNKNOWN_DEV; // critical 0, low limit set to 10 below
        const int high = D::F_ENABLEHIGH, low = D::F_ENABLELOW;
        const double nan = qQNaN();
        const QString H = "F_SENSORHIGH", L = "F_SENSORLOW", C = "F_SENSORCRITICAL", N = "F_NOFLAGS";

        QTest::newRow("high: rise, critical, fall")
            << cpu << high << QList<double>{85, nan, 85, 100, nan, 70, 70, 80}
            << QStringList{"status high " + H, H, H, "status " + C, C, "status low " + L, L, "status high " + H};
        QTest::newRow("high: jump to critical")
            << cpu << high << QList<double>{nan, 150, 90, 45, 99.9, 100}
            << QStringList{N, "status " + C, "status high " + H, "status low " + L, "status high " + H, "status " + C};
        QTest::newRow("high wins over low")
            << cpu << (high | low) << QList<double>{-10, 85} << QStringList{N, "status high " + H};
        QTest::newRow("not enabled") << cpu << 0 << QList<double>{85, 150, -10} << QStringList{N, N, N};
        // A low sensor stays low above the limit; a high one repeats highLimitReached.
        QTest::newRow("low: fall, critical, rise")
            << other << low << QList<double>{0, 5, 5, 20, 0, nan, 20, 20, nan, 10}
            << QStringList{"status " + C, "status low " + L, L, L, "status " + C, C, "status high " + H, "high " + H, H,
                   "status low " + L};
    }

    void sensorLimits()
    {
        QFETCH(int, id);
        QFETCH(int, mode);
        QFETCH(QList<double>, values);
        QFETCH(QStringList, expected);

        ISensor sensor(D::DeviceId(id), D::DEVICE_TEMPERATURE);
        auto *d = qobject_cast<SensorPrivate *>(DevicePrivate::get(&sensor));
        d->setLowLimit(id == D::ID_TEMP_CPU ? 0.0 : 10.0);
        d->setStatus(D::DeviceFlags(mode));
        QVERIFY(d->updateValue(20.0));
        QVERIFY(!d->updateValue(20.0));
        d->poll(); // settles F_ACTIVE in the normal state
        const D::DeviceFlags base = D::DeviceFlags(mode) | D::F_ACTIVE;
        QCOMPARE(sensor.status(), base);

        QStringList events;
        connect(&sensor, &IDevice::statusChanged, this, [&] { events << QStringLiteral("status"); });
        connect(&sensor, &ISensor::highLimitReached, this, [&] { events << QStringLiteral("high"); });
        connect(&sensor, &ISensor::lowLimitReached, this, [&] { events << QStringLiteral("low"); });
        QCOMPARE(values.size(), expected.size());
        for (int i = 0; i < values.size(); ++i) {
            d->updateValue(values.at(i));
            events.clear();
            d->poll();
            events << flagKeys(sensor.status() & ~base);
            QCOMPARE(events.join(QLatin1Char(' ')), expected.at(i));
        }
    }
};

QTEST_GUILESS_MAIN(tst_Battery)
#include "tst_battery.moc"

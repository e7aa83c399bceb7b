#include <vantix/devicelist.h>
#include <vantix/ibattery.h>
#include <vantix/system.h>

#include "batteryprivate_p.h"
#include "logcapture.h"
#include "testroot.h"
#include "testsystem.h"
#include "vantixdebug.h"

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
        QCOMPARE(battery->status(), D::F_ENABLE | D::F_CHARGE | D::F_OVERRIDE);
        QCOMPARE(status.count(), 1);

        // Each override sets the mark again, so clear it in between.
        d->setStatus(D::F_ENABLE | D::F_CHARGE);
        d->overrideCurrent(0.5);
        QCOMPARE(current.count(), 1);
        QCOMPARE(current.at(0).at(0).toDouble(), 0.5);
        QCOMPARE(battery->current(), 0.5);
        QCOMPARE(battery->status(), D::F_ENABLE | D::F_CHARGE | D::F_OVERRIDE);
        d->setStatus(D::F_ENABLE | D::F_CHARGE);
        d->overrideChargeToggle(); // off: no charge start
        QCOMPARE(battery->status(), D::F_ENABLE | D::F_OVERRIDE);
        QCOMPARE(counter.count(), 0);
        d->overrideChargeToggle();
        QCOMPARE(counter.takeFirst().at(0).toInt(), 1);
        d->setStatus(D::F_ENABLE | D::F_CHARGE);
        d->overridePowerConnectedToggle();
        QCOMPARE(battery->status(), D::F_ENABLE | D::F_CHARGE | D::F_OVERRIDE | D::F_POWER_CONNECTED);
        d->overridePowerConnectedToggle();
        QCOMPARE(battery->status(), D::F_ENABLE | D::F_CHARGE | D::F_OVERRIDE);
        QCOMPARE(status.count(), 9);
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
};

QTEST_GUILESS_MAIN(tst_Battery)
#include "tst_battery.moc"

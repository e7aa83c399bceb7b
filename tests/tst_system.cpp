// The System facade: start-up per platform, readiness, flight mode, power and
// service commands, release and re-creation.

#include "logcapture.h"
#include "systemprivate_p.h"
#include "testroot.h"

#include <vantix/vantix.h>

#include <QElapsedTimer>
#include <QPointer>
#include <QSignalSpy>
#include <QtTest>

using namespace TQ_SPAPI;

namespace {
using D = IDevice;

QList<int> idsOf(const QList<IDevicePtr> &devices)
{
    QList<int> ids;
    for (const IDevicePtr &device : devices) {
        ids.append(device->id());
    }
    return ids;
}

System::FligtModeFlags flightFlags(const QSignalSpy &spy, int index)
{
    return spy.at(index).at(0).value<System::FligtModeFlags>();
}
} // namespace

class TestSystem : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void cleanup();
    void deviceTable_data();
    void deviceTable();
    void devicePaths();
    void devicesAreAnnouncedAndEnabled();
    void readyNowApiReadyLater();
    void secondInitializeIsIgnored();
    void fixedFacts();
    void flightModeDisableThenEnable();
    void flightModeWithoutBluetooth();
    void powerCommands();
    void serviceCommandsOnlyLog();
    void releaseAndRecreate();
    void debugControllerFollowsTheSystem();
    void powerConnectedToggle();
};

void TestSystem::cleanup()
{
    System::releaseInstance();
    SystemPlatformType::type = System::PT_UNKNOWN;
}

void TestSystem::deviceTable_data()
{
    QTest::addColumn<int>("platform");
    QTest::addColumn<QList<int>>("ids");

    const QList<int> common{D::ID_LED_POWER, D::ID_AUDIO, D::ID_TEMP_CPU, D::ID_NETWORK_LAN, D::ID_NETWORK_WIFI,
                            D::ID_POWER_SUPPLY};
    const auto with = [&common](QList<int> more) {
        more += common;
        std::sort(more.begin(), more.end());
        return more;
    };
    QTest::newRow("unknown") << int(System::PT_UNKNOWN) << with({});
    QTest::newRow("virtual") << int(System::PT_VIRTUAL) << with({});
    QTest::newRow("out of range") << 42 << with({});
    QTest::newRow("tolvex") << int(System::PT_TOLVEX)
                            << with({D::ID_DISK_USER_DATA, D::ID_DISK_SYSTEM, D::ID_BATTERY_1ST, D::ID_DISPLAY});
    QTest::newRow("tolvex plus") << int(System::PT_TOLVEX_PLUS)
                                 << with({D::ID_BLUETOOTH, D::ID_DISK_USER_DATA, D::ID_DISK_SYSTEM, D::ID_BATTERY_1ST,
                                          D::ID_DISPLAY});
    QTest::newRow("quarnel") << int(System::PT_QUARNEL)
                             << with({D::ID_LED_WIFI, D::ID_POWER_MANIKIN_5V, D::ID_POWER_MANIKIN_VBUS,
                                      D::ID_BUTTON_POWER, D::ID_PWM, D::ID_CAN_SERIAL, D::ID_BATTERY_1ST});
    QTest::newRow("quarnel plus") << int(System::PT_QUARNEL_PLUS)
                                  << with({D::ID_BLUETOOTH, D::ID_LED_WIFI, D::ID_POWER_MANIKIN_5V,
                                           D::ID_POWER_MANIKIN_VBUS, D::ID_BUTTON_POWER, D::ID_PWM, D::ID_CAN_BUS,
                                           D::ID_CAN_SERIAL, D::ID_BATTERY_1ST});
    QTest::newRow("can cpu") << int(System::PT_CAN_CPU_MODULE)
                             << with({D::ID_LED_WIFI, D::ID_SOUND_AMPLIFIER, D::ID_CAN_BUS, D::ID_BATTERY_1ST});
}

void TestSystem::deviceTable()
{
    QFETCH(int, platform);
    QFETCH(QList<int>, ids);
    TestRoot root;
    SystemPlatformType::type = System::PlatformType(platform);
    System *system = System::instance();
    system->initialize(QStringLiteral("test"));
    QCOMPARE(system->platform(), System::PlatformType(platform));
    QCOMPARE(idsOf(system->devices()), ids);
    for (int id : ids) {
        QVERIFY(system->device(D::DeviceId(id)));
    }
    QVERIFY(!system->device(D::ID_VIBRATOR));
    QVERIFY(!system->device(D::ID_NETWORK_WIFI_P2P));
    QCOMPARE(system->device(D::ID_NETWORK_WIFI)->type(), D::DEVICE_NETWORK | D::DEVICE_FIGHT_MODE);
}

void TestSystem::devicePaths()
{
    TestRoot root;
    SystemPlatformType::type = System::PT_TOLVEX;
    System *system = System::instance();
    system->initialize(QStringLiteral("test"));
    QCOMPARE(system->device(D::ID_DISK_USER_DATA)->path(), root.path() + QStringLiteral("/var/data"));
    QCOMPARE(system->device(D::ID_DISK_SYSTEM)->path(), root.path() + QStringLiteral("/var"));
    // The display asks for F_ACTIVE besides the F_ENABLE every device gets.
    QTRY_COMPARE(system->device(D::ID_DISPLAY)->status(), D::F_ENABLE | D::F_ACTIVE);
}

void TestSystem::devicesAreAnnouncedAndEnabled()
{
    TestRoot root;
    SystemPlatformType::type = System::PT_CAN_CPU_MODULE;
    System *system = System::instance();
    QSignalSpy detected(system, &System::deviceDetected);
    system->initialize(QStringLiteral("test"));
    QCOMPARE(detected.count(), 0);
    QTRY_COMPARE(detected.count(), system->devices().size());
    QCOMPARE(detected.at(0).at(0).value<IDevicePtr>()->id(), D::ID_POWER_SUPPLY);
    QTRY_COMPARE(system->device(D::ID_SOUND_AMPLIFIER)->status(), D::F_ENABLE | D::F_ACTIVE);
}

void TestSystem::readyNowApiReadyLater()
{
    TestRoot root;
    System *system = System::instance();
    QVERIFY(!system->isReady());
    QSignalSpy ready(system, &System::apiReady);
    QElapsedTimer clock;
    clock.start();
    system->initialize(QStringLiteral("app"));
    QVERIFY(system->isReady());
    QCOMPARE(ready.count(), 0);
    QTRY_COMPARE(ready.count(), 1);
    QVERIFY2(clock.elapsed() >= 95, qPrintable(QString::number(clock.elapsed())));
    QCOMPARE(system->registeredIds(), QStringList{QStringLiteral("app")});
    QCOMPARE(system->systemInfo().value(QStringLiteral("API_VERSION")).toString(), QStringLiteral("0.01"));
}

void TestSystem::secondInitializeIsIgnored()
{
    TestRoot root;
    System *system = System::instance();
    QSignalSpy ready(system, &System::apiReady);
    system->initialize(QStringLiteral("app"));
    const int count = system->devices().size();
    SystemPlatformType::type = System::PT_TOLVEX;
    system->initialize(QStringLiteral("x"));
    QCOMPARE(system->registeredIds(), QStringList{QStringLiteral("app")});
    QCOMPARE(system->devices().size(), count);
    QCOMPARE(system->platform(), System::PT_UNKNOWN);
    QTRY_COMPARE(ready.count(), 1);
    QTest::qWait(150);
    QCOMPARE(ready.count(), 1);
}

void TestSystem::fixedFacts()
{
    TestRoot root;
    SystemPlatformType::type = System::PT_QUARNEL;
    System *system = System::instance();
    QCOMPARE(System::instance(), system);
    QCOMPARE(system->parent(), QCoreApplication::instance());
    system->initialize(QStringLiteral("test"));
    QCOMPARE(system->operatingSystem(), System::OS_WINDOWS);
    QCOMPARE(system->bootReason(), System::BOOT_BUTTON);
    QCOMPARE(system->flightModeStatus(), System::FligtModeFlags(System::FLIGHT_MODE_ENABLED));
    QVERIFY(system->services().isEmpty());
    QCOMPARE(QByteArray(System::PlatformTypeEnum.valueToKey(System::PT_CAN_CPU_MODULE)),
             QByteArray("PT_CAN_CPU_MODULE"));
    QCOMPARE(QByteArray(System::OSTypeEnum.valueToKey(System::OS_WINDOWS)), QByteArray("OS_WINDOWS"));
    QCOMPARE(QByteArray(System::BootTypeEnum.valueToKey(System::BOOT_REBOOT)), QByteArray("BOOT_REBOOT"));
    for (const char *name : {"DeviceFlags", "IDevice::DeviceId", "FligtModeFlags"}) {
        QVERIFY2(QMetaType::type(name) != QMetaType::UnknownType, name);
    }
}

void TestSystem::flightModeDisableThenEnable()
{
    TestRoot root;
    SystemPlatformType::type = System::PT_TOLVEX_PLUS;
    System *system = System::instance();
    system->initialize(QStringLiteral("test"));
    const IDevicePtr wifi = system->device(D::ID_NETWORK_WIFI);
    const IDevicePtr bluetooth = system->device(D::ID_BLUETOOTH);
    QSignalSpy flight(system, &System::flightModeStatusChanged);

    system->setFlightMode(false);
    QCOMPARE(flight.count(), 1);
    QCOMPARE(flightFlags(flight, 0), System::FligtModeFlags(System::FLIGHT_MODE_TRANSITION));
    system->setFlightMode(true); // dropped: a transition is running
    QCOMPARE(flight.count(), 1);
    QTRY_COMPARE(wifi->status() & D::F_ENABLE, D::DeviceFlags(D::F_ENABLE));
    QTRY_COMPARE(bluetooth->status() & D::F_ENABLE, D::DeviceFlags(D::F_ENABLE));
    QCOMPARE(flight.count(), 1);
    QTRY_COMPARE_WITH_TIMEOUT(flight.count(), 2, 3000);
    QCOMPARE(flightFlags(flight, 1), System::FligtModeFlags(System::FLIGHT_MODE_DISABLED));
    QCOMPARE(system->flightModeStatus(), System::FligtModeFlags(System::FLIGHT_MODE_DISABLED));

    system->setFlightMode(true);
    QCOMPARE(flight.count(), 3);
    QCOMPARE(flightFlags(flight, 2), System::FLIGHT_MODE_DISABLED | System::FLIGHT_MODE_TRANSITION);
    QTRY_COMPARE(wifi->status() & D::F_ENABLE, D::DeviceFlags());
    QTRY_COMPARE(bluetooth->status() & D::F_ENABLE, D::DeviceFlags());
    QTRY_COMPARE_WITH_TIMEOUT(flight.count(), 4, 3000);
    QCOMPARE(flightFlags(flight, 3), System::FligtModeFlags(System::FLIGHT_MODE_ENABLED));
}

void TestSystem::flightModeWithoutBluetooth()
{
    TestRoot root;
    SystemPlatformType::type = System::PT_TOLVEX;
    System *system = System::instance();
    system->initialize(QStringLiteral("test"));
    QVERIFY(!system->device(D::ID_BLUETOOTH));
    QSignalSpy flight(system, &System::flightModeStatusChanged);
    // Entering flight mode on a platform without Bluetooth switches Wi-Fi alone.
    system->setFlightMode(true);
    QTRY_COMPARE_WITH_TIMEOUT(flight.count(), 2, 3000);
    QCOMPARE(flightFlags(flight, 1), System::FligtModeFlags(System::FLIGHT_MODE_ENABLED));
    QCOMPARE(system->device(D::ID_NETWORK_WIFI)->status() & D::F_ENABLE, D::DeviceFlags());
}

void TestSystem::powerCommands()
{
    TestRoot root;
    System *system = System::instance();
    system->initialize(QStringLiteral("test"));
    QSignalSpy closed(system, &System::apiClosed);
    LogCapture log;
    system->reboot();
    system->suspend();
    QCOMPARE(closed.count(), 0);
    QCOMPARE(log.count(QStringLiteral("stub called")), 2);
    log.clear();
    system->powerOff();
    QCOMPARE(closed.count(), 1);
    QCOMPARE(log.messages().first(), QStringLiteral("stub called"));
    QVERIFY(log.records().first().function.contains(QLatin1String("powerOff")));
    system->close();
    QCOMPARE(closed.count(), 2);
    // Closing announces only; the system stays ready with its devices.
    QVERIFY(system->isReady());
    QVERIFY(system->device(D::ID_AUDIO));
}

void TestSystem::serviceCommandsOnlyLog()
{
    System *system = System::instance();
    QSignalSpy service(system, &System::serviceChanged);
    LogCapture log;
    system->serviceSwitch(QStringLiteral("old"), QStringLiteral("new"));
    system->serviceStop(QStringLiteral("a"));
    system->serviceStart(QStringLiteral("b"));
    system->serviceRestart(QStringLiteral("c"));
    QCOMPARE(log.messages(), (QStringList{QStringLiteral("oldService \"old\" newService \"new\""),
                                          QStringLiteral("name \"a\""), QStringLiteral("name \"b\""),
                                          QStringLiteral("name \"c\"")}));
    QCOMPARE(service.count(), 0);
    QVERIFY(system->services().isEmpty());
}

void TestSystem::releaseAndRecreate()
{
    TestRoot root;
    SystemPlatformType::type = System::PT_TOLVEX;
    QPointer<System> first = System::instance();
    first->initialize(QStringLiteral("one"));
    const IDevicePtr kept = first->device(D::ID_BATTERY_1ST);
    QSignalSpy ready(first, &System::apiReady);
    System::releaseInstance();
    QVERIFY(first.isNull());
    // A device held by the application outlives the system.
    QCOMPARE(kept->id(), D::ID_BATTERY_1ST);
    QTest::qWait(150);

    SystemPlatformType::type = System::PT_QUARNEL;
    System *second = System::instance();
    QVERIFY(!second->isReady());
    QVERIFY(second->devices().isEmpty());
    QSignalSpy secondReady(second, &System::apiReady);
    second->initialize(QStringLiteral("two"));
    QCOMPARE(second->platform(), System::PT_QUARNEL);
    QCOMPARE(second->registeredIds(), QStringList{QStringLiteral("two")});
    QTRY_COMPARE(secondReady.count(), 1);
    System::releaseInstance();
    System::releaseInstance(); // twice is harmless
}

void TestSystem::debugControllerFollowsTheSystem()
{
    TestRoot root;
    SystemPlatformType::type = System::PT_TOLVEX;
    System::instance()->initialize(QStringLiteral("test"));
    QSignalSpy detected(System::instance(), &System::deviceDetected);
    VantixDebug::instance()->addBattery(D::ID_BATTERY_2ND);
    QVERIFY(System::instance()->device(D::ID_BATTERY_2ND));
    QTRY_COMPARE(detected.count(), System::instance()->devices().size());

    System::releaseInstance();
    // Nothing is attached any more: calls must be harmless.
    VantixDebug::instance()->addBattery(D::ID_BATTERY_2ND);
    VantixDebug::instance()->removeBattery(D::ID_BATTERY_1ST);
    VantixDebug::instance()->overridePowerConnectedToggle(D::ID_POWER_SUPPLY);

    System *fresh = System::instance();
    VantixDebug::instance()->addBattery(D::ID_BATTERY_2ND);
    QVERIFY(!fresh->device(D::ID_BATTERY_2ND)); // not attached before initialize()
    fresh->initialize(QStringLiteral("again"));
    QSignalSpy removed(fresh, &System::deviceRemoved);
    VantixDebug::instance()->removeBattery(D::ID_BATTERY_1ST);
    QCOMPARE(removed.count(), 1);
    QCOMPARE(removed.at(0).at(0).value<D::DeviceId>(), D::ID_BATTERY_1ST);
    QVERIFY(!fresh->device(D::ID_BATTERY_1ST));
}

void TestSystem::powerConnectedToggle()
{
    TestRoot root;
    System *system = System::instance();
    system->initialize(QStringLiteral("test"));
    const IDevicePtr supply = system->device(D::ID_POWER_SUPPLY);
    QTRY_COMPARE(supply->status(), D::DeviceFlags(D::F_ENABLE));
    QSignalSpy status(supply.data(), &IDevice::statusChanged);
    VantixDebug::instance()->overridePowerConnectedToggle(D::ID_POWER_SUPPLY);
    QCOMPARE(supply->status(), D::F_ENABLE | D::F_POWER_CONNECTED);
    VantixDebug::instance()->overridePowerConnectedToggle(D::ID_POWER_SUPPLY);
    QCOMPARE(supply->status(), D::DeviceFlags(D::F_ENABLE));
    QCOMPARE(status.count(), 2);
    // A device that does not exist is skipped silently.
    LogCapture log;
    VantixDebug::instance()->overridePowerConnectedToggle(D::ID_POWER_MANIKIN_5V);
    QVERIFY(log.records().isEmpty());
}

QTEST_GUILESS_MAIN(TestSystem)
#include "tst_system.moc"

// The System facade: start-up per platform, readiness, flight mode, power and
// service commands, release and re-creation; and the services it owns: time
// settings and the API message channel.

#include "apimessageprivate_p.h"
#include "logcapture.h"
#include "metaenum_p.h"
#include "systemprivate_p.h"
#include "testroot.h"
#include "testsystem.h"

#include <vantix/vantix.h>

#include <QElapsedTimer>
#include <QMetaEnum>
#include <QPointer>
#include <QSignalSpy>
#include <QtTest>

using namespace TQ_SPAPI;

namespace {
using D = IDevice;

// A platform implementation that brings its own private object.
struct OwnMessage : IApiMessage
{
    explicit OwnMessage(ApiMessagePrivate &p)
        : IApiMessage(p)
    {
    }
};

int flightAt(const QSignalSpy &spy, int index)
{
    return int(spy.at(index).at(0).value<System::FligtModeFlags>());
}
} // namespace

class TestSystem : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void cleanup()
    {
        System::releaseInstance();
        SystemPlatformType::type = System::PT_UNKNOWN;
    }

    void startUp_data()
    {
        QTest::addColumn<int>("platform");
        QTest::addColumn<QStringList>("ids");
        const auto row = [](const char *name, int platform, const QString &more) {
            QStringList ids = ("POWER_SUPPLY LED_POWER AUDIO TEMP_CPU NETWORK_LAN NETWORK_WIFI" + more).split(' ');
            ids.sort();
            QTest::newRow(name) << platform << ids;
        };
        const QString tolvex = " DISK_USER_DATA DISK_SYSTEM BATTERY_1ST DISPLAY";
        const QString quarnel = " LED_WIFI POWER_MANIKIN_5V POWER_MANIKIN_VBUS BUTTON_POWER PWM CAN_SERIAL BATTERY_1ST";
        row("unknown", System::PT_UNKNOWN, "");
        row("virtual", System::PT_VIRTUAL, "");
        row("out of range", 42, "");
        row("tolvex", System::PT_TOLVEX, tolvex);
        row("tolvex plus", System::PT_TOLVEX_PLUS, tolvex + " BLUETOOTH");
        row("quarnel", System::PT_QUARNEL, quarnel);
        row("quarnel plus", System::PT_QUARNEL_PLUS, quarnel + " BLUETOOTH CAN_BUS");
        row("can cpu", System::PT_CAN_CPU_MODULE, " LED_WIFI SOUND_AMPLIFIER CAN_BUS BATTERY_1ST");
    }

    void startUp()
    {
        QFETCH(int, platform);
        QFETCH(QStringList, ids);
        TestRoot root;
        System *system = System::instance();
        QVERIFY(!system->isReady());
        QSignalSpy detected(system, &System::deviceDetected);
        QSignalSpy ready(system, &System::apiReady);
        QElapsedTimer clock;
        clock.start();
        startSystem(platform);
        QVERIFY(system->isReady());
        QCOMPARE(system->platform(), System::PlatformType(platform));
        QStringList actual;
        for (const IDevicePtr &device : system->devices()) {
            actual << enumKey(device->id()).mid(3);
            QCOMPARE(system->device(device->id()), device);
        }
        actual.sort();
        QCOMPARE(actual, ids);
        QCOMPARE(system->device(D::ID_NETWORK_WIFI)->type(), D::DEVICE_NETWORK | D::DEVICE_FIGHT_MODE);
        if (const IDevicePtr disk = system->device(D::ID_DISK_USER_DATA)) {
            QCOMPARE(disk->path(), root.path() + "/var/data");
            QCOMPARE(system->device(D::ID_DISK_SYSTEM)->path(), root.path() + "/var");
        }

        // Announced from the event loop, in creation order; apiReady follows once
        // every start-up ability request has been served.
        QCOMPARE(detected.count() + ready.count(), 0);
        QTRY_COMPARE(ready.count(), 1);
        QVERIFY2(clock.elapsed() >= 95, qPrintable(QString::number(clock.elapsed())));
        QCOMPARE(detected.count(), ids.size());
        QCOMPARE(detected.at(0).at(0).value<IDevicePtr>()->id(), D::ID_POWER_SUPPLY);
        QCOMPARE(system->device(D::ID_LED_POWER)->status(), D::DeviceFlags(D::F_ENABLE));
        for (D::DeviceId active : {D::ID_DISPLAY, D::ID_SOUND_AMPLIFIER}) {
            if (const IDevicePtr device = system->device(active)) {
                QCOMPARE(device->status(), D::F_ENABLE | D::F_ACTIVE);
            }
        }
        if (const IDevicePtr bluetooth = system->device(D::ID_BLUETOOTH)) {
            QCOMPARE(bluetooth->status(), D::DeviceFlags(D::F_NOFLAGS)); // a flight-mode device is not enabled
        }

        // A second start changes nothing and announces nothing.
        SystemPlatformType::type = System::PT_TOLVEX_PLUS;
        system->initialize("x");
        QCOMPARE(system->registeredIds(), QStringList{"test"});
        QCOMPARE(system->devices().size(), ids.size());
        QCOMPARE(system->platform(), System::PlatformType(platform));
        QTest::qWait(150);
        QCOMPARE(ready.count(), 1);
        QCOMPARE(detected.count(), ids.size());
    }

    void fixedFacts()
    {
        TestRoot root;
        System *system = startSystem(System::PT_QUARNEL);
        QCOMPARE(System::instance(), system);
        QCOMPARE(system->parent(), QCoreApplication::instance());
        QCOMPARE(system->operatingSystem(), System::OS_WINDOWS);
        QCOMPARE(system->bootReason(), System::BOOT_BUTTON);
        QCOMPARE(system->flightModeStatus(), System::FligtModeFlags(System::FLIGHT_MODE_ENABLED));
        QVERIFY(system->services().isEmpty());
        QCOMPARE(QByteArray(System::PlatformTypeEnum.valueToKey(System::PT_CAN_CPU_MODULE)) +
                System::OSTypeEnum.valueToKey(System::OS_WINDOWS) +
                System::BootTypeEnum.valueToKey(System::BOOT_REBOOT),
            QByteArray("PT_CAN_CPU_MODULEOS_WINDOWSBOOT_REBOOT"));
        for (const char *name :
            {"DeviceFlags", "IDevice::DeviceId", "FligtModeFlags", "NetworkState", "ReconnectState"}) {
            QVERIFY2(QMetaType::type(name) != QMetaType::UnknownType, name);
        }
    }

    void flightMode_data()
    {
        QTest::addColumn<int>("platform");
        QTest::newRow("with bluetooth") << int(System::PT_TOLVEX_PLUS);
        QTest::newRow("without bluetooth") << int(System::PT_TOLVEX);
    }

    void flightMode()
    {
        QFETCH(int, platform);
        TestRoot root;
        System *system = startSystem(platform);
        const IDevicePtr wifi = system->device(D::ID_NETWORK_WIFI);
        const IDevicePtr bluetooth = system->device(D::ID_BLUETOOTH);
        QCOMPARE(bluetooth.isNull(), platform == System::PT_TOLVEX);
        const int scanning = D::F_ENABLESCANNING, enabled = D::F_ENABLE | D::F_ENABLESCANNING;
        QCOMPARE(int(wifi->status()), enabled);
        QSignalSpy status(wifi.data(), &IDevice::statusChanged);
        QSignalSpy flight(system, &System::flightModeStatusChanged);

        system->setFlightMode(false);
        QCOMPARE(flight.count(), 1);
        QCOMPARE(flightAt(flight, 0), int(System::FLIGHT_MODE_TRANSITION));
        system->setFlightMode(true); // dropped: a transition is running
        QCOMPARE(flight.count(), 1);
        if (bluetooth) {
            QTRY_COMPARE(bluetooth->status() & D::F_ENABLE, D::DeviceFlags(D::F_ENABLE));
        }
        QTRY_COMPARE_WITH_TIMEOUT(flight.count(), 2, 3000);
        QCOMPARE(flightAt(flight, 1), int(System::FLIGHT_MODE_DISABLED));
        QCOMPARE(system->flightModeStatus(), System::FligtModeFlags(System::FLIGHT_MODE_DISABLED));
        QCOMPARE(status.count(), 0); // already on

        // The Wi-Fi radio switches at once, the rest after the transition.
        system->setFlightMode(true);
        QCOMPARE(flightAt(flight, 2), System::FLIGHT_MODE_DISABLED | System::FLIGHT_MODE_TRANSITION);
        QCOMPARE(statusWords(status), QList<int>{scanning});
        if (bluetooth) {
            QTRY_COMPARE(bluetooth->status() & D::F_ENABLE, D::DeviceFlags());
        }
        QTRY_COMPARE_WITH_TIMEOUT(flight.count(), 4, 3000);
        QCOMPARE(flightAt(flight, 3), int(System::FLIGHT_MODE_ENABLED));
        system->setFlightMode(false);
        QCOMPARE(statusWords(status), QList<int>({scanning, enabled}));
    }

    void commandsOnlyLog()
    {
        TestRoot root;
        System *system = startSystem(System::PT_UNKNOWN);
        QSignalSpy closed(system, &System::apiClosed);
        QSignalSpy service(system, &System::serviceChanged);
        LogCapture log;
        system->reboot();
        system->suspend();
        QCOMPARE(closed.count(), 0);
        system->powerOff();
        QCOMPARE(closed.count(), 1);
        QVERIFY(log.records().at(2).function.contains("powerOff"));
        system->close();
        QCOMPARE(closed.count(), 2);
        system->serviceSwitch("old", "new");
        system->serviceStop("a");
        system->serviceStart("b");
        system->serviceRestart("c");
        QCOMPARE(log.messages().mid(0, 3), QStringList({"stub called", "stub called", "stub called"}));
        QCOMPARE(log.messages().mid(log.messages().size() - 4),
            QStringList({"oldService \"old\" newService \"new\"", "name \"a\"", "name \"b\"", "name \"c\""}));
        QCOMPARE(service.count(), 0);
        QVERIFY(system->services().isEmpty());
        // Closing announces only; the system stays ready with its devices.
        QVERIFY(system->isReady() && system->device(D::ID_AUDIO));
    }

    void releaseAndRecreate()
    {
        TestRoot root;
        QPointer<System> first = System::instance();
        QVERIFY(!first->timeSettings());
        QPointer<IApiMessage> message = first->apiMessage();
        QVERIFY(message && first->apiMessage() == message);
        startSystem(System::PT_TOLVEX, {}, "one");
        QPointer<ITimeSettings> settings = first->timeSettings();
        QVERIFY(settings && settings->parent()->parent() == first);
        VantixDebug *debug = VantixDebug::instance();
        debug->addBattery(D::ID_BATTERY_2ND);
        QVERIFY(first->device(D::ID_BATTERY_2ND));
        const IDevicePtr kept = first->device(D::ID_BATTERY_1ST);
        System::releaseInstance();
        QVERIFY(first.isNull() && settings.isNull() && message.isNull());
        // A device held by the application outlives the system.
        QCOMPARE(kept->id(), D::ID_BATTERY_1ST);
        // Nothing is attached any more: calls must be harmless.
        debug->addBattery(D::ID_BATTERY_2ND);
        debug->removeBattery(D::ID_BATTERY_1ST);
        debug->overridePowerConnectedToggle(D::ID_POWER_SUPPLY);
        QTest::qWait(150);

        System *second = System::instance();
        QVERIFY(!second->isReady() && second->devices().isEmpty());
        debug->addBattery(D::ID_BATTERY_2ND);
        QVERIFY(!second->device(D::ID_BATTERY_2ND)); // not attached before initialize()
        QSignalSpy ready(second, &System::apiReady);
        QSignalSpy removed(second, &System::deviceRemoved);
        startSystem(System::PT_QUARNEL, {}, "two");
        QCOMPARE(second->platform(), System::PT_QUARNEL);
        QCOMPARE(second->registeredIds(), QStringList{"two"});
        debug->removeBattery(D::ID_BATTERY_1ST);
        QCOMPARE(removed.count(), 1);
        QCOMPARE(removed.at(0).at(0).value<D::DeviceId>(), D::ID_BATTERY_1ST);
        QVERIFY(!second->device(D::ID_BATTERY_1ST));
        QTRY_COMPARE(ready.count(), 1);
        System::releaseInstance();
        System::releaseInstance(); // twice is harmless
    }

    void timeSettings()
    {
        ITimeSettings s;
        QCOMPARE(s.timeZone(), QString("Europe/Copenhagen"));
        QVERIFY(s.ntpEnabled() && s.isHwClockValid() && s.getTimeZones().isEmpty());
        QCOMPARE(s.urlList(), QStringList{"pool.ntp.org"});
        QSignalSpy zone(&s, &ITimeSettings::timeZoneChanged);
        QSignalSpy ntp(&s, &ITimeSettings::enabledChanged);
        QSignalSpy urls(&s, &ITimeSettings::urlListChanged);

        for (const char *z : {"Europe/Copenhagen", "", "", "Not/A_Zone"}) {
            s.setTimeZone(z);
        }
        QCOMPARE(zone.count(), 2);
        QCOMPARE(zone.at(0).at(0).toString(), QString(""));
        QCOMPARE(s.timeZone(), QString("Not/A_Zone"));

        s.setNtpEnabled(true);
        s.setNtpEnabled(false);
        QVERIFY(s.setProperty("ntpEnabled", false));
        QCOMPARE(ntp.count(), 1);
        QCOMPARE(ntp.at(0).at(0).toBool(), false);

        s.setUrlList({"pool.ntp.org"});
        s.setUrlList({"a.example", "b.example"});
        s.setUrlList({"a.example", "b.example"});
        s.setUrlList({"b.example", "a.example"});
        QCOMPARE(urls.count(), 2);
        QCOMPARE(s.urlList(), QStringList({"b.example", "a.example"}));

        LogCapture log;
        s.setDateTime(QDateTime(QDate(2001, 2, 3), QTime(4, 5)));
        QVERIFY(log.contains("Not supported on Windows", QtWarningMsg));
        QCOMPARE(zone.count() + ntp.count() + urls.count(), 5);
    }

    void apiMessage()
    {
        IApiMessage *message = System::instance()->apiMessage();
        QCOMPARE(message->findChild<ApiMessagePrivate *>()->q, message);
        QSignalSpy errors(message, &IApiMessage::deviceError);
        QSignalSpy events(message, &IApiMessage::telemetryEvent);
        QSignalSpy messages(message, &IApiMessage::telemetryMessage);
        QVERIFY(QMetaObject::invokeMethod(message, "checkSystemLog"));
        QCoreApplication::processEvents();
        QCOMPARE(errors.count() + events.count() + messages.count(), 0);

        const QMetaObject &mo = IApiMessage::staticMetaObject;
        QStringList members;
        for (int i = mo.methodOffset(); i < mo.methodCount(); ++i) {
            members << mo.method(i).methodSignature();
        }
        QCOMPARE(members,
            QStringList({"deviceError(uint)", "telemetryEvent(QString,QVariantMap,QVariantMap)",
                "telemetryMessage(uint,QVariantMap,QString)", "checkSystemLog()"}));
        const QMetaEnum levels = mo.enumerator(mo.indexOfEnumerator("SeverityLevel"));
        QCOMPARE(levels.keyCount(), 5);
        const char *names[] = {"Verbose", "Information", "Warning", "Critical", "Fatal"};
        for (int value = 0; value < 5; ++value) {
            QCOMPARE(levels.keyToValue(names[value]), value);
        }

        QPointer<ApiMessagePrivate> p = new ApiMessagePrivate;
        {
            OwnMessage own(*p);
            QCOMPARE(p->q, &own);
            QCOMPARE(p->parent(), &own);
            QVERIFY(!own.parent());
        }
        QVERIFY(p.isNull());
    }
};

QTEST_GUILESS_MAIN(TestSystem)
#include "tst_system.moc"

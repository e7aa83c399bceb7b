// The System facade: start-up per platform, readiness, flight mode, power and
// service commands, release and re-creation; and what it owns: the system
// information with its nvram file, the time settings and the API messages.

#include "apimessageprivate_p.h"
#include "logcapture.h"
#include "metaenum_p.h"
#include "systeminfostore_p.h"
#include "systemprivate_p.h"
#include "testfiles.h"
#include "testroot.h"
#include "testsystem.h"

#include <vantix/vantix.h>

#include <QDate>
#include <QDir>
#include <QElapsedTimer>
#include <QHostInfo>
#include <QMetaEnum>
#include <QPointer>
#include <QRegularExpression>
#include <QSettings>
#include <QSignalSpy>
#include <QUuid>
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

QList<int> flightFlags(const QSignalSpy &spy)
{
    QList<int> flags;
    for (const QList<QVariant> &arguments : spy) {
        flags << int(arguments.at(0).value<System::FligtModeFlags>());
    }
    return flags;
}

QString info(const QString &key)
{
    return System::instance()->systemInfo().value(key).toString();
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
        SystemInfoStore::setOsReleasePath(QString());
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
        system->setFlightMode(true); // dropped: a transition is running
        QCOMPARE(flightFlags(flight), QList<int>{System::FLIGHT_MODE_TRANSITION});
        if (bluetooth) {
            QTRY_COMPARE(bluetooth->status() & D::F_ENABLE, D::DeviceFlags(D::F_ENABLE));
        }
        QTRY_COMPARE_WITH_TIMEOUT(flight.count(), 2, 3000);
        QCOMPARE(system->flightModeStatus(), System::FligtModeFlags(System::FLIGHT_MODE_DISABLED));
        QCOMPARE(status.count(), 0); // already on

        // The Wi-Fi radio switches at once, the rest after the transition.
        system->setFlightMode(true);
        QCOMPARE(flight.count(), 3);
        QCOMPARE(statusWords(status), QList<int>{scanning});
        if (bluetooth) {
            QTRY_COMPARE(bluetooth->status() & D::F_ENABLE, D::DeviceFlags());
        }
        QTRY_COMPARE_WITH_TIMEOUT(flight.count(), 4, 3000);
        QCOMPARE(flightFlags(flight), QList<int>({4, 2, 6, 0})); // transition, disabled, transition, enabled
        system->setFlightMode(false);
        QCOMPARE(statusWords(status), QList<int>({scanning, enabled}));
    }

    void fixedFactsAndCommands()
    {
        TestRoot root;
        System *system = startSystem(System::PT_QUARNEL);
        QCOMPARE(system->parent(), QCoreApplication::instance());
        QCOMPARE(system->operatingSystem(), System::OS_WINDOWS);
        QCOMPARE(system->bootReason(), System::BOOT_BUTTON);
        QCOMPARE(QByteArray(System::PlatformTypeEnum.valueToKey(System::PT_CAN_CPU_MODULE)) +
                System::OSTypeEnum.valueToKey(System::OS_WINDOWS) +
                System::BootTypeEnum.valueToKey(System::BOOT_REBOOT),
            QByteArray("PT_CAN_CPU_MODULEOS_WINDOWSBOOT_REBOOT"));
        for (const char *name :
            {"DeviceFlags", "IDevice::DeviceId", "FligtModeFlags", "NetworkState", "ReconnectState"}) {
            QVERIFY2(QMetaType::type(name) != QMetaType::UnknownType, name);
        }

        // The power and service commands only log; closing only announces.
        QSignalSpy closed(system, &System::apiClosed);
        QSignalSpy service(system, &System::serviceChanged);
        LogCapture log;
        system->reboot();
        system->suspend();
        QCOMPARE(closed.count(), 0);
        system->powerOff();
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
        QVERIFY(system->services().isEmpty() && system->isReady() && system->device(D::ID_AUDIO));
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
        QCOMPARE(removed, QList<QVariantList>({{QVariant::fromValue(D::ID_BATTERY_1ST), QString()}}));
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
        QCOMPARE(zone, QList<QVariantList>({{""}, {"Not/A_Zone"}}));
        QCOMPARE(s.timeZone(), QString("Not/A_Zone"));

        s.setNtpEnabled(true);
        s.setNtpEnabled(false);
        QVERIFY(s.setProperty("ntpEnabled", false));
        QCOMPARE(ntp, QList<QVariantList>({{false}}));

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

    void firstStart_data()
    {
        QTest::addColumn<int>("platform");
        QTest::addColumn<QString>("expected"); // file, board id, revision, serial, product id
        QTest::newRow("tolvex") << int(System::PT_TOLVEX) << "nvram-tolvex 30DA C TSBF12123456 200-00000";
        QTest::newRow("quarnel plus --id") << int(System::PT_QUARNEL_PLUS) << "nvram-quarnel 40BA D TSBF12987654 1-2";
        QTest::newRow("can cpu --id") << int(System::PT_CAN_CPU_MODULE) << "nvram-quarnel NONE N TSBF00000000 9";
    }

    // The fresh root also has no folder for the file yet.
    void firstStart()
    {
        QFETCH(int, platform);
        QFETCH(QString, expected);
        TestRoot root;
        const QDate before = QDate::currentDate();
        const QString file = expected.section(' ', 0, 0), id = expected.section(' ', 4);
        startSystem(platform, id == "200-00000" ? QStringList() : QStringList{"--id", id});

        QCOMPARE(QStringList({file, info("HW_BOARD_ID"), info("HW_BOARD_REVISION"), info("TQ_PRODUCT_SERIAL"),
                     info("TQ_PRODUCT_ID")}),
            expected.split(' '));
        const QString uuid = info("TQ_PRODUCT_UUID");
        QVERIFY(uuid.size() == 36 && !QUuid(uuid).isNull() && !uuid.contains('{'));
        const QDate date = QDate::fromString(info("TQ_PRODUCT_DATE"), "yyyy-MM-dd");
        QVERIFY(date == before || date == QDate::currentDate());
        QCOMPARE(info("API_VERSION") + info("API_NAME") + info("BoardControllerVersion") + info("SYSCTRL_VERSION"),
            QString("0.01LinuxStubX.XX.X"));
        QCOMPARE(info("OS_HOSTNAME"), QHostInfo::localHostName());

        const QString path = root.path() + "/var/etc/" + file;
        QCOMPARE(SystemInfoStore::filePath(System::PlatformType(platform)), path);
        QSettings settings(path, QSettings::IniFormat);
        QStringList keys = settings.allKeys();
        keys.sort();
        QCOMPARE(keys,
            (QStringList{"API_VERSION", "HW_BOARD_ID", "HW_BOARD_REVISION", "TQ_PRODUCT_DATE", "TQ_PRODUCT_ID",
                "TQ_PRODUCT_SERIAL", "TQ_PRODUCT_UUID"}));
        for (const QString &key : keys) {
            QCOMPARE(settings.value(key).toString(), info(key));
        }
        QCOMPARE(QDir(root.path() + "/var/etc").entryList(QDir::Files), QStringList{file});
    }

    void restarts()
    {
        TestRoot root;
        System *system = startSystem(System::PT_TOLVEX, {"--id", "111-11111"});
        const QVariantMap first = system->systemInfo();
        QSettings file(SystemInfoStore::filePath(System::PT_TOLVEX), QSettings::IniFormat);
        file.setValue("API_NAME", "Old");
        file.setValue("OS_HOSTNAME", "elsewhere");
        file.sync();

        // Identity survives whatever "--id" says now; per-start entries are refreshed.
        system = startSystem(System::PT_TOLVEX, {"--id", "222-22222"});
        for (const char *key : {"TQ_PRODUCT_UUID", "TQ_PRODUCT_DATE", "TQ_PRODUCT_ID"}) {
            QCOMPARE(info(key), first.value(key).toString());
        }
        QCOMPARE(info("API_NAME") + info("OS_HOSTNAME"), "LinuxStub" + QHostInfo::localHostName());

        // Added entries persist with the whole map; deleting touches the map only.
        QSignalSpy changed(system, &System::systemInfoChanged);
        system->addSystemInfoPair("A", "1");
        file.sync();
        QCOMPARE(file.value("A").toString() + file.value("SYSCTRL_VERSION").toString(), QString("1X.X"));
        system = startSystem(System::PT_TOLVEX);
        QCOMPARE(info("A"), QString("1"));
        system->deleteSystemInfoKey("A");
        QVERIFY(!system->systemInfo().contains("A"));
        QCOMPARE(changed.count(), 0);
        startSystem(System::PT_TOLVEX);
        QCOMPARE(info("A"), QString("1"));
    }

    void osRelease()
    {
        TestRoot root;
        QVERIFY(writeFile(root.path() + "/os-release", "NAME=\"Test OS\"\nVERSION=  \" 4.2 (calm) \"\n"));
        SystemInfoStore::setOsReleasePath(root.path() + "/os-release");
        startSystem(System::PT_QUARNEL);
        QCOMPARE(info("OS_NAME") + '|' + info("OS_VERSION"), QString("Test OS|4.2 (calm)"));

        SystemInfoStore::setOsReleasePath(root.path() + "/missing");
        startSystem(System::PT_QUARNEL);
        QVERIFY(System::instance()->systemInfo().contains("OS_NAME"));
        QCOMPARE(info("OS_NAME") + info("OS_VERSION"), QString());

        // The host's own file, where there is one.
        SystemInfoStore::setOsReleasePath(QString());
        const QRegularExpression name("^NAME=\"?([^\"\n]*)", QRegularExpression::MultilineOption);
        const QRegularExpressionMatch host = name.match(QString::fromUtf8(readFile("/etc/os-release")));
        if (host.hasMatch()) {
            startSystem(System::PT_QUARNEL);
            QCOMPARE(info("OS_NAME"), host.captured(1).trimmed());
        }
    }

    void damagedFile_data()
    {
        QTest::addColumn<QByteArray>("content"); // null: a folder in the file's place
        QTest::addColumn<QString>("damage");
        QTest::addColumn<bool>("olderCopy");
        QTest::newRow("format") << QByteArray("[General\nHW_BOARD_ID=30DA\n") << "format error" << false;
        QTest::newRow("empty") << QByteArray("") << "no entries" << false;
        QTest::newRow("only an entry QSettings cannot address")
            << QByteArray("[General]\n\\TQ_PRODUCT_UUID=x\n") << "no entries" << true;
        QTest::newRow("unreadable") << QByteArray() << "unreadable" << false;
    }

    void damagedFile()
    {
        QFETCH(QByteArray, content);
        QFETCH(QString, damage);
        QFETCH(bool, olderCopy);
        TestRoot root;
        const QString path = SystemInfoStore::filePath(System::PT_TOLVEX);
        QVERIFY(content.isNull() ? QDir().mkpath(path) : writeFile(path, content));
        QVERIFY(!olderCopy || writeFile(path + ".corrupt", "older"));
        const QString kept = path + (olderCopy ? ".corrupt.2" : ".corrupt");

        LogCapture log;
        startSystem(System::PT_TOLVEX);
        QVERIFY(log.contains(QString("Damaged nvram file \"%1\" (%2) kept as \"%3\"; a new identity is generated")
                                 .arg(path, damage, kept),
            QtWarningMsg));
        QVERIFY(content.isNull() ? QFileInfo(kept).isDir() : readFile(kept) == content);
        if (olderCopy) {
            QCOMPARE(readFile(path + ".corrupt"), QByteArray("older"));
        }
        QCOMPARE(info("TQ_PRODUCT_UUID").size(), 36);
        QCOMPARE(QSettings(path, QSettings::IniFormat).value("TQ_PRODUCT_UUID").toString(), info("TQ_PRODUCT_UUID"));
    }

    // A file that lacks identity entries is still the unit's own: taken as it
    // stands, nothing generated, nothing written back at start-up.
    void partialFile()
    {
        TestRoot root;
        const QString path = SystemInfoStore::filePath(System::PT_TOLVEX);
        const QByteArray content("[General]\nTQ_PRODUCT_UUID=5f0c7d1e-2b3a-4c5d-8e9f-0a1b2c3d4e5f\n"
                                 "TQ_PRODUCT_ID=123-45678\nAPI_NAME=Old\nOS_HOSTNAME=elsewhere\n"
                                 "\\LEADING=lost\nOWNER=\"ward 7, bed 2\"\n");
        QVERIFY(writeFile(path, content));

        LogCapture log;
        System *system = startSystem(System::PT_TOLVEX, {"--id", "999-99999"});
        QStringList warnings;
        for (const LogRecord &record : log.records()) {
            if (record.type == QtWarningMsg) {
                warnings << record.message;
            }
        }
        QCOMPARE(warnings,
            QStringList{QString("nvram file \"%1\": entry \"/LEADING\" cannot be read as written; ignored").arg(path)});

        QStringList keys = system->systemInfo().keys();
        QCOMPARE(keys,
            (QStringList{"API_NAME", "API_VERSION", "BoardControllerVersion", "OS_HOSTNAME", "OS_NAME", "OS_VERSION",
                "OWNER", "SYSCTRL_VERSION", "TQ_PRODUCT_ID", "TQ_PRODUCT_UUID"}));
        QCOMPARE(info("TQ_PRODUCT_UUID") + '|' + info("TQ_PRODUCT_ID") + '|' + info("OWNER"),
            QString("5f0c7d1e-2b3a-4c5d-8e9f-0a1b2c3d4e5f|123-45678|ward 7, bed 2"));
        // Per-start entries are refreshed in memory; the file keeps its own.
        QCOMPARE(info("API_NAME") + '|' + info("OS_HOSTNAME"), "LinuxStub|" + QHostInfo::localHostName());
        QCOMPARE(readFile(path), content);
        QCOMPARE(QDir(QFileInfo(path).path()).entryList(QDir::Files), QStringList{"nvram-tolvex"});

        // A second start finds the same.
        startSystem(System::PT_TOLVEX);
        QCOMPARE(info("TQ_PRODUCT_UUID"), QString("5f0c7d1e-2b3a-4c5d-8e9f-0a1b2c3d4e5f"));
        QVERIFY(!System::instance()->systemInfo().contains("HW_BOARD_ID"));
        QCOMPARE(readFile(path), content);
    }

    void storableKeys_data()
    {
        QTest::addColumn<QString>("key");
        QTest::addColumn<bool>("stored");
        QTest::newRow("plain") << "A" << true;
        QTest::newRow("group") << "A/B" << true;
        QTest::newRow("General group") << "General/A" << true;
        QTest::newRow("backslash and blanks") << "A\\B C=D;E" << true;
        QTest::newRow("empty") << "" << false;
        QTest::newRow("leading slash") << "/API_VERSION" << false;
        QTest::newRow("trailing slash") << "A/" << false;
        QTest::newRow("double slash") << "A//B" << false;
    }

    // Every key addSystemInfoPair keeps comes back unchanged on the next
    // start; one the file would give back changed, or under another key's
    // name, is refused and changes neither the map nor the file.
    void storableKeys()
    {
        QFETCH(QString, key);
        QFETCH(bool, stored);
        TestRoot root;
        System *system = startSystem(System::PT_QUARNEL);
        const QVariantMap before = system->systemInfo();
        const QString path = SystemInfoStore::filePath(System::PT_QUARNEL);
        const QByteArray file = readFile(path);

        LogCapture log;
        system->addSystemInfoPair(key, "new value");
        const QString warning = QString("System information key \"%1\" refused: the nvram file cannot keep it (empty, "
                                        "or a leading, trailing or double slash)")
                                    .arg(key);
        QCOMPARE(log.contains(warning, QtWarningMsg), !stored);
        QCOMPARE(SystemInfoStore::isStorableKey(key), stored);
        if (!stored) {
            QCOMPARE(system->systemInfo(), before);
            QCOMPARE(readFile(path), file);
            return;
        }
        QCOMPARE(info(key), QString("new value"));
        const QVariantMap saved = system->systemInfo();
        system = startSystem(System::PT_QUARNEL);
        QCOMPARE(system->systemInfo(), saved);
    }

    void unwritableFolder_data()
    {
        QTest::addColumn<bool>("readOnly");
        QTest::newRow("file in the folder's place") << false;
        QTest::newRow("read-only folder") << true;
    }

    void unwritableFolder()
    {
        QFETCH(bool, readOnly);
        TestRoot root;
        const QString folder = root.path() + "/var/etc";
        QVERIFY(QDir().mkpath(readOnly ? folder : root.path() + "/var"));
        if (!readOnly) {
            QVERIFY(writeFile(folder, "not a folder"));
        } else {
            QFile::setPermissions(folder, QFile::ReadOwner | QFile::ExeOwner);
            QFile probe(folder + "/probe");
            if (probe.open(QIODevice::WriteOnly)) {
                QSKIP("folder permissions do not bind this user (root); the other row covers the case");
            }
        }

        LogCapture log;
        System *system = startSystem(System::PT_QUARNEL);
        const QString warning = QString("Cannot write nvram file \"%1\"; system information is kept in memory only")
                                    .arg(SystemInfoStore::filePath(System::PT_QUARNEL));
        QCOMPARE(log.count(warning), 1);
        QCOMPARE(info("HW_BOARD_ID"), QString("40BA"));
        QCOMPARE(info("TQ_PRODUCT_UUID").size(), 36);
        system->addSystemInfoPair("A", "1");
        QCOMPARE(info("A"), QString("1"));
        QCOMPARE(log.count(warning), 2);
        QFile::setPermissions(folder, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    }
};

QTEST_GUILESS_MAIN(TestSystem)
#include "tst_system.moc"

// The console engine in-process, as a session: answers to good and bad
// commands, value conversion, device naming, generic watching, hot-plug
// through the debug controller's operations, keys, timing of
// wait/ramp/expect, recording, the JSON dump, the log copy and two sessions
// side by side.

#include "controlconnection_p.h"
#include "devicenames_p.h"
#include "eventwatcher_p.h"
#include "logcapture.h"
#include "sessionline.h"
#include "engine_p.h"
#include "session_p.h"
#include "testfiles.h"
#include "testroot.h"
#include "testsystem.h"
#include "timing_p.h"
#include "valuetext_p.h"
#include "words.h"

#include <vantix/vantix.h>
#include <vantix/vantix_version.h>

#include <vantixcontrol/protocol/event.h>
#include <vantixcontrol/protocol/reply.h>
#include <vantixcontrol/engine/session.h>

#include <QElapsedTimer>
#include <QJsonArray>
#include <QJsonDocument>
#include <QSignalSpy>
#include <QtTest>

#include <csignal>
#include <sys/resource.h>
#include <sys/stat.h>

using namespace TQ_SPAPI;
using namespace VantixControl;

namespace {
using D = IDevice;
}

/// An interface-named object, found among a watched object's children.
class IProbe : public QObject
{
    Q_OBJECT
    Q_PROPERTY(QString bssid MEMBER m_bssid CONSTANT)

public:
    using QObject::QObject;
    QString m_bssid = "02:22:22";

Q_SIGNALS:
    void ping(int strength);
};

class Gadget;
using ConstGadgetPtr = const Gadget *;

/// Stands for a device class to come: properties, slots and signals of every kind the console converts.
class Gadget : public QObject
{
    Q_OBJECT
    Q_PROPERTY(int level MEMBER m_level NOTIFY levelChanged)
    Q_PROPERTY(uint count MEMBER m_count)
    Q_PROPERTY(double ratio MEMBER m_ratio NOTIFY ratioChanged)
    Q_PROPERTY(bool on MEMBER m_on)
    Q_PROPERTY(QString text MEMBER m_text)
    Q_PROPERTY(Mode mode MEMBER m_mode)
    Q_PROPERTY(TQ_SPAPI::IDevice::DeviceFlags flags MEMBER m_flags)
    Q_PROPERTY(Qt::GlobalColor colour MEMBER m_colour)
    Q_PROPERTY(QObject *helper MEMBER m_helper CONSTANT)
    Q_PROPERTY(ConstGadgetPtr model MEMBER m_model CONSTANT)
    Q_PROPERTY(int fixed MEMBER m_fixed CONSTANT)

public:
    enum Mode { MODE_IDLE, MODE_RUN, MODE_STOP };
    Q_ENUM(Mode)

    Q_INVOKABLE int add(int a, int b) { return a + b; }

    int m_level = 5;
    int m_fixed = 3;
    uint m_count = 0;
    double m_ratio = 0;
    bool m_on = false;
    QString m_text;
    Mode m_mode = MODE_IDLE;
    IDevice::DeviceFlags m_flags;
    Qt::GlobalColor m_colour = Qt::green;
    QObject *m_helper = nullptr;
    ConstGadgetPtr m_model = nullptr;
    QStringList calls;

public Q_SLOTS:
    void connectTo(QString ssid) { calls << ssid; }
    void connectTo(QString ssid, QString password) { calls << ssid + QLatin1Char('/') + password; }
    void paint(Qt::GlobalColor colour) { m_colour = colour; }

Q_SIGNALS:
    void levelChanged(int newLevel);
    void ratioChanged(double ratio);
    void changed(TQ_SPAPI::IDevice::DeviceFlags flags, Qt::GlobalColor colour, Gadget::Mode mode);
    void found(QObject *object);
};

Q_DECLARE_METATYPE(ConstGadgetPtr)

class TestConsole : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        m_root = new TestRoot;
        QSignalSpy ready(startSystem(System::PT_TOLVEX_PLUS), &System::apiReady);
        QVERIFY(ready.wait());
        m_session = new Session(System::instance());
        m_session->setEventsEnabled(true);
        connect(m_session, &Session::eventRaised, this, [this](const Event &event) { m_events << event.text(); });
        m_gadget = new Gadget;
        m_session->watch(m_gadget, "gadget");
        m_events.clear();
    }

    void cleanup()
    {
        delete m_session;
        delete m_gadget;
        System::releaseInstance();
        SystemPlatformType::type = System::PT_UNKNOWN;
        delete m_root;
    }

    void naming_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<int>("id");
        QTest::newRow("any case, no prefix") << "battery_2nd" << int(D::ID_BATTERY_2ND);
        QTest::newRow("qualified") << "IDevice::ID_AUDIO" << int(D::ID_AUDIO);
        QTest::newRow("hex number") << "0x1d" << int(D::ID_POWER_SUPPLY);
        QTest::newRow("alias in capitals") << "OTGA" << int(D::ID_USB_OTG_A);
        QTest::newRow("stick") << "stick" << int(D::ID_DISK_USB);
        QTest::newRow("third stick") << "stick3" << 258;
        QTest::newRow("third stick by name") << "ID_DISK_USB+2" << 258;
        QTest::newRow("third stick by number") << "258" << 258;
        QTest::newRow("empty") << "" << -1;
        QTest::newRow("unknown number") << "99" << -1;
        QTest::newRow("unknown alias") << "battery3" << -1;
        QTest::newRow("offset on a fixed id") << "ID_AUDIO+1" << -1;
    }

    void naming()
    {
        QFETCH(QString, text);
        QFETCH(int, id);
        D::DeviceId parsed = D::ID_UNKNOWN_DEV;
        QCOMPARE(DeviceNames::parse(text, &parsed), id >= 0);
        if (id >= 0) {
            QCOMPARE(int(parsed), id);
            // What is shown reads back as the same device.
            D::DeviceId again = D::ID_UNKNOWN_DEV;
            QVERIFY(DeviceNames::parse(DeviceNames::name(parsed), &again));
            QCOMPARE(again, parsed);
        }
    }

    void answers_data()
    {
        QTest::addColumn<QString>("command");
        QTest::addColumn<QString>("answer");
        QTest::addColumn<int>("error");
        const auto row = [](const char *command, const char *answer, ErrorClass error = ErrorClass::None) {
            QTest::newRow(command) << command << answer << int(error);
        };
        using E = ErrorClass;
        row("get ID_BATTERY_1ST id", "OK ID_BATTERY_1ST");
        row("get 29 status", "OK F_ENABLE");
        row("get power type", "OK DEVICE_POWER");
        row("get system platform", "OK PT_TOLVEX_PLUS");
        row("get battery2 status", "KO: ID_BATTERY_2ND is not present", E::UnknownTarget);
        row("get nothing status", "KO: unknown device or object \"nothing\"; devices lists the devices",
            E::UnknownTarget);
        row("get battery1 colour", "KO: ID_BATTERY_1ST has no property \"colour\"; it has id, type, path, status",
            E::UnknownTarget);
        row("get battery1", "KO: usage: get <target> <property>", E::BadRequest);
        row("set battery1 status F_ACTIVE", "KO: ID_BATTERY_1ST.status is read-only", E::Failed);
        row("set gadget text \"open", "KO: a quote is not closed", E::BadRequest);
        // A write the device ignores is not a success, and says what does work.
        row("set wifi wifiCountry DE",
            "KO: ID_NETWORK_WIFI.wifiCountry: its setter has no effect in this build; the country changes only "
            "through the debug command setwificountry,<code>",
            E::Failed);
        row("set display brightnes 65636",
            "KO: ID_DISPLAY.brightnes is 100 after writing 65636: the device kept another value", E::Failed);
        row("set display brightnes 40", "OK");
        row("call battery1 reset", "KO: ID_BATTERY_1ST.reset has no effect in this build", E::Failed);
        row("call system reboot", "KO: System.reboot only writes a trace line in this build; nothing changed",
            E::Failed);
        row("call battery1 setAbility", "KO: setAbility takes other arguments: setAbility(IDevice::Flags flags)",
            E::BadRequest);
        row("call gadget connectTo a b c",
            "KO: connectTo takes other arguments: connectTo(QString ssid); connectTo(QString ssid, QString password)",
            E::BadRequest);
        row("call gadget add 2 40", "OK 42");
        row("call gadget add x 1", "KO: argument 1 of add(int a, int b): expected an integer from -2147483648 to",
            E::BadValue);
        // QObject's own methods stay hidden.
        row("call battery1 deleteLater",
            "KO: ID_BATTERY_1ST has no method \"deleteLater\"; it has setAbility(IDevice::Flags flags), "
            "clearAbility(IDevice::Flags flags), reset()",
            E::UnknownTarget);
        row("bogus", "KO: unknown command \"bogus\"; help lists the commands", E::UnknownCommand);
        // Debug commands answer from what the controller did.
        row("frobnicate,1", "KO: illegal command: the debug controller has no command \"frobnicate\"",
            E::UnknownCommand);
        row("setbatteryfuel", "KO: illegal command: setbatteryfuel needs its argument: setbatteryfuel[,1|2],<percent>",
            E::BadRequest);
        row("setbatteryfuel,2,40", "KO: ID_BATTERY_2ND is not present; nothing changed", E::UnknownTarget);
        row("addbattery", "KO: ID_BATTERY_1ST is already plugged; nothing changed", E::Failed);
        row("activateotgb", "KO: ID_USB_OTG_B is not present; nothing changed", E::UnknownTarget);
        row("addbattery,2", "OK");
        row("key F9", "OK consumed");
        row("key F4", "OK not consumed");
        row("key keypad+5", "KO: keypad+5 is no shortcut of the debug controller; they are keypad+1, keypad+2",
            E::BadValue);
        row("key hyper+F4", "KO: unknown modifier \"hyper\"; expected shift, ctrl, alt, meta or keypad", E::BadValue);
        row("key shift+nokey", "KO: unknown key \"nokey\"; expected a key name such as F2, F9, 1, A, Space or Enter",
            E::BadValue);
        row("flightmode maybe", "KO: state: expected on or off, got \"maybe\"", E::BadValue);
        row("plug nothing", "KO: unknown device \"nothing\"; expected an id name, number or alias", E::UnknownTarget);
        row("plug battery1", "KO: ID_BATTERY_1ST is already plugged", E::Failed);
        row("plug usb DEVICE_NOPE", "KO: type: expected names of DEVICE_UNKNOWN", E::BadValue);
        row("unplug otgb", "KO: ID_USB_OTG_B is not plugged", E::UnknownTarget);
        row("wait -5", "KO: ms: expected a whole number of milliseconds from 0 to 2147483647, got \"-5\"", E::BadValue);
        row("wait 1x", "KO: ms: expected a whole number of milliseconds from 0 to 2147483647, got \"1x\"", E::BadValue);
        // The word count and the types are checked before any command runs, from its declaration.
        row("wait", "KO: usage: wait <ms>", E::BadRequest);
        row("devices all", "KO: usage: devices", E::BadRequest);
        row("help plug unplug", "KO: usage: help [command]", E::BadRequest);
        row("unplug", "KO: usage: unplug <device>", E::BadRequest);
        row("record", "KO: usage: record stop | record [--force] <file>", E::BadRequest);
        row("expect battery1",
            "KO: usage: expect <target> present|absent [within <ms>] | expect <target> emitted <signal> [within <ms>] "
            "| expect <target> <property> [=|==|!=|<|<=|>|>=|has|lacks] <value> [within <ms>]",
            E::BadRequest);
        row("expect battery1 fuelGauge 5 within soon",
            "KO: within: expected a whole number of milliseconds from 0 to 2147483647, got \"soon\"", E::BadValue);
        row("expect battery1 fuelGauge has 100 within 0", "KO: has needs a flags property such as status",
            E::BadRequest);
        row("unplug battery9", "KO: unknown device \"battery9\"; expected an id name, number or alias",
            E::UnknownTarget);
        row("ramp gadget level 0 x 100", "KO: to: expected a finite number such as 2.5, got \"x\"", E::BadValue);
        row("dump --force", "KO: --force needs a file to replace", E::BadRequest);
        row("FLIGHTMODE OFF", "OK");
        row("expect power status has F_ENABLE", "OK");
        row("expect power status lacks F_ENABLE", "KO: ID_POWER_SUPPLY.status is F_ENABLE, expected lacks F_ENABLE",
            E::Failed);
        row("expect battery1 id = 7", "OK");
        row("expect battery1 id < 8", "KO: names are compared with =, !=, has or lacks, not <", E::BadRequest);
        row("expect battery1 path \"\"", "OK");
        row("expect battery1 path != \"\"", "KO: ID_BATTERY_1ST.path is \"\", expected != \"\"", E::Failed);
        row("expect battry1 present", "KO: unknown device or object \"battry1\"; devices lists the devices",
            E::UnknownTarget);
        row("expect battery2 absent", "OK");
        row("expect system emitted nosuch", "KO: System has no signal \"nosuch\"", E::UnknownTarget);
        row("expect battery1 fuelGauge 40abc", "KO: fuelGauge: expected an integer", E::BadValue);
        row("ramp battery1 status 0 1 100",
            "KO: ID_BATTERY_1ST.status is not a writable number; ramp a debug command instead", E::Failed);
        row("ramp battery1 frobnicate,1 0 10 100", "KO: illegal command", E::UnknownCommand);
        row("record stop", "KO: nothing is being recorded", E::Failed);
        row("help plug", "OK");
        row("help nothing", "KO: no command \"nothing\"; help lists the commands", E::UnknownCommand);
        row("help SetBatteryFuel", "OK");
        row("dump /nonexistent/folder/state.json", "KO: cannot write", E::Failed);
        // vantix-sim's quit is its own; in any other application there is none.
        row("quit", "KO: unknown command \"quit\"", E::UnknownCommand);
    }

    void answers()
    {
        QFETCH(QString, command);
        QFETCH(QString, answer);
        QFETCH(int, error);
        const Reply reply = run(command);
        QVERIFY2(reply.answer().startsWith(answer), qPrintable(reply.answer()));
        QCOMPARE(int(reply.error), error);
        // The protocol form carries the same.
        const Reply again = Reply::fromJson(reply.toJson());
        QCOMPARE(again.answer(), reply.answer());
        QCOMPARE(int(again.error), error);
        // The server writes its lines without a document; they must read as the same object.
        QJsonObject expected = reply.toJson();
        expected.insert("id", "r-1");
        QJsonParseError parseError;
        QCOMPARE(QJsonDocument::fromJson(reply.toJsonLine("r-1"), &parseError).object(), expected);
        QCOMPARE(parseError.error, QJsonParseError::NoError);
    }

    void conversions_data()
    {
        QTest::addColumn<QString>("property");
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("answer");
        QTest::addColumn<QString>("shown");
        const auto row = [](const char *property, const char *text, const char *answer, const char *shown) {
            QTest::newRow(qPrintable(QString("%1 %2").arg(property, text))) << property << text << answer << shown;
        };
        const QString intRange =
            "KO: level: expected an integer from -2147483648 to 2147483647 (decimal, or hex after 0x), got ";
        row("level", "42", "OK", "42");
        row("level", "-0x10", "OK", "-16");
        row("level", "-2147483648", "OK", "-2147483648");
        row("level", "4294967296", qPrintable(intRange + "\"4294967296\""), "5");
        row("level", "-2147483649", qPrintable(intRange + "\"-2147483649\""), "5");
        row("level", "abc", qPrintable(intRange + "\"abc\""), "5");
        // Never a partial read or a sign read twice.
        row("level", "--40", qPrintable(intRange + "\"--40\""), "5");
        row("level", "40abc", qPrintable(intRange + "\"40abc\""), "5");
        row("level", "+40", qPrintable(intRange + "\"+40\""), "5");
        row("level", "0x", qPrintable(intRange + "\"0x\""), "5");
        row("level", "\"4 0\"", qPrintable(intRange + "\"4 0\""), "5");
        row("count", "4294967295", "OK", "4294967295");
        row("count", "-1", "KO: count: expected a whole number from 0 to 4294967295", "0");
        row("ratio", "2.5", "OK", "2.5");
        row("ratio", "2,5", "KO: ratio: expected a finite number such as 2.5, got \"2,5\"", "0");
        row("ratio", "2.5x", "KO: ratio: expected a finite number such as 2.5, got \"2.5x\"", "0");
        row("ratio", "nan", "KO: ratio: expected a finite number such as 2.5, got \"nan\"", "0");
        row("ratio", "1e999", "KO: ratio: expected a finite number such as 2.5, got \"1e999\"", "0");
        row("on", "yes", "OK", "true");
        row("on", "maybe", "KO: on: expected true or false (on/off, yes/no, 1/0), got \"maybe\"", "false");
        row("text", "\"two words\"", "OK", "\"two words\"");
        row("mode", "MODE_RUN", "OK", "MODE_RUN");
        row("mode", "Gadget::MODE_STOP", "OK", "MODE_STOP");
        row("mode", "2", "OK", "MODE_STOP");
        // Names are exact; numbers must name a value.
        row("mode", "mode_run",
            "KO: mode: expected one of MODE_IDLE, MODE_RUN, MODE_STOP, or the number of one, got \"mode_run\"",
            "MODE_IDLE");
        row("mode", "7", "KO: mode: expected one of MODE_IDLE", "MODE_IDLE");
        row("mode", "Other::MODE_RUN", "KO: mode: expected one of MODE_IDLE", "MODE_IDLE");
        row("flags", "F_ENABLE|F_CHARGE", "OK", "F_ENABLE|F_CHARGE");
        row("flags", "\"IDevice::F_ACTIVE | TQ_SPAPI::IDevice::F_LOG\"", "OK", "F_ACTIVE|F_LOG");
        row("flags", "F_ENABLE|F_NOPE", "KO: flags: expected names of F_NOFLAGS", "F_NOFLAGS");
        row("colour", "red", "OK", "red");
        row("colour", "Qt::blue", "OK", "blue");
        row("colour", "purple", "KO: colour: expected one of color0, color1, black", "green");
        row("fixed", "4", "KO: gadget.fixed is read-only", "3");
    }

    void conversions()
    {
        QFETCH(QString, property);
        QFETCH(QString, text);
        QFETCH(QString, answer);
        QFETCH(QString, shown);
        const QString got = run(QString("set gadget %1 %2").arg(property, text)).answer();
        QVERIFY2(got.startsWith(answer), qPrintable(got));
        QCOMPARE(run("get gadget " + property).answer(), "OK " + shown);
    }

    void structuredValues()
    {
        const Reply fuel = run("get battery1 fuelGauge");
        QCOMPARE(fuel.type, QString("int"));
        QCOMPARE(fuel.value, QJsonValue(100));
        const Reply status = run("get battery1 status");
        QCOMPARE(status.type, QString("DeviceFlags"));
        QCOMPARE(status.value, QJsonValue("F_ENABLE|F_CHARGE"));
        const Reply devices = run("devices");
        QCOMPARE(devices.type, QString("table"));
        QCOMPARE(devices.value.toArray().size(), System::instance()->devices().size());
        QCOMPARE(devices.lines.size(), devices.value.toArray().size() + 1);
        const QJsonObject first = devices.value.toArray().first().toObject();
        QCOMPARE(first.value("name").toString(), QString("ID_LED_POWER"));
        QVERIFY(devices.lines.at(1).startsWith("ID_LED_POWER           1    ledpower      ILed"));
        const Reply version = run("version");
        QCOMPARE(version.answer(), QString("OK " VANTIX_VERSION_STRING));
        QCOMPARE(version.type, QString("QString"));
        QCOMPARE(version.value, QJsonValue(VANTIX_VERSION_STRING));
        QCOMPARE(run("version 2").answer(), QString("KO: usage: version"));
        const Reply added = run("call gadget add 2 40");
        QCOMPARE(added.type, QString("int"));
        QCOMPARE(added.value, QJsonValue(42));
    }

    void callPicksOverloadByArgumentCount()
    {
        for (const char *call : {"connectTo Lab", "connectTo Lab secret", "paint red"}) {
            QCOMPARE(run(QString("call gadget ") + call).answer(), QString("OK"));
        }
        QCOMPARE(m_gadget->calls, QStringList({"Lab", "Lab/secret"}));
        QCOMPARE(m_gadget->m_colour, Qt::red);
    }

    void valueText()
    {
        const QMetaEnum flags = QMetaEnum::fromType<D::DeviceFlags>();
        QCOMPARE(ValueText::enumText(flags, 0), QString("F_NOFLAGS"));
        QCOMPARE(ValueText::enumText(flags, -1), QString("F_ALL"));
        QCOMPARE(ValueText::enumText(flags, 0x10011), QString("F_ENABLE|F_CHARGE|0x10000"));
        QCOMPARE(ValueText::enumText(QMetaEnum::fromType<D::DeviceId>(), 99), QString("99"));
        QCOMPARE(ValueText::format(QVariant::fromValue(D::DeviceFlags(D::F_ACTIVE))), QString("F_ACTIVE"));
        QCOMPARE(ValueText::format(QStringList({"a", "b\"c"})), QString("[\"a\", \"b\\\"c\"]"));
        QCOMPARE(ValueText::format(QVariantMap{{"k", 1}, {"on", true}}), QString("{k: 1, on: true}"));
        QCOMPARE(ValueText::format(QVariant::fromValue(QList<int>{1, 2})), QString("[1, 2]"));
        QCOMPARE(ValueText::format(QVariant()), QString("(none)"));
        QCOMPARE(ValueText::toJson(QVariant::fromValue(QList<int>{1, 2})), QJsonValue(QJsonArray{1, 2}));
        QCOMPARE(ValueText::findEnum("TQ_SPAPI::IDevice::Flags").name(), "DeviceFlags");
        // A class's enum by its bare name only from within that class.
        QVERIFY(!ValueText::findEnum("Flags").isValid());
        QCOMPARE(ValueText::findEnum("Flags", &IBattery::staticMetaObject).name(), "DeviceFlags");
    }

    void watchesSignalsGenerically()
    {
        EventWatcher *watcher = SessionPrivate::get(m_session)->watcher;
        QSignalSpy signalled(m_session, &Session::eventRaised);
        Q_EMIT m_gadget->changed(D::F_ENABLE | D::F_CHARGE, Qt::red, Gadget::MODE_RUN);
        QCOMPARE(signalled.size(), 1);
        const Event event = signalled.at(0).at(0).value<Event>();
        QCOMPARE(event.object, QString("gadget"));
        QCOMPARE(event.signal, QString("changed"));
        QCOMPARE(event.argumentsText(), QString("flags=F_ENABLE|F_CHARGE colour=red mode=MODE_RUN"));
        QCOMPARE(event.arguments.at(0).value, QJsonValue("F_ENABLE|F_CHARGE"));
        QVERIFY(m_events.last().endsWith(" ms] gadget changed flags=F_ENABLE|F_CHARGE colour=red mode=MODE_RUN"));
        // The protocol line reads back as the same event.
        const Event parsed = Event::fromJson(QJsonDocument::fromJson(event.toJsonLine()).object());
        QCOMPARE(parsed.text(), event.text());
        QCOMPARE(parsed.arguments.size(), 3);

        // An object in a signal argument is watched from then on.
        QObject found;
        Q_EMIT m_gadget->found(&found);
        QVERIFY(watcher->isWatched(&found));
        QCOMPARE(signalled.last().at(0).value<Event>().argumentsText(), QString("object=QObject#1"));

        // So is an interface object that appears among the children, named by its constant text.
        auto *probe = new IProbe(m_gadget);
        m_gadget->setProperty("level", 9);
        QVERIFY(watcher->isWatched(probe));
        Q_EMIT probe->ping(80);
        QCOMPARE(signalled.last().at(0).value<Event>().object, QString("IProbe(02:22:22)"));
        QCOMPARE(watcher->find("iprobe(02:22:22)"), probe);
        delete probe;
        QVERIFY(!watcher->objects().contains(probe));

        // And the value of an object property, named after it.
        Gadget owner;
        QObject helper;
        owner.m_helper = &helper;
        // A const pointer Qt cannot cast counts when it is the address of one of the owner's children.
        auto *model = new Gadget;
        model->setParent(&owner);
        owner.m_model = model;
        m_session->watch(&owner, "owner");
        QCOMPARE(watcher->nameOf(&helper), QString("owner.helper"));
        QCOMPARE(watcher->nameOf(model), QString("owner.model"));
        Q_EMIT model->levelChanged(1);
        QCOMPARE(signalled.last().at(0).value<Event>().object, QString("owner.model"));
        // A stray address is never taken for an object.
        Gadget other;
        other.m_model = reinterpret_cast<ConstGadgetPtr>(&m_events);
        const int watched = watcher->objects().size();
        m_session->watch(&other, "other");
        QCOMPARE(watcher->objects().size(), watched + 1);
    }

    void hotPlugGoesThroughTheDebugController()
    {
        // A device plugged and changed within one batch shows every change, in order.
        m_session->execute("addbattery,2", [](const Reply &) {});
        m_session->execute("setbatteryfuel,2,33", [](const Reply &) {});
        QCOMPARE(m_events.filter(QRegularExpression("] ID_BATTERY_2ND fuelGaugeChanged newValue=33$")).size(), 1);
        QCOMPARE(run("rmbattery,2").answer(), QString("OK"));
        QVERIFY(!System::instance()->device(D::ID_BATTERY_2ND));

        // A port plugged by hand brings its stick like one plugged by the debug command, into the same folder.
        LogCapture log;
        QCOMPARE(run("plug otga").answer(), QString("OK"));
        QCOMPARE(run("call otga setAbility F_ACTIVE").answer(), QString("OK"));
        QCOMPARE(run("expect stick present within 1000").answer(), QString("OK"));
        const QString stickPath = System::instance()->device(D::ID_DISK_USB)->path();
        QCOMPARE(stickPath, QDir(m_root->path()).filePath("share/usbdisk"));
        QVERIFY(QFileInfo(stickPath).isDir());
        // Unplugging the port takes the stick along, so the next one comes without complaint.
        QCOMPARE(run("unplug otga").answer(), QString("OK"));
        QVERIFY(!System::instance()->device(D::ID_DISK_USB));
        QCOMPARE(m_events.filter("System deviceRemoved id=ID_USB_OTG_A path=\"\"").size(), 1);
        QCOMPARE(run("addotga").answer(), QString("OK"));
        QCOMPARE(run("call otga setAbility F_ACTIVE").answer(), QString("OK"));
        QCOMPARE(run("expect stick present within 1000").answer(), QString("OK"));
        QCOMPARE(log.count("ID already exist!!"), 0);
        QCOMPARE(run("plug stick2").answer(), QString("OK"));
        QCOMPARE(System::instance()->device(D::DeviceId(257))->path(), QDir(m_root->path()).filePath("share/usbdisk2"));

        // After unplugging port B by hand, F4 plugs it again rather than removing what is gone.
        QCOMPARE(run("plug otgb").answer(), QString("OK"));
        QCOMPARE(run("unplug otgb").answer(), QString("OK"));
        QCOMPARE(run("key F4").answer(), QString("OK not consumed"));
        QVERIFY(System::instance()->device(D::ID_USB_OTG_B));
        QCOMPARE(run("activateotgb").answer(), QString("OK"));

        QCOMPARE(run("plug canbus DEVICE_CAN|DEVICE_BUS").answer(), QString("OK"));
        QCOMPARE(run("get canbus type").answer(), QString("OK DEVICE_CAN|DEVICE_BUS"));
    }

    void flightModeFollowsThePluggedWifi()
    {
        QCOMPARE(run("unplug wifi").answer(), QString("OK"));
        QCOMPARE(run("plug wifi").answer(), QString("OK"));
        QCOMPARE(run("expect wifi status has F_ENABLE within 500").answer(), QString("OK"));
        QCOMPARE(run("flightmode on").answer(), QString("OK"));
        QCOMPARE(run("expect wifi status lacks F_ENABLE within 500").answer(), QString("OK"));
        QCOMPARE(run("expect system flightModeStatus FLIGHT_MODE_ENABLED within 2500").answer(), QString("OK"));
        // Without a Wi-Fi, flight mode switches what is there and nothing breaks.
        QCOMPARE(run("unplug wifi").answer(), QString("OK"));
        QCOMPARE(run("flightmode off").answer(), QString("OK"));
        QCOMPARE(run("expect bluetooth status has F_ENABLE within 500").answer(), QString("OK"));
    }

    void illegalCommandsWithoutDebugLogging()
    {
        // The answer comes from the controller, not from its log.
        QLoggingCategory::setFilterRules("*.debug=false");
        const Reply reply = run("nonsense,1,2");
        QLoggingCategory::setFilterRules(QString());
        QVERIFY2(!reply.ok, qPrintable(reply.answer()));
        QVERIFY(reply.text.startsWith("illegal command"));
        // And the log line is written as the parameter writes it.
        LogCapture log;
        run("nonsense,1,2");
        QCOMPARE(log.records().size(), 1);
        QCOMPARE(log.records().first().message, QString("Illegal command"));
        QVERIFY(log.records().first().function.contains("onVantixDebugChanged"));
    }

    void waitRampAndExpectTakeTheirTime()
    {
        QElapsedTimer clock;
        clock.start();
        QCOMPARE(run("wait 200").answer(), QString("OK"));
        QVERIFY(clock.elapsed() >= 200);

        // Whole numbers step without repeating a value, and end on the target.
        QSignalSpy levels(m_gadget, &Gadget::levelChanged);
        clock.restart();
        QCOMPARE(run("ramp gadget level 0 10 300").answer(), QString("OK"));
        QVERIFY2(clock.elapsed() >= 300, qPrintable(QString::number(clock.elapsed())));
        QCOMPARE(levels.size(), 4);
        QCOMPARE(levels.first().at(0).toInt(), 0);
        QCOMPARE(levels.last().at(0).toInt(), 10);
        for (int i = 1; i < levels.size(); ++i) {
            QVERIFY(levels.at(i).at(0).toInt() > levels.at(i - 1).at(0).toInt());
        }

        // A debug command gets the value as its last argument.
        QCOMPARE(run("ramp battery1 setbatteryfuel,1 100 90 100").answer(), QString("OK"));
        QCOMPARE(System::instance()->device(D::ID_BATTERY_1ST)->property("fuelGauge").toInt(), 90);

        QTimer::singleShot(150, [] { VantixDebug::instance()->addDevice(D::ID_USB, D::DEVICE_USB, QString()); });
        clock.restart();
        QCOMPARE(run("expect usb present within 2000").answer(), QString("OK"));
        QVERIFY(clock.elapsed() >= 150);
        clock.restart();
        QCOMPARE(run("expect usb status has F_ACTIVE within 150").answer(),
            QString("KO: ID_USB.status is F_ENABLE, expected has F_ACTIVE within 150 ms"));
        QVERIFY(clock.elapsed() >= 150);

        // Each emission satisfies one check.
        QCOMPARE(run("call system powerOff").answer(), QString("OK"));
        QCOMPARE(run("expect system emitted apiClosed").answer(), QString("OK"));
        QCOMPARE(run("expect system emitted apiClosed").answer(), QString("KO: System did not emit apiClosed"));
    }

    // Every request of a client is answered once: "cancel": true answers what
    // runs or waits as cancelled, "cancel": false leaves it its own answer.
    void connectionAnswersEachRequestOnce()
    {
        VantixControl::ControlConnection connection(nullptr, System::instance(), nullptr);
        QStringList answers;
        connect(&connection, &VantixControl::ControlConnection::lineWritten, [&answers](const QByteArray &line) {
            const QJsonObject answer = QJsonDocument::fromJson(line).object();
            answers << QString::number(answer.value("id").toInt()) + ' ' + answer.value("text").toString();
        });
        connection.handleLine(R"({"id":1,"line":"wait 50"})");
        connection.handleLine(R"({"id":2,"cancel":false})");
        QTRY_COMPARE(answers, (QStringList{"2 OK", "1 OK"}));

        answers.clear();
        connection.handleLine(R"({"id":3,"line":"wait 100000"})");
        connection.handleLine(R"({"id":4,"line":"devices"})");
        connection.handleLine(R"({"id":5,"cancel":true})");
        connection.handleLine(R"({"id":6,"line":"get battery1 fuelGauge"})");
        QCOMPARE(answers, (QStringList{"3 KO: cancelled", "4 KO: cancelled", "5 OK", "6 OK 100"}));
    }

    void sessionsDoNotSeeEachOther()
    {
        Session other(System::instance());
        QStringList otherEvents;
        other.setEventsEnabled(true);
        connect(
            &other, &Session::eventRaised, this, [&otherEvents](const Event &event) { otherEvents << event.text(); });

        // A wait in one session holds up nothing in the other.
        bool waited = false;
        m_session->execute("wait 300", [&waited](const Reply &) { waited = true; });
        QElapsedTimer clock;
        clock.start();
        Reply quick;
        other.execute("get battery1 fuelGauge", [&quick](const Reply &reply) { quick = reply; });
        QCOMPARE(quick.answer(), QString("OK 100"));
        QVERIFY(clock.elapsed() < 300);
        QVERIFY(!waited);
        QTRY_VERIFY(waited);

        // Names given in one session mean nothing in the other.
        Reply unknown;
        other.execute("get gadget level", [&unknown](const Reply &reply) { unknown = reply; });
        QCOMPARE(unknown.error, ErrorClass::UnknownTarget);
        QCOMPARE(run("get gadget level").answer(), QString("OK 5"));

        // Both see the same change, each under the names it knows.
        m_events.clear();
        QCOMPARE(run("setbatteryfuel,1,44").answer(), QString("OK"));
        QVERIFY(m_events.filter("ID_BATTERY_1ST fuelGaugeChanged newValue=44").size() == 1);
        QVERIFY(otherEvents.filter("ID_BATTERY_1ST fuelGaugeChanged newValue=44").size() == 1);
        // A matched emission is used up in one session only.
        QCOMPARE(run("call system powerOff").answer(), QString("OK"));
        QCOMPARE(run("expect system emitted apiClosed").answer(), QString("OK"));
        Reply emitted;
        other.execute("expect system emitted apiClosed", [&emitted](const Reply &reply) { emitted = reply; });
        QCOMPARE(emitted.answer(), QString("OK"));

        // Cancelling one session's ramp stops it where it is and leaves the other untouched.
        bool rampDone = false;
        m_session->execute(
            "ramp battery1 setbatteryfuel,1 0 100 1000", [&rampDone](const Reply &) { rampDone = true; });
        QTRY_VERIFY(System::instance()->device(D::ID_BATTERY_1ST)->property("fuelGauge").toInt() > 0);
        m_session->cancel();
        const int stoppedAt = System::instance()->device(D::ID_BATTERY_1ST)->property("fuelGauge").toInt();
        QTest::qWait(3 * Timing::RampStepMs);
        QCOMPARE(System::instance()->device(D::ID_BATTERY_1ST)->property("fuelGauge").toInt(), stoppedAt);
        QVERIFY(!rampDone);
        QVERIFY(m_session->isIdle());
    }

    void logCopiesLeaveTheHostsLogging()
    {
        LogCapture host;
        QtMessageHandler hostHandler = qInstallMessageHandler(nullptr);
        qInstallMessageHandler(hostHandler);
        QList<LogEntry> copies;
        connect(m_session, &Session::logged, this, [&copies](const LogEntry &entry) { copies << entry; });
        m_session->setLogEnabled(true);
        qWarning("from the host %d", 1);
        // The host's own handler still gets every message, at once.
        QCOMPARE(host.messages(), QStringList{"from the host 1"});
        QTRY_COMPARE(copies.size(), 1);
        QCOMPARE(copies.first().message, QString("from the host 1"));
        QCOMPARE(copies.first().type, QString("warning"));
        // Off again, the host's handler is back in place, untouched.
        m_session->setLogEnabled(false);
        QtMessageHandler now = qInstallMessageHandler(nullptr);
        qInstallMessageHandler(now);
        QCOMPARE(reinterpret_cast<void *>(now), reinterpret_cast<void *>(hostHandler));
        qWarning("after");
        QCOMPARE(host.messages().size(), 2);
        QCoreApplication::processEvents();
        QCOMPARE(copies.size(), 1);
    }

    void recordsAScriptThatReplays()
    {
        const QString path = QDir(m_root->path()).filePath("story.vsim");
        QVERIFY(run("record " + path).answer().startsWith("OK recording to "));
        QCOMPARE(run("setbatteryfuel,1,50").answer(), QString("OK"));
        QTest::qWait(12 * Timing::MinimumRecordedWaitMs);
        QVERIFY(!run("bogus").ok);
        QCOMPARE(run("set display brightnes 30").answer(), QString("OK"));
        QVERIFY(run("record stop").answer().startsWith("OK recorded to "));
        const QStringList lines = QString::fromUtf8(readFile(path)).split('\n', Qt::SkipEmptyParts);
        QVERIFY(lines.first().startsWith("# Recorded "));
        const QStringList body = lines.mid(2);
        QCOMPARE(body.size(), 5);
        QCOMPARE(body.at(0), QString("setbatteryfuel,1,50"));
        QVERIFY(body.at(1).startsWith("wait "));
        QVERIFY(body.at(1).mid(5).toInt() >= 12 * Timing::MinimumRecordedWaitMs);
        // A failed command is kept as a comment, so the replay does not stop there.
        QCOMPARE(body.at(2), QString("# bogus"));
        QVERIFY(body.at(3).startsWith("#   KO: unknown command"));
        QCOMPARE(body.at(4), QString("set display brightnes 30"));
    }

    // Words quoted by Words::join reach the engine as they were, whatever
    // they hold, for console commands and for debug commands alike.
    void hostileWordsRoundTrip_data()
    {
        QTest::addColumn<QString>("word");
        QTest::newRow("newline") << "a\nb";
        QTest::newRow("carriage return") << "a\r";
        QTest::newRow("no-break space") << QString("non") + QChar(0x00a0) + "break";
        QTest::newRow("line separator") << QString("line") + QChar(0x2028) + "sep";
        QTest::newRow("backslash") << "back\\slash\\";
        QTest::newRow("quote") << "say \"hi\"";
        QTest::newRow("empty") << "";
        QTest::newRow("leading hash") << "#not a comment";
        QTest::newRow("comma") << "com,ma";
        QTest::newRow("tab and blanks") << "  \tspaced  ";
        QTest::newRow("escape look-alike") << "\\u0041\\n";
        QTest::newRow("byte order mark") << QString(QChar(0xfeff)) + "x";
    }

    void hostileWordsRoundTrip()
    {
        QFETCH(QString, word);
        m_gadget->m_text = word;
        QCOMPARE(run(Words::join({"expect", "gadget", "text", word})).answer(), QString("OK"));
        m_gadget->m_text = "before";
        QCOMPARE(run(Words::join({"set", "gadget", "text", word})).answer(), QString("OK"));
        QCOMPARE(m_gadget->m_text, word);

        // The debug grammar splits at commas; the rest arrives as written.
        const auto ssid = [] {
            return System::instance()->device(D::ID_NETWORK_WIFI)->property("wifiSsid").toString();
        };
        QCOMPARE(run(Words::join({"setssid," + word})).answer(), QString("OK"));
        QCOMPARE(ssid(), word.section(',', 0, 0));
        // Words after a debug command's first word follow it, one blank apart, as typed.
        QCOMPARE(run(Words::join({"setssid,x", word})).answer(), QString("OK"));
        QCOMPARE(ssid(), QString("x " + word).section(',', 0, 0));
    }

    // help and describe give console and debug commands in one shape, from their declarations.
    void helpAndDescribeShareOneShape()
    {
        const Reply help = run("help");
        QCOMPARE(help.type, QString("commands"));
        QMap<QString, QJsonObject> byName;
        for (const QJsonValue &value : help.value.toArray()) {
            const QJsonObject command = value.toObject();
            for (const char *key :
                {"name", "usage", "help", "label", "arguments", "forms", "host", "debug", "readOnly"}) {
                QVERIFY2(command.contains(key), qPrintable(command.value("name").toString() + ": " + key));
            }
            QVERIFY(command.value("arguments").isArray());
            QVERIFY(!command.value("label").toString().isEmpty());
            QCOMPARE(command.value("forms").toArray().size(), command.value("usage").toArray().size());
            byName.insert(command.value("name").toString(), command);
        }
        const QJsonObject fuel = byName.value("setbatteryfuel");
        QCOMPARE(fuel.value("debug").toBool(), true);
        QCOMPARE(fuel.value("usage").toArray(), QJsonArray({"setbatteryfuel[,1|2],<percent>"}));
        QCOMPARE(fuel.value("arguments").toArray(),
            QJsonArray({QJsonObject{{"name", "battery"}, {"type", "choice"}, {"optional", true}, {"repeated", false},
                            {"choices", QJsonArray{"1", "2"}}},
                QJsonObject{{"name", "percent"}, {"type", "integer"}, {"optional", false}, {"repeated", false}}}));
        QCOMPARE(byName.value("get").value("readOnly").toBool(), true);
        QCOMPARE(byName.value("set").value("readOnly").toBool(), false);
        QCOMPARE(byName.value("get").value("debug").toBool(), false);
        // The type names front ends have always read.
        QCOMPARE(
            byName.value("wait").value("arguments").toArray().at(0).toObject().value("type").toString(), QString("ms"));
        QCOMPARE(byName.value("dump").value("usage").toArray(), QJsonArray({"dump [--force] [file]"}));
        const QJsonObject within = byName.value("expect").value("arguments").toArray().last().toObject();
        QCOMPARE(within.value("value").toObject(), (QJsonObject{{"name", "ms"}, {"type", "ms"}}));

        const QJsonObject schema = m_session->describe();
        QCOMPARE(schema.value("debugCommands").toArray().at(2).toObject(), fuel);
        QCOMPARE(schema.value("shortcuts").toArray().at(0).toObject().value("label").toString(),
            QString("Low battery 15 %"));
        QCOMPARE(run("help setbatteryfuel").value.toArray(), QJsonArray({fuel}));
    }

    // A host's commands belong to its System's engine: checked like the
    // built-in ones, shared by its sessions, gone with the System.
    void hostCommandsBelongToTheEngine()
    {
        QStringList heard;
        Engine::HostCommand hello;
        hello.name = "hello";
        hello.arguments = {required("count", Argument::Integer)};
        hello.help = "say hello";
        hello.run = [&heard](Session &, const QStringList &args) {
            heard << args;
            return Reply::success();
        };
        Engine *engine = Engine::of(System::instance());
        QCOMPARE(Engine::of(System::instance()), engine);
        engine->addHostCommand(hello);
        QCOMPARE(run("hello 3").answer(), QString("OK"));
        QCOMPARE(run("hello").answer(), QString("KO: usage: hello <count>"));
        QCOMPARE(run("hello x").answer(), QString("KO: count: expected a whole number, got \"x\""));
        Session other(System::instance());
        Reply otherReply;
        other.execute("hello 4", [&otherReply](const Reply &reply) { otherReply = reply; });
        QCOMPARE(otherReply.answer(), QString("OK"));
        QCOMPARE(heard, QStringList({"3", "4"}));
        QCOMPARE(run("help hello").lines.first(), QString("  hello <count>"));

        // A new System has a new engine, without the old one's commands.
        const QPointer<Engine> old = engine;
        delete m_session;
        m_session = nullptr;
        System::releaseInstance();
        QVERIFY(!old);
        QSignalSpy ready(startSystem(System::PT_TOLVEX_PLUS), &System::apiReady);
        QVERIFY(ready.wait());
        m_session = new Session(System::instance());
        QCOMPARE(run("hello 5").error, ErrorClass::UnknownCommand);
        QCOMPARE(heard.size(), 2);
    }

    void rampStaysInRange_data()
    {
        QTest::addColumn<QString>("line");
        QTest::addColumn<QString>("answer");
        QTest::newRow("beyond uint") << "ramp display brightnes 1e300 0 0"
                                     << "KO: brightnes: 1e300 is beyond what it takes, from 0 to 4294967295";
        QTest::newRow("both beyond") << "ramp display brightnes 1e300 1e300 0"
                                     << "KO: brightnes: 1e300 is beyond";
        QTest::newRow("below int") << "ramp gadget level -3e9 0 100"
                                   << "KO: level: -3e9 is beyond what it takes";
        QTest::newRow("longer than a day") << "ramp display brightnes 0 1e300 2147483647"
                                           << "KO: ms: a ramp takes at most 86400000 ms (24 hours), got 2147483647";
        QTest::newRow("a day") << "ramp gadget level 0 2000000000 86400000"
                               << "";
        QTest::newRow("debug integer") << "ramp battery1 setbatteryfuel,1 0 3e9 100"
                                       << "KO: setbatteryfuel,1: 3e9 is beyond what it takes";
        QTest::newRow("debug without a number") << "ramp battery1 jack 0 1 100"
                                                << "KO: jack takes no number last; ramp a debug command";
        QTest::newRow("debug unknown") << "ramp battery1 frobnicate,1 0 10 100"
                                       << "KO: illegal command";
        QTest::newRow("opposite ends of double") << "ramp gadget ratio 1e308 -1e308 300"
                                                 << "OK";
        QTest::newRow("debug real, opposite ends") << "ramp battery1 setbatterycurrent,1 1e308 -1e308 0"
                                                   << "OK";
    }

    void rampStaysInRange()
    {
        QFETCH(QString, line);
        QFETCH(QString, answer);
        QSignalSpy ratios(m_gadget, &Gadget::ratioChanged);
        if (answer.isEmpty()) {
            // Accepted, and each step worked out as it comes due: the first, then the next a step later.
            QSignalSpy levels(m_gadget, &Gadget::levelChanged);
            bool done = false;
            m_session->execute(line, [&done](const Reply &) { done = true; });
            QCOMPARE(levels.size(), 1);
            QTRY_COMPARE_WITH_TIMEOUT(levels.size(), 2, 10 * Timing::RampStepMs);
            m_session->cancel();
            QVERIFY(!done);
            return;
        }
        const Reply reply = run(line);
        QVERIFY2(reply.answer().startsWith(answer), qPrintable(reply.answer()));
        for (const QList<QVariant> &ratio : qAsConst(ratios)) {
            QVERIFY(std::isfinite(ratio.at(0).toDouble()));
        }
        if (line.contains("gadget ratio")) {
            QCOMPARE(ratios.size(), 4);
            QCOMPARE(m_gadget->m_ratio, -1e308);
        }
    }

    void rampStepsRealsEvenly()
    {
        QCOMPARE(run("ramp battery1 setbatterycurrent,1 0 1 300").answer(), QString("OK"));
        QCOMPARE(System::instance()->device(D::ID_BATTERY_1ST)->property("current").toDouble(), 1.0);
        QCOMPARE(run("ramp gadget level 10 10 300").answer(), QString("OK"));
        QCOMPARE(m_gadget->m_level, 10);
    }

    // A recording holds what changes or checks the hardware, each entry on
    // one line, and replays to the same story.
    void recordingsHoldOneLinePerCommand()
    {
        const QString path = QDir(m_root->path()).filePath("story.vsim");
        QVERIFY(run("record " + path).ok);
        for (const char *read :
            {"get battery1 fuelGauge", "show battery1", "devices", "help", "sysinfo", "dump", "help get", "version"}) {
            QVERIFY2(run(read).ok, read);
        }
        QVERIFY(!run("get nosuch prop\nsetbatteryfuel,1,5").ok);
        QVERIFY(!run("bogus \"x\"").ok);
        QCOMPARE(run("# a note\nsetbatteryfuel,1,6").answer(), QString("OK"));
        QCOMPARE(run(Words::join({"set", "gadget", "text", "two\nlines"})).answer(), QString("OK"));
        QCOMPARE(run("setssid,My  Home").answer(), QString("OK"));
        QVERIFY(run("record stop").ok);
        // The time the reads took is kept as a pause before what follows them.
        const QStringList body = QString::fromUtf8(readFile(path))
                                     .split('\n', Qt::SkipEmptyParts)
                                     .mid(2)
                                     .filter(QRegularExpression("^(?!wait \\d+$)"));
        QCOMPARE(body,
            QStringList({"# get nosuch prop\\nsetbatteryfuel,1,5", "#   KO: usage: get <target> <property>",
                "# bogus \"x\"", "#   KO: unknown command \"bogus\"; help lists the commands",
                "# a note\\nsetbatteryfuel,1,6", "set gadget text \"two\\nlines\"", "setssid,My Home"}));

        // Replayed as a script is read, one line at a time: only what ran comes back.
        QCOMPARE(run("setbatteryfuel,1,100").answer(), QString("OK"));
        QCOMPARE(run("setssid,other").answer(), QString("OK"));
        m_gadget->m_text.clear();
        for (const QString &line : QString::fromUtf8(readFile(path)).split('\n')) {
            QVERIFY2(run(line).ok, qPrintable(line));
        }
        QCOMPARE(m_gadget->m_text, QString("two\nlines"));
        QCOMPARE(System::instance()->device(D::ID_NETWORK_WIFI)->property("wifiSsid").toString(), QString("My Home"));
        QCOMPARE(System::instance()->device(D::ID_BATTERY_1ST)->property("fuelGauge").toInt(), 100);
    }

    // Files are new or replaced on request, never a pipe, device or folder,
    // opened without blocking, and every failed write is reported.
    void filesAreWrittenHonestly()
    {
        const QDir folder(m_root->path());
        const QString state = folder.filePath("state.json");
        QVERIFY(run("dump " + state).ok);
        QCOMPARE(run("dump " + state).answer(), "KO: cannot write " + state + ": it exists; --force replaces it");
        QCOMPARE(run("record " + state).error, ErrorClass::Failed);
        QVERIFY(run("dump --force " + state).ok);

        const QString fifo = folder.filePath("fifo");
        QCOMPARE(::mkfifo(QFile::encodeName(fifo).constData(), 0600), 0);
        QElapsedTimer clock;
        clock.start();
        QCOMPARE(run("dump --force " + fifo).answer(), "KO: cannot write " + fifo + ": it is no regular file");
        QCOMPARE(run("record --force " + fifo).answer(), "KO: cannot write " + fifo + ": it is no regular file");
        QCOMPARE(
            run("record --force /dev/full").answer(), QString("KO: cannot write /dev/full: it is no regular file"));
        QCOMPARE(run("dump --force " + folder.path()).error, ErrorClass::Failed);
        QVERIFY(clock.elapsed() < 1000);
        QCOMPARE(run("record --force " + state).answer(), "OK recording to " + state);
        QCOMPARE(run("record stop").answer(), "OK recorded to " + state);

        // Relative names are the client's: taken from the folder that came with the line.
        Reply written;
        m_session->execute("dump relative.json", folder.path(), [&written](const Reply &reply) { written = reply; });
        QCOMPARE(written.answer(), "OK written to " + folder.filePath("relative.json"));

        // A file that stops taking data (here: past the size limit) ends the recording; stop says so.
        struct rlimit before;
        QCOMPARE(::getrlimit(RLIMIT_FSIZE, &before), 0);
        const auto oldHandler = std::signal(SIGXFSZ, SIG_IGN);
        struct rlimit small = before;
        small.rlim_cur = 400;
        QCOMPARE(::setrlimit(RLIMIT_FSIZE, &small), 0);
        const QString full = folder.filePath("full.vsim");
        const Reply started = run("record " + full);
        Reply dumped = run("dump " + folder.filePath("big.json"));
        for (int i = 0; i < 20; ++i) {
            run("setbatteryfuel,1,50");
        }
        const Reply stopped = run("record stop");
        ::setrlimit(RLIMIT_FSIZE, &before);
        std::signal(SIGXFSZ, oldHandler);
        QVERIFY2(started.ok, qPrintable(started.answer()));
        QVERIFY2(
            dumped.answer().startsWith("KO: cannot write " + folder.filePath("big.json")), qPrintable(dumped.answer()));
        QVERIFY2(stopped.answer().startsWith("KO: the recording to " + full + " ended after "),
            qPrintable(stopped.answer()));
        QCOMPARE(run("record stop").answer(), QString("KO: nothing is being recorded"));
    }

    void describeIsTheWholeSchema()
    {
        const QJsonObject schema = m_session->describe();
        QCOMPARE(schema.value("platform").toString(), QString("PT_TOLVEX_PLUS"));
        QStringList commands;
        for (const QJsonValue &c : schema.value("commands").toArray()) {
            commands << c.toObject().value("name").toString();
        }
        for (const char *name : {"help", "get", "set", "call", "plug", "unplug", "wait", "ramp", "expect", "record"}) {
            QVERIFY2(commands.contains(name), name);
        }
        QCOMPARE(schema.value("debugCommands").toArray().size(), VantixDebug::commands().size());
        QCOMPARE(schema.value("shortcuts").toArray().size(), 11);
        QJsonObject wifi;
        for (const QJsonValue &t : schema.value("targets").toArray()) {
            if (t.toObject().value("name") == "ID_NETWORK_WIFI") {
                wifi = t.toObject();
            }
        }
        QCOMPARE(wifi.value("alias").toString(), QString("wifi"));
        QJsonObject country;
        QJsonObject state;
        for (const QJsonValue &p : wifi.value("properties").toArray()) {
            if (p.toObject().value("name") == "wifiCountry") {
                country = p.toObject();
            } else if (p.toObject().value("name") == "networkState") {
                state = p.toObject();
            }
        }
        // A setter without effect is not offered as one.
        QCOMPARE(country.value("writable").toBool(), false);
        QCOMPARE(country.value("effect").toString(), QString("none"));
        QCOMPARE(state.value("type").toString(), QString("NetworkState"));
        QCOMPARE(schema.value("enums").toObject().value("NetworkState").toObject().value("keys").toObject().size(), 13);
        QJsonObject otga;
        for (const QJsonValue &d : schema.value("devices").toArray()) {
            if (d.toObject().value("alias") == "otga") {
                otga = d.toObject();
            }
        }
        QCOMPARE(otga.value("present").toBool(), false);
        QCOMPARE(otga.value("defaultType").toString(), QString("DEVICE_USB"));
    }

    void dumpParsesBack()
    {
        m_gadget->setProperty("level", 12);
        QCOMPARE(run("plug otgb").answer(), QString("OK"));
        const QString path = QDir(m_root->path()).filePath("state.json");
        QVERIFY(run("dump " + path).answer().startsWith("OK written to"));
        QJsonParseError error;
        const QJsonObject dump = QJsonDocument::fromJson(readFile(path), &error).object();
        QCOMPARE(error.error, QJsonParseError::NoError);
        // The command and the in-memory dump agree.
        QCOMPARE(m_session->dump(), dump);
        const QJsonValue devices = dump["devices"], power = devices["ID_POWER_SUPPLY"];
        const QJsonValue gadget = dump["objects"]["gadget"]["properties"];
        QCOMPARE(QVariantList({dump["platform"].toString(), dump["system"]["flightModeStatus"].toString(),
                     devices.toObject().size(), power["number"].toInt(), power["alias"].toString(),
                     power["properties"]["status"].toString(), devices["ID_USB_OTG_B"]["properties"]["type"].toString(),
                     gadget["level"].toInt(), gadget["colour"].toString()}),
            QVariantList({"PT_TOLVEX_PLUS", "FLIGHT_MODE_ENABLED", System::instance()->devices().size(), 29, "power",
                "F_ENABLE", "DEVICE_USB", 12, "green"}));
    }

private:
    Reply run(const QString &line) { return runLine(m_session, line); }

    TestRoot *m_root = nullptr;
    Session *m_session = nullptr;
    Gadget *m_gadget = nullptr;
    QStringList m_events;
};

QTEST_GUILESS_MAIN(TestConsole)
#include "tst_console.moc"

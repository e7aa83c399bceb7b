// The simulator console in-process: answers to good and bad commands, value
// conversion, device naming, generic watching, hot-plug, keys, timing of
// wait/ramp/expect and the JSON dump.

#include "console.h"
#include "devicenames.h"
#include "eventwatcher.h"
#include "testfiles.h"
#include "testroot.h"
#include "testsystem.h"
#include "valuetext.h"

#include <vantix/vantix.h>

#include <QElapsedTimer>
#include <QJsonArray>
#include <QJsonDocument>
#include <QKeyEvent>
#include <QSignalSpy>
#include <QtTest>

using namespace TQ_SPAPI;

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

namespace {
// The key events that reach an object, as "press|release key modifiers spontaneous".
class KeyRecorder : public QObject
{
public:
    QStringList records;
    bool eventFilter(QObject *, QEvent *event) override
    {
        if (event->type() == QEvent::KeyPress || event->type() == QEvent::KeyRelease) {
            const auto *key = static_cast<QKeyEvent *>(event);
            records << QString("%1 %2 %3 %4")
                           .arg(event->type() == QEvent::KeyPress ? "press" : "release")
                           .arg(key->key(), 0, 16)
                           .arg(int(key->modifiers()), 0, 16)
                           .arg(event->spontaneous());
        }
        return false;
    }
};
} // namespace

class TestSimConsole : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        m_root = new TestRoot;
        QSignalSpy ready(startSystem(System::PT_TOLVEX_PLUS), &System::apiReady);
        QVERIFY(ready.wait());
        m_text.clear();
        m_out.setString(&m_text);
        m_console = new Console(m_out);
        m_console->start();
        m_gadget = new Gadget;
        m_console->watcher()->watch(m_gadget, "gadget");
    }

    void cleanup()
    {
        delete m_console;
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
        const auto row = [](const char *command, const char *answer) { QTest::newRow(command) << command << answer; };
        row("get ID_BATTERY_1ST id", "OK ID_BATTERY_1ST");
        row("get 29 status", "OK F_ENABLE");
        row("get power type", "OK DEVICE_POWER");
        row("get system platform", "OK PT_TOLVEX_PLUS");
        row("get battery2 status", "KO: ID_BATTERY_2ND is not present");
        row("get nothing status", "KO: unknown device or object \"nothing\"; devices lists the devices");
        row("get battery1 colour", "KO: ID_BATTERY_1ST has no property \"colour\"; it has id, type, path, status");
        row("get battery1", "KO: usage: get <target> <property>");
        row("set battery1 status F_ACTIVE", "KO: ID_BATTERY_1ST.status is read-only");
        row("set gadget text \"open", "KO: a quote is not closed");
        row("call battery1 reset", "OK");
        row("call battery1 reset 1", "KO: reset takes other arguments: reset()");
        row("call gadget connectTo a b c",
            "KO: connectTo takes other arguments: connectTo(QString ssid); connectTo(QString ssid, QString password)");
        row("call gadget add 2 40", "OK 42");
        row("call gadget add x 1", "KO: argument 1 of add(int a, int b): expected an integer from -2147483648 to");
        // QObject's own methods stay hidden.
        row("call battery1 deleteLater",
            "KO: ID_BATTERY_1ST has no method \"deleteLater\"; it has setAbility(IDevice::Flags flags), "
            "clearAbility(IDevice::Flags flags), reset()");
        row("bogus", "KO: unknown command \"bogus\"; help lists the commands");
        row("frobnicate,1", "KO: illegal command");
        row("setbatteryfuel", "KO: illegal command");
        row("addbattery,2", "OK");
        row("key F9", "OK");
        row("key hyper+F4", "KO: unknown modifier \"hyper\"; expected shift, ctrl, alt, meta or keypad");
        row("key shift+nokey", "KO: unknown key \"nokey\"; expected a key name such as F2, F9, 1, A, Space or Enter");
        row("flightmode maybe", "KO: usage: flightmode on|off");
        row("plug nothing", "KO: unknown device \"nothing\"; expected an id name, number or alias");
        row("plug battery1", "KO: ID_BATTERY_1ST is already plugged");
        row("unplug otgb", "KO: ID_USB_OTG_B is not plugged");
        row("wait -5", "KO: usage: wait <ms>, with ms a whole number");
        row("expect power status has F_ENABLE", "OK");
        row("expect power status lacks F_ENABLE", "KO: ID_POWER_SUPPLY.status is F_ENABLE, expected lacks F_ENABLE");
        row("expect battery1 id = 7", "OK");
        row("expect battery1 id < 8", "KO: names are compared with =, !=, has or lacks, not <");
        row("expect battery1 path \"\"", "OK");
        row("expect battery1 path != \"\"", "KO: ID_BATTERY_1ST.path is \"\", expected != \"\"");
        row("expect battry1 present", "KO: unknown device or object \"battry1\"; devices lists the devices");
        row("expect battery2 absent", "OK");
        row("expect system emitted nosuch", "KO: System has no signal \"nosuch\"");
        row("ramp battery1 status 0 1 100",
            "KO: ID_BATTERY_1ST.status is not a writable number; ramp a debug command instead");
        row("ramp battery1 frobnicate,1 0 10 100", "KO: illegal command");
        row("help plug", "OK");
        row("help nothing", "KO: no command \"nothing\"; help lists the commands");
        row("dump /nonexistent/folder/state.json", "KO: cannot write");
    }

    void answers()
    {
        QFETCH(QString, command);
        QFETCH(QString, answer);
        const QString got = run(command);
        QVERIFY2(got.startsWith(answer), qPrintable(got));
        // Every answer is a line of the output too.
        QVERIFY(m_text.contains(got + '\n'));
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
        const QString intRange = "KO: level: expected an integer from -2147483648 to 2147483647, got ";
        row("level", "42", "OK", "42");
        row("level", "-0x10", "OK", "-16");
        row("level", "4294967296", qPrintable(intRange + "\"4294967296\""), "5");
        row("level", "abc", qPrintable(intRange + "\"abc\""), "5");
        row("count", "4294967295", "OK", "4294967295");
        row("count", "-1", "KO: count: expected a whole number from 0 to 4294967295, got \"-1\"", "0");
        row("ratio", "2.5", "OK", "2.5");
        row("ratio", "2,5", "KO: ratio: expected a number such as 2.5, got \"2,5\"", "0");
        row("on", "yes", "OK", "true");
        row("on", "maybe", "KO: on: expected true or false (on/off, yes/no, 1/0), got \"maybe\"", "false");
        row("text", "\"two words\"", "OK", "\"two words\"");
        row("mode", "MODE_RUN", "OK", "MODE_RUN");
        row("mode", "Gadget::MODE_STOP", "OK", "MODE_STOP");
        row("mode", "mode_run", "OK", "MODE_RUN");
        row("mode", "MODE_FLY",
            "KO: mode: expected one of MODE_IDLE, MODE_RUN, MODE_STOP or a number, got \"MODE_FLY\"", "MODE_IDLE");
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
        const QString got = run(QString("set gadget %1 %2").arg(property, text));
        QVERIFY2(got.startsWith(answer), qPrintable(got));
        QCOMPARE(run("get gadget " + property), "OK " + shown);
    }

    void callPicksOverloadByArgumentCount()
    {
        for (const char *call : {"connectTo Lab", "connectTo Lab secret", "paint red"}) {
            QCOMPARE(run(QString("call gadget ") + call), QString("OK"));
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
        QVERIFY(!ValueText::findEnum("Flags").isValid());
    }

    void watchesSignalsGenerically()
    {
        EventWatcher *watcher = m_console->watcher();
        QSignalSpy signalled(watcher, &EventWatcher::signalled);
        Q_EMIT m_gadget->changed(D::F_ENABLE | D::F_CHARGE, Qt::red, Gadget::MODE_RUN);
        QCOMPARE(signalled.size(), 1);
        QCOMPARE(signalled.at(0).mid(1),
            QVariantList(
                {"gadget", "changed", QStringList({"flags=F_ENABLE|F_CHARGE", "colour=red", "mode=MODE_RUN"})}));
        QVERIFY(m_text.contains(" ms] gadget changed flags=F_ENABLE|F_CHARGE colour=red mode=MODE_RUN\n"));

        // An object in a signal argument is watched from then on.
        QObject found;
        Q_EMIT m_gadget->found(&found);
        QVERIFY(watcher->isWatched(&found));
        QCOMPARE(signalled.last().at(3).toStringList(), QStringList{"object=QObject#1"});

        // So is an interface object that appears among the children, named by its constant text.
        auto *probe = new IProbe(m_gadget);
        m_gadget->setProperty("level", 9);
        QVERIFY(watcher->isWatched(probe));
        Q_EMIT probe->ping(80);
        QCOMPARE(signalled.last().at(1).toString(), QString("IProbe(02:22:22)"));
        QCOMPARE(signalled.last().at(3).toStringList(), QStringList{"strength=80"});
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
        watcher->watch(&owner, "owner");
        QCOMPARE(watcher->nameOf(&helper), QString("owner.helper"));
        QCOMPARE(watcher->nameOf(model), QString("owner.model"));
        Q_EMIT model->levelChanged(1);
        QCOMPARE(signalled.last().at(1).toString(), QString("owner.model"));
        // A stray address is never taken for an object.
        Gadget other;
        other.m_model = reinterpret_cast<ConstGadgetPtr>(&m_text);
        const int watched = watcher->objects().size();
        watcher->watch(&other, "other");
        QCOMPARE(watcher->objects().size(), watched + 1);
    }

    void hotPlugAndDebugCommands()
    {
        // A device announced by System only is watched from its detection on; a battery
        // may bring status bits of its own, the enable request among them.
        QCOMPARE(run("ADDBATTERY,2"), QString("OK"));
        QTRY_VERIFY(m_text.contains(QRegularExpression("] ID_BATTERY_2ND statusChanged newStatus=\\S*F_ENABLE")));
        QCOMPARE(run("rmbattery,2"), QString("OK"));
        QVERIFY(!System::instance()->device(D::ID_BATTERY_2ND));

        QCOMPARE(run("plug otga"), QString("OK"));
        QTRY_VERIFY(m_text.contains("] ID_USB_OTG_A statusChanged newStatus=F_ENABLE\n"));
        QCOMPARE(run("unplug otga"), QString("OK"));
        QVERIFY(!System::instance()->device(D::ID_USB_OTG_A));
        QVERIFY(m_text.contains("System deviceRemoved id=ID_USB_OTG_A path=\"\"\n"));
        // The device is gone, and so is its watch.
        QCOMPARE(m_console->watcher()->find("ID_USB_OTG_A"), nullptr);

        QCOMPARE(run("plug canbus DEVICE_CAN|DEVICE_BUS"), QString("OK"));
        QCOMPARE(run("get canbus type"), QString("OK DEVICE_CAN|DEVICE_BUS"));
        QCOMPARE(run("plug stick"), QString("OK"));
        const QString stickPath = System::instance()->device(D::ID_DISK_USB)->path();
        QCOMPARE(stickPath, QDir(m_root->path()).filePath("var/usbdisk"));
        QVERIFY(QFileInfo(stickPath).isDir());
    }

    void keysReachTheFilterAsFromTheKeyboard()
    {
        KeyRecorder recorder;
        m_console->keyTarget()->installEventFilter(&recorder);
        const QList<std::tuple<const char *, int, int>> keys{{"keypad+1", Qt::Key_1, Qt::KeypadModifier},
            {"shift+F4", Qt::Key_F4, Qt::ShiftModifier}, {"ctrl+F4", Qt::Key_F4, Qt::ControlModifier},
            {"F2", Qt::Key_F2, Qt::NoModifier}};
        for (const auto &key : keys) {
            recorder.records.clear();
            QVERIFY(run(QString("key ") + std::get<0>(key)).startsWith("OK"));
            const QString common = QString(" %1 %2 1").arg(std::get<1>(key), 0, 16).arg(std::get<2>(key), 0, 16);
            QCOMPARE(recorder.records, QStringList({"press" + common, "release" + common}));
        }
    }

    void waitRampAndExpectTakeTheirTime()
    {
        QElapsedTimer clock;
        clock.start();
        QCOMPARE(run("wait 200"), QString("OK"));
        QVERIFY(clock.elapsed() >= 200);

        // Whole numbers step without repeating a value, and end on the target.
        QSignalSpy levels(m_gadget, &Gadget::levelChanged);
        clock.restart();
        QCOMPARE(run("ramp gadget level 0 10 300"), QString("OK"));
        QVERIFY2(clock.elapsed() >= 300, qPrintable(QString::number(clock.elapsed())));
        QCOMPARE(levels.size(), 4);
        QCOMPARE(levels.first().at(0).toInt(), 0);
        QCOMPARE(levels.last().at(0).toInt(), 10);
        for (int i = 1; i < levels.size(); ++i) {
            QVERIFY(levels.at(i).at(0).toInt() > levels.at(i - 1).at(0).toInt());
        }

        // A debug command gets the value as its last argument: addbattery,1 then addbattery,2.
        QCOMPARE(run("ramp battery1 addbattery 1 2 100"), QString("OK"));
        QVERIFY(System::instance()->device(D::ID_BATTERY_2ND));

        QTimer::singleShot(150, [] { VantixDebug::instance()->addDevice(D::ID_USB, D::DEVICE_USB, QString()); });
        clock.restart();
        QCOMPARE(run("expect usb present within 2000"), QString("OK"));
        QVERIFY(clock.elapsed() >= 150);
        clock.restart();
        QCOMPARE(run("expect usb status has F_ACTIVE within 150"),
            QString("KO: ID_USB.status is F_ENABLE, expected has F_ACTIVE within 150 ms"));
        QVERIFY(clock.elapsed() >= 150);

        // Each emission satisfies one check.
        QCOMPARE(run("call system powerOff"), QString("OK"));
        QCOMPARE(run("expect system emitted apiClosed"), QString("OK"));
        QCOMPARE(run("expect system emitted apiClosed"), QString("KO: System did not emit apiClosed"));
    }

    void dumpParsesBack()
    {
        m_gadget->setProperty("level", 12);
        QCOMPARE(run("plug otgb"), QString("OK"));
        const QString path = QDir(m_root->path()).filePath("state.json");
        QVERIFY(run("dump " + path).startsWith("OK written to"));
        QJsonParseError error;
        const QJsonObject dump = QJsonDocument::fromJson(readFile(path), &error).object();
        QCOMPARE(error.error, QJsonParseError::NoError);
        // The command and the in-memory dump agree.
        QCOMPARE(m_console->dump(), dump);
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
    QString run(const QString &line)
    {
        QSignalSpy answered(m_console, &Console::answered);
        m_console->feed({line}, "test", false);
        if (answered.isEmpty() && !answered.wait(10000)) {
            return QString("(no answer)");
        }
        return answered.last().at(2).toString();
    }

    TestRoot *m_root = nullptr;
    QString m_text;
    QTextStream m_out;
    Console *m_console = nullptr;
    Gadget *m_gadget = nullptr;
};

QTEST_GUILESS_MAIN(TestSimConsole)
#include "tst_simconsole.moc"

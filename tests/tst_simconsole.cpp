// The simulator console in-process: answers to good and bad commands, value
// conversion, device naming, generic watching, hot-plug, keys, timing of
// wait/ramp/expect, scripts and the JSON dump.

#include "console.h"
#include "devicenames.h"
#include "eventwatcher.h"
#include "testroot.h"
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
    explicit IProbe(QObject *parent)
        : QObject(parent)
    {
    }
    QString m_bssid = QStringLiteral("02:22:22");

Q_SIGNALS:
    void ping(int strength);
};

class Gadget;
using ConstGadgetPtr = const Gadget *;

/// Stands for a device class to come: properties, slots and signals of every kind the console converts.
class Gadget : public QObject
{
    Q_OBJECT
    Q_PROPERTY(int level READ level WRITE setLevel NOTIFY levelChanged)
    Q_PROPERTY(uint count MEMBER m_count)
    Q_PROPERTY(double ratio MEMBER m_ratio NOTIFY ratioChanged)
    Q_PROPERTY(bool on MEMBER m_on)
    Q_PROPERTY(QString text MEMBER m_text)
    Q_PROPERTY(Mode mode MEMBER m_mode)
    Q_PROPERTY(TQ_SPAPI::IDevice::DeviceFlags flags MEMBER m_flags)
    Q_PROPERTY(Qt::GlobalColor colour MEMBER m_colour)
    Q_PROPERTY(QObject *helper MEMBER m_helper CONSTANT)
    Q_PROPERTY(ConstGadgetPtr model MEMBER m_model CONSTANT)
    Q_PROPERTY(int fixed READ fixed CONSTANT)

public:
    enum Mode { MODE_IDLE, MODE_RUN, MODE_STOP };
    Q_ENUM(Mode)

    int level() const { return m_level; }
    void setLevel(int level)
    {
        if (level != m_level) {
            m_level = level;
            Q_EMIT levelChanged(level);
        }
    }
    int fixed() const { return 3; }
    Q_INVOKABLE int add(int a, int b) { return a + b; }

    int m_level = 5;
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

class TestSimConsole : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();
    void naming_data();
    void naming();
    void answers_data();
    void answers();
    void conversions_data();
    void conversions();
    void callPicksOverloadByArgumentCount();
    void valueText();
    void watchesSignalsGenerically();
    void hotPluggedDeviceIsWatched();
    void debugCommandsReachTheController();
    void keysReachTheFilterAsFromTheKeyboard();
    void waitRampAndExpectTakeTheirTime();
    void scriptsStopAtTheFirstKo();
    void quietShowsOnlyAnswers();
    void dumpParsesBack();

private:
    QString run(const QString &line);

    TestRoot *m_root = nullptr;
    QString m_text;
    QTextStream *m_out = nullptr;
    Console *m_console = nullptr;
    Gadget *m_gadget = nullptr;
};

void TestSimConsole::init()
{
    m_root = new TestRoot;
    SystemPlatformType::type = System::PT_TOLVEX_PLUS;
    System *system = System::instance();
    QSignalSpy ready(system, &System::apiReady);
    system->initialize(QStringLiteral("test"));
    QVERIFY(ready.wait());
    m_text.clear();
    m_out = new QTextStream(&m_text);
    m_console = new Console(*m_out);
    m_console->start();
    m_gadget = new Gadget;
    m_console->watcher()->watch(m_gadget, QStringLiteral("gadget"));
}

void TestSimConsole::cleanup()
{
    delete m_console;
    delete m_gadget;
    delete m_out;
    System::releaseInstance();
    SystemPlatformType::type = System::PT_UNKNOWN;
    delete m_root;
}

QString TestSimConsole::run(const QString &line)
{
    QSignalSpy answered(m_console, &Console::answered);
    m_console->feed({line}, QStringLiteral("test"), false);
    if (answered.isEmpty() && !answered.wait(10000)) {
        return QStringLiteral("(no answer)");
    }
    return answered.last().at(2).toString();
}

void TestSimConsole::naming_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<int>("id");
    QTest::newRow("id name") << "ID_BATTERY_1ST" << int(D::ID_BATTERY_1ST);
    QTest::newRow("any case, no prefix") << "battery_2nd" << int(D::ID_BATTERY_2ND);
    QTest::newRow("qualified") << "IDevice::ID_AUDIO" << int(D::ID_AUDIO);
    QTest::newRow("number") << "7" << int(D::ID_BATTERY_1ST);
    QTest::newRow("hex number") << "0x1d" << int(D::ID_POWER_SUPPLY);
    QTest::newRow("alias") << "battery1" << int(D::ID_BATTERY_1ST);
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

void TestSimConsole::naming()
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

void TestSimConsole::answers_data()
{
    QTest::addColumn<QString>("command");
    QTest::addColumn<QString>("answer");

    QTest::newRow("get by id name") << "get ID_BATTERY_1ST id"
                                    << "OK ID_BATTERY_1ST";
    QTest::newRow("get by number") << "get 29 status"
                                   << "OK F_ENABLE";
    QTest::newRow("get by alias") << "get power type"
                                  << "OK DEVICE_POWER";
    QTest::newRow("get of system") << "get system platform"
                                   << "OK PT_TOLVEX_PLUS";
    QTest::newRow("absent device") << "get battery2 status"
                                   << "KO: ID_BATTERY_2ND is not present";
    QTest::newRow("unknown device") << "get nothing status"
                                    << "KO: unknown device or object \"nothing\"; devices lists the devices";
    QTest::newRow("unknown property") << "get battery1 colour"
                                      << "KO: ID_BATTERY_1ST has no property \"colour\"; it has id, type, path, status";
    QTest::newRow("get without property") << "get battery1"
                                          << "KO: usage: get <target> <property>";
    QTest::newRow("read-only") << "set battery1 status F_ACTIVE"
                               << "KO: ID_BATTERY_1ST.status is read-only";
    QTest::newRow("open quote") << "set gadget text \"open"
                                << "KO: a quote is not closed";
    QTest::newRow("call") << "call battery1 reset"
                          << "OK";
    QTest::newRow("call with too many") << "call battery1 reset 1"
                                        << "KO: reset takes other arguments: reset()";
    QTest::newRow("QObject's methods stay hidden")
        << "call battery1 deleteLater"
        << "KO: ID_BATTERY_1ST has no method \"deleteLater\"; it has setAbility(IDevice::Flags flags), "
           "clearAbility(IDevice::Flags flags), reset()";
    QTest::newRow("unknown command") << "bogus"
                                     << "KO: unknown command \"bogus\"; help lists the commands";
    QTest::newRow("unknown debug command") << "frobnicate,1"
                                           << "KO: illegal command";
    QTest::newRow("debug command lacking its argument") << "setbatteryfuel"
                                                        << "KO: illegal command";
    QTest::newRow("debug command") << "addbattery,2"
                                   << "OK";
    QTest::newRow("key") << "key F9"
                         << "OK";
    QTest::newRow("unknown modifier") << "key hyper+F4"
                                      << "KO: unknown modifier \"hyper\"; expected shift, ctrl, alt, meta or keypad";
    QTest::newRow("unknown key") << "key shift+nokey"
                                 << "KO: unknown key \"nokey\"; expected a key name such as F2, F9, 1, A, Space or "
                                    "Enter";
    QTest::newRow("flight mode without on/off") << "flightmode maybe"
                                                << "KO: usage: flightmode on|off";
    QTest::newRow("plug unknown") << "plug nothing"
                                  << "KO: unknown device \"nothing\"; expected an id name, number or alias";
    QTest::newRow("plug twice") << "plug battery1"
                                << "KO: ID_BATTERY_1ST is already plugged";
    QTest::newRow("unplug absent") << "unplug otgb"
                                   << "KO: ID_USB_OTG_B is not plugged";
    QTest::newRow("negative wait") << "wait -5"
                                   << "KO: usage: wait <ms>, with ms a whole number";
    QTest::newRow("flags held") << "expect power status has F_ENABLE"
                                << "OK";
    QTest::newRow("flags not held") << "expect power status lacks F_ENABLE"
                                    << "KO: ID_POWER_SUPPLY.status is F_ENABLE, expected lacks F_ENABLE";
    QTest::newRow("enum by number") << "expect battery1 id = 7"
                                    << "OK";
    QTest::newRow("enum ordered") << "expect battery1 id < 8"
                                  << "KO: names are compared with =, !=, has or lacks, not <";
    QTest::newRow("empty text") << "expect battery1 path \"\""
                                << "OK";
    QTest::newRow("text differs") << "expect battery1 path != \"\""
                                  << "KO: ID_BATTERY_1ST.path is \"\", expected != \"\"";
    QTest::newRow("misspelt device") << "expect battry1 present"
                                     << "KO: unknown device or object \"battry1\"; devices lists the devices";
    QTest::newRow("absent as expected") << "expect battery2 absent"
                                        << "OK";
    QTest::newRow("no such signal") << "expect system emitted nosuch"
                                    << "KO: System has no signal \"nosuch\"";
    QTest::newRow("ramp of a flag word") << "ramp battery1 status 0 1 100"
                                         << "KO: ID_BATTERY_1ST.status is not a writable number; ramp a debug command "
                                            "instead";
    QTest::newRow("ramp of an unknown command") << "ramp battery1 frobnicate,1 0 10 100"
                                                << "KO: illegal command";
    QTest::newRow("help on one command") << "help plug"
                                         << "OK";
    QTest::newRow("help on nothing") << "help nothing"
                                     << "KO: no command \"nothing\"; help lists the commands";
    QTest::newRow("dump to nowhere") << "dump /nonexistent/folder/state.json"
                                     << "KO: cannot write";
}

void TestSimConsole::answers()
{
    QFETCH(QString, command);
    QFETCH(QString, answer);
    const QString got = run(command);
    QVERIFY2(got.startsWith(answer), qPrintable(got));
    // Every answer is a line of the output too.
    QVERIFY(m_text.contains(got + QLatin1Char('\n')));
}

void TestSimConsole::conversions_data()
{
    QTest::addColumn<QString>("property");
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("answer");
    QTest::addColumn<QString>("shown");

    QTest::newRow("int") << "level"
                         << "42"
                         << "OK"
                         << "42";
    QTest::newRow("negative hex") << "level"
                                  << "-0x10"
                                  << "OK"
                                  << "-16";
    QTest::newRow("int too big") << "level"
                                 << "4294967296"
                                 << "KO: level: expected an integer from -2147483648 to 2147483647, got \"4294967296\""
                                 << "5";
    QTest::newRow("int of text") << "level"
                                 << "abc"
                                 << "KO: level: expected an integer from -2147483648 to 2147483647, got \"abc\""
                                 << "5";
    QTest::newRow("uint") << "count"
                          << "4294967295"
                          << "OK"
                          << "4294967295";
    QTest::newRow("negative uint") << "count"
                                   << "-1"
                                   << "KO: count: expected a whole number from 0 to 4294967295, got \"-1\""
                                   << "0";
    QTest::newRow("double") << "ratio"
                            << "2.5"
                            << "OK"
                            << "2.5";
    QTest::newRow("double with comma") << "ratio"
                                       << "2,5"
                                       << "KO: ratio: expected a number such as 2.5, got \"2,5\""
                                       << "0";
    QTest::newRow("bool") << "on"
                          << "yes"
                          << "OK"
                          << "true";
    QTest::newRow("not a bool") << "on"
                                << "maybe"
                                << "KO: on: expected true or false (on/off, yes/no, 1/0), got \"maybe\""
                                << "false";
    QTest::newRow("text with blanks") << "text"
                                      << "\"two words\""
                                      << "OK"
                                      << "\"two words\"";
    QTest::newRow("enum") << "mode"
                          << "MODE_RUN"
                          << "OK"
                          << "MODE_RUN";
    QTest::newRow("qualified enum") << "mode"
                                    << "Gadget::MODE_STOP"
                                    << "OK"
                                    << "MODE_STOP";
    QTest::newRow("enum in any case") << "mode"
                                      << "mode_run"
                                      << "OK"
                                      << "MODE_RUN";
    QTest::newRow("unknown enum") << "mode"
                                  << "MODE_FLY"
                                  << "KO: mode: expected one of MODE_IDLE, MODE_RUN, MODE_STOP or a number, got "
                                     "\"MODE_FLY\""
                                  << "MODE_IDLE";
    QTest::newRow("flags") << "flags"
                           << "F_ENABLE|F_CHARGE"
                           << "OK"
                           << "F_ENABLE|F_CHARGE";
    QTest::newRow("qualified flags") << "flags"
                                     << "\"IDevice::F_ACTIVE | TQ_SPAPI::IDevice::F_LOG\""
                                     << "OK"
                                     << "F_ACTIVE|F_LOG";
    QTest::newRow("one unknown flag") << "flags"
                                      << "F_ENABLE|F_NOPE"
                                      << "KO: flags: expected names of F_NOFLAGS"
                                      << "F_NOFLAGS";
    QTest::newRow("colour") << "colour"
                            << "red"
                            << "OK"
                            << "red";
    QTest::newRow("qualified colour") << "colour"
                                      << "Qt::blue"
                                      << "OK"
                                      << "blue";
    QTest::newRow("unknown colour") << "colour"
                                    << "purple"
                                    << "KO: colour: expected one of color0, color1, black"
                                    << "green";
    QTest::newRow("constant") << "fixed"
                              << "4"
                              << "KO: gadget.fixed is read-only"
                              << "3";
}

void TestSimConsole::conversions()
{
    QFETCH(QString, property);
    QFETCH(QString, text);
    QFETCH(QString, answer);
    QFETCH(QString, shown);
    const QString got = run(QStringLiteral("set gadget %1 %2").arg(property, text));
    QVERIFY2(got.startsWith(answer), qPrintable(got));
    QCOMPARE(run(QStringLiteral("get gadget ") + property), QStringLiteral("OK ") + shown);
}

void TestSimConsole::callPicksOverloadByArgumentCount()
{
    QCOMPARE(run(QStringLiteral("call gadget connectTo Lab")), QStringLiteral("OK"));
    QCOMPARE(run(QStringLiteral("call gadget connectTo Lab secret")), QStringLiteral("OK"));
    QCOMPARE(m_gadget->calls, (QStringList{QStringLiteral("Lab"), QStringLiteral("Lab/secret")}));
    QCOMPARE(run(QStringLiteral("call gadget connectTo a b c")),
        QStringLiteral("KO: connectTo takes other arguments: connectTo(QString ssid); "
                       "connectTo(QString ssid, QString password)"));
    QCOMPARE(run(QStringLiteral("call gadget add 2 40")), QStringLiteral("OK 42"));
    QCOMPARE(run(QStringLiteral("call gadget add x 1")),
        QStringLiteral("KO: argument 1 of add(int a, int b): expected an integer from -2147483648 to "
                       "2147483647, got \"x\""));
    QCOMPARE(run(QStringLiteral("call gadget paint red")), QStringLiteral("OK"));
    QCOMPARE(m_gadget->m_colour, Qt::red);
    QCOMPARE(m_gadget->calls.size(), 2);
}

void TestSimConsole::valueText()
{
    const QMetaEnum flags = QMetaEnum::fromType<D::DeviceFlags>();
    QCOMPARE(ValueText::enumText(flags, 0), QStringLiteral("F_NOFLAGS"));
    QCOMPARE(ValueText::enumText(flags, -1), QStringLiteral("F_ALL"));
    QCOMPARE(ValueText::enumText(flags, 0x10011), QStringLiteral("F_ENABLE|F_CHARGE|0x10000"));
    QCOMPARE(ValueText::enumText(QMetaEnum::fromType<D::DeviceId>(), 99), QStringLiteral("99"));
    QCOMPARE(ValueText::format(QVariant::fromValue(D::DeviceFlags(D::F_ACTIVE))), QStringLiteral("F_ACTIVE"));
    QCOMPARE(ValueText::format(QStringList{QStringLiteral("a"), QStringLiteral("b\"c")}),
        QStringLiteral("[\"a\", \"b\\\"c\"]"));
    QCOMPARE(ValueText::format(QVariantMap{{QStringLiteral("k"), 1}, {QStringLiteral("on"), true}}),
        QStringLiteral("{k: 1, on: true}"));
    QCOMPARE(ValueText::format(QVariant::fromValue(QList<int>{1, 2})), QStringLiteral("[1, 2]"));
    QCOMPARE(ValueText::format(QVariant()), QStringLiteral("(none)"));
    QCOMPARE(ValueText::toJson(QVariant::fromValue(QList<int>{1, 2})), QJsonValue(QJsonArray{1, 2}));
    QCOMPARE(ValueText::toJson(QVariant::fromValue(D::DeviceFlags(D::F_ENABLE | D::F_CHARGE))),
        QJsonValue(QStringLiteral("F_ENABLE|F_CHARGE")));
    QCOMPARE(ValueText::findEnum("TQ_SPAPI::IDevice::Flags").name(), "DeviceFlags");
    QVERIFY(!ValueText::findEnum("Flags").isValid());
}

void TestSimConsole::watchesSignalsGenerically()
{
    EventWatcher *watcher = m_console->watcher();
    QSignalSpy signalled(watcher, &EventWatcher::signalled);
    Q_EMIT m_gadget->changed(D::F_ENABLE | D::F_CHARGE, Qt::red, Gadget::MODE_RUN);
    QCOMPARE(signalled.size(), 1);
    QCOMPARE(signalled.at(0).at(1).toString(), QStringLiteral("gadget"));
    QCOMPARE(signalled.at(0).at(2).toString(), QStringLiteral("changed"));
    QCOMPARE(signalled.at(0).at(3).toStringList(),
        (QStringList{
            QStringLiteral("flags=F_ENABLE|F_CHARGE"), QStringLiteral("colour=red"), QStringLiteral("mode=MODE_RUN")}));
    QVERIFY(m_text.contains(QStringLiteral(" ms] gadget changed flags=F_ENABLE|F_CHARGE colour=red mode=MODE_RUN\n")));

    // An object in a signal argument is watched from then on.
    QObject found;
    Q_EMIT m_gadget->found(&found);
    QVERIFY(watcher->isWatched(&found));
    QCOMPARE(signalled.last().at(3).toStringList(), QStringList{QStringLiteral("object=QObject#1")});

    // So is an interface object that appears among the children, named by its constant text.
    auto *probe = new IProbe(m_gadget);
    m_gadget->setLevel(9);
    QVERIFY(watcher->isWatched(probe));
    Q_EMIT probe->ping(80);
    QCOMPARE(signalled.last().at(1).toString(), QStringLiteral("IProbe(02:22:22)"));
    QCOMPARE(signalled.last().at(3).toStringList(), QStringList{QStringLiteral("strength=80")});
    QCOMPARE(watcher->find(QStringLiteral("iprobe(02:22:22)")), probe);
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
    watcher->watch(&owner, QStringLiteral("owner"));
    QCOMPARE(watcher->nameOf(&helper), QStringLiteral("owner.helper"));
    QCOMPARE(watcher->nameOf(model), QStringLiteral("owner.model"));
    Q_EMIT model->levelChanged(1);
    QCOMPARE(signalled.last().at(1).toString(), QStringLiteral("owner.model"));
    // A stray address is never taken for an object.
    Gadget other;
    other.m_model = reinterpret_cast<ConstGadgetPtr>(&m_text);
    const int watched = watcher->objects().size();
    watcher->watch(&other, QStringLiteral("other"));
    QCOMPARE(watcher->objects().size(), watched + 1);
}

void TestSimConsole::hotPluggedDeviceIsWatched()
{
    QSignalSpy signalled(m_console->watcher(), &EventWatcher::signalled);
    const auto seen = [&signalled](const QString &object, const QString &signal, const QStringList &arguments) {
        for (const QList<QVariant> &s : signalled) {
            if (s.at(1).toString() == object && s.at(2).toString() == signal && s.at(3).toStringList() == arguments) {
                return true;
            }
        }
        return false;
    };
    const QString otg = QStringLiteral("ID_USB_OTG_A");
    const QString status = QStringLiteral("statusChanged");
    QCOMPARE(run(QStringLiteral("plug otga")), QStringLiteral("OK"));
    QTRY_VERIFY(
        seen(QStringLiteral("System"), QStringLiteral("deviceDetected"), {QStringLiteral("device=ID_USB_OTG_A")}));
    QTRY_VERIFY(seen(otg, status, {QStringLiteral("newStatus=F_ENABLE")}));
    QCOMPARE(run(QStringLiteral("call otga setAbility F_ACTIVE")), QStringLiteral("OK"));
    QTRY_VERIFY(seen(otg, status, {QStringLiteral("newStatus=F_ENABLE|F_ACTIVE")}));
    QCOMPARE(run(QStringLiteral("unplug otga")), QStringLiteral("OK"));
    QVERIFY(seen(QStringLiteral("System"), QStringLiteral("deviceRemoved"),
        {QStringLiteral("id=ID_USB_OTG_A"), QStringLiteral("path=\"\"")}));
    QVERIFY(!System::instance()->device(D::ID_USB_OTG_A));
    QVERIFY(m_text.contains(QStringLiteral("System deviceRemoved id=ID_USB_OTG_A path=\"\"\n")));
    // The device is gone, and so is its watch.
    QCOMPARE(m_console->watcher()->find(otg), nullptr);

    QCOMPARE(run(QStringLiteral("plug canbus DEVICE_CAN|DEVICE_BUS")), QStringLiteral("OK"));
    QCOMPARE(run(QStringLiteral("get canbus type")), QStringLiteral("OK DEVICE_CAN|DEVICE_BUS"));
    QCOMPARE(run(QStringLiteral("plug stick")), QStringLiteral("OK"));
    const QString stickPath = System::instance()->device(D::ID_DISK_USB)->path();
    QCOMPARE(stickPath, QDir(m_root->path()).filePath(QStringLiteral("var/usbdisk")));
    QVERIFY(QFileInfo(stickPath).isDir());
}

void TestSimConsole::debugCommandsReachTheController()
{
    QSignalSpy signalled(m_console->watcher(), &EventWatcher::signalled);
    QCOMPARE(run(QStringLiteral("ADDBATTERY,2")), QStringLiteral("OK"));
    QVERIFY(System::instance()->device(D::ID_BATTERY_2ND));
    // Announced by System only: it is watched from its detection on.
    const QString battery2 = QStringLiteral("ID_BATTERY_2ND");
    QTRY_VERIFY(!signalled.isEmpty() && signalled.last().at(1).toString() == battery2);
    // A battery may bring status bits of its own; the enable request is among them.
    QCOMPARE(signalled.last().at(2).toString(), QStringLiteral("statusChanged"));
    QVERIFY(signalled.last().at(3).toStringList().value(0).contains(QStringLiteral("F_ENABLE")));
    QCOMPARE(run(QStringLiteral("rmbattery,2")), QStringLiteral("OK"));
    QVERIFY(!System::instance()->device(D::ID_BATTERY_2ND));
    // A bare word that is no command at all is the console's to refuse.
    QCOMPARE(run(QStringLiteral("frobnicate")),
        QStringLiteral("KO: unknown command \"frobnicate\"; help lists the commands"));
}

namespace {
struct KeyRecord
{
    QEvent::Type type;
    int key;
    Qt::KeyboardModifiers modifiers;
    bool spontaneous;
};

class KeyRecorder : public QObject
{
public:
    QList<KeyRecord> records;
    bool eventFilter(QObject *, QEvent *event) override
    {
        if (event->type() == QEvent::KeyPress || event->type() == QEvent::KeyRelease) {
            const auto *key = static_cast<QKeyEvent *>(event);
            records.append({event->type(), key->key(), key->modifiers(), event->spontaneous()});
        }
        return false;
    }
};
} // namespace

void TestSimConsole::keysReachTheFilterAsFromTheKeyboard()
{
    KeyRecorder recorder;
    m_console->keyTarget()->installEventFilter(&recorder);
    const QList<QPair<QString, QPair<int, Qt::KeyboardModifiers>>> keys{
        {QStringLiteral("keypad+1"), {Qt::Key_1, Qt::KeypadModifier}},
        {QStringLiteral("shift+F4"), {Qt::Key_F4, Qt::ShiftModifier}},
        {QStringLiteral("ctrl+F4"), {Qt::Key_F4, Qt::ControlModifier}},
        {QStringLiteral("F2"), {Qt::Key_F2, Qt::NoModifier}},
    };
    for (const auto &key : keys) {
        recorder.records.clear();
        QVERIFY(run(QStringLiteral("key ") + key.first).startsWith(QStringLiteral("OK")));
        QCOMPARE(recorder.records.size(), 2);
        QCOMPARE(recorder.records.at(0).type, QEvent::KeyPress);
        QCOMPARE(recorder.records.at(1).type, QEvent::KeyRelease);
        for (const KeyRecord &record : recorder.records) {
            QCOMPARE(record.key, key.second.first);
            QCOMPARE(record.modifiers, key.second.second);
            QVERIFY(record.spontaneous);
        }
    }
}

void TestSimConsole::waitRampAndExpectTakeTheirTime()
{
    QElapsedTimer clock;
    clock.start();
    QCOMPARE(run(QStringLiteral("wait 200")), QStringLiteral("OK"));
    QVERIFY(clock.elapsed() >= 200);

    // Whole numbers step without repeating a value, and end on the target.
    QSignalSpy levels(m_gadget, &Gadget::levelChanged);
    clock.restart();
    QCOMPARE(run(QStringLiteral("ramp gadget level 0 10 300")), QStringLiteral("OK"));
    QVERIFY2(clock.elapsed() >= 300, qPrintable(QString::number(clock.elapsed())));
    QCOMPARE(levels.size(), 4);
    QCOMPARE(levels.first().at(0).toInt(), 0);
    QCOMPARE(levels.last().at(0).toInt(), 10);
    for (int i = 1; i < levels.size(); ++i) {
        QVERIFY(levels.at(i).at(0).toInt() > levels.at(i - 1).at(0).toInt());
    }

    // A debug command gets the value as its last argument: addbattery,1 then addbattery,2.
    QCOMPARE(run(QStringLiteral("ramp battery1 addbattery 1 2 100")), QStringLiteral("OK"));
    QVERIFY(System::instance()->device(D::ID_BATTERY_2ND));

    QTimer::singleShot(150, [] { VantixDebug::instance()->addDevice(D::ID_USB, D::DEVICE_USB, QString()); });
    clock.restart();
    QCOMPARE(run(QStringLiteral("expect usb present within 2000")), QStringLiteral("OK"));
    QVERIFY(clock.elapsed() >= 150);
    clock.restart();
    QCOMPARE(run(QStringLiteral("expect usb status has F_ACTIVE within 150")),
        QStringLiteral("KO: ID_USB.status is F_ENABLE, expected has F_ACTIVE within 150 ms"));
    QVERIFY(clock.elapsed() >= 150);

    // Each emission satisfies one check.
    QCOMPARE(run(QStringLiteral("call system powerOff")), QStringLiteral("OK"));
    QCOMPARE(run(QStringLiteral("expect system emitted apiClosed")), QStringLiteral("OK"));
    QCOMPARE(
        run(QStringLiteral("expect system emitted apiClosed")), QStringLiteral("KO: System did not emit apiClosed"));
}

void TestSimConsole::scriptsStopAtTheFirstKo()
{
    const QStringList lines{QStringLiteral("# a comment"), QString(), QStringLiteral("get battery1 id"),
        QStringLiteral("bogus"), QStringLiteral("get battery1 id")};
    QSignalSpy answered(m_console, &Console::answered);
    QSignalSpy finished(m_console, &Console::finished);
    m_console->feed(lines, QStringLiteral("demo.vsim"), true);
    m_console->endOfInput();
    QTRY_COMPARE(finished.size(), 1);
    QCOMPARE(finished.at(0).at(0).toInt(), 1);
    QCOMPARE(finished.at(0).at(1).toString(),
        QStringLiteral("demo.vsim:4: bogus: unknown command \"bogus\"; help lists the commands"));
    QCOMPARE(answered.size(), 2);
    QVERIFY(m_text.contains(QStringLiteral("> get battery1 id\nOK ID_BATTERY_1ST\n> bogus\n")));
}

void TestSimConsole::quietShowsOnlyAnswers()
{
    m_console->setQuiet(true);
    m_text.clear();
    QCOMPARE(run(QStringLiteral("plug otgb")), QStringLiteral("OK"));
    QSignalSpy signalled(m_console->watcher(), &EventWatcher::signalled);
    QTRY_VERIFY(signalled.size() >= 2);
    QSignalSpy finished(m_console, &Console::finished);
    m_console->feed({QStringLiteral("get otgb status"), QStringLiteral("quit"), QStringLiteral("get otgb id")},
        QStringLiteral("quiet.vsim"), true);
    QTRY_COMPARE(finished.size(), 1);
    QCOMPARE(finished.at(0).at(0).toInt(), 0);
    QCOMPARE(m_text, QStringLiteral("OK\nOK F_ENABLE\nOK\n"));
}

void TestSimConsole::dumpParsesBack()
{
    m_gadget->setLevel(12);
    QVERIFY(run(QStringLiteral("plug otgb")).startsWith(QStringLiteral("OK")));
    const QString path = QDir(m_root->path()).filePath(QStringLiteral("state.json"));
    QVERIFY(run(QStringLiteral("dump ") + path).startsWith(QStringLiteral("OK written to")));
    QFile file(path);
    QVERIFY(file.open(QIODevice::ReadOnly));
    QJsonParseError error;
    const QJsonObject dump = QJsonDocument::fromJson(file.readAll(), &error).object();
    QCOMPARE(error.error, QJsonParseError::NoError);
    QCOMPARE(dump.value(QStringLiteral("platform")).toString(), QStringLiteral("PT_TOLVEX_PLUS"));
    QCOMPARE(dump.value(QStringLiteral("system")).toObject().value(QStringLiteral("flightModeStatus")).toString(),
        QStringLiteral("FLIGHT_MODE_ENABLED"));
    const QJsonObject devices = dump.value(QStringLiteral("devices")).toObject();
    QCOMPARE(devices.size(), System::instance()->devices().size());
    const QJsonObject power = devices.value(QStringLiteral("ID_POWER_SUPPLY")).toObject();
    QCOMPARE(power.value(QStringLiteral("number")).toInt(), 29);
    QCOMPARE(power.value(QStringLiteral("alias")).toString(), QStringLiteral("power"));
    QCOMPARE(power.value(QStringLiteral("properties")).toObject().value(QStringLiteral("status")).toString(),
        QStringLiteral("F_ENABLE"));
    const QJsonObject otgb = devices.value(QStringLiteral("ID_USB_OTG_B")).toObject();
    QCOMPARE(otgb.value(QStringLiteral("properties")).toObject().value(QStringLiteral("type")).toString(),
        QStringLiteral("DEVICE_USB"));
    const QJsonObject gadget =
        dump.value(QStringLiteral("objects")).toObject().value(QStringLiteral("gadget")).toObject();
    QCOMPARE(gadget.value(QStringLiteral("properties")).toObject().value(QStringLiteral("level")).toInt(), 12);
    QCOMPARE(gadget.value(QStringLiteral("properties")).toObject().value(QStringLiteral("colour")).toString(),
        QStringLiteral("green"));
    // The command and the in-memory dump agree.
    QCOMPARE(m_console->dump(), dump);
}

QTEST_GUILESS_MAIN(TestSimConsole)
#include "tst_simconsole.moc"

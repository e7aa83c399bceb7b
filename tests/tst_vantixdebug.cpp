// The debug controller as developers drive it: commands on the "VantixDebug"
// parameter, keyboard shortcuts on a window, and USB hot-plug.

#include "fakenetworkconfigurations.h"
#include "logcapture.h"
#include "testroot.h"
#include "testsystem.h"

#include <vantix/vantix.h>

#include <qbcom/parametercontroller.h>
#include <qbcom/qbparameter.h>
#include <qbcommon/appconfig.h>
#include <qbcommon/networkmanager.h>

#include <QDir>
#include <QGuiApplication>
#include <QSignalSpy>
#include <QWindow>
#include <QtTest>

using namespace TQ_SPAPI;
using D = IDevice;

namespace {
// A shown window whose key events go through the debug controller first. It
// records the key releases that reach it, i.e. were not consumed, leaving out
// the modifier keys QTest presses around a click.
class ShortcutWindow : public QWindow
{
public:
    QList<int> released;
    ShortcutWindow()
    {
        installEventFilter(VantixDebug::instance());
        show();
    }

protected:
    void keyReleaseEvent(QKeyEvent *event) override
    {
        if (event->key() != Qt::Key_Shift && event->key() != Qt::Key_Control && event->key() != Qt::Key_Alt) {
            released.append(event->key());
        }
    }
};

QVariant propertyOf(D::DeviceId id, const char *name)
{
    const IDevicePtr device = System::instance()->device(id);
    return device ? device->property(name) : QVariant();
}
} // namespace

class TestVantixDebug : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        m_root = new TestRoot;
        // The host's own Wi-Fi reports would race with the simulated values.
        NetworkConfigurations::setInstance(&m_host);
        m_controller = new TQ_QBCom::ParameterController;
        VantixDebug::instance()->setParameterController(*m_controller);
    }

    void cleanup()
    {
        System::releaseInstance();
        NetworkConfigurations::setInstance(nullptr);
        delete m_controller;
        delete m_root;
        SystemPlatformType::type = System::PT_UNKNOWN;
    }

    void commands_data()
    {
        QTest::addColumn<QStringList>("setup");
        QTest::addColumn<QString>("command");
        QTest::addColumn<int>("device");
        QTest::addColumn<QByteArray>("property");
        QTest::addColumn<QVariant>("expected"); // invalid: the device is absent
        QTest::addColumn<bool>("illegal");
        const auto row = [](const char *name, const char *setup, const char *command, D::DeviceId device,
                             const char *property, const QVariant &expected, bool illegal = false) {
            QTest::newRow(name) << QString(setup).split(';', Qt::SkipEmptyParts) << command << int(device)
                                << QByteArray(property) << expected << illegal;
        };
        const D::DeviceId b1 = D::ID_BATTERY_1ST, b2 = D::ID_BATTERY_2ND, lan = D::ID_NETWORK_LAN;
        const D::DeviceId wifi = D::ID_NETWORK_WIFI;
        const char *second = "addbattery,2";
        const QVariant absent;

        // Batteries: the selector is "2" exactly, value commands read tokens by count.
        row("addbattery", "rmbattery", "addbattery", b1, "fuelGauge", 100);
        row("addbattery,1", "rmbattery", "addbattery,1", b1, "fuelGauge", 100);
        row("blank before 2", "", "addbattery, 2", b2, "fuelGauge", absent);
        row("commas around", "", ",,addbattery,,2,", b2, "fuelGauge", 100);
        row("rmbattery", "", "rmbattery", b1, "fuelGauge", absent);
        row("rmbattery,3", "", "rmbattery,3", b1, "fuelGauge", absent);
        row("rmbattery,2", second, "rmbattery,2", b2, "fuelGauge", absent);
        row("fuel by count", second, "setbatteryfuel,2", b1, "fuelGauge", 2);
        row("fuel of second", second, "setbatteryfuel,2,40", b2, "fuelGauge", 40);
        row("fuel of second leaves first", second, "setbatteryfuel,2,40", b1, "fuelGauge", 100);
        row("fuel selector 1", "", "SetBatteryFuel,1,33,extra", b1, "fuelGauge", 33);
        row("fuel not a number", "", "setbatteryfuel,abc", b1, "fuelGauge", 0);
        row("fuel missing value", "", "setbatteryfuel", b1, "fuelGauge", 100, true);
        row("fuel of a missing battery", "", "setbatteryfuel,2,40", b2, "fuelGauge", absent);
        row("togglecharging twice", "togglecharging", "togglecharging", b1, "chargeCounter", 1);
        row("togglecharging,2", "addbattery,2;togglecharging,2", "togglecharging,2", b2, "chargeCounter", 1);
        row("current of second", second, "setbatterycurrent,2,-0.5", b2, "current", -0.5);
        row("current by count", "", "setbatterycurrent,0.25", b1, "current", 0.25);
        row("current missing value", "", "setbatterycurrent", b1, "current", 0.0, true);

        // Network.
        row("setwiredstate", "", "setwiredstate,12", lan, "networkState", 12);
        row("setwiredstate missing", "setwiredstate,3", "setwiredstate", lan, "networkState", 3, true);
        row("setwifistate", "", "setwifistate,12", wifi, "networkState", 12);
        row("setwifistate out of range", "", "setwifistate,99", wifi, "networkState", 99);
        row("setwiredip", "", "setwiredip,10.1.2.3.4/24", lan, "ip", "10.1.2.3.4/24");
        row("setwiredip empty", "setwiredip,x", "setwiredip", lan, "ip", QString());
        row("setwifiip keeps blanks", "", "setwifiip, a b ", wifi, "ip", " a b ");
        row("setssid", "", "setssid,Lab", wifi, "wifiSsid", "Lab");
        row("setssid empty", "setssid,Lab", "setssid", wifi, "wifiSsid", QString());
        row("setwifichannel", "", "setwifichannel,6", wifi, "wifiChannel", 6);
        row("setwifichannel missing", "", "setwifichannel", wifi, "wifiChannel", 0, true);
        row("setwifisignalstrength", "", "setwifisignalstrength,42", wifi, "wifiSignalStrength", 42);
        row("setwifisignalstrength missing", "", "setwifisignalstrength", wifi, "wifiSignalStrength", 0, true);
        row("setwificountry", "", "setwificountry,DK", wifi, "wifiCountry", "DK");
        row("setwificountry missing", "", "setwificountry", wifi, "wifiCountry", QString(), true);

        // Hot-plug, button and jack.
        row("addotgb", "", "addotgb", D::ID_USB_OTG_B, "vendorId", "0483");
        row("rmotgb", "addotgb", "rmotgb", D::ID_USB_OTG_B, "vendorId", absent);
        row("addotga", "", "addotga", D::ID_USB_OTG_A, "vendorId", "0483");
        row("pwrpress", "", "pwrpress", D::ID_BUTTON_POWER, "pressed", true);
        row("pwrrelase", "pwrpress", "pwrrelase", D::ID_BUTTON_POWER, "pressed", false);
        row("pwrrelease is not a command", "pwrpress", "pwrrelease", D::ID_BUTTON_POWER, "pressed", true, true);
        row("jack", "", "jack", D::ID_AUDIO, "jackFlags", 1);
        row("jack twice", "jack", "JACK", D::ID_AUDIO, "jackFlags", 0);
        row("mic keeps headphone", "jack", "mic", D::ID_AUDIO, "jackFlags", 3);

        // Malformed.
        row("blanks only", "", "   ", D::ID_AUDIO, "jackFlags", 0, true);
        row("unknown word", "", "explode,1", D::ID_AUDIO, "jackFlags", 0, true);

        // Reading numbers and words: as QString::toInt() and QString::toLower() do.
        row("channel with plus", "", "setwifichannel,+6", wifi, "wifiChannel", 6);
        row("channel with blanks", "", "setwifichannel, 7 ", wifi, "wifiChannel", 7);
        row("channel too big", "setwifichannel,3", "setwifichannel,2147483648", wifi, "wifiChannel", 0);
        row("channel negative", "", "setwifichannel,-12", wifi, "wifiChannel", -12);
        row("kelvin sign lowers to k", "", "JAC\u212A", D::ID_AUDIO, "jackFlags", 1);
        row("long s is not s", "setssid,Lab", "\u017Fetssid,Other", wifi, "wifiSsid", QStringLiteral("Lab"), true);
    }

    void commands()
    {
        QFETCH(QStringList, setup);
        QFETCH(QString, command);
        QFETCH(int, device);
        QFETCH(QByteArray, property);
        QFETCH(QVariant, expected);
        QFETCH(bool, illegal);

        // The one platform with every device these commands reach.
        startSystem(System::PT_QUARNEL_PLUS);
        for (const QString &line : setup) {
            send(line);
        }
        LogCapture log;
        send(command);
        const QVariant actual = propertyOf(D::DeviceId(device), property.constData());
        QCOMPARE(actual.isValid(), expected.isValid()); // invalid: the device is absent
        const QVariant::Type type = expected.type(); // enums and flags compare by value
        QCOMPARE(type == QVariant::Int     ? QVariant(actual.toInt())
                : type == QVariant::Double ? actual.toDouble()
                                           : actual,
            expected);
        QCOMPARE(log.contains("Illegal command"), illegal);
    }

    void commandsBeforeAnySystem()
    {
        LogCapture log;
        for (const char *command : {"addbattery", "setbatteryfuel,3", "setwifistate,12", "addotga", "rmotgb",
                 "pwrpress", "jack", "mic", "activateotgb", "enablewifi", "bogus", ",,,", ""}) {
            send(command);
        }
        // Nothing to act on: no crash, and only the illegal word is reported.
        QCOMPARE(log.count("Illegal command"), 1);
    }

    // The tables that run commands and keys are the ones tools read: what
    // they declare required is what the grammar requires.
    void declaredTablesMatchWhatRuns()
    {
        using A = VantixDebug::ArgumentInfo;
        const QList<VantixDebug::CommandInfo> commands = VantixDebug::commands();
        QCOMPARE(commands.size(), 24);
        QStringList labels;
        for (const VantixDebug::CommandInfo &c : commands) {
            bool required = false;
            for (const A &a : c.arguments) {
                required = required || !a.optional;
            }
            // No system attached: a legal command has nothing to act on, an illegal one says so.
            const VantixDebug::CommandResult alone = VantixDebug::instance()->execute(c.word).result;
            QCOMPARE(alone, required ? VantixDebug::CommandIllegal : VantixDebug::CommandNoSystem);
            QVERIFY2(!c.label.isEmpty() && !labels.contains(c.label), qPrintable(c.word));
            labels << c.label;
        }
        const VantixDebug::CommandInfo fuel = commands.at(2);
        QCOMPARE(fuel.word, QString("setbatteryfuel"));
        QCOMPARE(fuel.usage, QString("setbatteryfuel[,1|2],<percent>"));
        QCOMPARE(fuel.arguments.size(), 2);
        QCOMPARE(fuel.arguments.at(0).type, A::Choice);
        QVERIFY(fuel.arguments.at(0).optional);
        QCOMPARE(fuel.arguments.at(0).choices, QStringList({"1", "2"}));
        QCOMPARE(fuel.arguments.at(1).type, A::Integer);
        QCOMPARE(commands.at(4).arguments.at(1).type, A::Real);

        const QList<VantixDebug::ShortcutInfo> shortcuts = VantixDebug::shortcuts();
        QCOMPARE(shortcuts.size(), 11);
        QCOMPARE(shortcuts.first().label, QString("Low battery 15 %"));
        int passedOn = 0;
        for (const VantixDebug::ShortcutInfo &s : shortcuts) {
            QCOMPARE(VantixDebug::instance()->runShortcut(s.key, s.modifiers), VantixDebug::ShortcutSkipped);
            if (s.passedOn) {
                QVERIFY(s.key == Qt::Key_F4 && s.modifiers != Qt::ControlModifier);
                ++passedOn;
            }
        }
        QCOMPARE(passedOn, 2);
        QCOMPARE(VantixDebug::instance()->runShortcut(Qt::Key_5, Qt::KeypadModifier), VantixDebug::ShortcutNone);
        QCOMPARE(VantixDebug::instance()->runShortcut(Qt::Key_1, Qt::KeypadModifier | Qt::ShiftModifier),
            VantixDebug::ShortcutNone);

        // Through the parameter or straight, an illegal command leaves the same record.
        LogCapture log;
        send("bogus,1");
        QCOMPARE(VantixDebug::instance()->execute("bogus,1").result, VantixDebug::CommandIllegal);
        QCOMPARE(log.records().size(), 2);
        for (const LogRecord &record : log.records()) {
            QCOMPARE(record.message, QString("Illegal command"));
            QCOMPARE(record.type, QtDebugMsg);
            QCOMPARE(record.category, QString("default"));
            QVERIFY2(record.function.contains("VantixDebug::onVantixDebugChanged"), qPrintable(record.function));
        }
    }

    void everySetterCallAddsAParameter()
    {
        TQ_QBCom::ParameterController other;
        VantixDebug::instance()->setParameterController(other);
        VantixDebug::instance()->setParameterController(other);
        QCOMPARE(other.parameters().size(), 2);
        const TQ_QBCom::QBParameter *parameter = other.parameter("VantixDebug");
        QCOMPARE(parameter->value(), QVariant(QString()));
        QVERIFY(!parameter->metadata().isValid());

        startSystem(System::PT_TOLVEX);
        const IDevicePtr audio = System::instance()->device(D::ID_AUDIO);
        // Both parameters act: one command toggles twice.
        other.setValue("VantixDebug", "jack");
        QCOMPARE(audio->property("jackFlags").toInt(), 0);
        send("jack");
        QCOMPARE(audio->property("jackFlags").toInt(), 1);
    }

    void keys()
    {
        startSystem(System::PT_TOLVEX);
        ShortcutWindow window;
        QVERIFY(QTest::qWaitForWindowExposed(&window));

        System *system = System::instance();
        QSignalSpy removed(system, &System::deviceRemoved);
        // F4 plugs and unplugs port B and lets the application see the key.
        QTest::keyClick(&window, Qt::Key_F4);
        QVERIFY(system->device(D::ID_USB_OTG_B));
        QTest::keyClick(&window, Qt::Key_F4);
        QVERIFY(!system->device(D::ID_USB_OTG_B));
        QCOMPARE(removed.count(), 1);
        // Shift+F4 does the same with the USB device.
        QTest::keyClick(&window, Qt::Key_F4, Qt::ShiftModifier);
        QVERIFY(system->device(D::ID_USB));
        QTest::keyClick(&window, Qt::Key_F4, Qt::ShiftModifier);
        QVERIFY(!system->device(D::ID_USB));
        QCOMPARE(window.released, QList<int>({Qt::Key_F4, Qt::Key_F4, Qt::Key_F4, Qt::Key_F4}));

        // Jack keys are consumed.
        QTest::keyClick(&window, Qt::Key_F2);
        QTest::keyClick(&window, Qt::Key_F3);
        QCOMPARE(propertyOf(D::ID_AUDIO, "jackFlags").toInt(), 3);
        QTest::keyClick(&window, Qt::Key_F2);
        QCOMPARE(propertyOf(D::ID_AUDIO, "jackFlags").toInt(), 2);
        // F9 toggles the mains.
        QTest::keyClick(&window, Qt::Key_F9);
        QVERIFY(system->device(D::ID_POWER_SUPPLY)->status().testFlag(D::F_POWER_CONNECTED));
        QCOMPARE(window.released.size(), 4);

        // Extra modifiers match nothing.
        QTest::keyClick(&window, Qt::Key_F9, Qt::AltModifier);
        QTest::keyClick(&window, Qt::Key_F4, Qt::ShiftModifier | Qt::ControlModifier);
        QVERIFY(system->device(D::ID_POWER_SUPPLY)->status().testFlag(D::F_POWER_CONNECTED));
        QVERIFY(!system->device(D::ID_USB));
        QCOMPARE(window.released.size(), 6);

        // Ctrl+F4 takes the network off and on again, and is consumed.
        QSignalSpy connectivity(NetworkManager::instance(), &NetworkManager::connectivityChanged);
        LogCapture log;
        QTest::keyClick(&window, Qt::Key_F4, Qt::ControlModifier);
        QCOMPARE(qApp->property("TestOffline"), QVariant(true));
        QVERIFY(!NetworkManager::instance()->isOnline());
        QVERIFY(!connectivity.isEmpty() && !connectivity.last().at(0).toBool());
        QTest::keyClick(&window, Qt::Key_F4, Qt::ControlModifier);
        QCOMPARE(qApp->property("TestOffline"), QVariant(false));
        QCOMPARE(log.messages(), QStringList({"Test offline: true", "Test offline: false"}));
        QCOMPARE(window.released.size(), 6);
    }

    void keypadPowerAndNetworkCycle()
    {
        ShortcutWindow window;
        QVERIFY(QTest::qWaitForWindowExposed(&window));
        const auto keypad = [&window](Qt::Key key) { QTest::keyClick(&window, key, Qt::KeypadModifier); };
        // No system attached: keys pass through untouched.
        QTest::keyClick(&window, Qt::Key_F9);
        QCOMPARE(window.released, QList<int>{Qt::Key_F9});

        startSystem(System::PT_TOLVEX);
        // A key event the application sends itself is not spontaneous, and
        // auto-repeat releases while a key is held are ignored.
        QKeyEvent synthetic(QEvent::KeyRelease, Qt::Key_1, Qt::KeypadModifier);
        QCoreApplication::sendEvent(&window, &synthetic);
        QTest::simulateEvent(&window, false, Qt::Key_1, Qt::KeypadModifier, QString(), true);
        QCOMPARE(propertyOf(D::ID_BATTERY_1ST, "fuelGauge").toInt(), 100);
        LogCapture log;
        QList<int> fuel;
        for (Qt::Key key : {Qt::Key_1, Qt::Key_2, Qt::Key_3}) {
            keypad(key);
            fuel << propertyOf(D::ID_BATTERY_1ST, "fuelGauge").toInt();
        }
        QCOMPARE(fuel, QList<int>({15, 10, 5}));
        QCOMPARE(log.messages(), QStringList({"Start Low power", "Start Critial power", "Start Shutdown power"}));
        // Shift held, or the main keyboard's 1: nothing.
        QTest::keyClick(&window, Qt::Key_1, Qt::KeypadModifier | Qt::ShiftModifier);
        QTest::keyClick(&window, Qt::Key_1);
        QCOMPARE(propertyOf(D::ID_BATTERY_1ST, "fuelGauge").toInt(), 5);

        // Wired on, Wi-Fi on, both on, both off.
        log.clear();
        QStringList states;
        for (int i = 0; i < 4; ++i) {
            keypad(Qt::Key_7);
            states << QString("%1 %2, %3 %4")
                          .arg(propertyOf(D::ID_NETWORK_LAN, "networkState").toInt())
                          .arg(propertyOf(D::ID_NETWORK_LAN, "ip").toString())
                          .arg(propertyOf(D::ID_NETWORK_WIFI, "networkState").toInt())
                          .arg(propertyOf(D::ID_NETWORK_WIFI, "ip").toString());
        }
        QCOMPARE(states,
            QStringList(
                {"12 10.1.2.3.4/24, 6 ", "6 , 12 10.1.2.3.4/24", "12 10.1.2.3.4/24, 12 10.1.2.3.4/24", "6 , 6 "}));
        QCOMPARE(log.messages().mid(0, 2), QStringList({"Wired active (fake ip)", "Wifi disconnected"}));
        QCOMPARE(log.messages().mid(6, 2), QStringList({"Wired disconnected", "Wifi disconnected"}));

        // The signal steps by 25 and wraps after 100.
        QList<int> strengths;
        for (int i = 0; i < 5; ++i) {
            keypad(Qt::Key_8);
            strengths << propertyOf(D::ID_NETWORK_WIFI, "wifiSignalStrength").toInt();
        }
        QCOMPARE(strengths, QList<int>({25, 50, 75, 100, 0}));
        QCOMPARE(log.messages().last(), QString("Wifi signal strength: 0"));
    }

    void otgActivation()
    {
        startSystem(System::PT_TOLVEX_PLUS, {"--disksformatted"});
        System *system = System::instance();
        const QString folder = AppConfig::instance()->sharePath("usbdisk");
        QVERIFY(!QDir(folder).exists());

        // Port A switched active brings a formatted stick in the share folder.
        send("addotga");
        system->device(D::ID_USB_OTG_A)->setAbility(D::F_ACTIVE);
        QTRY_VERIFY(system->device(D::ID_DISK_USB));
        QCOMPARE(system->device(D::ID_DISK_USB)->path(), QDir(folder).absolutePath());
        QVERIFY(QDir(folder).exists());
        QVERIFY(system->device(D::ID_DISK_USB)->status().testFlag(D::F_FORMATTED));
        QSignalSpy removed(system, &System::deviceRemoved);
        send("rmotga");
        QCOMPARE(removed.count(), 2);
        QCOMPARE(removed.at(0).at(0).value<D::DeviceId>(), D::ID_DISK_USB);
        QCOMPARE(removed.at(1).at(0).value<D::DeviceId>(), D::ID_USB_OTG_A);

        // Port B switched active takes the user data away from the application.
        const IDevicePtr userData = system->device(D::ID_DISK_USER_DATA);
        qobject_cast<IDisk *>(userData.data())->mount();
        QTRY_VERIFY(userData->status().testFlag(D::F_ACTIVE));
        LogCapture log;
        send("activateotgb"); // nothing plugged yet
        QVERIFY(log.records().isEmpty());
        send("addotgb");
        send("activateotgb");
        QTRY_VERIFY(!userData->status().testFlag(D::F_ACTIVE));
        QVERIFY(log.messages().contains("ID_USB_OTG_B F_ENABLE|F_ACTIVE") ||
            log.messages().contains("ID_USB_OTG_B F_ACTIVE"));
    }

private:
    void send(const QString &command) { m_controller->setValue("VantixDebug", command); }

    TestRoot *m_root = nullptr;
    TQ_QBCom::ParameterController *m_controller = nullptr;
    FakeNetworkConfigurations m_host;
};

QTEST_MAIN(TestVantixDebug)
#include "tst_vantixdebug.moc"

// The debug controller as developers drive it: commands on the "VantixDebug"
// parameter, keyboard shortcuts on a window, and USB hot-plug.

#include "logcapture.h"
#include "testroot.h"

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
// Records the key releases that reach the window, i.e. were not consumed.
// The modifier keys QTest presses around a click are left out.
class KeyRecorder : public QObject
{
public:
    QList<int> released;
    bool eventFilter(QObject *, QEvent *event) override
    {
        if (event->type() == QEvent::KeyRelease) {
            const int key = static_cast<QKeyEvent *>(event)->key();
            if (key != Qt::Key_Shift && key != Qt::Key_Control && key != Qt::Key_Alt) {
                released.append(key);
            }
        }
        return false;
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
    void init();
    void cleanup();
    void commands_data();
    void commands();
    void commandsBeforeAnySystem();
    void everySetterCallAddsAParameter();
    void keys();
    void keypadPowerAndNetworkCycle();
    void keyFilterGuards();
    void offlineToggle();
    void otgAActivationBringsTheStick();
    void otgBActivationUnmountsUserData();

private:
    void send(const QString &command) { m_controller->setValue(QStringLiteral("VantixDebug"), command); }
    void start(System::PlatformType platform, const QStringList &arguments = {});

    TestRoot *m_root = nullptr;
    TQ_QBCom::ParameterController *m_controller = nullptr;
};

void TestVantixDebug::init()
{
    m_root = new TestRoot;
    m_controller = new TQ_QBCom::ParameterController;
    VantixDebug::instance()->setParameterController(*m_controller);
}

void TestVantixDebug::cleanup()
{
    System::releaseInstance();
    delete m_controller;
    delete m_root;
    SystemPlatformType::type = System::PT_UNKNOWN;
}

void TestVantixDebug::start(System::PlatformType platform, const QStringList &arguments)
{
    AppConfig::instance()->setArguments(QStringList{QStringLiteral("test")} + arguments);
    SystemPlatformType::type = platform;
    System::instance()->initialize(QStringLiteral("test"));
}

void TestVantixDebug::commands_data()
{
    QTest::addColumn<int>("platform");
    QTest::addColumn<QStringList>("setup");
    QTest::addColumn<QString>("command");
    QTest::addColumn<int>("device");
    QTest::addColumn<QByteArray>("property");
    QTest::addColumn<QVariant>("expected"); // invalid: the device is absent
    QTest::addColumn<bool>("illegal");

    const int tolvex = System::PT_TOLVEX_PLUS;
    const int quarnel = System::PT_QUARNEL;
    const QStringList second{QStringLiteral("addbattery,2")};
    const QVariant absent;

    // Batteries: the selector is "2" exactly, value commands read tokens by count.
    QTest::newRow("addbattery") << tolvex << QStringList{QStringLiteral("rmbattery")} << "addbattery"
                                << int(D::ID_BATTERY_1ST) << QByteArray("fuelGauge") << QVariant(100) << false;
    QTest::newRow("addbattery,1") << tolvex << QStringList{QStringLiteral("rmbattery")} << "addbattery,1"
                                  << int(D::ID_BATTERY_1ST) << QByteArray("fuelGauge") << QVariant(100) << false;
    QTest::newRow("ADDBATTERY,2") << tolvex << QStringList() << "ADDBATTERY,2" << int(D::ID_BATTERY_2ND)
                                  << QByteArray("fuelGauge") << QVariant(100) << false;
    QTest::newRow("blank before 2") << tolvex << QStringList() << "addbattery, 2" << int(D::ID_BATTERY_2ND)
                                    << QByteArray("fuelGauge") << absent << false;
    QTest::newRow("commas around") << tolvex << QStringList() << ",,addbattery,,2," << int(D::ID_BATTERY_2ND)
                                   << QByteArray("fuelGauge") << QVariant(100) << false;
    QTest::newRow("rmbattery") << tolvex << QStringList() << "rmbattery" << int(D::ID_BATTERY_1ST)
                               << QByteArray("fuelGauge") << absent << false;
    QTest::newRow("rmbattery,3") << tolvex << QStringList() << "rmbattery,3" << int(D::ID_BATTERY_1ST)
                                 << QByteArray("fuelGauge") << absent << false;
    QTest::newRow("rmbattery,2") << tolvex << second << "rmbattery,2" << int(D::ID_BATTERY_2ND)
                                 << QByteArray("fuelGauge") << absent << false;
    QTest::newRow("fuel by count") << tolvex << second << "setbatteryfuel,2" << int(D::ID_BATTERY_1ST)
                                   << QByteArray("fuelGauge") << QVariant(2) << false;
    QTest::newRow("fuel of second") << tolvex << second << "setbatteryfuel,2,40" << int(D::ID_BATTERY_2ND)
                                    << QByteArray("fuelGauge") << QVariant(40) << false;
    QTest::newRow("fuel of second leaves first") << tolvex << second << "setbatteryfuel,2,40" << int(D::ID_BATTERY_1ST)
                                                 << QByteArray("fuelGauge") << QVariant(100) << false;
    QTest::newRow("fuel selector 1") << tolvex << QStringList() << "SetBatteryFuel,1,33,extra" << int(D::ID_BATTERY_1ST)
                                     << QByteArray("fuelGauge") << QVariant(33) << false;
    QTest::newRow("fuel not a number") << tolvex << QStringList() << "setbatteryfuel,abc" << int(D::ID_BATTERY_1ST)
                                       << QByteArray("fuelGauge") << QVariant(0) << false;
    QTest::newRow("fuel missing value") << tolvex << QStringList() << "setbatteryfuel" << int(D::ID_BATTERY_1ST)
                                        << QByteArray("fuelGauge") << QVariant(100) << true;
    QTest::newRow("fuel of a missing battery") << tolvex << QStringList() << "setbatteryfuel,2,40"
                                               << int(D::ID_BATTERY_2ND) << QByteArray("fuelGauge") << absent << false;
    QTest::newRow("togglecharging twice")
        << tolvex << QStringList{QStringLiteral("togglecharging")} << "togglecharging" << int(D::ID_BATTERY_1ST)
        << QByteArray("chargeCounter") << QVariant(1) << false;
    QTest::newRow("togglecharging,2") << tolvex << (second + QStringList{QStringLiteral("togglecharging,2")})
                                      << "togglecharging,2" << int(D::ID_BATTERY_2ND) << QByteArray("chargeCounter")
                                      << QVariant(1) << false;
    QTest::newRow("current of second") << tolvex << second << "setbatterycurrent,2,-0.5" << int(D::ID_BATTERY_2ND)
                                       << QByteArray("current") << QVariant(-0.5) << false;
    QTest::newRow("current by count") << tolvex << QStringList() << "setbatterycurrent,0.25" << int(D::ID_BATTERY_1ST)
                                      << QByteArray("current") << QVariant(0.25) << false;
    QTest::newRow("current not a number") << tolvex << QStringList() << "setbatterycurrent,1,0,5"
                                          << int(D::ID_BATTERY_1ST) << QByteArray("current") << QVariant(0.0) << false;
    QTest::newRow("current missing value") << tolvex << QStringList() << "setbatterycurrent" << int(D::ID_BATTERY_1ST)
                                           << QByteArray("current") << QVariant(0.0) << true;

    // Network.
    QTest::newRow("setwiredstate") << tolvex << QStringList() << "setwiredstate,12" << int(D::ID_NETWORK_LAN)
                                   << QByteArray("networkState") << QVariant(12) << false;
    QTest::newRow("setwiredstate missing")
        << tolvex << QStringList{QStringLiteral("setwiredstate,3")} << "setwiredstate" << int(D::ID_NETWORK_LAN)
        << QByteArray("networkState") << QVariant(3) << true;
    QTest::newRow("setwifistate") << tolvex << QStringList() << "setwifistate,12" << int(D::ID_NETWORK_WIFI)
                                  << QByteArray("networkState") << QVariant(12) << false;
    QTest::newRow("setwifistate out of range")
        << tolvex << QStringList() << "setwifistate,99" << int(D::ID_NETWORK_WIFI) << QByteArray("networkState")
        << QVariant(99) << false;
    QTest::newRow("setwiredip") << tolvex << QStringList() << "setwiredip,10.1.2.3.4/24" << int(D::ID_NETWORK_LAN)
                                << QByteArray("ip") << QVariant(QStringLiteral("10.1.2.3.4/24")) << false;
    QTest::newRow("setwiredip empty") << tolvex << QStringList{QStringLiteral("setwiredip,x")} << "setwiredip"
                                      << int(D::ID_NETWORK_LAN) << QByteArray("ip") << QVariant(QString()) << false;
    QTest::newRow("setwifiip keeps blanks") << tolvex << QStringList() << "setwifiip, a b " << int(D::ID_NETWORK_WIFI)
                                            << QByteArray("ip") << QVariant(QStringLiteral(" a b ")) << false;
    QTest::newRow("setssid") << tolvex << QStringList() << "setssid,Lab" << int(D::ID_NETWORK_WIFI)
                             << QByteArray("wifiSsid") << QVariant(QStringLiteral("Lab")) << false;
    QTest::newRow("setssid empty") << tolvex << QStringList{QStringLiteral("setssid,Lab")} << "setssid"
                                   << int(D::ID_NETWORK_WIFI) << QByteArray("wifiSsid") << QVariant(QString()) << false;
    QTest::newRow("setwifichannel") << tolvex << QStringList() << "setwifichannel,6" << int(D::ID_NETWORK_WIFI)
                                    << QByteArray("wifiChannel") << QVariant(6) << false;
    QTest::newRow("setwifichannel missing") << tolvex << QStringList() << "setwifichannel" << int(D::ID_NETWORK_WIFI)
                                            << QByteArray("wifiChannel") << QVariant(0) << true;
    QTest::newRow("setwifisignalstrength")
        << tolvex << QStringList() << "setwifisignalstrength,42" << int(D::ID_NETWORK_WIFI)
        << QByteArray("wifiSignalStrength") << QVariant(42) << false;
    QTest::newRow("setwifisignalstrength missing")
        << tolvex << QStringList() << "setwifisignalstrength" << int(D::ID_NETWORK_WIFI)
        << QByteArray("wifiSignalStrength") << QVariant(0) << true;
    QTest::newRow("setwificountry") << tolvex << QStringList() << "setwificountry,DK" << int(D::ID_NETWORK_WIFI)
                                    << QByteArray("wifiCountry") << QVariant(QStringLiteral("DK")) << false;
    QTest::newRow("setwificountry missing") << tolvex << QStringList() << "setwificountry" << int(D::ID_NETWORK_WIFI)
                                            << QByteArray("wifiCountry") << QVariant(QString()) << true;

    // Hot-plug.
    QTest::newRow("addotgb") << tolvex << QStringList() << "addotgb" << int(D::ID_USB_OTG_B) << QByteArray("vendorId")
                             << QVariant(QStringLiteral("0483")) << false;
    QTest::newRow("rmotgb") << tolvex << QStringList{QStringLiteral("addotgb")} << "rmotgb" << int(D::ID_USB_OTG_B)
                            << QByteArray("vendorId") << absent << false;
    QTest::newRow("addotga") << tolvex << QStringList() << "addotga" << int(D::ID_USB_OTG_A) << QByteArray("vendorId")
                             << QVariant(QStringLiteral("0483")) << false;
    QTest::newRow("rmotga") << tolvex << QStringList{QStringLiteral("addotga")} << "rmotga" << int(D::ID_USB_OTG_A)
                            << QByteArray("vendorId") << absent << false;

    // Button and jack.
    QTest::newRow("pwrpress") << quarnel << QStringList() << "pwrpress" << int(D::ID_BUTTON_POWER)
                              << QByteArray("pressed") << QVariant(true) << false;
    QTest::newRow("pwrrelase") << quarnel << QStringList{QStringLiteral("pwrpress")} << "pwrrelase"
                               << int(D::ID_BUTTON_POWER) << QByteArray("pressed") << QVariant(false) << false;
    QTest::newRow("pwrrelease is not a command")
        << quarnel << QStringList{QStringLiteral("pwrpress")} << "pwrrelease" << int(D::ID_BUTTON_POWER)
        << QByteArray("pressed") << QVariant(true) << true;
    QTest::newRow("jack") << tolvex << QStringList() << "jack" << int(D::ID_AUDIO) << QByteArray("jackFlags")
                          << QVariant(1) << false;
    QTest::newRow("jack twice") << tolvex << QStringList{QStringLiteral("jack")} << "JACK" << int(D::ID_AUDIO)
                                << QByteArray("jackFlags") << QVariant(0) << false;
    QTest::newRow("mic keeps headphone") << tolvex << QStringList{QStringLiteral("jack")} << "mic" << int(D::ID_AUDIO)
                                         << QByteArray("jackFlags") << QVariant(3) << false;

    // Reading numbers and words: as QString::toInt() and QString::toLower() do.
    QTest::newRow("channel with plus") << tolvex << QStringList() << "setwifichannel,+6" << int(D::ID_NETWORK_WIFI)
                                       << QByteArray("wifiChannel") << QVariant(6) << false;
    QTest::newRow("channel with blanks") << tolvex << QStringList() << "setwifichannel, 7 " << int(D::ID_NETWORK_WIFI)
                                         << QByteArray("wifiChannel") << QVariant(7) << false;
    QTest::newRow("channel too big") << tolvex << QStringList{QStringLiteral("setwifichannel,3")}
                                     << "setwifichannel,2147483648" << int(D::ID_NETWORK_WIFI)
                                     << QByteArray("wifiChannel") << QVariant(0) << false;
    QTest::newRow("channel negative") << tolvex << QStringList() << "setwifichannel,-12" << int(D::ID_NETWORK_WIFI)
                                      << QByteArray("wifiChannel") << QVariant(-12) << false;
    QTest::newRow("kelvin sign lowers to k") << tolvex << QStringList() << QString::fromUtf8("JAC\u212A")
                                             << int(D::ID_AUDIO) << QByteArray("jackFlags") << QVariant(1) << false;
    QTest::newRow("long s is not s") << tolvex << QStringList{QStringLiteral("setssid,Lab")}
                                     << QString::fromUtf8("\u017Fetssid,Other") << int(D::ID_NETWORK_WIFI)
                                     << QByteArray("wifiSsid") << QVariant(QStringLiteral("Lab")) << true;

    // Malformed.
    QTest::newRow("blanks only") << tolvex << QStringList() << "   " << int(D::ID_AUDIO) << QByteArray("jackFlags")
                                 << QVariant(0) << true;
    QTest::newRow("unknown word") << tolvex << QStringList() << "explode,1" << int(D::ID_AUDIO)
                                  << QByteArray("jackFlags") << QVariant(0) << true;
}

void TestVantixDebug::commands()
{
    QFETCH(int, platform);
    QFETCH(QStringList, setup);
    QFETCH(QString, command);
    QFETCH(int, device);
    QFETCH(QByteArray, property);
    QFETCH(QVariant, expected);
    QFETCH(bool, illegal);

    start(System::PlatformType(platform));
    for (const QString &line : setup) {
        send(line);
    }
    LogCapture log;
    send(command);
    const QVariant actual = propertyOf(D::DeviceId(device), property.constData());
    if (!expected.isValid()) {
        QVERIFY2(!actual.isValid(), "the device should be absent");
    } else if (expected.type() == QVariant::Double) {
        QCOMPARE(actual.toDouble(), expected.toDouble());
    } else if (expected.type() == QVariant::Int) {
        QCOMPARE(actual.toInt(), expected.toInt());
    } else {
        QCOMPARE(actual, expected);
    }
    QCOMPARE(log.contains(QStringLiteral("Illegal command")), illegal);
}

void TestVantixDebug::commandsBeforeAnySystem()
{
    LogCapture log;
    for (const char *command : {"addbattery", "setbatteryfuel,3", "setwifistate,12", "addotga", "rmotgb", "pwrpress",
             "jack", "mic", "activateotgb", "enablewifi"}) {
        send(QLatin1String(command));
    }
    send(QStringLiteral("bogus"));
    // Nothing to act on: no crash, and only the illegal word is reported.
    QCOMPARE(log.count(QStringLiteral("Illegal command")), 1);
    send(QStringLiteral(",,,"));
    send(QString());
    QCOMPARE(log.count(QStringLiteral("Illegal command")), 1);
}

void TestVantixDebug::everySetterCallAddsAParameter()
{
    TQ_QBCom::ParameterController other;
    VantixDebug::instance()->setParameterController(other);
    VantixDebug::instance()->setParameterController(other);
    QCOMPARE(other.parameters().size(), 2);
    const TQ_QBCom::QBParameter *parameter = other.parameter(QStringLiteral("VantixDebug"));
    QCOMPARE(parameter->value(), QVariant(QString()));
    QVERIFY(!parameter->metadata().isValid());

    start(System::PT_TOLVEX);
    const IDevicePtr audio = System::instance()->device(D::ID_AUDIO);
    // Both parameters act: one command toggles twice.
    other.setValue(QStringLiteral("VantixDebug"), QStringLiteral("jack"));
    QCOMPARE(audio->property("jackFlags").toInt(), 0);
    send(QStringLiteral("jack"));
    QCOMPARE(audio->property("jackFlags").toInt(), 1);
}

void TestVantixDebug::keys()
{
    start(System::PT_TOLVEX);
    QWindow window;
    KeyRecorder recorder;
    window.installEventFilter(&recorder);
    window.installEventFilter(VantixDebug::instance()); // runs first
    window.show();
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
    QCOMPARE(recorder.released, (QList<int>{Qt::Key_F4, Qt::Key_F4, Qt::Key_F4, Qt::Key_F4}));

    // Jack keys are consumed.
    QTest::keyClick(&window, Qt::Key_F2);
    QTest::keyClick(&window, Qt::Key_F3);
    QCOMPARE(system->device(D::ID_AUDIO)->property("jackFlags").toInt(), 3);
    QTest::keyClick(&window, Qt::Key_F2);
    QCOMPARE(system->device(D::ID_AUDIO)->property("jackFlags").toInt(), 2);
    // F9 toggles the mains.
    QTest::keyClick(&window, Qt::Key_F9);
    QVERIFY(system->device(D::ID_POWER_SUPPLY)->status().testFlag(D::F_POWER_CONNECTED));
    QCOMPARE(recorder.released.size(), 4);

    // Extra modifiers match nothing.
    QTest::keyClick(&window, Qt::Key_F9, Qt::AltModifier);
    QTest::keyClick(&window, Qt::Key_F4, Qt::ShiftModifier | Qt::ControlModifier);
    QVERIFY(system->device(D::ID_POWER_SUPPLY)->status().testFlag(D::F_POWER_CONNECTED));
    QVERIFY(!system->device(D::ID_USB));
    QCOMPARE(recorder.released.size(), 6);
}

void TestVantixDebug::keypadPowerAndNetworkCycle()
{
    start(System::PT_TOLVEX);
    QWindow window;
    window.installEventFilter(VantixDebug::instance());
    window.show();
    QVERIFY(QTest::qWaitForWindowExposed(&window));
    const IDevicePtr battery = System::instance()->device(D::ID_BATTERY_1ST);
    const IDevicePtr lan = System::instance()->device(D::ID_NETWORK_LAN);
    const IDevicePtr wifi = System::instance()->device(D::ID_NETWORK_WIFI);

    LogCapture log;
    const QList<QPair<int, int>> power{{Qt::Key_1, 15}, {Qt::Key_2, 10}, {Qt::Key_3, 5}};
    for (const auto &step : power) {
        QTest::keyClick(&window, Qt::Key(step.first), Qt::KeypadModifier);
        QCOMPARE(battery->property("fuelGauge").toInt(), step.second);
    }
    QCOMPARE(log.messages(),
        (QStringList{QStringLiteral("Start Low power"), QStringLiteral("Start Critial power"),
            QStringLiteral("Start Shutdown power")}));
    // Shift held, or the main keyboard's 1: nothing.
    QTest::keyClick(&window, Qt::Key_1, Qt::KeypadModifier | Qt::ShiftModifier);
    QTest::keyClick(&window, Qt::Key_1);
    QCOMPARE(battery->property("fuelGauge").toInt(), 5);

    // Wired on, Wi-Fi on, both on, both off.
    log.clear();
    const QString fake = QStringLiteral("10.1.2.3.4/24");
    const QList<QList<QVariant>> cycle{
        {12, fake, 6, QString()}, {6, QString(), 12, fake}, {12, fake, 12, fake}, {6, QString(), 6, QString()}};
    for (const QList<QVariant> &expected : cycle) {
        QTest::keyClick(&window, Qt::Key_7, Qt::KeypadModifier);
        QCOMPARE(lan->property("networkState").toInt(), expected.at(0).toInt());
        QCOMPARE(lan->property("ip").toString(), expected.at(1).toString());
        QCOMPARE(wifi->property("networkState").toInt(), expected.at(2).toInt());
        QCOMPARE(wifi->property("ip").toString(), expected.at(3).toString());
    }
    QCOMPARE(log.messages().mid(0, 2),
        (QStringList{QStringLiteral("Wired active (fake ip)"), QStringLiteral("Wifi disconnected")}));
    QCOMPARE(log.messages().mid(6, 2),
        (QStringList{QStringLiteral("Wired disconnected"), QStringLiteral("Wifi disconnected")}));

    // The signal steps by 25 and wraps after 100.
    log.clear();
    QList<int> strengths;
    for (int i = 0; i < 5; ++i) {
        QTest::keyClick(&window, Qt::Key_8, Qt::KeypadModifier);
        strengths.append(wifi->property("wifiSignalStrength").toInt());
    }
    QCOMPARE(strengths, (QList<int>{25, 50, 75, 100, 0}));
    QCOMPARE(log.messages().last(), QStringLiteral("Wifi signal strength: 0"));
}

void TestVantixDebug::keyFilterGuards()
{
    QWindow window;
    KeyRecorder recorder;
    window.installEventFilter(&recorder);
    window.installEventFilter(VantixDebug::instance());
    window.show();
    QVERIFY(QTest::qWaitForWindowExposed(&window));

    // No system attached: keys pass through untouched.
    QTest::keyClick(&window, Qt::Key_F9);
    QCOMPARE(recorder.released, QList<int>{Qt::Key_F9});

    start(System::PT_TOLVEX);
    const IDevicePtr battery = System::instance()->device(D::ID_BATTERY_1ST);
    // A key event the application sends itself is not spontaneous.
    QKeyEvent synthetic(QEvent::KeyRelease, Qt::Key_1, Qt::KeypadModifier);
    QCoreApplication::sendEvent(&window, &synthetic);
    QCOMPARE(battery->property("fuelGauge").toInt(), 100);
    // Auto-repeat releases while a key is held are ignored; the final release counts.
    QTest::simulateEvent(&window, false, Qt::Key_1, Qt::KeypadModifier, QString(), true);
    QCOMPARE(battery->property("fuelGauge").toInt(), 100);
    QTest::simulateEvent(&window, false, Qt::Key_1, Qt::KeypadModifier, QString(), false);
    QCOMPARE(battery->property("fuelGauge").toInt(), 15);
}

void TestVantixDebug::offlineToggle()
{
    start(System::PT_TOLVEX);
    QWindow window;
    KeyRecorder recorder;
    window.installEventFilter(&recorder);
    window.installEventFilter(VantixDebug::instance());
    window.show();
    QVERIFY(QTest::qWaitForWindowExposed(&window));
    QSignalSpy connectivity(NetworkManager::instance(), &NetworkManager::connectivityChanged);

    LogCapture log;
    QTest::keyClick(&window, Qt::Key_F4, Qt::ControlModifier);
    QCOMPARE(qApp->property("TestOffline"), QVariant(true));
    QCOMPARE(log.messages(), QStringList{QStringLiteral("Test offline: true")});
    QVERIFY(!NetworkManager::instance()->isOnline());
    QVERIFY(connectivity.count() >= 1);
    QCOMPARE(connectivity.last().at(0).toBool(), false);
    QTest::keyClick(&window, Qt::Key_F4, Qt::ControlModifier);
    QCOMPARE(qApp->property("TestOffline"), QVariant(false));
    QCOMPARE(log.messages().last(), QStringLiteral("Test offline: false"));
    QVERIFY(recorder.released.isEmpty());
}

void TestVantixDebug::otgAActivationBringsTheStick()
{
    start(System::PT_TOLVEX_PLUS);
    System *system = System::instance();
    const QString folder = AppConfig::instance()->sharePath(QStringLiteral("usbdisk"));
    QVERIFY(!QDir(folder).exists());

    send(QStringLiteral("addotga"));
    const IDevicePtr port = system->device(D::ID_USB_OTG_A);
    QVERIFY(port);
    port->setAbility(D::F_ACTIVE);
    QTRY_VERIFY(system->device(D::ID_DISK_USB));
    QVERIFY(QDir(folder).exists());
    QCOMPARE(system->device(D::ID_DISK_USB)->path(), QDir(folder).absolutePath());
    QVERIFY(system->device(D::ID_DISK_USB)->status().testFlag(D::F_FORMATTED));

    QSignalSpy removed(system, &System::deviceRemoved);
    send(QStringLiteral("rmotga"));
    QCOMPARE(removed.count(), 2);
    QCOMPARE(removed.at(0).at(0).value<D::DeviceId>(), D::ID_DISK_USB);
    QCOMPARE(removed.at(1).at(0).value<D::DeviceId>(), D::ID_USB_OTG_A);
}

void TestVantixDebug::otgBActivationUnmountsUserData()
{
    start(System::PT_TOLVEX, {QStringLiteral("--disksformatted")});
    const IDevicePtr userData = System::instance()->device(D::ID_DISK_USER_DATA);
    auto *disk = qobject_cast<IDisk *>(userData.data());
    QVERIFY(disk);
    disk->mount();
    QTRY_VERIFY(userData->status().testFlag(D::F_ACTIVE));

    LogCapture log;
    send(QStringLiteral("activateotgb")); // nothing plugged yet
    QVERIFY(log.records().isEmpty());
    send(QStringLiteral("addotgb"));
    send(QStringLiteral("activateotgb"));
    QTRY_VERIFY(!userData->status().testFlag(D::F_ACTIVE));
    QVERIFY(log.messages().contains(QStringLiteral("ID_USB_OTG_B F_ENABLE|F_ACTIVE")) ||
        log.messages().contains(QStringLiteral("ID_USB_OTG_B F_ACTIVE")));
}

QTEST_MAIN(TestVantixDebug)
#include "tst_vantixdebug.moc"

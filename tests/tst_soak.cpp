// Soak: a long random session of what developers do to a running application
// (debug commands, hot-plug, disk work with delayed completion, flight mode,
// system information and restarts of the System), checked against an
// independent model of what should be plugged and what was saved.
//
// SOAK_ITERATIONS sets the length, SOAK_SEED the random sequence; the seed is
// printed so that a failing run can be repeated exactly.

#include "systemprivate_p.h"
#include "testroot.h"

#include <vantix/vantix.h>

#include <qbcom/parametercontroller.h>
#include <qbcommon/appconfig.h>

#include <QSignalSpy>
#include <QtTest>

#include <random>

using namespace TQ_SPAPI;

namespace {
using D = IDevice;
using Table = QMap<int, D::DeviceType>;

constexpr int DefaultIterations = 2500;
constexpr quint32 DefaultSeed = 20240917;
constexpr int CheckpointEvery = 50;

// The devices each platform starts with, by id and type.
Table startTable(System::PlatformType platform)
{
    using S = System;
    Table t{{D::ID_POWER_SUPPLY, D::DEVICE_POWER}, {D::ID_LED_POWER, D::DEVICE_LED}, {D::ID_AUDIO, D::DEVICE_AUDIO},
        {D::ID_TEMP_CPU, D::DEVICE_TEMPERATURE}, {D::ID_NETWORK_LAN, D::DEVICE_NETWORK},
        {D::ID_NETWORK_WIFI, D::DEVICE_NETWORK | D::DEVICE_FIGHT_MODE}};
    if (platform == S::PT_TOLVEX_PLUS || platform == S::PT_QUARNEL_PLUS) {
        t.insert(D::ID_BLUETOOTH, D::DEVICE_BUS | D::DEVICE_FIGHT_MODE);
    }
    if (platform == S::PT_TOLVEX || platform == S::PT_TOLVEX_PLUS) {
        t.insert(D::ID_DISK_USER_DATA, D::DEVICE_DISK);
        t.insert(D::ID_DISK_SYSTEM, D::DEVICE_DISK);
        t.insert(D::ID_BATTERY_1ST, D::DEVICE_BATTERY);
        t.insert(D::ID_DISPLAY, D::DEVICE_DISPLAY);
    }
    if (platform == S::PT_QUARNEL || platform == S::PT_QUARNEL_PLUS) {
        for (auto [id, type] : {std::pair{D::ID_LED_WIFI, D::DEVICE_LED}, {D::ID_POWER_MANIKIN_5V, D::DEVICE_POWER},
                 {D::ID_POWER_MANIKIN_VBUS, D::DEVICE_POWER}, {D::ID_BUTTON_POWER, D::DEVICE_BUTTON},
                 {D::ID_PWM, D::DEVICE_PWM}, {D::ID_BATTERY_1ST, D::DEVICE_BATTERY}}) {
            t.insert(id, type);
        }
        t.insert(D::ID_CAN_SERIAL, D::DEVICE_SERIAL | D::DEVICE_CAN);
        if (platform == S::PT_QUARNEL_PLUS) {
            t.insert(D::ID_CAN_BUS, D::DEVICE_CAN | D::DEVICE_BUS);
        }
    }
    if (platform == S::PT_CAN_CPU_MODULE) {
        t.insert(D::ID_LED_WIFI, D::DEVICE_LED);
        t.insert(D::ID_SOUND_AMPLIFIER, D::DEVICE_AUDIO);
        t.insert(D::ID_CAN_BUS, D::DEVICE_CAN | D::DEVICE_BUS);
        t.insert(D::ID_BATTERY_1ST, D::DEVICE_BATTERY);
    }
    return t;
}

// Devices the session plugs and unplugs directly through the simulation. The
// ports and the stick are left to the debug controller, which tracks them.
const Table Pool{{D::ID_TEMP_BATT_1ST, D::DEVICE_TEMPERATURE}, {D::ID_TEMP_BATT_2ND, D::DEVICE_TEMPERATURE},
    {D::ID_TEMP_BOARD, D::DEVICE_TEMPERATURE}, {D::ID_VIBRATOR, D::DEVICE_VIBRATOR},
    {D::ID_IOCONTROLLER, D::DEVICE_SERIAL}, {D::ID_NETWORK_WIFI_P2P, D::DEVICE_NETWORK}, {D::ID_AUDIO, D::DEVICE_AUDIO},
    {D::ID_LED_POWER, D::DEVICE_LED}, {D::ID_NETWORK_WIFI, D::DEVICE_NETWORK | D::DEVICE_FIGHT_MODE},
    {D::ID_DISK_USER_DATA, D::DEVICE_DISK}, {D::ID_DISK_SYSTEM, D::DEVICE_DISK},
    {D::ID_BUTTON_POWER, D::DEVICE_BUTTON}};

// Commands that change values but plug nothing.
const QStringList ValueCommands{"setbatteryfuel,%1", "setbatteryfuel,2,%1", "togglecharging", "togglecharging,2",
    "setbatterycurrent,2,-0.%1", "setwiredstate,%1", "setwifistate,%1", "setwiredip,10.0.0.%1", "setwifiip",
    "setssid,net%1", "setwifichannel,%1", "setwifisignalstrength,%1", "enablewifi", "disablewifi", "setwificountry,N%1",
    "pwrpress", "pwrrelase", "jack", "mic", "bogus,%1", ",,", "setbatteryfuel"};

// Entries refreshed on every start; they say nothing about what was saved.
const QStringList PerStartKeys{
    "BoardControllerVersion", "API_NAME", "SYSCTRL_VERSION", "OS_VERSION", "OS_NAME", "OS_HOSTNAME"};

// The library logs every command; only what is worse than a warning is let through.
QtMessageHandler s_previousHandler = nullptr;
void quietHandler(QtMsgType type, const QMessageLogContext &context, const QString &message)
{
    if (type != QtDebugMsg && type != QtInfoMsg && type != QtWarningMsg) {
        s_previousHandler(type, context, message);
    }
}

QString command(const QString &pattern, int value)
{
    return pattern.contains(QLatin1String("%1")) ? pattern.arg(value) : pattern;
}

// "id:type" per device, in id order, for readable failures.
QString describe(const Table &table)
{
    QStringList entries;
    for (auto it = table.cbegin(); it != table.cend(); ++it) {
        entries << QStringLiteral("%1:%2").arg(it.key()).arg(int(it.value()), 0, 16);
    }
    return entries.join(QLatin1Char(' '));
}

QString family(System::PlatformType platform)
{
    return platform == System::PT_TOLVEX || platform == System::PT_TOLVEX_PLUS ? "tolvex" : "quarnel";
}
} // namespace

class TestSoak : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void session();

private:
    int pick(int n) { return std::uniform_int_distribution<int>(0, n - 1)(m_rng); }
    void send(const QString &command) { m_controller->setValue(QStringLiteral("VantixDebug"), command); }
    void start(System::PlatformType platform);
    void plug(int id, D::DeviceType type);
    void unplug(int id);
    void step();
    void diskWork();
    void wifiP2PRequest();
    void saveInfo();
    void restart();
    void checkpoint();

    std::mt19937 m_rng;
    TQ_QBCom::ParameterController *m_controller = nullptr;
    TestRoot *m_root = nullptr;
    System *m_system = nullptr;
    SystemPrivate *m_simulation = nullptr;
    System::PlatformType m_platform = System::PT_UNKNOWN;
    // The model: what should be plugged, what was announced, what each nvram file holds.
    Table m_expected;
    bool m_stickPending = false;
    QList<int> m_expectedRemovals, m_removals, m_expectedAdds, m_adds;
    QMap<QString, QVariantMap> m_saved;
    // Devices the "application" holds on to, across removals and restarts.
    QList<IDevicePtr> m_held;
    QList<IWifiP2PPeerPtr> m_heldPeers;
    int m_step = 0;
};

void TestSoak::start(System::PlatformType platform)
{
    m_platform = platform;
    SystemPlatformType::type = platform;
    m_system = System::instance();
    QVERIFY(!m_system->isReady());
    QVERIFY(m_system->devices().isEmpty());
    connect(m_system, &System::deviceRemoved, this, [this](D::DeviceId id) {
        if (id != D::ID_DISK_USB) {
            m_removals.append(id);
        }
    });
    connect(m_system, &System::deviceDetected, this, [this](const IDevicePtr &device) {
        if (device->id() != D::ID_DISK_USB) {
            m_adds.append(device->id());
        }
    });
    m_system->initialize(QStringLiteral("soak"));
    m_simulation = m_system->findChild<SystemPrivate *>();
    m_expected = startTable(platform);
    m_expectedAdds = m_expected.keys();
    m_stickPending = false;

    // Whatever this unit saved before comes back, identity included.
    QVariantMap &saved = m_saved[family(platform)];
    const QVariantMap info = m_system->systemInfo();
    for (auto it = saved.cbegin(); it != saved.cend(); ++it) {
        QVERIFY2(PerStartKeys.contains(it.key()) || info.value(it.key()) == it.value(), qPrintable(it.key()));
    }
    for (auto it = info.cbegin(); it != info.cend(); ++it) {
        saved.insert(it.key(), it.value());
    }
}

void TestSoak::plug(int id, D::DeviceType type)
{
    if (!m_expected.contains(id)) {
        m_expected.insert(id, type);
        m_expectedAdds.append(id);
    }
}

void TestSoak::unplug(int id)
{
    if (m_expected.remove(id)) {
        m_expectedRemovals.append(id);
    }
}

void TestSoak::session()
{
    const quint32 seed =
        qEnvironmentVariableIsSet("SOAK_SEED") ? qEnvironmentVariable("SOAK_SEED").toUInt() : DefaultSeed;
    const int iterations = qEnvironmentVariableIsSet("SOAK_ITERATIONS")
        ? qEnvironmentVariableIntValue("SOAK_ITERATIONS")
        : DefaultIterations;
    qInfo("soak: seed %u, %d iterations (SOAK_SEED, SOAK_ITERATIONS)", seed, iterations);
    m_rng.seed(seed);

    TestRoot root;
    m_controller = new TQ_QBCom::ParameterController(this);
    VantixDebug::instance()->setParameterController(*m_controller);
    s_previousHandler = qInstallMessageHandler(quietHandler);

    start(System::PlatformType(pick(7)));
    for (m_step = 1; m_step <= iterations && !QTest::currentTestFailed(); ++m_step) {
        step();
        QCoreApplication::processEvents();
        if (pick(12) == 0) {
            QTest::qWait(pick(150)); // lets delayed work come due at random points
        }
        if (m_step % CheckpointEvery == 0) {
            checkpoint();
        }
    }
    if (!QTest::currentTestFailed()) {
        checkpoint();
        // A flight-mode transition ends within 2 s and leaves a settled state.
        QTRY_VERIFY_WITH_TIMEOUT(!m_system->flightModeStatus().testFlag(System::FLIGHT_MODE_TRANSITION), 3000);
    }
    qInstallMessageHandler(s_previousHandler);
    if (QTest::currentTestFailed()) {
        qInfo("soak: failed by step %d of seed %u", m_step, seed);
    }
    m_held.clear();
    m_heldPeers.clear();
    System::releaseInstance();
    delete m_controller;
}

void TestSoak::step()
{
    const int n = pick(100);
    if (n < 30) {
        send(command(ValueCommands.at(pick(ValueCommands.size())), pick(120) - 5));
    } else if (n < 38) {
        const bool second = pick(2);
        const int id = second ? D::ID_BATTERY_2ND : D::ID_BATTERY_1ST;
        if (pick(2)) {
            send(second ? "addbattery,2" : "addbattery");
            plug(id, D::DEVICE_BATTERY);
        } else {
            send(second ? "rmbattery,2" : "rmbattery");
            unplug(id);
        }
    } else if (n < 50) {
        switch (pick(6)) {
        case 0:
            send("addotga");
            plug(D::ID_USB_OTG_A, D::DEVICE_USB);
            break;
        case 1:
            send("rmotga");
            // The stick goes with its port, whether or not it has arrived yet.
            m_expected.remove(D::ID_DISK_USB);
            m_stickPending = false;
            unplug(D::ID_USB_OTG_A);
            break;
        case 2:
            if (const IDevicePtr port = m_system->device(D::ID_USB_OTG_A)) {
                // An active port A brings the USB stick 100 ms later, once per plugged port.
                if (!port->status().testFlag(D::F_ACTIVE) && !m_expected.contains(D::ID_DISK_USB)) {
                    m_stickPending = true;
                }
                port->setAbility(D::F_ACTIVE);
            }
            break;
        case 3:
            send("addotgb");
            plug(D::ID_USB_OTG_B, D::DEVICE_USB);
            break;
        case 4:
            send("activateotgb");
            break;
        default:
            send("rmotgb");
            unplug(D::ID_USB_OTG_B);
            break;
        }
    } else if (n < 55) {
        if (pick(2)) {
            VantixDebug::instance()->addUsb();
            plug(D::ID_USB, D::DEVICE_USB);
        } else {
            VantixDebug::instance()->rmUsb();
            unplug(D::ID_USB);
        }
    } else if (n < 67) {
        const int id = Pool.keys().at(pick(Pool.size()));
        if (pick(2)) {
            const AppConfig *config = AppConfig::instance();
            const QString path = id == D::ID_DISK_USER_DATA ? config->varPath("data")
                : id == D::ID_DISK_SYSTEM                   ? config->varPath(QString())
                                                            : QString();
            m_simulation->addDevice(D::DeviceId(id), Pool.value(id), path);
            plug(id, Pool.value(id));
        } else {
            m_simulation->removeDevice(D::DeviceId(id));
            unplug(id);
        }
    } else if (n < 82) {
        diskWork();
    } else if (n < 86) {
        m_system->setFlightMode(pick(2));
    } else if (n < 89) {
        wifiP2PRequest();
    } else if (n < 93) {
        saveInfo();
    } else if (n < 97) {
        // The application keeps a device, or pokes one it kept, plugged or not.
        const QList<IDevicePtr> devices = m_system->devices();
        if (m_held.size() < 8 && !devices.isEmpty()) {
            m_held.append(devices.at(pick(devices.size())));
        } else if (!m_held.isEmpty()) {
            const IDevicePtr device = m_held.takeAt(pick(m_held.size()));
            if (device->id() == D::ID_USB_OTG_A) {
                return; // activating port A brings the stick; that is the step above
            }
            device->setAbility(D::F_ACTIVE);
            device->clearAbility(D::F_ACTIVE);
        }
    } else {
        restart();
    }
}

void TestSoak::diskWork()
{
    const QList<IDevicePtr> disks = m_system->devices(D::DEVICE_DISK);
    if (disks.isEmpty()) {
        return;
    }
    auto *disk = qobject_cast<IDisk *>(disks.at(pick(disks.size())).data());
    switch (pick(3)) {
    case 0:
        disk->format(0);
        if (disk->id() == D::ID_DISK_SYSTEM) {
            // The system disk holds the nvram files: formatting it forgets what was saved.
            m_saved.clear();
        }
        break;
    case 1:
        disk->mount();
        break;
    default:
        disk->unmount();
        break;
    }
}

// Wi-Fi P2P requests within their 200 ms answer windows belong here; the tree
// has no Wi-Fi P2P manager (IWifiP2P) yet, so the step plugs its device id only.
// Wi-Fi Direct requests, often while earlier answers are still within their
// 200 ms; unplugging and restarting elsewhere drop the device with them pending.
void TestSoak::wifiP2PRequest()
{
    m_simulation->addDevice(D::ID_NETWORK_WIFI_P2P, D::DEVICE_NETWORK, QString());
    plug(D::ID_NETWORK_WIFI_P2P, D::DEVICE_NETWORK);
    auto *p2p = qobject_cast<IWifiP2P *>(m_system->device(D::ID_NETWORK_WIFI_P2P).data());
    QVERIFY(p2p);
    const IWifiP2PPeerPtr peer = p2p->peerList(QStringLiteral("02:22:22"));
    switch (pick(5)) {
    case 0:
        p2p->findPeers();
        break;
    case 1:
        p2p->addGroup(
            QStringLiteral("soak"), QStringLiteral("psk"), QStringLiteral("1234"), QStringLiteral("10.0.0.1"));
        break;
    case 2:
        p2p->removeGroup();
        break;
    default:
        if (!peer) {
            p2p->findPeers();
        } else if (pick(2)) {
            peer->peerConnect(QStringLiteral("1234"));
        } else {
            peer->peerDisconnect();
        }
    }
    // The application may keep a peer after its device is gone.
    if (peer && m_heldPeers.size() < 4 && pick(4) == 0) {
        m_heldPeers.append(peer);
    }
}

void TestSoak::saveInfo()
{
    const QString key = QStringLiteral("SOAK_%1").arg(pick(6));
    if (pick(4) == 0) {
        // Removed from memory only; the file keeps it.
        m_system->deleteSystemInfoKey(key);
        return;
    }
    m_system->addSystemInfoPair(key, QStringLiteral("value %1, step %2").arg(pick(1000)).arg(m_step));
    // The whole map goes to the file; keys deleted from memory stay in it.
    const QVariantMap info = m_system->systemInfo();
    QVariantMap &saved = m_saved[family(m_platform)];
    for (auto it = info.cbegin(); it != info.cend(); ++it) {
        saved.insert(it.key(), it.value());
    }
}

void TestSoak::restart()
{
    checkpoint();
    System::releaseInstance();
    m_system = nullptr;
    m_simulation = nullptr;
    // Between two systems the controller has nothing to act on.
    send(command(ValueCommands.at(pick(ValueCommands.size())), pick(100)));
    send(QStringLiteral("addotga"));
    send(QStringLiteral("addbattery,2"));
    VantixDebug::instance()->addUsb();
    start(System::PlatformType(pick(7)));
}

void TestSoak::checkpoint()
{
    // The stick of an activated port A may still be on its way.
    if (m_stickPending && m_expected.contains(D::ID_USB_OTG_A)) {
        m_expected.insert(D::ID_DISK_USB, D::DEVICE_DISK);
    }
    m_stickPending = false;
    const auto actual = [this] {
        Table table;
        for (const IDevicePtr &device : m_system->devices()) {
            table.insert(device->id(), device->type());
        }
        return describe(table);
    };
    QTRY_COMPARE(actual(), describe(m_expected));
    QCOMPARE(m_removals, m_expectedRemovals);
    // Announcements come from the event loop, in the order of creation.
    std::sort(m_expectedAdds.begin(), m_expectedAdds.end());
    const auto sortedAdds = [this] {
        QList<int> adds = m_adds;
        std::sort(adds.begin(), adds.end());
        return adds;
    };
    QTRY_COMPARE(sortedAdds(), m_expectedAdds);
    const System::FligtModeFlags flight = m_system->flightModeStatus();
    QVERIFY(flight == 0 || flight == 2 || flight == 4 || flight == 6);
    m_removals.clear();
    m_expectedRemovals.clear();
    m_adds.clear();
    m_expectedAdds.clear();
}

QTEST_GUILESS_MAIN(TestSoak)
#include "tst_soak.moc"

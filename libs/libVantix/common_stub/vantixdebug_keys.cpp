// The keyboard shortcuts of the debug controller.

#include <vantix/vantixdebug.h>

#include "systemprivate_p.h"

#include <qbcommon/networkmanager.h>

#include <QCoreApplication>
#include <QDebug>
#include <QKeyEvent>

namespace TQ_SPAPI {

namespace {
using D = IDevice;

// Position in the four-step wired/Wi-Fi cycle and the last simulated Wi-Fi
// signal; they live as long as the process.
int s_networkCycle = 0;
int s_wifiSignal = 0;

// A text that is passed on, never parsed; the five parts are deliberate.
const QString FakeAddress = QStringLiteral("10.1.2.3.4/24");
} // namespace

bool VantixDebug::eventFilter(QObject *watched, QEvent *event)
{
    Q_UNUSED(watched)
    switch (event->type()) {
    case QEvent::KeyPress:
        onKeyPressEvent(static_cast<QKeyEvent *>(event));
        return false;
    case QEvent::KeyRelease:
        return onKeyReleaseEvent(static_cast<QKeyEvent *>(event));
    default:
        return false;
    }
}

bool VantixDebug::onKeyPressEvent(QKeyEvent *event)
{
    // Shortcuts act on release only.
    Q_UNUSED(event)
    return false;
}

bool VantixDebug::onKeyReleaseEvent(QKeyEvent *event)
{
    // Keys synthesised by the application itself and held-down repeats never count.
    if (!m_systemPrivate || !event->spontaneous() || event->isAutoRepeat()) {
        return false;
    }
    // QKeyEvent::modifiers() corrects the input event's modifiers only when
    // the key is itself a modifier (Shift, Control, Alt, Meta, AltGr), and no
    // shortcut here is one. Its inline base accessor reads the same state and
    // spares every application this library the link to QtGui and its stack.
    return runShortcut(event->key(), event->QInputEvent::modifiers()) == ShortcutConsumed;
}

// One row per shortcut: the key with exactly these modifiers, what it does
// in a few words and in a sentence, whether the key goes on to the
// application, and how it is carried out: false when there was nothing to act on.
struct VantixDebug::ShortcutRow
{
    int key;
    Qt::KeyboardModifiers::Int modifiers;
    const char *label;
    const char *help;
    bool passedOn;
    bool (*run)(VantixDebug &debug);
};

namespace {
using V = VantixDebug;
constexpr Qt::KeyboardModifiers::Int Keypad = Qt::KeypadModifier;
constexpr Qt::KeyboardModifiers::Int Plain = Qt::NoModifier;
} // namespace

const VantixDebug::ShortcutRow *VantixDebug::shortcutRows(int *count)
{
    static const ShortcutRow rows[] = {
        {Qt::Key_1, Keypad, "Low battery 15 %", "low power: the first battery at 15 %", false,
            [](V &d) { return d.setPowerLevel("Start Low power", 15), true; }},
        {Qt::Key_2, Keypad, "Critical battery 10 %", "critical power: the first battery at 10 %", false,
            [](V &d) { return d.setPowerLevel("Start Critial power", 10), true; }},
        {Qt::Key_3, Keypad, "Shutdown battery 5 %", "shutdown power: the first battery at 5 %", false,
            [](V &d) { return d.setPowerLevel("Start Shutdown power", 5), true; }},
        {Qt::Key_7, Keypad, "Next network step", "next step of the wired/Wi-Fi cycle", false,
            [](V &d) { return d.stepNetworkCycle(), true; }},
        {Qt::Key_8, Keypad, "Wi-Fi signal +25 %", "Wi-Fi signal 25 % stronger, 0 after 100", false,
            [](V &d) { return d.stepWifiSignal(), true; }},
        {Qt::Key_F2, Plain, "Headphones in or out", "plug or pull the headphone jack", false,
            [](V &d) { return d.toggleJack(IAudio::JACK_HEADPHONE); }},
        {Qt::Key_F3, Plain, "Microphone in or out", "plug or pull the microphone", false,
            [](V &d) { return d.toggleJack(IAudio::JACK_MIC); }},
        {Qt::Key_F4, Plain, "USB OTG port B in or out", "plug or unplug USB OTG port B", true,
            [](V &d) { return d.m_otgB ? d.rmOtgB() : d.addOtgB(), true; }},
        {Qt::Key_F4, Qt::ShiftModifier, "USB device in or out", "plug or unplug the USB device", true,
            [](V &d) { return d.m_usb ? d.rmUsb() : d.addUsb(), true; }},
        {Qt::Key_F4, Qt::ControlModifier, "Offline test on or off", "toggle the offline test", false,
            [](V &d) { return d.toggleTestOffline(), true; }},
        {Qt::Key_F9, Plain, "Mains power in or out", "connect or disconnect mains power", false,
            [](V &d) { return d.m_systemPrivate->overridePowerConnectedToggle(D::ID_POWER_SUPPLY), true; }},
    };
    *count = int(sizeof rows / sizeof rows[0]);
    return rows;
}

VantixDebug::ShortcutResult VantixDebug::runShortcut(int key, Qt::KeyboardModifiers modifiers)
{
    int count = 0;
    const ShortcutRow *rows = shortcutRows(&count);
    for (int i = 0; i < count; ++i) {
        // The modifiers must be exactly the row's: Shift with keypad 1 is no shortcut.
        const ShortcutRow &row = rows[i];
        if (row.key != key || row.modifiers != modifiers) {
            continue;
        }
        if (!m_systemPrivate || !row.run(*this)) {
            return ShortcutSkipped;
        }
        return row.passedOn ? ShortcutPassedOn : ShortcutConsumed;
    }
    return ShortcutNone;
}

QList<VantixDebug::ShortcutInfo> VantixDebug::shortcuts()
{
    int count = 0;
    const ShortcutRow *rows = shortcutRows(&count);
    QList<ShortcutInfo> result;
    for (int i = 0; i < count; ++i) {
        const ShortcutRow &row = rows[i];
        result.append({row.key, Qt::KeyboardModifiers(row.modifiers), QLatin1String(row.help), QLatin1String(row.label),
            row.passedOn});
    }
    return result;
}

void VantixDebug::setPowerLevel(const char *message, int percent)
{
    qDebug() << message;
    m_systemPrivate->overrideFuelGauge(D::ID_BATTERY_1ST, percent);
}

void VantixDebug::stepNetworkCycle()
{
    s_networkCycle = (s_networkCycle + 1) % 4;
    if (s_networkCycle & 1) {
        qDebug() << "Wired active (fake ip)";
        m_systemPrivate->overrideNetworkState(D::ID_NETWORK_LAN, INetwork::NETWORK_STATE_ACTIVATED);
        m_systemPrivate->overrideIP(D::ID_NETWORK_LAN, FakeAddress);
    } else {
        qDebug() << "Wired disconnected";
        m_systemPrivate->overrideNetworkState(D::ID_NETWORK_LAN, INetwork::NETWORK_STATE_DISCONNECTED);
        m_systemPrivate->overrideIP(D::ID_NETWORK_LAN, QString());
    }
    if (s_networkCycle & 2) {
        qDebug() << "Wifi active (fake ip)";
        m_systemPrivate->overrideNetworkState(D::ID_NETWORK_WIFI, INetwork::NETWORK_STATE_ACTIVATED);
        m_systemPrivate->overrideIP(D::ID_NETWORK_WIFI, FakeAddress);
    } else {
        qDebug() << "Wifi disconnected";
        m_systemPrivate->overrideNetworkState(D::ID_NETWORK_WIFI, INetwork::NETWORK_STATE_DISCONNECTED);
        m_systemPrivate->overrideIP(D::ID_NETWORK_WIFI, QString());
    }
}

void VantixDebug::stepWifiSignal()
{
    s_wifiSignal += 25;
    if (s_wifiSignal > 100) {
        s_wifiSignal = 0;
    }
    qDebug() << "Wifi signal strength:" << s_wifiSignal;
    m_systemPrivate->overrideWifiSignalStrength(s_wifiSignal);
}

void VantixDebug::toggleTestOffline()
{
    QCoreApplication *app = QCoreApplication::instance();
    const bool offline = !app->property("TestOffline").toBool();
    qDebug() << "Test offline:" << offline;
    app->setProperty("TestOffline", offline);
    NetworkManager::instance()->startCheckConnectivity();
}

} // namespace TQ_SPAPI

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

VantixDebug::ShortcutResult VantixDebug::runShortcut(int key, Qt::KeyboardModifiers modifiers)
{
    if (modifiers == Qt::KeypadModifier) {
        switch (key) {
        case Qt::Key_1:
        case Qt::Key_2:
        case Qt::Key_3:
        case Qt::Key_7:
        case Qt::Key_8:
            break;
        default:
            return ShortcutNone;
        }
        if (!m_systemPrivate) {
            return ShortcutSkipped;
        }
        switch (key) {
        case Qt::Key_1:
            qDebug() << "Start Low power";
            m_systemPrivate->overrideFuelGauge(D::ID_BATTERY_1ST, 15);
            break;
        case Qt::Key_2:
            qDebug() << "Start Critial power";
            m_systemPrivate->overrideFuelGauge(D::ID_BATTERY_1ST, 10);
            break;
        case Qt::Key_3:
            qDebug() << "Start Shutdown power";
            m_systemPrivate->overrideFuelGauge(D::ID_BATTERY_1ST, 5);
            break;
        case Qt::Key_7:
            stepNetworkCycle();
            break;
        default:
            stepWifiSignal();
            break;
        }
        return ShortcutConsumed;
    }
    const bool plain = modifiers == Qt::NoModifier;
    const bool f4 = key == Qt::Key_F4 && (plain || modifiers == Qt::ShiftModifier || modifiers == Qt::ControlModifier);
    if (!f4 && !(plain && (key == Qt::Key_F2 || key == Qt::Key_F3 || key == Qt::Key_F9))) {
        return ShortcutNone;
    }
    if (!m_systemPrivate) {
        return ShortcutSkipped;
    }
    switch (key) {
    case Qt::Key_F2:
        return toggleJack(IAudio::JACK_HEADPHONE) ? ShortcutConsumed : ShortcutSkipped;
    case Qt::Key_F3:
        return toggleJack(IAudio::JACK_MIC) ? ShortcutConsumed : ShortcutSkipped;
    case Qt::Key_F9:
        m_systemPrivate->overridePowerConnectedToggle(D::ID_POWER_SUPPLY);
        return ShortcutConsumed;
    default:
        break;
    }
    // F4 and Shift+F4 are passed on to the application as well.
    if (plain) {
        m_otgB ? rmOtgB() : addOtgB();
        return ShortcutPassedOn;
    }
    if (modifiers == Qt::ShiftModifier) {
        m_usb ? rmUsb() : addUsb();
        return ShortcutPassedOn;
    }
    toggleTestOffline();
    return ShortcutConsumed;
}

QList<VantixDebug::ShortcutInfo> VantixDebug::shortcuts()
{
    const Qt::KeyboardModifiers keypad = Qt::KeypadModifier;
    return {
        {Qt::Key_1, keypad, QStringLiteral("low power: the first battery at 15 %")},
        {Qt::Key_2, keypad, QStringLiteral("critical power: the first battery at 10 %")},
        {Qt::Key_3, keypad, QStringLiteral("shutdown power: the first battery at 5 %")},
        {Qt::Key_7, keypad, QStringLiteral("next step of the wired/Wi-Fi cycle")},
        {Qt::Key_8, keypad, QStringLiteral("Wi-Fi signal 25 % stronger, 0 after 100")},
        {Qt::Key_F2, Qt::NoModifier, QStringLiteral("plug or pull the headphone jack")},
        {Qt::Key_F3, Qt::NoModifier, QStringLiteral("plug or pull the microphone")},
        {Qt::Key_F4, Qt::NoModifier, QStringLiteral("plug or unplug USB OTG port B")},
        {Qt::Key_F4, Qt::ShiftModifier, QStringLiteral("plug or unplug the USB device")},
        {Qt::Key_F4, Qt::ControlModifier, QStringLiteral("toggle the offline test")},
        {Qt::Key_F9, Qt::NoModifier, QStringLiteral("connect or disconnect mains power")},
    };
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

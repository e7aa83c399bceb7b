#ifndef VANTIX_VANTIXDEBUG_H
#define VANTIX_VANTIXDEBUG_H

#include <vantix/iaudio.h>
#include <vantix/idevice.h>
#include <vantix/inetwork.h>
#include <vantix/vantix_export.h>

#include <QObject>
#include <QStringList>

class QKeyEvent;

namespace TQ_QBCom {
class ParameterController;
class QBParameter;
} // namespace TQ_QBCom

namespace TQ_SPAPI {

class SystemPrivate;

/**
 * Lets a developer drive the simulated hardware while an application runs:
 * text commands written to the parameter "VantixDebug", keyboard shortcuts
 * (install instance() as an event filter), and the operations below, which
 * test code may call directly. Every action ends in the system's own override
 * operations, so the application sees the devices' ordinary change signals.
 * One instance per process, never deleted by anyone.
 */
class VANTIX_EXPORT VantixDebug : public QObject
{
    Q_OBJECT

public:
    static VantixDebug *instance();

    /// What a debug command did, for callers that report it (a console, a remote client).
    enum CommandResult {
        CommandApplied, ///< carried out
        CommandEmpty, ///< no token: nothing to do
        CommandIllegal, ///< unknown word, or a required argument missing
        CommandNoSystem, ///< no System is initialised: nothing happened
        CommandDeviceMissing, ///< the device it acts on is absent or of another kind: nothing changed
        CommandDevicePresent, ///< it plugs a device that is already there: nothing changed
    };
    struct CommandOutcome
    {
        CommandResult result = CommandEmpty;
        /// The device the command acts on, where it names one.
        IDevice::DeviceId device = IDevice::ID_UNKNOWN_DEV;
    };
    /// One argument of a debug command, written after a comma.
    struct ArgumentInfo
    {
        enum Type {
            Integer, ///< a whole number; text that is no number is read as 0
            Real, ///< a number with a point as decimal separator; text that is no number is read as 0.0
            Text, ///< taken as it is, blanks included
            Choice, ///< one of choices
        };
        QString name;
        Type type;
        bool optional;
        QStringList choices;
    };
    /// A command word, its arguments, what it does, and a label short enough for a button.
    struct CommandInfo
    {
        QString word;
        QList<ArgumentInfo> arguments;
        QString help;
        QString label;
        /// The command as it is written: "setbatteryfuel[,1|2],<percent>".
        QString usage;
    };

    /**
     * Runs @p command exactly as a text written to the "VantixDebug"
     * parameter, log lines included, and tells what it did. Whether it
     * changed something is judged before it runs, from the devices present.
     * The parameter runs every text it gets through here.
     */
    CommandOutcome execute(const QString &command);
    /// The command words in the order they are matched.
    static QList<CommandInfo> commands();

    /// What a key release did.
    enum ShortcutResult {
        ShortcutNone, ///< no shortcut has this key and these modifiers
        ShortcutSkipped, ///< a shortcut, but no System or no device to act on
        ShortcutPassedOn, ///< carried out; the key goes on to the application
        ShortcutConsumed, ///< carried out; the key stops here
    };
    /**
     * The shortcut of a released key, given as plain values. The key event
     * handlers add the checks that only real key events need (spontaneous,
     * not auto-repeated), so that tools can press a key without building one.
     */
    ShortcutResult runShortcut(int key, Qt::KeyboardModifiers modifiers);
    /// A keyboard shortcut, what it does, and a label short enough for a button.
    struct ShortcutInfo
    {
        int key;
        Qt::KeyboardModifiers modifiers;
        QString help;
        QString label;
        /// Whether the key goes on to the application once the shortcut has run.
        bool passedOn;
    };
    static QList<ShortcutInfo> shortcuts();

    /// The folder whose contents stand for a plugged USB stick (@p index 0 is ID_DISK_USB).
    static QString usbStickFolder(int index = 0);

    /// Attaches the simulation that executes every action; done by System::initialize().
    void setSystemPrivate(SystemPrivate *p);
    /**
     * Detaches @p p if it is the attached one, forgetting what was plugged;
     * done when a System goes away. Static, and a no-op once the controller
     * itself is gone: a System whose application object lives in static
     * storage is destroyed after it, at process exit.
     */
    static void detachSystemPrivate(SystemPrivate *p);
    /**
     * Adds the parameter "VantixDebug" to @p controller; every text written
     * to it is run as a debug command. Each call adds one more parameter.
     */
    void setParameterController(TQ_QBCom::ParameterController &controller);

    bool eventFilter(QObject *watched, QEvent *event) override;
    bool onKeyPressEvent(QKeyEvent *event);
    /// Runs the shortcut of a released key; true when the key is consumed.
    bool onKeyReleaseEvent(QKeyEvent *event);

    // Hot-plug of the USB device and the two OTG ports.
    void addOtgA();
    void rmOtgA();
    void addOtgB();
    void rmOtgB();
    void addUsb();
    void rmUsb();

    // Overrides of simulated hardware; they do nothing while no System is initialised.
    void addBattery(IDevice::DeviceId id);
    void removeBattery(IDevice::DeviceId id);
    void overrideJack(IAudio::JackFlags flags);
    void overrideFuelGauge(IDevice::DeviceId id, int percent);
    void overrideChargeToggle(IDevice::DeviceId id);
    void overridePowerConnectedToggle(IDevice::DeviceId id);
    void overrideCurrent(IDevice::DeviceId id, double current);
    void overrideNetworkState(IDevice::DeviceId id, INetwork::NetworkState state);
    void overrideIP(IDevice::DeviceId id, const QString &ip);
    void overrideSSID(const QString &ssid);
    void overrideWifiChannel(int channel);
    void overrideWifiSignalStrength(int strength);
    void overrideWifiEnabled(bool enabled);
    void overrideWifiCountry(const QString &country);

    /// Plugs a device as the device list's factory builds it; null while no system is attached.
    IDevicePtr addDevice(IDevice::DeviceId id, IDevice::DeviceType type, const QString &path);
    /// Unplugs the device stored under @p id; nothing happens while no system is attached.
    void removeDevice(IDevice::DeviceId id);

private Q_SLOTS:
    // By reference: the meta-object still lists onVantixDebugChanged(QString),
    // and delivering a command copies no string.
    void onVantixDebugChanged(const QString &newValue);
    void onDeviceStatusChanged(TQ_SPAPI::IDevice::DeviceFlags deviceStatus);

private:
    VantixDebug();
    ~VantixDebug() override;

    /// A command text as read; the command grammar defines it.
    struct Command;
    struct CommandRow;
    struct ShortcutRow;
    static const CommandRow *commandRows(int *count);
    static const CommandRow *findRow(const Command &command);
    static const ShortcutRow *shortcutRows(int *count);
    CommandOutcome run(const QString &text, bool judged);
    CommandOutcome judge(const CommandRow &row, const Command &command) const;
    IDevicePtr plugOtgPort(IDevice::DeviceId id);
    /// Flips one jack bit of the audio device; false when there is no audio device.
    bool toggleJack(IAudio::JackFlag flag);
    void pressPowerButton(bool pressed);
    void setPowerLevel(const char *message, int percent);
    void stepNetworkCycle();
    void stepWifiSignal();
    void toggleTestOffline();
    IDevicePtr device(IDevice::DeviceId id) const;

    SystemPrivate *m_systemPrivate = nullptr;
    TQ_QBCom::QBParameter *m_parameter = nullptr;
    IDevicePtr m_otgA;
    IDevicePtr m_otgB;
    IDevicePtr m_usb;

    Q_DISABLE_COPY(VantixDebug)
};

} // namespace TQ_SPAPI

#endif

// The text commands of the debug controller, as written to the parameter "VantixDebug".
//
// A tool may write commands as fast as it likes, so reading one allocates
// nothing in the common case: the tokens are views into the text, and the
// command word is compared without making a lower-case copy of it.

#include <vantix/vantixdebug.h>

#include "systemprivate_p.h"

#include <qbcom/parametercontroller.h>
#include <qbcom/qbparameter.h>

#include <vantix/ibattery.h>
#include <vantix/ibutton.h>
#include <vantix/iwifi.h>

#include <QDebug>
#include <QStringView>

#include <utility>

namespace TQ_SPAPI {

namespace {
using D = IDevice;

// The grammar reads the command word and at most two arguments; later tokens are ignored.
constexpr int MaxArgs = 2;

// One command text as read: views of the command word and of the arguments the grammar uses.
struct ParsedCommand
{
    QStringView word;
    QStringView args[MaxArgs];
    int argCount = 0; // counted up to MaxArgs

    /**
     * Whether the word in lower case is @p name (lower-case ASCII letters).
     * For ASCII, lower case only maps A to Z, and t | 0x20 equals a letter
     * exactly for that letter and its capital.
     */
    bool is(const char *name) const
    {
        qsizetype i = 0;
        for (; name[i]; ++i) {
            if (i == word.size() || (word[i].unicode() | 0x20) != char16_t(name[i])) {
                return false;
            }
        }
        return i == word.size();
    }
    bool hasArg() const { return argCount > 0; }
};

// Splits at every comma and drops empty pieces. Nothing is trimmed:
// "addbattery, 2" names the battery " 2", not "2". False if no token is left.
bool parse(QStringView text, ParsedCommand &command)
{
    int tokens = 0;
    const QChar *const end = text.data() + text.size();
    for (const QChar *start = text.data();; ++start) {
        const QChar *stop = start;
        while (stop != end && *stop != QLatin1Char(',')) {
            ++stop;
        }
        if (stop != start) {
            const QStringView token(start, stop - start);
            if (tokens == 0) {
                command.word = token;
            } else {
                command.args[tokens - 1] = token;
                command.argCount = tokens;
            }
            ++tokens;
        }
        if (stop == end || tokens > MaxArgs) {
            break;
        }
        start = stop;
    }
    return tokens > 0;
}

bool isAscii(QStringView text)
{
    for (const QChar c : text) {
        if (c.unicode() >= 0x80) {
            return false;
        }
    }
    return true;
}

// The battery a selector names: the second only for exactly "2".
D::DeviceId batteryOf(const ParsedCommand &command)
{
    return command.hasArg() && command.args[0] == QLatin1String("2") ? D::ID_BATTERY_2ND : D::ID_BATTERY_1ST;
}

// Value commands read their tokens by count: "cmd,v" sets the first battery,
// "cmd,selector,v" the selected one. So "setbatteryfuel,2" means 2 percent.
struct BatteryValue
{
    D::DeviceId battery;
    QStringView value;
};

BatteryValue batteryValue(const ParsedCommand &command)
{
    if (command.argCount == 1) {
        return {D::ID_BATTERY_1ST, command.args[0]};
    }
    return {batteryOf(command), command.args[1]};
}

// QString::toInt(nullptr, 10): numbers that do not parse become 0 and are
// applied as such. Plain numbers of up to nine digits are read here; blanks,
// bigger and malformed numbers are left to Qt, which decides as it always did.
int toInt(QStringView text)
{
    qsizetype i = 0;
    bool negative = false;
    if (!text.isEmpty() && (text[0] == QLatin1Char('-') || text[0] == QLatin1Char('+'))) {
        negative = text[0] == QLatin1Char('-');
        i = 1;
    }
    const qsizetype digits = text.size() - i;
    if (digits >= 1 && digits <= 9) {
        int value = 0;
        for (; i < text.size(); ++i) {
            const char16_t c = text[i].unicode();
            if (c < u'0' || c > u'9') {
                return text.toString().toInt(nullptr, 10);
            }
            value = value * 10 + (c - u'0');
        }
        return negative ? -value : value;
    }
    return text.toString().toInt(nullptr, 10);
}

// QString::toDouble reads the C locale's point whatever the system locale.
double toDouble(QStringView text)
{
    return text.toString().toDouble();
}

QString optional(const ParsedCommand &command)
{
    return command.hasArg() ? command.args[0].toString() : QString();
}

// What a command needs of the device it acts on, for reporting what it did.
enum class Need { Nothing, Present, Absent };

template<typename Kind>
bool isA(const IDevice *device)
{
    return qobject_cast<const Kind *>(device) != nullptr;
}

bool isAny(const IDevice *)
{
    return true;
}

D::DeviceId lan(const ParsedCommand &)
{
    return D::ID_NETWORK_LAN;
}

D::DeviceId wifi(const ParsedCommand &)
{
    return D::ID_NETWORK_WIFI;
}

D::DeviceId batteryOfValue(const ParsedCommand &command)
{
    return batteryValue(command).battery;
}

template<D::DeviceId Id>
D::DeviceId fixed(const ParsedCommand &)
{
    return Id;
}
} // namespace

struct VantixDebug::Command : ParsedCommand
{
};

// One row per command word, in the order words are matched. A word whose
// required argument is missing matches no row.
struct VantixDebug::CommandRow
{
    const char *word;
    const char *arguments;
    const char *help;
    bool argumentRequired;
    Need need;
    D::DeviceId (*device)(const ParsedCommand &);
    bool (*isKind)(const IDevice *);
    void (*perform)(VantixDebug &debug, const Command &command);
};

const VantixDebug::CommandRow *VantixDebug::commandRows(int *count)
{
    using V = VantixDebug;
    using C = Command;
    static const CommandRow rows[] = {
        {"addbattery", "[,1|2]", "plug the first or the second battery", false, Need::Absent, batteryOf, isAny,
            [](V &d, const C &c) { d.addBattery(batteryOf(c)); }},
        {"rmbattery", "[,1|2]", "unplug a battery", false, Need::Present, batteryOf, isAny,
            [](V &d, const C &c) { d.removeBattery(batteryOf(c)); }},
        {"setbatteryfuel", "[,1|2],<percent>", "set a battery's fuel gauge", true, Need::Present, batteryOfValue,
            isA<IBattery>,
            [](V &d, const C &c) {
                const BatteryValue v = batteryValue(c);
                d.overrideFuelGauge(v.battery, toInt(v.value));
            }},
        {"togglecharging", "[,1|2]", "toggle a battery's charging", false, Need::Present, batteryOf, isA<IBattery>,
            [](V &d, const C &c) { d.overrideChargeToggle(batteryOf(c)); }},
        {"setbatterycurrent", "[,1|2],<ampere>", "set a battery's current", true, Need::Present, batteryOfValue,
            isA<IBattery>,
            [](V &d, const C &c) {
                const BatteryValue v = batteryValue(c);
                d.overrideCurrent(v.battery, toDouble(v.value));
            }},
        {"setwiredstate", ",<network state 0-12>", "set the wired network's state", true, Need::Present, lan,
            isA<INetwork>,
            [](V &d, const C &c) {
                d.overrideNetworkState(D::ID_NETWORK_LAN, INetwork::NetworkState(toInt(c.args[0])));
            }},
        {"setwifistate", ",<network state 0-12>", "set the Wi-Fi's state", true, Need::Present, wifi, isA<INetwork>,
            [](V &d, const C &c) {
                d.overrideNetworkState(D::ID_NETWORK_WIFI, INetwork::NetworkState(toInt(c.args[0])));
            }},
        {"setwiredip", "[,<address>]", "set the wired address text (empty without one)", false, Need::Present, lan,
            isA<INetwork>, [](V &d, const C &c) { d.overrideIP(D::ID_NETWORK_LAN, optional(c)); }},
        {"setwifiip", "[,<address>]", "set the Wi-Fi address text (empty without one)", false, Need::Present, wifi,
            isA<INetwork>, [](V &d, const C &c) { d.overrideIP(D::ID_NETWORK_WIFI, optional(c)); }},
        {"setssid", "[,<ssid>]", "set the Wi-Fi SSID (empty without one)", false, Need::Present, wifi, isA<IWifi>,
            [](V &d, const C &c) { d.overrideSSID(optional(c)); }},
        {"setwifichannel", ",<channel>", "set the Wi-Fi channel", true, Need::Present, wifi, isA<IWifi>,
            [](V &d, const C &c) { d.overrideWifiChannel(toInt(c.args[0])); }},
        {"setwifisignalstrength", ",<percent>", "set the Wi-Fi signal strength", true, Need::Present, wifi, isA<IWifi>,
            [](V &d, const C &c) { d.overrideWifiSignalStrength(toInt(c.args[0])); }},
        {"enablewifi", "", "switch the Wi-Fi on", false, Need::Present, wifi, isA<IWifi>,
            [](V &d, const C &) { d.overrideWifiEnabled(true); }},
        {"disablewifi", "", "switch the Wi-Fi off", false, Need::Present, wifi, isA<IWifi>,
            [](V &d, const C &) { d.overrideWifiEnabled(false); }},
        {"setwificountry", ",<country code>", "set the Wi-Fi country code", true, Need::Present, wifi, isA<IWifi>,
            [](V &d, const C &c) { d.overrideWifiCountry(c.args[0].toString()); }},
        {"addotgb", "", "plug USB OTG port B", false, Need::Absent, fixed<D::ID_USB_OTG_B>, isAny,
            [](V &d, const C &) { d.addOtgB(); }},
        {"activateotgb", "", "connect port B to a host: the user data is unmounted", false, Need::Present,
            fixed<D::ID_USB_OTG_B>, isAny,
            [](V &d, const C &) {
                if (d.m_otgB) {
                    d.m_otgB->setAbility(D::F_ACTIVE);
                }
            }},
        {"rmotgb", "", "unplug USB OTG port B", false, Need::Present, fixed<D::ID_USB_OTG_B>, isAny,
            [](V &d, const C &) { d.rmOtgB(); }},
        {"addotga", "", "plug USB OTG port A; once active it brings a USB stick", false, Need::Absent,
            fixed<D::ID_USB_OTG_A>, isAny, [](V &d, const C &) { d.addOtgA(); }},
        {"rmotga", "", "unplug USB OTG port A and its stick", false, Need::Present, fixed<D::ID_USB_OTG_A>, isAny,
            [](V &d, const C &) { d.rmOtgA(); }},
        {"pwrpress", "", "press the power button", false, Need::Present, fixed<D::ID_BUTTON_POWER>, isA<IButton>,
            [](V &d, const C &) { d.pressPowerButton(true); }},
        {"pwrrelase", "", "release the power button", false, Need::Present, fixed<D::ID_BUTTON_POWER>, isA<IButton>,
            [](V &d, const C &) { d.pressPowerButton(false); }},
        {"jack", "", "plug or pull the headphone jack", false, Need::Present, fixed<D::ID_AUDIO>, isA<IAudio>,
            [](V &d, const C &) { d.toggleJack(IAudio::JACK_HEADPHONE); }},
        {"mic", "", "plug or pull the microphone", false, Need::Present, fixed<D::ID_AUDIO>, isA<IAudio>,
            [](V &d, const C &) { d.toggleJack(IAudio::JACK_MIC); }},
    };
    *count = int(sizeof rows / sizeof rows[0]);
    return rows;
}

const VantixDebug::CommandRow *VantixDebug::findRow(const Command &command)
{
    int count = 0;
    const CommandRow *rows = commandRows(&count);
    for (int i = 0; i < count; ++i) {
        if (command.is(rows[i].word) && (!rows[i].argumentRequired || command.hasArg())) {
            return &rows[i];
        }
    }
    return nullptr;
}

QList<VantixDebug::CommandInfo> VantixDebug::commands()
{
    int count = 0;
    const CommandRow *rows = commandRows(&count);
    QList<CommandInfo> result;
    for (int i = 0; i < count; ++i) {
        result.append({QLatin1String(rows[i].word), QLatin1String(rows[i].arguments), QLatin1String(rows[i].help)});
    }
    return result;
}

void VantixDebug::setParameterController(TQ_QBCom::ParameterController &controller)
{
    auto *parameter = new TQ_QBCom::QBParameter(QStringLiteral("VantixDebug"), QVariant(QString()), QVariant());
    m_parameter = controller.addParameter(parameter);
    connect(m_parameter, &TQ_QBCom::QBParameter::valueChanged, this, &VantixDebug::onVantixDebugChanged);
}

void VantixDebug::onVantixDebugChanged(const QString &newValue)
{
    if (!run(newValue, m_outcome)) {
        // The printf form writes the same record without a debug stream to build.
        qDebug("Illegal command");
    }
}

// Through the parameter's own slot, so that the command and its log record
// are the same whichever way it came.
VantixDebug::CommandOutcome VantixDebug::execute(const QString &command)
{
    CommandOutcome outcome;
    CommandOutcome *const outer = std::exchange(m_outcome, &outcome);
    onVantixDebugChanged(command);
    m_outcome = outer;
    return outcome;
}

// The one way a command text is carried out; false for an illegal command.
// With @p outcome, what the command will do is judged first; the parameter's
// own path skips that.
bool VantixDebug::run(const QString &text, CommandOutcome *outcome)
{
    Command command;
    if (!parse(text, command)) {
        return true;
    }
    const CommandRow *row = findRow(command);
    QString lower;
    if (!row && !isAscii(command.word)) {
        // Qt's full case mapping may still make a command word of it (KELVIN SIGN lowers to 'k').
        lower = command.word.toString().toLower();
        if (isAscii(lower)) {
            command.word = lower;
            row = findRow(command);
        }
    }
    if (!row) {
        if (outcome) {
            outcome->result = CommandIllegal;
        }
        return false;
    }
    if (outcome) {
        *outcome = judge(*row, command);
    }
    row->perform(*this, command);
    return true;
}

VantixDebug::CommandOutcome VantixDebug::judge(const CommandRow &row, const Command &command) const
{
    CommandOutcome outcome;
    outcome.result = CommandApplied;
    outcome.device = row.device ? row.device(command) : IDevice::ID_UNKNOWN_DEV;
    if (!m_systemPrivate) {
        outcome.result = CommandNoSystem;
        return outcome;
    }
    const IDevicePtr target = row.need == Need::Nothing ? IDevicePtr() : device(outcome.device);
    if (row.need == Need::Absent && target) {
        outcome.result = CommandDevicePresent;
    } else if (row.need == Need::Present && (!target || !row.isKind(target.data()))) {
        outcome.result = CommandDeviceMissing;
    }
    return outcome;
}

} // namespace TQ_SPAPI

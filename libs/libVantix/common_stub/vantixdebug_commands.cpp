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

// The function an "Illegal command" record names.
#ifdef QT_MESSAGELOGCONTEXT
constexpr const char *IllegalCommandContext = "void TQ_SPAPI::VantixDebug::onVantixDebugChanged(const QString&)";
#else
constexpr const char *IllegalCommandContext = nullptr;
#endif
} // namespace

struct VantixDebug::Command : ParsedCommand
{
};

namespace {
using A = VantixDebug::ArgumentInfo;

// An argument as a row declares it; choices are written "1|2".
struct ArgumentRow
{
    const char *name;
    A::Type type;
    bool optional;
    const char *choices;
};

constexpr ArgumentRow Battery{"battery", A::Choice, true, "1|2"};
constexpr ArgumentRow NoArgument{nullptr, A::Text, true, nullptr};
} // namespace

// One row per command word, in the order words are matched: the word, its
// arguments, what it does in a few words and in a sentence, and how it is
// carried out. A word whose required argument is missing matches no row.
struct VantixDebug::CommandRow
{
    const char *word;
    ArgumentRow arguments[MaxArgs];
    const char *label;
    const char *help;
    Need need;
    D::DeviceId (*device)(const ParsedCommand &);
    bool (*isKind)(const IDevice *);
    void (*perform)(VantixDebug &debug, const Command &command);

    // Every required argument comes first or after the battery, so one token is enough for any row.
    bool needsArgument() const
    {
        for (const ArgumentRow &argument : arguments) {
            if (argument.name && !argument.optional) {
                return true;
            }
        }
        return false;
    }
};

const VantixDebug::CommandRow *VantixDebug::commandRows(int *count)
{
    using V = VantixDebug;
    using C = Command;
    constexpr ArgumentRow None = NoArgument;
    static const CommandRow rows[] = {
        {"addbattery", {Battery, None}, "Plug battery", "plug the first or the second battery", Need::Absent, batteryOf,
            isAny, [](V &d, const C &c) { d.addBattery(batteryOf(c)); }},
        {"rmbattery", {Battery, None}, "Unplug battery", "unplug a battery", Need::Present, batteryOf, isAny,
            [](V &d, const C &c) { d.removeBattery(batteryOf(c)); }},
        {"setbatteryfuel", {Battery, {"percent", A::Integer, false, nullptr}}, "Set battery fuel",
            "set a battery's fuel gauge", Need::Present, batteryOfValue, isA<IBattery>,
            [](V &d, const C &c) {
                const BatteryValue v = batteryValue(c);
                d.overrideFuelGauge(v.battery, toInt(v.value));
            }},
        {"togglecharging", {Battery, None}, "Toggle charging", "toggle a battery's charging", Need::Present, batteryOf,
            isA<IBattery>, [](V &d, const C &c) { d.overrideChargeToggle(batteryOf(c)); }},
        {"setbatterycurrent", {Battery, {"ampere", A::Real, false, nullptr}}, "Set battery current",
            "set a battery's current", Need::Present, batteryOfValue, isA<IBattery>,
            [](V &d, const C &c) {
                const BatteryValue v = batteryValue(c);
                d.overrideCurrent(v.battery, toDouble(v.value));
            }},
        {"setwiredstate", {{"state", A::Integer, false, nullptr}, None}, "Set wired state",
            "set the wired network's state (0 to 12, as INetwork::NetworkState)", Need::Present, lan, isA<INetwork>,
            [](V &d, const C &c) {
                d.overrideNetworkState(D::ID_NETWORK_LAN, INetwork::NetworkState(toInt(c.args[0])));
            }},
        {"setwifistate", {{"state", A::Integer, false, nullptr}, None}, "Set Wi-Fi state",
            "set the Wi-Fi's state (0 to 12, as INetwork::NetworkState)", Need::Present, wifi, isA<INetwork>,
            [](V &d, const C &c) {
                d.overrideNetworkState(D::ID_NETWORK_WIFI, INetwork::NetworkState(toInt(c.args[0])));
            }},
        {"setwiredip", {{"address", A::Text, true, nullptr}, None}, "Set wired address",
            "set the wired address text (empty without one)", Need::Present, lan, isA<INetwork>,
            [](V &d, const C &c) { d.overrideIP(D::ID_NETWORK_LAN, optional(c)); }},
        {"setwifiip", {{"address", A::Text, true, nullptr}, None}, "Set Wi-Fi address",
            "set the Wi-Fi address text (empty without one)", Need::Present, wifi, isA<INetwork>,
            [](V &d, const C &c) { d.overrideIP(D::ID_NETWORK_WIFI, optional(c)); }},
        {"setssid", {{"ssid", A::Text, true, nullptr}, None}, "Set Wi-Fi SSID",
            "set the Wi-Fi SSID (empty without one)", Need::Present, wifi, isA<IWifi>,
            [](V &d, const C &c) { d.overrideSSID(optional(c)); }},
        {"setwifichannel", {{"channel", A::Integer, false, nullptr}, None}, "Set Wi-Fi channel",
            "set the Wi-Fi channel", Need::Present, wifi, isA<IWifi>,
            [](V &d, const C &c) { d.overrideWifiChannel(toInt(c.args[0])); }},
        {"setwifisignalstrength", {{"percent", A::Integer, false, nullptr}, None}, "Set Wi-Fi signal",
            "set the Wi-Fi signal strength", Need::Present, wifi, isA<IWifi>,
            [](V &d, const C &c) { d.overrideWifiSignalStrength(toInt(c.args[0])); }},
        {"enablewifi", {None, None}, "Switch Wi-Fi on", "switch the Wi-Fi on", Need::Present, wifi, isA<IWifi>,
            [](V &d, const C &) { d.overrideWifiEnabled(true); }},
        {"disablewifi", {None, None}, "Switch Wi-Fi off", "switch the Wi-Fi off", Need::Present, wifi, isA<IWifi>,
            [](V &d, const C &) { d.overrideWifiEnabled(false); }},
        {"setwificountry", {{"code", A::Text, false, nullptr}, None}, "Set Wi-Fi country", "set the Wi-Fi country code",
            Need::Present, wifi, isA<IWifi>, [](V &d, const C &c) { d.overrideWifiCountry(c.args[0].toString()); }},
        {"addotgb", {None, None}, "Plug USB OTG port B", "plug USB OTG port B", Need::Absent, fixed<D::ID_USB_OTG_B>,
            isAny, [](V &d, const C &) { d.addOtgB(); }},
        {"activateotgb", {None, None}, "Connect port B to a host",
            "connect port B to a host: the user data is unmounted", Need::Present, fixed<D::ID_USB_OTG_B>, isAny,
            [](V &d, const C &) {
                if (d.m_otgB) {
                    d.m_otgB->setAbility(D::F_ACTIVE);
                }
            }},
        {"rmotgb", {None, None}, "Unplug USB OTG port B", "unplug USB OTG port B", Need::Present,
            fixed<D::ID_USB_OTG_B>, isAny, [](V &d, const C &) { d.rmOtgB(); }},
        {"addotga", {None, None}, "Plug USB OTG port A", "plug USB OTG port A; once active it brings a USB stick",
            Need::Absent, fixed<D::ID_USB_OTG_A>, isAny, [](V &d, const C &) { d.addOtgA(); }},
        {"rmotga", {None, None}, "Unplug USB OTG port A", "unplug USB OTG port A and its stick", Need::Present,
            fixed<D::ID_USB_OTG_A>, isAny, [](V &d, const C &) { d.rmOtgA(); }},
        {"pwrpress", {None, None}, "Press power button", "press the power button", Need::Present,
            fixed<D::ID_BUTTON_POWER>, isA<IButton>, [](V &d, const C &) { d.pressPowerButton(true); }},
        {"pwrrelase", {None, None}, "Release power button", "release the power button", Need::Present,
            fixed<D::ID_BUTTON_POWER>, isA<IButton>, [](V &d, const C &) { d.pressPowerButton(false); }},
        {"jack", {None, None}, "Headphones in or out", "plug or pull the headphone jack", Need::Present,
            fixed<D::ID_AUDIO>, isA<IAudio>, [](V &d, const C &) { d.toggleJack(IAudio::JACK_HEADPHONE); }},
        {"mic", {None, None}, "Microphone in or out", "plug or pull the microphone", Need::Present, fixed<D::ID_AUDIO>,
            isA<IAudio>, [](V &d, const C &) { d.toggleJack(IAudio::JACK_MIC); }},
    };
    *count = int(sizeof rows / sizeof rows[0]);
    return rows;
}

const VantixDebug::CommandRow *VantixDebug::findRow(const Command &command)
{
    int count = 0;
    const CommandRow *rows = commandRows(&count);
    for (int i = 0; i < count; ++i) {
        if (command.is(rows[i].word) && (!rows[i].needsArgument() || command.hasArg())) {
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
        const CommandRow &row = rows[i];
        CommandInfo info{
            QLatin1String(row.word), {}, QLatin1String(row.help), QLatin1String(row.label), QLatin1String(row.word)};
        for (const ArgumentRow &argument : row.arguments) {
            if (!argument.name) {
                continue;
            }
            const QStringList choices =
                argument.choices ? QString::fromLatin1(argument.choices).split(QLatin1Char('|')) : QStringList();
            info.arguments.append({QLatin1String(argument.name), argument.type, argument.optional, choices});
            const QString shown = choices.isEmpty() ? QStringLiteral("<%1>").arg(QLatin1String(argument.name))
                                                    : QLatin1String(argument.choices);
            info.usage += argument.optional ? QStringLiteral("[,%1]").arg(shown) : QLatin1Char(',') + shown;
        }
        result.append(info);
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
    // Nobody reads what a parameter's command did: it is not judged.
    run(newValue, false);
}

VantixDebug::CommandOutcome VantixDebug::execute(const QString &text)
{
    return run(text, true);
}

// The one way a command text is read and carried out, whichever way it came.
// With @p judged, what it will do is judged first, from the devices present.
VantixDebug::CommandOutcome VantixDebug::run(const QString &text, bool judged)
{
    CommandOutcome outcome;
    Command command;
    if (!parse(text, command)) {
        return outcome;
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
        // The record names the parameter's slot, where a command text arrives,
        // whether it came through the parameter or from a tool. The printf
        // form writes it without a debug stream to build.
        QMessageLogger(QT_MESSAGELOG_FILE, QT_MESSAGELOG_LINE, IllegalCommandContext).debug("Illegal command");
        outcome.result = CommandIllegal;
        return outcome;
    }
    outcome.result = CommandApplied;
    if (judged) {
        outcome = judge(*row, command);
    }
    row->perform(*this, command);
    return outcome;
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

// The text commands of the debug controller, as written to the parameter "VantixDebug".
//
// A tool may write commands as fast as it likes, so reading one allocates
// nothing in the common case: the tokens are views into the text, and the
// command word is compared without making a lower-case copy of it.

#include "vantixdebug.h"

#include <qbcom/parametercontroller.h>
#include <qbcom/qbparameter.h>

#include <QDebug>
#include <QStringView>

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
    template<int N>
    bool is(const char (&name)[N]) const
    {
        if (word.size() != N - 1) {
            return false;
        }
        for (int i = 0; i < N - 1; ++i) {
            if ((word[i].unicode() | 0x20) != char16_t(name[i])) {
                return false;
            }
        }
        return true;
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
} // namespace

struct VantixDebug::Command : ParsedCommand
{
};

void VantixDebug::setParameterController(TQ_QBCom::ParameterController &controller)
{
    auto *parameter = new TQ_QBCom::QBParameter(QStringLiteral("VantixDebug"), QVariant(QString()), QVariant());
    m_parameter = controller.addParameter(parameter);
    connect(m_parameter, &TQ_QBCom::QBParameter::valueChanged, this, &VantixDebug::onVantixDebugChanged);
}

void VantixDebug::onVantixDebugChanged(const QString &newValue)
{
    Command command;
    if (!parse(newValue, command)) {
        return;
    }
    bool known = runCommand(command);
    if (!known && !isAscii(command.word)) {
        // Qt's full case mapping may still make a command word of it (KELVIN SIGN lowers to 'k').
        const QString lower = command.word.toString().toLower();
        if (isAscii(lower)) {
            command.word = lower;
            known = runCommand(command);
        }
    }
    if (!known) {
        // The printf form writes the same record without a debug stream to build.
        qDebug("Illegal command");
    }
}

// Each word names one command; one lacking a required argument matches nothing.
bool VantixDebug::runCommand(const Command &c)
{
    if (c.is("addbattery")) {
        addBattery(batteryOf(c));
    } else if (c.is("rmbattery")) {
        removeBattery(batteryOf(c));
    } else if (c.is("setbatteryfuel") && c.hasArg()) {
        const BatteryValue v = batteryValue(c);
        overrideFuelGauge(v.battery, toInt(v.value));
    } else if (c.is("togglecharging")) {
        overrideChargeToggle(batteryOf(c));
    } else if (c.is("setbatterycurrent") && c.hasArg()) {
        const BatteryValue v = batteryValue(c);
        overrideCurrent(v.battery, toDouble(v.value));
    } else if (c.is("setwiredstate") && c.hasArg()) {
        overrideNetworkState(D::ID_NETWORK_LAN, INetwork::NetworkState(toInt(c.args[0])));
    } else if (c.is("setwifistate") && c.hasArg()) {
        overrideNetworkState(D::ID_NETWORK_WIFI, INetwork::NetworkState(toInt(c.args[0])));
    } else if (c.is("setwiredip")) {
        overrideIP(D::ID_NETWORK_LAN, optional(c));
    } else if (c.is("setwifiip")) {
        overrideIP(D::ID_NETWORK_WIFI, optional(c));
    } else if (c.is("setssid")) {
        overrideSSID(optional(c));
    } else if (c.is("setwifichannel") && c.hasArg()) {
        overrideWifiChannel(toInt(c.args[0]));
    } else if (c.is("setwifisignalstrength") && c.hasArg()) {
        overrideWifiSignalStrength(toInt(c.args[0]));
    } else if (c.is("enablewifi")) {
        overrideWifiEnabled(true);
    } else if (c.is("disablewifi")) {
        overrideWifiEnabled(false);
    } else if (c.is("setwificountry") && c.hasArg()) {
        overrideWifiCountry(c.args[0].toString());
    } else if (c.is("addotgb")) {
        addOtgB();
    } else if (c.is("activateotgb")) {
        if (m_otgB) {
            m_otgB->setAbility(D::F_ACTIVE);
        }
    } else if (c.is("rmotgb")) {
        rmOtgB();
    } else if (c.is("addotga")) {
        addOtgA();
    } else if (c.is("rmotga")) {
        rmOtgA();
    } else if (c.is("pwrpress")) {
        pressPowerButton(true);
    } else if (c.is("pwrrelase")) {
        pressPowerButton(false);
    } else if (c.is("jack")) {
        toggleJack(IAudio::JACK_HEADPHONE);
    } else if (c.is("mic")) {
        toggleJack(IAudio::JACK_MIC);
    } else {
        return false;
    }
    return true;
}

} // namespace TQ_SPAPI

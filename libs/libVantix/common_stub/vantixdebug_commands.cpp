// The text commands of the debug controller, as written to the parameter "VantixDebug".

#include "vantixdebug.h"

#include <qbcom/parametercontroller.h>
#include <qbcom/qbparameter.h>

#include <QDebug>

namespace TQ_SPAPI {

namespace {
using D = IDevice;

// The battery a selector names: the second only for exactly "2".
D::DeviceId batteryOf(const QStringList &args)
{
    return !args.isEmpty() && args.first() == QLatin1String("2") ? D::ID_BATTERY_2ND : D::ID_BATTERY_1ST;
}

// Value commands read their tokens by count: "cmd,v" sets the first battery,
// "cmd,selector,v" the selected one. So "setbatteryfuel,2" means 2 percent.
struct BatteryValue
{
    D::DeviceId battery;
    QString value;
};

BatteryValue batteryValue(const QStringList &args)
{
    if (args.size() == 1) {
        return {D::ID_BATTERY_1ST, args.first()};
    }
    return {batteryOf(args), args.at(1)};
}

// Numbers that do not parse become 0 and are applied as such.
int toInt(const QString &text)
{
    return text.toInt(nullptr, 10);
}

// QString::toDouble reads the C locale's point whatever the system locale.
double toDouble(const QString &text)
{
    return text.toDouble();
}

QString optional(const QStringList &args)
{
    return args.isEmpty() ? QString() : args.first();
}
} // namespace

void VantixDebug::setParameterController(TQ_QBCom::ParameterController &controller)
{
    auto *parameter = new TQ_QBCom::QBParameter(QStringLiteral("VantixDebug"), QVariant(QString()), QVariant());
    m_parameter = controller.addParameter(parameter);
    connect(m_parameter, &TQ_QBCom::QBParameter::valueChanged, this, &VantixDebug::onVantixDebugChanged);
}

void VantixDebug::onVantixDebugChanged(QString newValue)
{
    // Blanks are kept: "addbattery, 2" names the battery " 2", not "2".
    const QStringList tokens = newValue.split(QLatin1Char(','), Qt::SkipEmptyParts);
    if (tokens.isEmpty()) {
        return;
    }
    if (!runCommand(tokens.first().toLower(), tokens.mid(1))) {
        qDebug() << "Illegal command";
    }
}

// Compared in order; a command lacking a required argument matches nothing.
bool VantixDebug::runCommand(const QString &command, const QStringList &args)
{
    const auto is = [&command](const char *word) { return command == QLatin1String(word); };
    const bool hasArg = !args.isEmpty();

    if (is("addbattery")) {
        addBattery(batteryOf(args));
    } else if (is("rmbattery")) {
        removeBattery(batteryOf(args));
    } else if (is("setbatteryfuel") && hasArg) {
        const BatteryValue v = batteryValue(args);
        overrideFuelGauge(v.battery, toInt(v.value));
    } else if (is("togglecharging")) {
        overrideChargeToggle(batteryOf(args));
    } else if (is("setbatterycurrent") && hasArg) {
        const BatteryValue v = batteryValue(args);
        overrideCurrent(v.battery, toDouble(v.value));
    } else if (is("setwiredstate") && hasArg) {
        overrideNetworkState(D::ID_NETWORK_LAN, INetwork::NetworkState(toInt(args.first())));
    } else if (is("setwifistate") && hasArg) {
        overrideNetworkState(D::ID_NETWORK_WIFI, INetwork::NetworkState(toInt(args.first())));
    } else if (is("setwiredip")) {
        overrideIP(D::ID_NETWORK_LAN, optional(args));
    } else if (is("setwifiip")) {
        overrideIP(D::ID_NETWORK_WIFI, optional(args));
    } else if (is("setssid")) {
        overrideSSID(optional(args));
    } else if (is("setwifichannel") && hasArg) {
        overrideWifiChannel(toInt(args.first()));
    } else if (is("setwifisignalstrength") && hasArg) {
        overrideWifiSignalStrength(toInt(args.first()));
    } else if (is("enablewifi")) {
        overrideWifiEnabled(true);
    } else if (is("disablewifi")) {
        overrideWifiEnabled(false);
    } else if (is("setwificountry") && hasArg) {
        overrideWifiCountry(args.first());
    } else if (is("addotgb")) {
        addOtgB();
    } else if (is("activateotgb")) {
        if (m_otgB) {
            m_otgB->setAbility(D::F_ACTIVE);
        }
    } else if (is("rmotgb")) {
        rmOtgB();
    } else if (is("addotga")) {
        addOtgA();
    } else if (is("rmotga")) {
        rmOtgA();
    } else if (is("pwrpress")) {
        pressPowerButton(true);
    } else if (is("pwrrelase")) {
        pressPowerButton(false);
    } else if (is("jack")) {
        toggleJack(IAudio::JACK_HEADPHONE);
    } else if (is("mic")) {
        toggleJack(IAudio::JACK_MIC);
    } else {
        return false;
    }
    return true;
}

} // namespace TQ_SPAPI

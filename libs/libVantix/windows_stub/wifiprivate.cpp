#include "wifiprivate_p.h"

#include "accesspointprivate_p.h"

#include <QDebug>
#include <QStringList>

#include <cstdlib>

namespace TQ_SPAPI {

namespace {
// The host does not tell the radio values; these stand in for them.
constexpr int ActiveChannel = 8;
constexpr int FirstStrength = 80; // plus 0..19 when a network becomes active
// An update finds, loses or re-measures a network with one chance in this many.
constexpr int ScanOdds = 20;

const QLatin1String AdhocSsid("Bravent");
constexpr int AdhocChannel = 1;

// The remainder of a fresh random number divided by n.
int random(int n)
{
    return std::rand() % n;
}
} // namespace

bool WifiPrivate::firstUpdate = true;

WifiPrivate::WifiPrivate(IWifi *q, IDevice::DeviceId id)
    : NetworkPrivate(q, id, IDevice::DEVICE_NETWORK | IDevice::DEVICE_FIGHT_MODE)
    // Parented, so tools walking the device's objects find the model.
    , accessPoints(this)
{
    // The radio scans from power-on; nobody is listening yet.
    status |= IDevice::F_ENABLESCANNING;
}

WifiPrivate::~WifiPrivate() = default;

void WifiPrivate::switchBit(IDevice::Flags flags, IDevice::Flags bit, bool on)
{
    if (!(flags & bit) || status.testFlag(bit) == on) {
        return;
    }
    setStatus(on ? status | bit : status & ~IDevice::DeviceFlags(bit));
}

void WifiPrivate::setAbility(IDevice::Flags flags)
{
    switchBit(flags, IDevice::F_ENABLE, true);
    switchBit(flags, IDevice::F_ENABLESCANNING, true);
}

void WifiPrivate::clearAbility(IDevice::Flags flags)
{
    switchBit(flags, IDevice::F_ENABLE, false);
    switchBit(flags, IDevice::F_ENABLESCANNING, false);
}

void WifiPrivate::initialize()
{
    setAbility(IDevice::F_ENABLE);
    NetworkPrivate::initialize();
    updateWifiInfo();
    if (configurations) {
        // Kept after an override: a change on the host is news worth showing.
        connect(configurations, &NetworkConfigurations::configurationChanged, this, &WifiPrivate::updateInfo,
            Qt::UniqueConnection);
        connect(configurations, &NetworkConfigurations::configurationRemoved, this, &WifiPrivate::updateInfo,
            Qt::UniqueConnection);
        connect(configurations, &NetworkConfigurations::updateCompleted, this, &WifiPrivate::updateInfo,
            Qt::UniqueConnection);
        configurations->updateConfigurations();
    }
}

void WifiPrivate::findInterface()
{
    interfaceIndex = firstInterfaceIndex(QLatin1String("wlan"));
}

void WifiPrivate::updateInfo()
{
    NetworkPrivate::updateInfo();
    updateWifiInfo();
}

int WifiPrivate::rowOf(const QString &ssid) const
{
    for (int row = 0; row < accessPoints.count(); ++row) {
        if (accessPoints.at(row)->ssid() == ssid) {
            return row;
        }
    }
    return -1;
}

IAccessPoint *WifiPrivate::createAccessPoint(const QString &ssid)
{
    auto *accessPoint = new IAccessPoint(this);
    AccessPointPrivate *ap = AccessPointPrivate::get(accessPoint);
    QStringList octets;
    for (int i = 0; i < 6; ++i) {
        octets.append(QString::asprintf("%02x", random(255)));
    }
    ap->mac = octets.join(QLatin1Char(':'));
    ap->ssid = ssid;
    ap->channel = 1 + random(13);
    // Not derived from the channel: nothing reads the two together here.
    ap->frequency = 2411 + random(100);
    ap->signalStrength = 20 + random(80);
    ap->secure = true;
    return accessPoint;
}

void WifiPrivate::updateWifiInfo()
{
    QString newSsid;
    int newStrength = 0;
    int newChannel = 0;

    const QList<NetworkConfigurations::Configuration> all =
        configurations ? configurations->allConfigurations() : QList<NetworkConfigurations::Configuration>();
    for (const NetworkConfigurations::Configuration &configuration : all) {
        if (!configuration.wlan) {
            continue;
        }
        if (configuration.active) {
            newSsid = configuration.name;
            newChannel = ActiveChannel;
            newStrength = wifiSignalStrength != 0 ? qBound(0, wifiSignalStrength + random(3) - 1, 100)
                                                  : FirstStrength + random(20);
        }
        if (!configuration.defined) {
            continue;
        }

        const int row = rowOf(configuration.name);
        if (row >= 0) {
            // The network in use never goes out of range.
            if (random(ScanOdds) < 1 && !configuration.active) {
                IAccessPoint *gone = accessPoints.at(row);
                accessPoints.removeAt(row);
                gone->deleteLater();
            } else if (random(ScanOdds) == 0) {
                AccessPointPrivate *ap = AccessPointPrivate::get(accessPoints.at(row));
                ap->signalStrength = qBound(0, ap->signalStrength + random(9) - 4, 100);
                Q_EMIT accessPoints.dataChanged(row);
            }
            continue;
        }

        if (!firstUpdate && random(ScanOdds) != 0) {
            continue;
        }
        IAccessPoint *found = createAccessPoint(configuration.name);
        if (configuration.active) {
            accessPoints.insert(0, found);
        } else {
            accessPoints.append(found);
        }
    }

    if (newSsid != wifiSsid) {
        wifiSsid = newSsid;
        Q_EMIT wifi()->wifiSsidChanged(wifiSsid);
    }
    if (newStrength != wifiSignalStrength) {
        wifiSignalStrength = newStrength;
        Q_EMIT wifi()->wifiSignalStrengthChanged(wifiSignalStrength);
    }
    if (newChannel != wifiChannel) {
        wifiChannel = newChannel;
        Q_EMIT wifi()->wifiChannelChanged(wifiChannel);
    }
    firstUpdate = false;
}

void WifiPrivate::overrideSSID(const QString &ssid)
{
    stopPolling();
    wifiSsid = ssid;
    Q_EMIT wifi()->wifiSsidChanged(wifiSsid);
}

void WifiPrivate::overrideWifiChannel(int channel)
{
    stopPolling();
    wifiChannel = channel;
    Q_EMIT wifi()->wifiChannelChanged(wifiChannel);
}

void WifiPrivate::overrideWifiFrequency(int frequency)
{
    stopPolling();
    wifiFrequency = frequency;
    Q_EMIT wifi()->wifiFrequencyChanged(wifiFrequency);
}

void WifiPrivate::overrideWifiSignalStrength(int strength)
{
    stopPolling();
    wifiSignalStrength = strength;
    Q_EMIT wifi()->wifiSignalStrengthChanged(wifiSignalStrength);
}

void WifiPrivate::overrideWifiEnabled(bool enabled)
{
    stopPolling();
    if (enabled) {
        setAbility(IDevice::F_ENABLE);
    } else {
        clearAbility(IDevice::F_ENABLE);
    }
}

void WifiPrivate::overrideWifiCountry(const QString &country)
{
    stopPolling();
    wifiCountry = country;
    Q_EMIT wifi()->wifiCountryChanged(wifiCountry);
}

// Connecting is the host's business on a desktop; the requests are only traced.

void WifiPrivate::connectToWifiAccessPoint(QString ssid, QString password, QString username)
{
    qDebug() << "ssid" << ssid << "password" << password << "username" << username;
}

void WifiPrivate::connectToWifiAccessPoint(QString ssid, QString password)
{
    connectToWifiAccessPoint(ssid, password, QString());
}

void WifiPrivate::connectToWifiAccessPoint(QString ssid)
{
    connectToWifiAccessPoint(ssid, QString(), QString());
}

void WifiPrivate::connectToWifiBss(QString bssid, QString password)
{
    qDebug() << "bssid" << bssid << "password" << password;
}

void WifiPrivate::connectToWifiBss(QString bssid)
{
    connectToWifiBss(bssid, QString());
}

void WifiPrivate::connectToWifiAdhoc(QString ssid, int channel)
{
    qDebug() << "ssid" << ssid << "channel" << channel;
}

void WifiPrivate::connectToWifiAdhoc(QString ssid)
{
    connectToWifiAdhoc(ssid, AdhocChannel);
}

void WifiPrivate::connectToWifiAdhoc()
{
    connectToWifiAdhoc(AdhocSsid, AdhocChannel);
}

void WifiPrivate::disconnectWifi()
{
    qDebug();
}

void WifiPrivate::cancelWifiConnection()
{
    qDebug();
}

void WifiPrivate::requestScan()
{
    qDebug();
}

} // namespace TQ_SPAPI

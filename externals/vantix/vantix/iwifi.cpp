#include "iwifi.h"

#include "wifiprivate_p.h"

#include <QMetaType>

namespace TQ_SPAPI {

namespace {
void registerWifiMetaTypes()
{
    // The names in the signatures, for queued connections.
    qRegisterMetaType<IWifi::ReconnectState>("TQ_SPAPI::IWifi::ReconnectState");
    qRegisterMetaType<ConstAccessPointListPtr>("TQ_SPAPI::ConstAccessPointListPtr");
}
} // namespace
Q_CONSTRUCTOR_FUNCTION(registerWifiMetaTypes)

IWifi::IWifi() = default;

IWifi::IWifi(DeviceId id)
{
    setPrivate(new WifiPrivate(this, id));
}

IWifi::~IWifi() = default;

int IWifi::wifiChannel() const
{
    return d_func<WifiPrivate>()->wifiChannel;
}

int IWifi::wifiFrequency() const
{
    return d_func<WifiPrivate>()->wifiFrequency;
}

int IWifi::wifiSignalStrength() const
{
    return d_func<WifiPrivate>()->wifiSignalStrength;
}

QString IWifi::wifiSsid() const
{
    return d_func<WifiPrivate>()->wifiSsid;
}

bool IWifi::isWifiAdhoc() const
{
    return d_func<WifiPrivate>()->isWifiAdhoc;
}

ConstAccessPointListPtr IWifi::accessPoints() const
{
    return &d_func<WifiPrivate>()->accessPoints;
}

QString IWifi::wifiCountry() const
{
    return d_func<WifiPrivate>()->wifiCountry;
}

QList<int> IWifi::adhocAllowedChannels() const
{
    return d_func<WifiPrivate>()->adhocAllowedChannels;
}

QString IWifi::wifiCurrentPassword() const
{
    return d_func<WifiPrivate>()->wifiCurrentPassword;
}

QString IWifi::wifiCurrentUsername() const
{
    return d_func<WifiPrivate>()->wifiCurrentUsername;
}

IWifi::ReconnectState IWifi::wifiReconnectState() const
{
    return d_func<WifiPrivate>()->wifiReconnectState;
}

void IWifi::setWifiCountry(const QString &country)
{
    // Deliberately ignored; only the debug override changes the country here.
    Q_UNUSED(country)
}

void IWifi::setWifiScanInterval(int interval)
{
    Q_UNUSED(interval)
}

void IWifi::connectToWifiAccessPoint(QString ssid, QString password, QString username)
{
    d_func<WifiPrivate>()->connectToWifiAccessPoint(ssid, password, username);
}

void IWifi::connectToWifiAccessPoint(QString ssid, QString password)
{
    d_func<WifiPrivate>()->connectToWifiAccessPoint(ssid, password);
}

void IWifi::connectToWifiAccessPoint(QString ssid)
{
    d_func<WifiPrivate>()->connectToWifiAccessPoint(ssid);
}

void IWifi::connectToWifiBss(QString bssid, QString password)
{
    d_func<WifiPrivate>()->connectToWifiBss(bssid, password);
}

void IWifi::connectToWifiBss(QString bssid)
{
    d_func<WifiPrivate>()->connectToWifiBss(bssid);
}

void IWifi::connectToWifiAdhoc(QString ssid, int channel)
{
    d_func<WifiPrivate>()->connectToWifiAdhoc(ssid, channel);
}

void IWifi::connectToWifiAdhoc(QString ssid)
{
    d_func<WifiPrivate>()->connectToWifiAdhoc(ssid);
}

void IWifi::connectToWifiAdhoc()
{
    d_func<WifiPrivate>()->connectToWifiAdhoc();
}

void IWifi::disconnectWifi()
{
    d_func<WifiPrivate>()->disconnectWifi();
}

void IWifi::cancelWifiConnection()
{
    d_func<WifiPrivate>()->cancelWifiConnection();
}

void IWifi::requestScan()
{
    d_func<WifiPrivate>()->requestScan();
}

} // namespace TQ_SPAPI

#ifndef VANTIX_IWIFI_H
#define VANTIX_IWIFI_H

#include <vantix/iaccesspoint.h>
#include <vantix/inetwork.h>
#include <vantix/vantix_export.h>

#include <QList>
#include <QString>

namespace TQ_SPAPI {

/**
 * The Wi-Fi station: the network it is connected to, the access points in
 * range, the regulatory country and the connection requests. The desktop
 * build follows the host's active wireless network and simulates the radio
 * values; connection requests are only traced.
 */
class VANTIX_EXPORT IWifi : public INetwork
{
    Q_OBJECT
    Q_PROPERTY(int wifiChannel READ wifiChannel NOTIFY wifiChannelChanged)
    Q_PROPERTY(int wifiFrequency READ wifiFrequency NOTIFY wifiFrequencyChanged)
    Q_PROPERTY(int wifiSignalStrength READ wifiSignalStrength NOTIFY wifiSignalStrengthChanged)
    Q_PROPERTY(QString wifiSsid READ wifiSsid NOTIFY wifiSsidChanged)
    Q_PROPERTY(bool isWifiAdhoc READ isWifiAdhoc NOTIFY isWifiAdhocChanged)
    Q_PROPERTY(TQ_SPAPI::ConstAccessPointListPtr accessPoints READ accessPoints CONSTANT)
    Q_PROPERTY(QString wifiCountry READ wifiCountry WRITE setWifiCountry NOTIFY wifiCountryChanged)
    Q_PROPERTY(QList<int> adhocAllowedChannels READ adhocAllowedChannels NOTIFY adhocAllowedChannelsChanged)
    Q_PROPERTY(QString wifiCurrentPassword READ wifiCurrentPassword NOTIFY wifiCurrentPasswordChanged)
    Q_PROPERTY(QString wifiCurrentUsername READ wifiCurrentUsername NOTIFY wifiCurrentUsernameChanged)
    Q_PROPERTY(ReconnectState wifiReconnectState READ wifiReconnectState NOTIFY wifiReconnectStateChanged)

public:
    enum ReconnectState {
        RS_NONE = 0,
        RS_OUT_OF_RANGE = 1,
        RS_ACTIVE_NETWORK_REMOVED = 2,
        RS_ACTIVATING = 3,
    };
    Q_ENUM(ReconnectState)

    explicit IWifi(DeviceId id);
    ~IWifi() override;

    virtual int wifiChannel() const;
    /// In MHz.
    virtual int wifiFrequency() const;
    /// In percent.
    virtual int wifiSignalStrength() const;
    virtual QString wifiSsid() const;
    virtual bool isWifiAdhoc() const;
    virtual ConstAccessPointListPtr accessPoints() const;
    virtual QString wifiCountry() const;
    virtual QList<int> adhocAllowedChannels() const;
    virtual QString wifiCurrentPassword() const;
    virtual QString wifiCurrentUsername() const;
    virtual ReconnectState wifiReconnectState() const;

    /// Ignored by the desktop build: the country is the host's business.
    void setWifiCountry(const QString &country);
    /// Ignored by the desktop build, which does not scan.
    void setWifiScanInterval(int interval);

public Q_SLOTS:
    virtual void connectToWifiAccessPoint(QString ssid, QString password, QString username);
    virtual void connectToWifiAccessPoint(QString ssid, QString password);
    virtual void connectToWifiAccessPoint(QString ssid);
    virtual void connectToWifiBss(QString bssid, QString password);
    virtual void connectToWifiBss(QString bssid);
    virtual void connectToWifiAdhoc(QString ssid, int channel);
    virtual void connectToWifiAdhoc(QString ssid);
    /// Joins the ad-hoc network "Bravent" on channel 1.
    virtual void connectToWifiAdhoc();
    virtual void disconnectWifi();
    virtual void cancelWifiConnection();
    virtual void requestScan();

Q_SIGNALS:
    void wifiChannelChanged(int newValue);
    void wifiFrequencyChanged(int newValue);
    void wifiSignalStrengthChanged(int newValue);
    void wifiSsidChanged(QString newValue);
    void isWifiAdhocChanged(bool newValue);
    void wifiCountryChanged(QString newValue);
    void adhocAllowedChannelsChanged(QList<int> newValue);
    void wifiCurrentPasswordChanged(QString newValue);
    void wifiCurrentUsernameChanged(QString newValue);
    void wifiReconnectStateChanged(TQ_SPAPI::IWifi::ReconnectState newState);

protected:
    /// For interfaces that install a private of their own.
    IWifi();

private:
    Q_DISABLE_COPY(IWifi)
};

} // namespace TQ_SPAPI

#endif

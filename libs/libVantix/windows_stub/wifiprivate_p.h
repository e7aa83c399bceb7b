#ifndef VANTIX_WIFIPRIVATE_P_H
#define VANTIX_WIFIPRIVATE_P_H

#include <vantix/iaccesspoint.h>
#include <vantix/iwifi.h>
#include <vantix/listmodel.h>
#include <vantix/vantix_private_export.h>

#include "networkprivate_p.h"

#include <QList>
#include <QString>

namespace TQ_SPAPI {

/**
 * The Wi-Fi station of the desktop build. Address and state come from the
 * first host interface named "wlan..."; the current network follows the
 * host's active wireless configuration, and every wireless configuration the
 * host knows shows up as a simulated access point whose radio values drift.
 *
 * Of the status word this device switches F_ENABLE and F_ENABLESCANNING
 * only, and at once: the radio is what flight mode turns off.
 */
class VANTIX_PRIVATE_EXPORT WifiPrivate : public NetworkPrivate
{
    Q_OBJECT

public:
    WifiPrivate(IWifi *q, IDevice::DeviceId id);
    ~WifiPrivate() override;

    void setAbility(IDevice::Flags flags) override;
    void clearAbility(IDevice::Flags flags) override;
    void initialize() override;
    /// Chooses the first host interface named "wlan...".
    void findInterface() override;

    void overrideSSID(const QString &ssid);
    void overrideWifiChannel(int channel);
    void overrideWifiFrequency(int frequency);
    void overrideWifiSignalStrength(int strength);
    void overrideWifiEnabled(bool enabled);
    void overrideWifiCountry(const QString &country);

public Q_SLOTS:
    void connectToWifiAccessPoint(QString ssid, QString password, QString username);
    void connectToWifiAccessPoint(QString ssid, QString password);
    void connectToWifiAccessPoint(QString ssid);
    void connectToWifiBss(QString bssid, QString password);
    void connectToWifiBss(QString bssid);
    void connectToWifiAdhoc(QString ssid, int channel);
    void connectToWifiAdhoc(QString ssid);
    void connectToWifiAdhoc();
    void disconnectWifi();
    void cancelWifiConnection();
    void requestScan();
    /// The interface's address and state, then the Wi-Fi values.
    void updateInfo() override;
    /// Follows the host's wireless configurations; runs once a second and on every change the host reports.
    virtual void updateWifiInfo();

public:
    int wifiChannel = 0;
    int wifiFrequency = 0;
    int wifiSignalStrength = 0;
    QString wifiSsid;
    bool isWifiAdhoc = false;
    ListModel<IAccessPoint *> accessPoints;
    QString wifiCountry;
    QList<int> adhocAllowedChannels{1, 2, 3, 4, 5, 6, 7, 8};
    QString wifiCurrentPassword;
    QString wifiCurrentUsername;
    IWifi::ReconnectState wifiReconnectState = IWifi::RS_NONE;

    /**
     * Until the first update of any Wi-Fi device in the process, every known
     * network is listed at once; afterwards new ones appear gradually, the
     * way a scan finds them.
     */
    static bool firstUpdate;

private:
    IWifi *wifi() const { return static_cast<IWifi *>(q); }
    int rowOf(const QString &ssid) const;
    IAccessPoint *createAccessPoint(const QString &ssid);
    void switchBit(IDevice::Flags flags, IDevice::Flags bit, bool on);

    Q_DISABLE_COPY(WifiPrivate)
};

} // namespace TQ_SPAPI

#endif

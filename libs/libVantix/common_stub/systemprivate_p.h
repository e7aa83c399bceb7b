#ifndef VANTIX_SYSTEMPRIVATE_P_H
#define VANTIX_SYSTEMPRIVATE_P_H

#include <vantix/devicelist.h>
#include <vantix/iaudio.h>
#include <vantix/inetwork.h>
#include <vantix/system.h>
#include <vantix/vantix_private_export.h>

#include "deviceprivate_p.h"

#include <QElapsedTimer>
#include <QObject>

#include <utility>

namespace TQ_SPAPI {

/**
 * The desktop simulation behind System: it creates the platform's devices at
 * start-up and carries the override operations through which the debug
 * controller changes them. An override aimed at a device that does not exist,
 * or whose private is of another class, does nothing.
 */
class VANTIX_PRIVATE_EXPORT SystemPrivate : public QObject
{
    Q_OBJECT

public:
    explicit SystemPrivate(System *q);
    ~SystemPrivate() override;

    static SystemPrivate *get(System *system) { return system->d; }

    void initialize(const QString &name);
    void close();
    void setFlightMode(bool enabled);
    void addSystemInfoPair(const QString &key, const QString &value);

    // Hot-plug.
    void addBattery(IDevice::DeviceId id);
    void removeBattery(IDevice::DeviceId id);
    IDevicePtr addDevice(IDevice::DeviceId id, IDevice::DeviceType type, const QString &path);
    void removeDevice(IDevice::DeviceId id);

    // Overrides of simulated values.
    void overrideFuelGauge(IDevice::DeviceId id, int value);
    void overrideChargeToggle(IDevice::DeviceId id);
    void overridePowerConnectedToggle(IDevice::DeviceId id);
    void overrideCurrent(IDevice::DeviceId id, double current);
    void overrideJack(IAudio::JackFlags flags);
    void overrideButton(IDevice::DeviceId id, bool pressed);
    void overrideNetworkState(IDevice::DeviceId id, INetwork::NetworkState state);
    void overrideIP(IDevice::DeviceId id, const QString &ip);
    // These act on the ID_NETWORK_WIFI device.
    void overrideSSID(const QString &ssid);
    void overrideWifiChannel(int channel);
    void overrideWifiSignalStrength(int strength);
    void overrideWifiEnabled(bool enabled);
    void overrideWifiCountry(const QString &country);

    /// The private object of device @p id if it is a @p P, else null.
    template<typename P>
    P *devicePrivate(IDevice::DeviceId id) const
    {
        return qobject_cast<P *>(DevicePrivate::get(deviceList->device(quint32(id)).data()));
    }

    /// Runs @p operation on the private of device @p id if it is a @p P; otherwise nothing.
    template<typename P, typename... Params, typename... Args>
    void apply(IDevice::DeviceId id, void (P::*operation)(Params...), Args &&...args) const
    {
        if (P *p = devicePrivate<P>(id)) {
            (p->*operation)(std::forward<Args>(args)...);
        }
    }

    System *q;
    System::PlatformType platform = System::PT_UNKNOWN;
    QVariantMap systemInfo;
    System::BootType bootReason = System::BOOT_BUTTON;
    DeviceList *deviceList;
    ITimeSettings *timeSettings = nullptr;
    ICanMux *canMux = nullptr;
    IApiMessage *apiMessage;
    bool ready = false;
    System::FligtModeFlags flightMode;
    QStringList registeredIds;
    QMap<QString, QVariantMap> services;
    IDevicePtr bluetooth;
    IDevicePtr wifi;

    /// Milliseconds from initialize() to @p moment (a started QElapsedTimer): the one clock tools
    /// stamp events and log entries with, so that the two merge in the order things happened.
    qint64 elapsedMsAt(const QElapsedTimer &moment) const
    {
        return started.isValid() && moment.isValid() ? started.msecsTo(moment) : 0;
    }
    /// Time since initialize().
    qint64 elapsedMs() const
    {
        QElapsedTimer now;
        now.start();
        return elapsedMsAt(now);
    }

Q_SIGNALS:
    /**
     * A device has just been created, before any signal of its own and long
     * before the queued System::deviceDetected: tools that show every change
     * start watching it here.
     */
    void devicePlugged(const TQ_SPAPI::IDevicePtr &device);

private:
    void createDevices();
    ICanMux *ensureCanMux();
    /// Every device is created here, so the radios and the tools always know it.
    IDevicePtr add(IDevice::DeviceId id, IDevice::DeviceType type, const QString &path = QString());
    void forgetRadio(IDevice::DeviceId id);

    QElapsedTimer started;
    void finishFlightModeTransition(bool enabled);

    Q_DISABLE_COPY(SystemPrivate)
};

} // namespace TQ_SPAPI

#endif

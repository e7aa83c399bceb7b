#include "systemprivate_p.h"

#include "audioprivate_p.h"
#include "batteryprivate_p.h"
#include "buttonprivate_p.h"
#include "canmuxprivate_p.h"
#include "simulationdelays_p.h"
#include "networkprivate_p.h"
#include "systeminfostore_p.h"
#include "systemobserver_p.h"
#include <vantix/vantixdebug.h>
#include "wifiprivate_p.h"

#include <vantix/iapimessage.h>
#include <vantix/icanmux.h>
#include <vantix/itimesettings.h>

#include <qbcommon/appconfig.h>

#include <QDebug>
#include <QTimer>

namespace TQ_SPAPI {

SystemPrivate::SystemPrivate(System *q)
    : QObject(q)
    , q(q)
    , deviceList(new DeviceList(this))
    , apiMessage(new IApiMessage(this))
{
    connect(deviceList, &DeviceList::deviceAdded, q, &System::deviceDetected);
    connect(deviceList, &DeviceList::deviceRemoved, q, &System::deviceRemoved);
    connect(deviceList, &DeviceList::deviceRemoved, this, &SystemPrivate::forgetRadio);
}

SystemPrivate::~SystemPrivate()
{
    // What lives as long as this System (the control server and its clients) goes before the devices.
    SystemObserver::notifyAboutToBeReleased(this);
    // The debug controller usually outlives every System; it must not keep acting on this one.
    VantixDebug::detachSystemPrivate(this);
}

void SystemPrivate::initialize(const QString &name)
{
    if (ready) {
        return;
    }
    started.start();
    platform = SystemPlatformType::type;
    systemInfo.insert(QStringLiteral("API_VERSION"), QStringLiteral("0.01"));
    SystemInfoStore::fill(systemInfo, platform);
    timeSettings = new ITimeSettings(this);
    createDevices();
    registeredIds.append(name);
    ready = true;
    VantixDebug::instance()->setSystemPrivate(this);
    SystemObserver::notifyInitialized(this);
    QTimer::singleShot(SimulationDelays::ApiReadyMs, this, [this] { Q_EMIT q->apiReady(); });
}

IDevicePtr SystemPrivate::add(IDevice::DeviceId id, IDevice::DeviceType type, const QString &path)
{
    const bool isNew = !deviceList->device(quint32(id));
    const IDevicePtr device = deviceList->add(id, type, path, 0);
    if (!isNew) {
        return device;
    }
    // Flight mode acts on whatever radio is plugged now, however it came.
    if (id == IDevice::ID_NETWORK_WIFI) {
        wifi = device;
    } else if (id == IDevice::ID_BLUETOOTH) {
        bluetooth = device;
    }
    Q_EMIT devicePlugged(device);
    return device;
}

void SystemPrivate::forgetRadio(IDevice::DeviceId id)
{
    if (id == IDevice::ID_NETWORK_WIFI) {
        wifi.clear();
    } else if (id == IDevice::ID_BLUETOOTH) {
        bluetooth.clear();
    }
}

// The simulated hardware of each platform, in creation order.
void SystemPrivate::createDevices()
{
    using D = IDevice;
    using S = System;

    add(D::ID_POWER_SUPPLY, D::DEVICE_POWER);
    add(D::ID_LED_POWER, D::DEVICE_LED);
    add(D::ID_AUDIO, D::DEVICE_AUDIO);
    add(D::ID_TEMP_CPU, D::DEVICE_TEMPERATURE);
    add(D::ID_NETWORK_LAN, D::DEVICE_NETWORK);
    add(D::ID_NETWORK_WIFI, D::DEVICE_NETWORK | D::DEVICE_FIGHT_MODE);

    if (platform == S::PT_TOLVEX_PLUS || platform == S::PT_QUARNEL_PLUS) {
        add(D::ID_BLUETOOTH, D::DEVICE_BUS | D::DEVICE_FIGHT_MODE);
    }

    if (platform == S::PT_TOLVEX || platform == S::PT_TOLVEX_PLUS) {
        AppConfig *config = AppConfig::instance();
        add(D::ID_DISK_USER_DATA, D::DEVICE_DISK, config->varPath(QStringLiteral("data")));
        add(D::ID_DISK_SYSTEM, D::DEVICE_DISK, config->varPath(QString()));
        add(D::ID_BATTERY_1ST, D::DEVICE_BATTERY);
        const IDevicePtr display = add(D::ID_DISPLAY, D::DEVICE_DISPLAY);
        display->setAbility(D::F_ENABLE);
        display->setAbility(D::F_ACTIVE);
    }

    if (platform == S::PT_QUARNEL || platform == S::PT_QUARNEL_PLUS) {
        add(D::ID_LED_WIFI, D::DEVICE_LED);
        add(D::ID_POWER_MANIKIN_5V, D::DEVICE_POWER);
        add(D::ID_POWER_MANIKIN_VBUS, D::DEVICE_POWER);
        add(D::ID_BUTTON_POWER, D::DEVICE_BUTTON);
        add(D::ID_PWM, D::DEVICE_PWM);
        if (platform == S::PT_QUARNEL) {
            add(D::ID_CAN_SERIAL, D::DEVICE_SERIAL | D::DEVICE_CAN);
        } else {
            const IDevicePtr bus = add(D::ID_CAN_BUS, D::DEVICE_CAN | D::DEVICE_BUS);
            const IDevicePtr serial = add(D::ID_CAN_SERIAL, D::DEVICE_SERIAL | D::DEVICE_CAN);
            CanMuxPrivate *mux = CanMuxPrivate::get(ensureCanMux());
            mux->setCanBus(bus);
            mux->setCanSerial(serial);
        }
        add(D::ID_BATTERY_1ST, D::DEVICE_BATTERY);
    }

    if (platform == S::PT_CAN_CPU_MODULE) {
        add(D::ID_LED_WIFI, D::DEVICE_LED);
        const IDevicePtr amplifier = add(D::ID_SOUND_AMPLIFIER, D::DEVICE_AUDIO);
        amplifier->setAbility(D::F_ACTIVE);
        const IDevicePtr bus = add(D::ID_CAN_BUS, D::DEVICE_CAN | D::DEVICE_BUS);
        CanMuxPrivate::get(ensureCanMux())->setCanBus(bus);
        add(D::ID_BATTERY_1ST, D::DEVICE_BATTERY);
    }
}

ICanMux *SystemPrivate::ensureCanMux()
{
    if (!canMux) {
        canMux = new ICanMux(this);
    }
    return canMux;
}

void SystemPrivate::close()
{
    qDebug();
    Q_EMIT q->apiClosed();
}

void SystemPrivate::setFlightMode(bool enabled)
{
    if (flightMode & System::FLIGHT_MODE_TRANSITION) {
        return;
    }
    flightMode |= System::FLIGHT_MODE_TRANSITION;
    Q_EMIT q->flightModeStatusChanged(flightMode);

    // Only the Plus platforms have Bluetooth; the others switch Wi-Fi alone.
    const QList<IDevicePtr> radios{wifi, bluetooth};
    for (const IDevicePtr &radio : radios) {
        if (!radio) {
            continue;
        }
        if (enabled) {
            radio->clearAbility(IDevice::F_ACTIVE);
            radio->clearAbility(IDevice::F_ENABLE);
        } else {
            radio->setAbility(IDevice::F_ENABLE);
        }
    }

    QTimer::singleShot(
        SimulationDelays::FlightModeTransitionMs, this, [this, enabled] { finishFlightModeTransition(enabled); });
}

void SystemPrivate::finishFlightModeTransition(bool enabled)
{
    if (enabled) {
        flightMode &= ~System::FligtModeFlags(System::FLIGHT_MODE_DISABLED | System::FLIGHT_MODE_TRANSITION);
    } else {
        flightMode &= ~System::FligtModeFlags(System::FLIGHT_MODE_TRANSITION);
        flightMode |= System::FLIGHT_MODE_DISABLED;
    }
    Q_EMIT q->flightModeStatusChanged(flightMode);
}

// The whole map goes to the file, per-start entries included; they are
// refreshed on the next start anyway. A key the file could not give back as
// it was is refused rather than kept in memory only.
void SystemPrivate::addSystemInfoPair(const QString &key, const QString &value)
{
    SystemInfoStore::add(systemInfo, key, value, platform);
}

void SystemPrivate::addBattery(IDevice::DeviceId id)
{
    add(id, IDevice::DEVICE_BATTERY);
}

void SystemPrivate::removeBattery(IDevice::DeviceId id)
{
    deviceList->remove(quint32(id));
}

IDevicePtr SystemPrivate::addDevice(IDevice::DeviceId id, IDevice::DeviceType type, const QString &path)
{
    return add(id, type, path);
}

void SystemPrivate::removeDevice(IDevice::DeviceId id)
{
    deviceList->remove(quint32(id));
}

// Each override acts only on a device of the expected kind; anything else is skipped.

void SystemPrivate::overrideFuelGauge(IDevice::DeviceId id, int value)
{
    apply(id, &BatteryPrivate::overrideFuelGauge, value);
}

void SystemPrivate::overrideChargeToggle(IDevice::DeviceId id)
{
    apply(id, &BatteryPrivate::overrideChargeToggle);
}

void SystemPrivate::overridePowerConnectedToggle(IDevice::DeviceId id)
{
    if (id == IDevice::ID_BATTERY_1ST || id == IDevice::ID_BATTERY_2ND) {
        // A battery marks the change as forced; anything else at these ids is left alone.
        apply(id, &BatteryPrivate::overridePowerConnectedToggle);
        return;
    }
    if (DevicePrivate *device = devicePrivate<DevicePrivate>(id)) {
        device->setStatus(device->status ^ IDevice::F_POWER_CONNECTED);
    }
}

void SystemPrivate::overrideCurrent(IDevice::DeviceId id, double current)
{
    apply(id, &BatteryPrivate::overrideCurrent, current);
}

void SystemPrivate::overrideJack(IAudio::JackFlags flags)
{
    apply(IDevice::ID_AUDIO, &AudioPrivate::setJackFlags, flags);
}

void SystemPrivate::overrideButton(IDevice::DeviceId id, bool pressed)
{
    apply(id, &ButtonPrivate::setPressed, pressed);
}

void SystemPrivate::overrideNetworkState(IDevice::DeviceId id, INetwork::NetworkState state)
{
    apply(id, &NetworkPrivate::overrideNetworkState, state);
}

void SystemPrivate::overrideIP(IDevice::DeviceId id, const QString &ip)
{
    apply(id, &NetworkPrivate::overrideIP, ip);
}

void SystemPrivate::overrideSSID(const QString &ssid)
{
    apply(IDevice::ID_NETWORK_WIFI, &WifiPrivate::overrideSSID, ssid);
}

void SystemPrivate::overrideWifiChannel(int channel)
{
    apply(IDevice::ID_NETWORK_WIFI, &WifiPrivate::overrideWifiChannel, channel);
}

void SystemPrivate::overrideWifiSignalStrength(int strength)
{
    apply(IDevice::ID_NETWORK_WIFI, &WifiPrivate::overrideWifiSignalStrength, strength);
}

void SystemPrivate::overrideWifiEnabled(bool enabled)
{
    apply(IDevice::ID_NETWORK_WIFI, &WifiPrivate::overrideWifiEnabled, enabled);
}

void SystemPrivate::overrideWifiCountry(const QString &country)
{
    apply(IDevice::ID_NETWORK_WIFI, &WifiPrivate::overrideWifiCountry, country);
}

} // namespace TQ_SPAPI

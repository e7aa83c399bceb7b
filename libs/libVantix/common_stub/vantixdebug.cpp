#include <vantix/vantixdebug.h>

#include "metaenum_p.h"
#include "systemprivate_p.h"

#include <vantix/idisk.h>

#include <qbcommon/appconfig.h>

#include <QDebug>
#include <QDir>

#include <utility>

namespace TQ_SPAPI {

namespace {
// The controller while it exists. It is a function-local static, destroyed at
// exit in reverse order of construction, so whatever was built before it (an
// application object in static storage, and the System that is its child) is
// destroyed after it and must find it gone rather than reach a dead object.
VantixDebug *s_alive = nullptr;

// Runs an operation of the attached simulation; without one, nothing happens.
template<typename... Params, typename... Args>
void forward(SystemPrivate *system, void (SystemPrivate::*operation)(Params...), Args &&...args)
{
    if (system) {
        (system->*operation)(std::forward<Args>(args)...);
    }
}
} // namespace

VantixDebug::VantixDebug()
{
    s_alive = this;
}

VantixDebug::~VantixDebug()
{
    s_alive = nullptr;
}

VantixDebug *VantixDebug::instance()
{
    static VantixDebug debug;
    return &debug;
}

void VantixDebug::setSystemPrivate(SystemPrivate *p)
{
    m_systemPrivate = p;
}

void VantixDebug::detachSystemPrivate(SystemPrivate *p)
{
    VantixDebug *debug = s_alive;
    if (!debug || debug->m_systemPrivate != p) {
        return;
    }
    debug->m_systemPrivate = nullptr;
    // The ports belonged to that system; a fresh one starts unplugged.
    debug->m_otgA.clear();
    debug->m_otgB.clear();
    debug->m_usb.clear();
}

// The stick's contents: a folder under the share path, made when first needed.
QString VantixDebug::usbStickFolder(int index)
{
    const QString name = index == 0 ? QStringLiteral("usbdisk") : QStringLiteral("usbdisk%1").arg(index + 1);
    const QString folder = AppConfig::instance()->sharePath(name);
    QDir().mkpath(folder);
    return QDir(folder).absolutePath();
}

IDevicePtr VantixDebug::device(IDevice::DeviceId id) const
{
    return m_systemPrivate ? m_systemPrivate->deviceList->device(quint32(id)) : IDevicePtr();
}

IDevicePtr VantixDebug::plugOtgPort(IDevice::DeviceId id)
{
    if (!m_systemPrivate) {
        return IDevicePtr();
    }
    const IDevicePtr port = m_systemPrivate->addDevice(id, IDevice::DEVICE_USB, QString());
    // A port that becomes active brings its stick or hands over the user data.
    connect(port.data(), &IDevice::statusChanged, this, &VantixDebug::onDeviceStatusChanged, Qt::UniqueConnection);
    return port;
}

void VantixDebug::addOtgA()
{
    qDebug();
    m_otgA = plugOtgPort(IDevice::ID_USB_OTG_A);
}

void VantixDebug::rmOtgA()
{
    qDebug();
    // The stick the port brought goes first.
    forward(m_systemPrivate, &SystemPrivate::removeDevice, IDevice::ID_DISK_USB);
    forward(m_systemPrivate, &SystemPrivate::removeDevice, IDevice::ID_USB_OTG_A);
    m_otgA.clear();
}

void VantixDebug::addOtgB()
{
    qDebug();
    m_otgB = plugOtgPort(IDevice::ID_USB_OTG_B);
}

void VantixDebug::rmOtgB()
{
    qDebug();
    forward(m_systemPrivate, &SystemPrivate::removeDevice, IDevice::ID_USB_OTG_B);
    m_otgB.clear();
}

void VantixDebug::addUsb()
{
    qDebug();
    if (m_systemPrivate) {
        m_usb = m_systemPrivate->addDevice(IDevice::ID_USB, IDevice::DEVICE_USB, QString());
    }
}

void VantixDebug::rmUsb()
{
    qDebug();
    forward(m_systemPrivate, &SystemPrivate::removeDevice, IDevice::ID_USB);
    m_usb.clear();
}

void VantixDebug::onDeviceStatusChanged(IDevice::DeviceFlags deviceStatus)
{
    auto *sender = qobject_cast<IDevice *>(this->sender());
    qDebug() << (sender ? enumKey(sender->id()) : QByteArray()).constData() << flagKeys(deviceStatus).constData();
    if (!sender || !sender->status().testFlag(IDevice::F_ACTIVE) || !m_systemPrivate) {
        return;
    }
    if (sender == m_otgA.data()) {
        // An active port A brings the USB stick.
        m_systemPrivate->addDevice(IDevice::ID_DISK_USB, IDevice::DEVICE_DISK, usbStickFolder());
    } else if (sender == m_otgB.data()) {
        // Port B connected to a host: the host now owns the user data.
        if (auto *disk = qobject_cast<IDisk *>(device(IDevice::ID_DISK_USER_DATA).data())) {
            disk->unmount();
        }
    }
}

bool VantixDebug::toggleJack(IAudio::JackFlag flag)
{
    auto *audio = qobject_cast<IAudio *>(device(IDevice::ID_AUDIO).data());
    if (!audio) {
        return false;
    }
    overrideJack(audio->jackFlags() ^ flag);
    return true;
}

void VantixDebug::pressPowerButton(bool pressed)
{
    forward(m_systemPrivate, &SystemPrivate::overrideButton, IDevice::ID_BUTTON_POWER, pressed);
}

void VantixDebug::addBattery(IDevice::DeviceId id)
{
    forward(m_systemPrivate, &SystemPrivate::addBattery, id);
}

void VantixDebug::removeBattery(IDevice::DeviceId id)
{
    forward(m_systemPrivate, &SystemPrivate::removeBattery, id);
}

void VantixDebug::overrideJack(IAudio::JackFlags flags)
{
    forward(m_systemPrivate, &SystemPrivate::overrideJack, flags);
}

void VantixDebug::overrideFuelGauge(IDevice::DeviceId id, int percent)
{
    forward(m_systemPrivate, &SystemPrivate::overrideFuelGauge, id, percent);
}

void VantixDebug::overrideChargeToggle(IDevice::DeviceId id)
{
    forward(m_systemPrivate, &SystemPrivate::overrideChargeToggle, id);
}

void VantixDebug::overridePowerConnectedToggle(IDevice::DeviceId id)
{
    forward(m_systemPrivate, &SystemPrivate::overridePowerConnectedToggle, id);
}

void VantixDebug::overrideCurrent(IDevice::DeviceId id, double current)
{
    forward(m_systemPrivate, &SystemPrivate::overrideCurrent, id, current);
}

void VantixDebug::overrideNetworkState(IDevice::DeviceId id, INetwork::NetworkState state)
{
    forward(m_systemPrivate, &SystemPrivate::overrideNetworkState, id, state);
}

void VantixDebug::overrideIP(IDevice::DeviceId id, const QString &ip)
{
    forward(m_systemPrivate, &SystemPrivate::overrideIP, id, ip);
}

void VantixDebug::overrideSSID(const QString &ssid)
{
    forward(m_systemPrivate, &SystemPrivate::overrideSSID, ssid);
}

void VantixDebug::overrideWifiChannel(int channel)
{
    forward(m_systemPrivate, &SystemPrivate::overrideWifiChannel, channel);
}

void VantixDebug::overrideWifiSignalStrength(int strength)
{
    forward(m_systemPrivate, &SystemPrivate::overrideWifiSignalStrength, strength);
}

void VantixDebug::overrideWifiEnabled(bool enabled)
{
    forward(m_systemPrivate, &SystemPrivate::overrideWifiEnabled, enabled);
}

void VantixDebug::overrideWifiCountry(const QString &country)
{
    forward(m_systemPrivate, &SystemPrivate::overrideWifiCountry, country);
}

IDevicePtr VantixDebug::addDevice(IDevice::DeviceId id, IDevice::DeviceType type, const QString &path)
{
    return m_systemPrivate ? m_systemPrivate->addDevice(id, type, path) : IDevicePtr();
}

void VantixDebug::removeDevice(IDevice::DeviceId id)
{
    if (m_systemPrivate) {
        m_systemPrivate->removeDevice(id);
    }
}

} // namespace TQ_SPAPI

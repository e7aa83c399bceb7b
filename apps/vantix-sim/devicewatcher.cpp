#include "devicewatcher.h"

#include <vantix/inetwork.h>
#include <vantix/iwifi.h>
#include <vantix/system.h>

#include <QMetaEnum>

using namespace TQ_SPAPI;

namespace {
template<typename E>
QString key(E value)
{
    return QString::fromLatin1(QMetaEnum::fromType<E>().valueToKey(int(value)));
}

template<typename F>
QString keys(F value)
{
    const QByteArray names = QMetaEnum::fromType<F>().valueToKeys(int(value));
    return names.isEmpty() ? QStringLiteral("0") : QString::fromLatin1(names);
}

QString deviceName(IDevice::DeviceId id)
{
    const QString name = key(id);
    // Removable disks are numbered above ID_DISK_USB.
    return name.isEmpty() ? QStringLiteral("ID_DISK_USB+%1").arg(int(id) - int(IDevice::ID_DISK_USB)) : name;
}
} // namespace

DeviceWatcher::DeviceWatcher(System *system, QTextStream &out, QObject *parent)
    : QObject(parent)
    , m_system(system)
    , m_out(out)
{
    m_clock.start();
}

void DeviceWatcher::printTable()
{
    const QList<IDevicePtr> devices = m_system->devices();
    m_out << QStringLiteral("%1 %2 %3 %4\n")
                 .arg(QStringLiteral("DEVICE"), -22)
                 .arg(QStringLiteral("CLASS"), -26)
                 .arg(QStringLiteral("TYPE"), -36)
                 .arg(QStringLiteral("STATUS"));
    for (const IDevicePtr &device : devices) {
        m_out << QStringLiteral("%1 %2 %3 %4\n")
                     .arg(deviceName(device->id()), -22)
                     .arg(QString::fromLatin1(device->metaObject()->className()), -26)
                     .arg(keys(device->type()), -36)
                     .arg(keys(device->status()));
    }
    m_out.flush();
}

void DeviceWatcher::watch()
{
    for (const IDevicePtr &device : m_system->devices()) {
        watchDevice(device);
    }
    connect(m_system, &System::deviceDetected, this, [this](const IDevicePtr &device) {
        event(QStringLiteral("deviceDetected %1 %2")
                  .arg(deviceName(device->id()), QString::fromLatin1(device->metaObject()->className())));
        watchDevice(device);
    });
    connect(m_system, &System::deviceRemoved, this, [this](IDevice::DeviceId id, const QString &path) {
        event(QStringLiteral("deviceRemoved %1 \"%2\"").arg(deviceName(id), path));
    });
}

void DeviceWatcher::watchDevice(const IDevicePtr &device)
{
    IDevice *raw = device.data();
    // Each device is watched once, also when it is both listed and detected.
    if (raw->property("_vantixSimWatched").toBool()) {
        return;
    }
    raw->setProperty("_vantixSimWatched", true);
    const QString name = deviceName(raw->id());
    connect(raw, &IDevice::statusChanged, this, [this, name](IDevice::DeviceFlags status) {
        event(QStringLiteral("%1 statusChanged %2").arg(name, keys(status)));
    });
    if (auto *network = qobject_cast<INetwork *>(raw)) {
        connect(network, &INetwork::networkStateChanged, this, [this, name](INetwork::NetworkState state) {
            event(QStringLiteral("%1 networkStateChanged %2").arg(name, key(state)));
        });
        connect(network, &INetwork::ipChanged, this,
            [this, name](const QString &ip) { event(QStringLiteral("%1 ipChanged \"%2\"").arg(name, ip)); });
    }
    if (auto *wifi = qobject_cast<IWifi *>(raw)) {
        connect(wifi, &IWifi::wifiSsidChanged, this,
            [this, name](const QString &ssid) { event(QStringLiteral("%1 wifiSsidChanged \"%2\"").arg(name, ssid)); });
        connect(wifi, &IWifi::wifiSignalStrengthChanged, this, [this, name](int strength) {
            event(QStringLiteral("%1 wifiSignalStrengthChanged %2").arg(name).arg(strength));
        });
    }
}

void DeviceWatcher::event(const QString &text)
{
    m_out << QStringLiteral("[%1 ms] ").arg(m_clock.elapsed(), 7) << text << '\n';
    m_out.flush();
}

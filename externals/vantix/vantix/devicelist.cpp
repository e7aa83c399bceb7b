#include "devicelist.h"

#include "deviceprivate_p.h"
#include "inetwork.h"
#include "iwifi.h"
#include "metaenum_p.h"

#include <QDebug>

namespace TQ_SPAPI {

DeviceList::DeviceList(QObject *parent)
    : QObject(parent)
{
}

// Releases every device silently: nobody is told about a list going away.
DeviceList::~DeviceList() = default;

// The factory: the first row whose type bit is set decides the interface.
DeviceList::Creation DeviceList::create(IDevice::DeviceId id, IDevice::DeviceType type, const QString &path)
{
    using D = IDevice;
    const auto generic = [&](const QString &devicePath) {
        return Creation{new IDevice(id, type, devicePath), false};
    };

    if (type & D::DEVICE_AUDIO) {
        return generic(path);
    }
    if (type & D::DEVICE_BATTERY) {
        return generic(QString());
    }
    if (type & D::DEVICE_BUS) {
        return generic(path);
    }
    if (type & D::DEVICE_DISPLAY) {
        return generic(QString());
    }
    if (type & D::DEVICE_LED) {
        return generic(QString());
    }
    if (type & D::DEVICE_NETWORK) {
        if (id == D::ID_NETWORK_WIFI) {
            return Creation{new IWifi(id), false};
        }
        if (id == D::ID_NETWORK_WIFI_P2P) {
            return generic(QString());
        }
        return Creation{new INetwork(id), false};
    }
    if (type & D::DEVICE_SERIAL) {
        // Serial devices other than the I/O controller never take the path.
        return generic(QString());
    }
    if (type & D::DEVICE_TEMPERATURE) {
        return generic(QString());
    }
    if (type & D::DEVICE_DISK) {
        return Creation{new IDevice(id, type, path), true};
    }
    if (type & D::DEVICE_VIBRATOR) {
        return generic(QString());
    }
    if (type & D::DEVICE_BUTTON) {
        return generic(QString());
    }
    if (type & D::DEVICE_PWM) {
        return generic(QString());
    }
    if (type & D::DEVICE_USB) {
        return generic(QString());
    }
    // DEVICE_CAN, DEVICE_HOST, DEVICE_POWER, DEVICE_FIGHT_MODE, DEVICE_UNKNOWN.
    return generic(path);
}

IDevicePtr DeviceList::add(IDevice::DeviceId id, IDevice::DeviceType type, const QString &path, quint32 index)
{
    // The duplicate test looks at the bare id, whatever the index.
    const auto existing = m_devices.constFind(quint32(id));
    if (existing != m_devices.constEnd()) {
        qWarning() << "ID already exist!!" << enumKey(id).constData();
        return existing.value();
    }

    const Creation creation = create(id, type, path);
    return insert(creation.device, creation.keyedByIndex ? index : 0);
}

IDevicePtr DeviceList::insert(IDevice *device, quint32 index)
{
    const IDevicePtr ptr(device);
    m_devices.insert(quint32(device->id()) + index, ptr);
    device->initialize();
    if (!device->type().testFlag(IDevice::DEVICE_FIGHT_MODE)) {
        device->setAbility(IDevice::F_ENABLE);
    }
    // Queued, so that whoever called add() can connect to the device first.
    QMetaObject::invokeMethod(
        this, [this, ptr] { Q_EMIT deviceAdded(ptr); }, Qt::QueuedConnection);
    return ptr;
}

bool DeviceList::remove(quint32 key)
{
    const auto it = m_devices.find(key);
    if (it == m_devices.end()) {
        return false;
    }
    const IDevicePtr device = it.value();
    m_devices.erase(it);
    Q_EMIT deviceRemoved(device->id(), device->path());
    return true;
}

IDevicePtr DeviceList::device(quint32 key) const
{
    return m_devices.value(key);
}

QList<IDevicePtr> DeviceList::devices(IDevice::DeviceType type) const
{
    QList<IDevicePtr> result;
    for (const IDevicePtr &device : m_devices) {
        // QFlags::testFlag semantics: all bits of type, and 0 matches 0 only.
        if (device->type().testFlag(IDevice::Devices(int(type)))) {
            result.append(device);
        }
    }
    return result;
}

QList<IDevicePtr> DeviceList::allDevices() const
{
    return m_devices.values();
}

} // namespace TQ_SPAPI

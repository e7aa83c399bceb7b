#include "devicelist.h"

#include "deviceprivate_p.h"
#include "iaudio.h"
#include "ibattery.h"
#include "ibluetooth.h"
#include "ibutton.h"
#include "idisk.h"
#include "idisplay.h"
#include "iiocontroller.h"
#include "iled.h"
#include "inetwork.h"
#include "ipwmecg.h"
#include "isensor.h"
#include "isoundamplifier.h"
#include "iusb.h"
#include "ivibrator.h"
#include "iwifi.h"
#include "iwifip2p.h"
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
    const auto generic = [&](const QString &devicePath) { return Creation{new IDevice(id, type, devicePath), false}; };

    if (type & D::DEVICE_AUDIO) {
        if (id == D::ID_AUDIO) {
            return Creation{new IAudio(id), false};
        }
        if (id == D::ID_SOUND_AMPLIFIER) {
            return Creation{new ISoundAmplifier(id), false};
        }
        return generic(path);
    }
    if (type & D::DEVICE_BATTERY) {
        return Creation{new IBattery(id), false, Pairing::Battery};
    }
    if (type & D::DEVICE_BUS) {
        if (id == D::ID_BLUETOOTH) {
            return Creation{new IBluetooth(id), false};
        }
        return generic(path);
    }
    if (type & D::DEVICE_DISPLAY) {
        return Creation{new IDisplay(id), false};
    }
    if (type & D::DEVICE_LED) {
        return Creation{new ILed(id), false};
    }
    if (type & D::DEVICE_NETWORK) {
        if (id == D::ID_NETWORK_WIFI) {
            return Creation{new IWifi(id), false};
        }
        if (id == D::ID_NETWORK_WIFI_P2P) {
            return Creation{new IWifiP2P(id), false};
        }
        return Creation{new INetwork(id), false};
    }
    if (type & D::DEVICE_SERIAL) {
        if (id == D::ID_IOCONTROLLER) {
            return Creation{new IIOController(id, type), false};
        }
        // Serial devices other than the I/O controller never take the path.
        return generic(QString());
    }
    if (type & D::DEVICE_TEMPERATURE) {
        return Creation{new ISensor(id, type), false, Pairing::Sensor};
    }
    if (type & D::DEVICE_DISK) {
        return Creation{new IDisk(id, path), true};
    }
    if (type & D::DEVICE_VIBRATOR) {
        return Creation{new IVibrator(id), false};
    }
    if (type & D::DEVICE_BUTTON) {
        return Creation{new IButton(id), false};
    }
    if (type & D::DEVICE_PWM) {
        return Creation{new IPwmEcg(id), false};
    }
    if (type & D::DEVICE_USB) {
        return Creation{new IUsb(id), false};
    }
    // DEVICE_CAN, DEVICE_HOST, DEVICE_POWER, DEVICE_FIGHT_MODE, DEVICE_UNKNOWN.
    return generic(path);
}

IDevicePtr DeviceList::add(IDevice::DeviceId id, IDevice::DeviceType type, const QString &path, quint32 index)
{
    // The duplicate test looks at the bare id, whatever the index.
    const auto existing = registry.constFind(quint32(id));
    if (existing != registry.constEnd()) {
        qWarning() << "ID already exist!!" << enumKey(id).constData();
        return existing.value();
    }

    const Creation creation = create(id, type, path);
    const IDevicePtr stored = insert(creation.device, creation.keyedByIndex ? index : 0);
    switch (creation.pairing) {
    case Pairing::Battery:
        attachBatterySensor(stored);
        break;
    case Pairing::Sensor:
        pairBatterySensor(stored);
        break;
    case Pairing::None:
        break;
    }
    return stored;
}

void DeviceList::attachBatterySensor(const IDevicePtr &battery)
{
    const auto sensorId =
        battery->id() == IDevice::ID_BATTERY_1ST ? IDevice::ID_TEMP_BATT_1ST : IDevice::ID_TEMP_BATT_2ND;
    // Only a sensor still registered counts; one removed earlier is gone for good.
    const QSharedPointer<ISensor> sensor = qSharedPointerObjectCast<ISensor>(device(quint32(sensorId)));
    const QSharedPointer<IBattery> target = qSharedPointerObjectCast<IBattery>(battery);
    if (sensor && target) {
        target->setSensor(sensor);
    }
}

void DeviceList::pairBatterySensor(const IDevicePtr &sensor)
{
    IDevice::DeviceId batteryId;
    switch (sensor->id()) {
    case IDevice::ID_TEMP_BATT_1ST:
        batteryId = IDevice::ID_BATTERY_1ST;
        break;
    case IDevice::ID_TEMP_BATT_2ND:
        batteryId = IDevice::ID_BATTERY_2ND;
        break;
    default:
        // CPU and board sensors belong to no battery.
        return;
    }
    const QSharedPointer<IBattery> battery = qSharedPointerObjectCast<IBattery>(device(quint32(batteryId)));
    const QSharedPointer<ISensor> target = qSharedPointerObjectCast<ISensor>(sensor);
    if (battery && target) {
        battery->setSensor(target);
    }
}

IDevicePtr DeviceList::insert(IDevice *device, quint32 index)
{
    const IDevicePtr ptr(device);
    registry.insert(quint32(device->id()) + index, ptr);
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
    const auto it = registry.find(key);
    if (it == registry.end()) {
        return false;
    }
    const IDevicePtr device = it.value();
    registry.erase(it);
    Q_EMIT deviceRemoved(device->id(), device->path());
    return true;
}

IDevicePtr DeviceList::device(quint32 key) const
{
    return registry.value(key);
}

QList<IDevicePtr> DeviceList::devices(IDevice::DeviceType type) const
{
    QList<IDevicePtr> result;
    for (const IDevicePtr &device : registry) {
        // QFlags::testFlag semantics: all bits of type, and 0 matches 0 only.
        if (device->type().testFlag(IDevice::Devices(int(type)))) {
            result.append(device);
        }
    }
    return result;
}

QList<IDevicePtr> DeviceList::allDevices() const
{
    return registry.values();
}

} // namespace TQ_SPAPI

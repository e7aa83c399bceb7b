#ifndef VANTIX_DEVICELIST_H
#define VANTIX_DEVICELIST_H

#include <vantix/idevice.h>
#include <vantix/vantix_export.h>

#include <QList>
#include <QMap>
#include <QObject>

namespace TQ_SPAPI {

/**
 * The registry and factory of devices. A device is stored under its id plus
 * an index; the index is non-zero only for removable disks, which share
 * ID_DISK_USB. Lists come in ascending key order.
 */
class VANTIX_EXPORT DeviceList : public QObject
{
    Q_OBJECT

public:
    explicit DeviceList(QObject *parent = nullptr);
    ~DeviceList() override;

    /**
     * Creates the device the id and type call for, stores it, initialises it
     * and requests F_ENABLE. deviceAdded() follows from the event loop. An id
     * already stored gives the stored device back, with a warning.
     */
    IDevicePtr add(IDevice::DeviceId id, IDevice::DeviceType type, const QString &path, quint32 index = 0);
    /// Removes the device stored under @p key; false if there is none.
    bool remove(quint32 key);
    IDevicePtr device(quint32 key) const;
    /// Devices having every bit of @p type; DEVICE_UNKNOWN matches devices of type 0 only.
    QList<IDevicePtr> devices(IDevice::DeviceType type) const;
    QList<IDevicePtr> allDevices() const;

Q_SIGNALS:
    void deviceAdded(TQ_SPAPI::IDevicePtr device);
    void deviceRemoved(TQ_SPAPI::IDevice::DeviceId id, QString path);

private:
    // What a device needs once it is stored: batteries and battery
    // temperature sensors look for each other, whichever comes first.
    enum class Pairing { None, Battery, Sensor };
    struct Creation
    {
        IDevice *device;
        bool keyedByIndex; // only disks use the index
        Pairing pairing = Pairing::None;
    };
    static Creation create(IDevice::DeviceId id, IDevice::DeviceType type, const QString &path);
    IDevicePtr insert(IDevice *device, quint32 index);
    /// Hands a freshly stored battery the temperature sensor already stored for it.
    void attachBatterySensor(const IDevicePtr &battery);
    /// Hands a freshly stored battery temperature sensor to the battery already stored for it.
    void pairBatterySensor(const IDevicePtr &sensor);

    QMap<quint32, IDevicePtr> registry;
};

} // namespace TQ_SPAPI

#endif

#ifndef VANTIX_IDEVICE_H
#define VANTIX_IDEVICE_H

#include <vantix/vantix_export.h>

#include <QObject>
#include <QSharedPointer>

namespace TQ_SPAPI {

class DevicePrivate;

/**
 * A piece of hardware: its identity (id, type, path), its status word and its
 * error report. Applications receive devices from System as IDevicePtr and
 * never construct them.
 */
class VANTIX_EXPORT IDevice : public QObject
{
    Q_OBJECT
    Q_PROPERTY(DeviceId id READ id CONSTANT)
    Q_PROPERTY(DeviceType type READ type CONSTANT)
    Q_PROPERTY(QString path READ path NOTIFY pathChanged)
    Q_PROPERTY(DeviceFlags status READ status NOTIFY statusChanged)

public:
    // Fixed underlying type: removable disks take values above ID_DISK_USB.
    enum DeviceId : int {
        ID_UNKNOWN_DEV = 0,
        ID_LED_POWER = 1,
        ID_LED_WIFI = 2,
        ID_TEMP_CPU = 3,
        ID_TEMP_BOARD = 4,
        ID_TEMP_BATT_1ST = 5,
        ID_TEMP_BATT_2ND = 6,
        ID_BATTERY_1ST = 7,
        ID_BATTERY_2ND = 8,
        ID_NETWORK_WIFI = 9,
        ID_NETWORK_LAN = 10,
        ID_NETWORK_WIFI_P2P = 11,
        ID_POWER_MANIKIN_5V = 12,
        ID_POWER_MANIKIN_VBUS = 13,
        ID_BLUETOOTH = 14,
        ID_AUDIO = 15,
        ID_VIBRATOR = 16,
        ID_DISPLAY = 17,
        ID_PWM = 18,
        ID_CAN_BUS = 19,
        ID_CAN_SERIAL = 20,
        ID_SOUND_AMPLIFIER = 21,
        ID_USB_OTG_A = 22,
        ID_USB_OTG_B = 23,
        ID_DISK_USER_DATA = 24,
        ID_IOCONTROLLER = 25,
        ID_BUTTON_POWER = 26,
        ID_MANIKIN_SERIAL = 27,
        ID_USB = 28,
        ID_POWER_SUPPLY = 29,
        ID_DISK_SYSTEM = 30,
        // Removable disks are numbered from here upward.
        ID_DISK_USB = 256,
    };
    Q_ENUM(DeviceId)

    enum Devices {
        DEVICE_UNKNOWN = 0,
        DEVICE_DISK = 0x2,
        DEVICE_HOST = 0x4,
        DEVICE_USB = 0x8,
        DEVICE_SERIAL = 0x10,
        DEVICE_CAN = 0x20,
        DEVICE_BUS = 0x40,
        DEVICE_BATTERY = 0x80,
        DEVICE_LED = 0x100,
        DEVICE_NETWORK = 0x200,
        DEVICE_AUDIO = 0x400,
        DEVICE_VIBRATOR = 0x800,
        DEVICE_TEMPERATURE = 0x1000,
        DEVICE_POWER = 0x2000,
        DEVICE_DISPLAY = 0x4000,
        DEVICE_PWM = 0x8000,
        DEVICE_BUTTON = 0x10000,
        DEVICE_FIGHT_MODE = 0x20000,
        DEVICE_ALL = -1,
    };
    Q_DECLARE_FLAGS(DeviceType, Devices)
    Q_FLAG(DeviceType)

    enum Flags {
        F_NOFLAGS = 0,
        F_ENABLE = 0x1,
        F_ACTIVE = 0x2,
        F_LOG = 0x4,
        F_OVERRIDE = 0x8,
        F_CHARGE = 0x10,
        F_SENSORCRITICAL = 0x20,
        F_SENSORHIGH = 0x40,
        F_SENSORLOW = 0x80,
        F_ENABLEHIGH = 0x100,
        F_ENABLELOW = 0x200,
        F_ENABLESCANNING = 0x400,
        F_SHARED = 0x800,
        F_TERMINATE = 0x1000,
        F_FORMATTED = 0x2000,
        F_POWER_CONNECTED = 0x4000,
        F_VALID = 0x8000,
        F_RESETTING = 0x40000000,
        F_ALL = -1,
    };
    Q_DECLARE_FLAGS(DeviceFlags, Flags)
    Q_FLAG(DeviceFlags)

    enum DeviceError {
        E_NO_ERROR = 0,
        E_OVERRIDE = 1,
        E_INVALID_COLOR = 2,
        E_MODE_FAILED = 3,
        E_DISK_NOT_READY = 4,
        E_DISK_NO_SPACE = 5,
        E_DISK_NOT_MOUNTED = 6,
        E_NO_NETWORK = 7,
        E_INVALID_TIMEZONE = 8,
        E_BATTERY_CANT_ENABLE = 9,
        E_BATTERY_CANT_DISABLE = 10,
        E_BATTERY_CANT_CHARGE = 11,
        E_DISABLED = 12,
        E_NOT_SUPORTED = 13,
        E_NOT_IMPLEMENTED = 14,
        E_FILE_ERROR = 15,
        E_NETWORK_ERROR = 16,
    };
    Q_ENUM(DeviceError)

    /// A generic device, for hardware that has no interface of its own.
    IDevice(DeviceId id, DeviceType type, const QString &path);
    ~IDevice() override;

    virtual DeviceId id() const;
    virtual DeviceType type() const;
    virtual const QString &path() const;
    virtual DeviceFlags status() const;
    /// Requests status bits; they appear 100 ms later (see DevicePrivate).
    Q_INVOKABLE virtual void setAbility(TQ_SPAPI::IDevice::Flags flags);
    /// Withdraws status bits; they disappear 100 ms later.
    Q_INVOKABLE virtual void clearAbility(TQ_SPAPI::IDevice::Flags flags);
    Q_INVOKABLE virtual void reset();
    /// The last error reported; errors stay stored until another one replaces them.
    virtual DeviceError error() const;
    virtual void initialize();

Q_SIGNALS:
    void statusChanged(TQ_SPAPI::IDevice::DeviceFlags newStatus);
    void pathChanged(QString newPath);
    void error(TQ_SPAPI::IDevice::DeviceError deviceError);

protected:
    /// For derived interfaces, which install their own private object.
    IDevice();
    /// Installs @p p as the private object, deleting any previous one.
    void setPrivate(DevicePrivate *p);
    /// The private object as the derived interface's own private class.
    template<typename P>
    P *d_func() const
    {
        return static_cast<P *>(d);
    }

    DevicePrivate *d = nullptr;

private:
    friend class DevicePrivate;
    Q_DISABLE_COPY(IDevice)
};

/// Shares a device; it also tracks the QObject, so QPointer and weak pointers work.
using IDevicePtr = QSharedPointer<IDevice>;

} // namespace TQ_SPAPI

Q_DECLARE_OPERATORS_FOR_FLAGS(TQ_SPAPI::IDevice::DeviceType)
Q_DECLARE_OPERATORS_FOR_FLAGS(TQ_SPAPI::IDevice::DeviceFlags)

#endif

#ifndef VANTIX_SYSTEM_H
#define VANTIX_SYSTEM_H

#include <vantix/idevice.h>
#include <vantix/vantix_export.h>

#include <QList>
#include <QMap>
#include <QMetaEnum>
#include <QObject>
#include <QStringList>
#include <QVariantMap>

namespace TQ_SPAPI {

class IApiMessage;
class ICanMux;
class ITimeSettings;
class SystemPrivate;

/**
 * The one object through which an application reaches the platform: start-up,
 * devices, platform facts, system information, flight mode, power and service
 * commands. A process-wide singleton, child of the application object.
 */
class VANTIX_EXPORT System : public QObject
{
    Q_OBJECT
    Q_PROPERTY(PlatformType platform READ platform CONSTANT)
    Q_PROPERTY(OSType operatingSystem READ operatingSystem CONSTANT)
    Q_PROPERTY(QVariantMap systemInfo READ systemInfo NOTIFY systemInfoChanged)
    Q_PROPERTY(BootType bootReason READ bootReason CONSTANT)
    Q_PROPERTY(FligtModeFlags flightModeStatus READ flightModeStatus NOTIFY flightModeStatusChanged)

public:
    // Fixed underlying type: a host may store any value, unknown ones included.
    enum PlatformType : int {
        PT_UNKNOWN = 0,
        PT_TOLVEX = 1,
        PT_TOLVEX_PLUS = 2,
        PT_QUARNEL = 3,
        PT_QUARNEL_PLUS = 4,
        PT_CAN_CPU_MODULE = 5,
        PT_VIRTUAL = 6,
    };
    Q_ENUM(PlatformType)

    enum OSType {
        OS_UNKNOWN = 0,
        OS_LINUX_YOCTO = 1,
        OS_LINUX_DESKTOP = 2,
        OS_WINDOWS = 3,
        OS_LINUX_VIRTUAL = 4,
    };
    Q_ENUM(OSType)

    enum BootType {
        BOOT_UNKNOWN = 0,
        BOOT_BUTTON = 1,
        BOOT_POWER = 2,
        BOOT_BATTERY = 3,
        BOOT_REBOOT = 4,
    };
    Q_ENUM(BootType)

    enum FligtModeFlag {
        FLIGHT_MODE_ENABLED = 0,
        FLIGHT_MODE_DISABLED = 2,
        FLIGHT_MODE_TRANSITION = 4,
    };
    Q_DECLARE_FLAGS(FligtModeFlags, FligtModeFlag)
    Q_FLAG(FligtModeFlags)

    /// The singleton, created on first call as a child of the application object.
    static System *instance();
    /// Deletes the singleton; the next instance() builds a fresh, not-ready one.
    static void releaseInstance();

    PlatformType platform() const;
    OSType operatingSystem() const;
    BootType bootReason() const;

    const QVariantMap &systemInfo() const;
    /**
     * Sets an entry and writes the whole map to the unit's settings file. A key
     * the file cannot give back under the same name (empty, or with a leading,
     * trailing or double "/") is refused with a warning and changes nothing.
     */
    void addSystemInfoPair(const QString &key, const QString &value);
    /// Removes an entry from the map only; a persisted entry returns on the next start.
    void deleteSystemInfoKey(const QString &key);

    QList<IDevicePtr> devices() const;
    QList<IDevicePtr> devices(IDevice::Devices type) const;
    IDevicePtr device(IDevice::DeviceId id) const;

    ITimeSettings *timeSettings();
    ICanMux *canMux();
    IApiMessage *apiMessage();

    /// Creates the platform's devices; apiReady() follows 100 ms later. Runs once.
    void initialize(const QString &name);
    void close();
    bool isReady();

    QStringList &registeredIds();
    QMap<QString, QVariantMap> &services();

    FligtModeFlags flightModeStatus();
    /// Starts a 2000 ms transition; requests during a transition are dropped.
    Q_INVOKABLE void setFlightMode(bool enabled);

    // Name lookups for the enums, filled when the library is loaded.
    static QMetaEnum PlatformTypeEnum;
    static QMetaEnum OSTypeEnum;
    static QMetaEnum BootTypeEnum;

public Q_SLOTS:
    void powerOff();
    void reboot();
    void suspend();
    void serviceSwitch(QString oldService, QString newService);
    void serviceStop(QString app);
    void serviceStart(QString app);
    void serviceRestart(QString app);

Q_SIGNALS:
    void deviceDetected(TQ_SPAPI::IDevicePtr device);
    void deviceRemoved(TQ_SPAPI::IDevice::DeviceId id, QString path);
    void apiReady();
    void apiClosed();
    void systemInfoChanged();
    void flightModeStatusChanged(FligtModeFlags status);
    void systemCtrlConnected(bool connected);
    void registeredIdChanged(QString name, bool isActive);
    void serviceChanged(QString name, QVariantMap properties);
    void telemetryEvent(QString eventName, QVariantMap properties, QVariantMap tags);
    void telemetryMessage(QString errorMsg, int level, QVariantMap properties);

private:
    explicit System(QObject *parent);
    ~System() override;

    static System *sysRef_;
    SystemPrivate *d;
    friend class SystemPrivate;
    Q_DISABLE_COPY(System)
};

/// The platform to simulate; the host application sets it before initialize().
namespace SystemPlatformType {
VANTIX_EXPORT extern System::PlatformType type;
}

} // namespace TQ_SPAPI

Q_DECLARE_OPERATORS_FOR_FLAGS(TQ_SPAPI::System::FligtModeFlags)

#endif

#ifndef VANTIX_VANTIXDEBUG_H
#define VANTIX_VANTIXDEBUG_H

#include <vantix/idevice.h>
#include <vantix/vantix_export.h>

#include <QObject>

namespace TQ_QBCom {
class ParameterController;
class QBParameter;
} // namespace TQ_QBCom

namespace TQ_SPAPI {

class SystemPrivate;

/**
 * Lets a developer drive the simulated hardware while an application runs.
 * Every operation ends in the system's own override operations, so the
 * application sees the devices' ordinary change signals. Test code may call
 * the operations directly. One instance per process, never deleted by anyone.
 */
class VANTIX_EXPORT VantixDebug : public QObject
{
    Q_OBJECT

public:
    static VantixDebug *instance();

    /// Attaches the simulation that executes every action; done by System::initialize().
    void setSystemPrivate(SystemPrivate *p);
    /// Detaches @p p if it is the attached one; done when a System goes away.
    void detachSystemPrivate(SystemPrivate *p);
    /**
     * Adds the parameter "VantixDebug" to @p controller; every text written
     * to it is run as a debug command. Each call adds one more parameter.
     */
    void setParameterController(TQ_QBCom::ParameterController &controller);

    void addBattery(IDevice::DeviceId id);
    void removeBattery(IDevice::DeviceId id);
    void overridePowerConnectedToggle(IDevice::DeviceId id);

    /// Plugs a device as the device list's factory builds it; null while no system is attached.
    IDevicePtr addDevice(IDevice::DeviceId id, IDevice::DeviceType type, const QString &path);
    /// Unplugs the device stored under @p id; nothing happens while no system is attached.
    void removeDevice(IDevice::DeviceId id);

private Q_SLOTS:
    void onVantixDebugChanged(QString newValue);

private:
    VantixDebug();
    bool runCommand(const QString &command, const QStringList &args);

    ~VantixDebug() override;

    SystemPrivate *m_systemPrivate = nullptr;
    TQ_QBCom::QBParameter *m_parameter = nullptr;

    Q_DISABLE_COPY(VantixDebug)
};

} // namespace TQ_SPAPI

#endif

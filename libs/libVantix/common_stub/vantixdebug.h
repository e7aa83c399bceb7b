#ifndef VANTIX_VANTIXDEBUG_H
#define VANTIX_VANTIXDEBUG_H

#include <vantix/idevice.h>
#include <vantix/vantix_export.h>

#include <QObject>

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

    void addBattery(IDevice::DeviceId id);
    void removeBattery(IDevice::DeviceId id);
    void overrideFuelGauge(IDevice::DeviceId id, int value);
    void overrideChargeToggle(IDevice::DeviceId id);
    void overridePowerConnectedToggle(IDevice::DeviceId id);
    void overrideCurrent(IDevice::DeviceId id, double current);

private:
    VantixDebug();
    ~VantixDebug() override;

    SystemPrivate *m_systemPrivate = nullptr;

    Q_DISABLE_COPY(VantixDebug)
};

} // namespace TQ_SPAPI

#endif

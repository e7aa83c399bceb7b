#ifndef VANTIX_BATTERYPRIVATE_P_H
#define VANTIX_BATTERYPRIVATE_P_H

#include <vantix/ibattery.h>
#include <vantix/vantix_private_export.h>

#include "deviceprivate_p.h"

#include <QSharedPointer>
#include <QString>

namespace TQ_SPAPI {

/**
 * A simulated battery. Nothing measures on the desktop: the values stay at
 * their start until the debug controller overrides them, and every override
 * marks the status with F_OVERRIDE.
 */
class VANTIX_PRIVATE_EXPORT BatteryPrivate : public DevicePrivate
{
    Q_OBJECT

public:
    BatteryPrivate(IBattery *q, IDevice::DeviceId id);
    ~BatteryPrivate() override;

    /// Announces @p value even when it is unchanged, so a forced value always reaches listeners.
    void overrideFuelGauge(int value);
    /// Flips charging; every switch-on counts as a charge start.
    void overrideChargeToggle();
    void overridePowerConnectedToggle();
    /// Sets the momentary current only; the average and the voltage stay.
    void overrideCurrent(double value);

    int fuelGauge = 100;
    QSharedPointer<ISensor> sensor;
    QString modelName;
    QString manufacturer;
    QString label;
    double voltage = 0.0;
    double current = 0.0;
    double currentAvg = 0.0;
    int chargeCounter = 0;

private:
    IBattery *q_func() const { return static_cast<IBattery *>(q); }

    Q_DISABLE_COPY(BatteryPrivate)
};

} // namespace TQ_SPAPI

#endif

#ifndef VANTIX_SENSORPRIVATE_P_H
#define VANTIX_SENSORPRIVATE_P_H

#include <vantix/isensor.h>
#include <vantix/vantix_private_export.h>

#include "deviceprivate_p.h"

namespace TQ_SPAPI {

/**
 * A simulated sensor with fixed start values per device id. Its state
 * (normal, high, low, critical, kept in the status bits F_SENSORHIGH,
 * F_SENSORLOW and F_SENSORCRITICAL) moves only in poll(). F_ENABLEHIGH selects
 * the high mode, which watches the value rise; F_ENABLELOW without
 * F_ENABLEHIGH selects the low mode, which watches it fall.
 */
class VANTIX_PRIVATE_EXPORT SensorPrivate : public DevicePrivate
{
    Q_OBJECT

public:
    SensorPrivate(ISensor *q, IDevice::DeviceId id, IDevice::DeviceType type);
    ~SensorPrivate() override;

    void setPollMs(quint32 newPollMs);
    void setThreshold(double newThreshold);
    void setHighLimit(double newHighLimit);
    void setLowLimit(double newLowLimit);

    /// Takes a new reading; false, and no signal, when it equals the stored one.
    bool updateValue(double newValue);

    double value = 0.0;
    quint32 pollMs = 0;
    double threshold = 0.0;
    double highLimit = 0.0;
    double lowLimit = 0.0;
    double criticalLimit = 0.0;

public Q_SLOTS:
    /// Marks the sensor active and moves it to the state its value calls for.
    void poll();

private:
    ISensor *q_func() const { return static_cast<ISensor *>(q); }

    void checkHighMode();
    void checkLowMode();
    void enterHigh();
    void enterLow();
    void enterCritical();
    /// Replaces the three state bits by @p state.
    void setState(IDevice::Flags state);
    /// Stores @p newValue in @p field if it differs; true if it did.
    bool changeLimit(double &field, double newValue);

    Q_DISABLE_COPY(SensorPrivate)
};

} // namespace TQ_SPAPI

#endif

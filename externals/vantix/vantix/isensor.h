#ifndef VANTIX_ISENSOR_H
#define VANTIX_ISENSOR_H

#include <vantix/idevice.h>
#include <vantix/vantix_export.h>

namespace TQ_SPAPI {

class SensorPrivate;

/**
 * A measured value with limits (a temperature on this system). The sensor
 * moves between normal, high, low and critical when it is polled, and
 * announces reaching the high and the low state with highLimitReached() and
 * lowLimitReached(); the critical state shows in the status word only.
 */
class VANTIX_EXPORT ISensor : public IDevice
{
    Q_OBJECT
    Q_PROPERTY(TQ_SPAPI::IDevice::DeviceId id READ id CONSTANT)
    Q_PROPERTY(double value READ value NOTIFY valueChanged)
    Q_PROPERTY(uint pollMs READ pollMs WRITE setPollMs NOTIFY pollMsChanged)
    Q_PROPERTY(double threshold READ threshold WRITE setThreshold NOTIFY thresholdChanged)
    Q_PROPERTY(double highLimit READ highLimit WRITE setHighLimit NOTIFY highLimitChanged)
    Q_PROPERTY(double lowLimit READ lowLimit WRITE setLowLimit NOTIFY lowLimitChanged)
    Q_PROPERTY(double criticalLimit READ criticalLimit CONSTANT)

public:
    /// Start value and limits come from @p id; @p type is kept as given.
    ISensor(DeviceId id, DeviceType type);
    ~ISensor() override;

    virtual double value() const;
    virtual uint pollMs() const;
    virtual double threshold() const;
    virtual double highLimit() const;
    virtual double lowLimit() const;
    virtual double criticalLimit() const;

    /// Stored and announced only; nothing polls on its own in this build.
    virtual void setPollMs(uint pollMs);
    // The limit setters mark the status with F_OVERRIDE when they change something.
    virtual void setThreshold(double threshold);
    virtual void setHighLimit(double highLimit);
    virtual void setLowLimit(double lowLimit);

Q_SIGNALS:
    void highLimitReached();
    void lowLimitReached();
    void valueChanged(double newValue);
    void pollMsChanged(uint newPoll);
    void thresholdChanged(double newThreshold);
    void highLimitChanged(double newHigh);
    void lowLimitChanged(double newLow);

private:
    Q_DISABLE_COPY(ISensor)
};

} // namespace TQ_SPAPI

#endif

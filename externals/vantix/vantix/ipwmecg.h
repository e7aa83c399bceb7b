#ifndef VANTIX_IPWMECG_H
#define VANTIX_IPWMECG_H

#include <vantix/idevice.h>
#include <vantix/vantix_export.h>

namespace TQ_SPAPI {

/**
 * The PWM output that drives the manikin's ECG signal. The desktop build has
 * no such output: requests are accepted and the values stay 0.
 */
class VANTIX_EXPORT IPwmEcg : public IDevice
{
    Q_OBJECT
    Q_PROPERTY(uint pwm READ pwm NOTIFY pwmChanged)
    Q_PROPERTY(uint updateInterval READ updateInterval NOTIFY updateIntervalChanged)

public:
    explicit IPwmEcg(DeviceId id);

    virtual uint pwm() const;
    virtual uint updateInterval() const;
    Q_INVOKABLE virtual void setPwm(uint pwm, uint updateInterval);
    Q_INVOKABLE virtual void setPwmDirectly(uint pwm);

Q_SIGNALS:
    void pwmChanged(uint pwm);
    void updateIntervalChanged(uint updateInterval);
};

} // namespace TQ_SPAPI

#endif

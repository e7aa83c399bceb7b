#ifndef VANTIX_PWMECGPRIVATE_P_H
#define VANTIX_PWMECGPRIVATE_P_H

#include <vantix/ipwmecg.h>
#include <vantix/vantix_private_export.h>

#include "deviceprivate_p.h"

namespace TQ_SPAPI {

class VANTIX_PRIVATE_EXPORT PwmEcgPrivate : public DevicePrivate
{
    Q_OBJECT

public:
    PwmEcgPrivate(IPwmEcg *q, IDevice::DeviceId id);

    // Without the output hardware there is nothing to program; the values stay 0.
    virtual void setPwm(uint, uint) { }
    virtual void setPwmDirectly(uint) { }

    uint pwm = 0;
    uint updateInterval = 0;
};

} // namespace TQ_SPAPI

#endif

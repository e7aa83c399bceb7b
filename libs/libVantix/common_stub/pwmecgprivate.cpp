#include "pwmecgprivate_p.h"

namespace TQ_SPAPI {

PwmEcgPrivate::PwmEcgPrivate(IPwmEcg *q, IDevice::DeviceId id)
    : DevicePrivate(q, id, IDevice::DEVICE_PWM)
{
}

} // namespace TQ_SPAPI

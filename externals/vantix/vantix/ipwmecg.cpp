#include "ipwmecg.h"

#include "pwmecgprivate_p.h"

namespace TQ_SPAPI {

IPwmEcg::IPwmEcg(DeviceId id)
{
    setPrivate(new PwmEcgPrivate(this, id));
}

uint IPwmEcg::pwm() const
{
    return d_func<PwmEcgPrivate>()->pwm;
}

uint IPwmEcg::updateInterval() const
{
    return d_func<PwmEcgPrivate>()->updateInterval;
}

void IPwmEcg::setPwm(uint pwm, uint updateInterval)
{
    d_func<PwmEcgPrivate>()->setPwm(pwm, updateInterval);
}

void IPwmEcg::setPwmDirectly(uint pwm)
{
    d_func<PwmEcgPrivate>()->setPwmDirectly(pwm);
}

} // namespace TQ_SPAPI

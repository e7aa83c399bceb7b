#include "ivibrator.h"

#include "vibratorprivate_p.h"

namespace TQ_SPAPI {

IVibrator::IVibrator(DeviceId id)
{
    setPrivate(new VibratorPrivate(this, id));
}

double IVibrator::modulationHz() const
{
    return d_func<VibratorPrivate>()->modulationHz;
}

void IVibrator::setModulationHz(double modulationHz)
{
    d_func<VibratorPrivate>()->setModulationHz(modulationHz);
}

void IVibrator::start()
{
    d_func<VibratorPrivate>()->start();
}

void IVibrator::stop()
{
    d_func<VibratorPrivate>()->stop();
}

} // namespace TQ_SPAPI

#include "vibratorprivate_p.h"

namespace TQ_SPAPI {

VibratorPrivate::VibratorPrivate(IVibrator *q, IDevice::DeviceId id)
    : DevicePrivate(q, id, IDevice::DEVICE_VIBRATOR)
{
}

void VibratorPrivate::setModulationHz(double newModulationHz)
{
    // No comparison: every request is passed on to the motor driver.
    modulationHz = newModulationHz;
    Q_EMIT static_cast<IVibrator *>(q)->modulationHzChanged(modulationHz);
}

} // namespace TQ_SPAPI

#ifndef VANTIX_VIBRATORPRIVATE_P_H
#define VANTIX_VIBRATORPRIVATE_P_H

#include <vantix/ivibrator.h>
#include <vantix/vantix_private_export.h>

#include "deviceprivate_p.h"

namespace TQ_SPAPI {

class VANTIX_PRIVATE_EXPORT VibratorPrivate : public DevicePrivate
{
    Q_OBJECT

public:
    VibratorPrivate(IVibrator *q, IDevice::DeviceId id);

    void setModulationHz(double newModulationHz);
    // A simulated motor has nothing to drive.
    virtual void start() { }
    virtual void stop() { }

    double modulationHz = 0.0;
};

} // namespace TQ_SPAPI

#endif

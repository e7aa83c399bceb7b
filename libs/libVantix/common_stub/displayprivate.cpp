#include "displayprivate_p.h"

namespace TQ_SPAPI {

DisplayPrivate::DisplayPrivate(IDisplay *q, IDevice::DeviceId id)
    : DevicePrivate(q, id, IDevice::DEVICE_DISPLAY)
{
}

void DisplayPrivate::setBrightnes(uint newBrightnes)
{
    const auto value = quint16(newBrightnes);
    if (value == brightnes) {
        return;
    }
    brightnes = value;
    Q_EMIT q_func()->brightnesChanged(brightnes);
}

void DisplayPrivate::setBacklight(bool newBacklight)
{
    if (newBacklight == backlight) {
        return;
    }
    backlight = newBacklight;
    Q_EMIT q_func()->backlightChanged(backlight);
}

} // namespace TQ_SPAPI

#include "idisplay.h"

#include "displayprivate_p.h"

namespace TQ_SPAPI {

IDisplay::IDisplay(DeviceId id)
{
    setPrivate(new DisplayPrivate(this, id));
}

uint IDisplay::brightnes() const
{
    return d_func<DisplayPrivate>()->brightnes;
}

void IDisplay::setBrightnes(uint brightnes)
{
    d_func<DisplayPrivate>()->setBrightnes(brightnes);
}

bool IDisplay::backlight() const
{
    return d_func<DisplayPrivate>()->backlight;
}

void IDisplay::setBacklight(bool backlight)
{
    d_func<DisplayPrivate>()->setBacklight(backlight);
}

uint IDisplay::maxBrightness() const
{
    return DisplayPrivate::MaxBrightness;
}

uint IDisplay::steps() const
{
    return d_func<DisplayPrivate>()->steps;
}

} // namespace TQ_SPAPI

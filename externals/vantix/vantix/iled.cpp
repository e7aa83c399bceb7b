#include "iled.h"

#include "ledprivate_p.h"

namespace TQ_SPAPI {

ILed::ILed(DeviceId id)
{
    setPrivate(new LedPrivate(this, id));
}

ILed::LedMode ILed::mode() const
{
    return d_func<LedPrivate>()->mode;
}

Qt::GlobalColor ILed::color() const
{
    return d_func<LedPrivate>()->color;
}

int ILed::msOn() const
{
    return d_func<LedPrivate>()->msOn;
}

int ILed::msOff() const
{
    return d_func<LedPrivate>()->msOff;
}

void ILed::on(Qt::GlobalColor color)
{
    d_func<LedPrivate>()->on(color);
}

void ILed::off()
{
    d_func<LedPrivate>()->off();
}

void ILed::setFlash(Qt::GlobalColor color, int msOn, int msOff)
{
    d_func<LedPrivate>()->setFlash(color, msOn, msOff);
}

const QList<Qt::GlobalColor> &ILed::getColors() const
{
    return d_func<LedPrivate>()->colors;
}

} // namespace TQ_SPAPI

#include "ledprivate_p.h"

namespace TQ_SPAPI {

namespace {
// The colours each LED's hardware can mix.
QList<Qt::GlobalColor> colorsOf(IDevice::DeviceId id)
{
    switch (id) {
    case IDevice::ID_LED_POWER:
        return {Qt::cyan, Qt::red, Qt::green};
    case IDevice::ID_LED_WIFI:
        return {Qt::blue, Qt::green};
    default:
        return {};
    }
}
} // namespace

LedPrivate::LedPrivate(ILed *q, IDevice::DeviceId id)
    : DevicePrivate(q, id, IDevice::DEVICE_LED)
    , colors(colorsOf(id))
{
}

bool LedPrivate::takeColor(Qt::GlobalColor newColor)
{
    if (!colors.contains(newColor)) {
        setError(IDevice::E_INVALID_COLOR);
        return false;
    }
    if (newColor != color) {
        color = newColor;
        Q_EMIT q_func()->colorChanged(color);
    }
    return true;
}

void LedPrivate::on(Qt::GlobalColor newColor)
{
    if (!takeColor(newColor)) {
        return;
    }
    if (mode != ILed::LED_ON) {
        // The status goes before the mode signal: listeners of the mode see the LED lit.
        mode = ILed::LED_ON;
        setStatus(status | IDevice::F_ENABLE);
        Q_EMIT q_func()->modeChanged(mode);
    }
}

void LedPrivate::off()
{
    if (mode == ILed::LED_OFF) {
        return;
    }
    mode = ILed::LED_OFF;
    setStatus(status & ~IDevice::DeviceFlags(IDevice::F_ENABLE));
    Q_EMIT q_func()->modeChanged(mode);
}

void LedPrivate::setFlash(Qt::GlobalColor newColor, int newMsOn, int newMsOff)
{
    if (!takeColor(newColor)) {
        return;
    }
    if (mode != ILed::LED_FLASH) {
        // Flashing leaves F_ENABLE alone, unlike on() and off().
        mode = ILed::LED_FLASH;
        Q_EMIT q_func()->modeChanged(mode);
    }
    if (newMsOn != msOn) {
        msOn = newMsOn;
        Q_EMIT q_func()->msOnChanged(msOn);
    }
    if (newMsOff != msOff) {
        msOff = newMsOff;
        // Announced on the on-time signal; existing applications listen there.
        Q_EMIT q_func()->msOnChanged(msOff);
    }
}

} // namespace TQ_SPAPI

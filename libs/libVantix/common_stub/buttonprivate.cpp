#include "buttonprivate_p.h"

namespace TQ_SPAPI {

ButtonPrivate::ButtonPrivate(IButton *q, IDevice::DeviceId id)
    : DevicePrivate(q, id, IDevice::DEVICE_BUTTON)
{
}

void ButtonPrivate::setPressed(bool newPressed)
{
    pressed = newPressed;
    Q_EMIT static_cast<IButton *>(q)->pressedChanged(pressed);
}

void ButtonPrivate::setKeyId(uint newKeyId)
{
    keyId = newKeyId;
}

} // namespace TQ_SPAPI

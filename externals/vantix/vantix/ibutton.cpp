#include "ibutton.h"

#include "buttonprivate_p.h"

namespace TQ_SPAPI {

IButton::IButton(DeviceId id)
{
    setPrivate(new ButtonPrivate(this, id));
}

bool IButton::pressed() const
{
    return d_func<ButtonPrivate>()->pressed;
}

uint IButton::keyId() const
{
    return d_func<ButtonPrivate>()->keyId;
}

} // namespace TQ_SPAPI

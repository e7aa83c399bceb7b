#include "iiocontroller.h"

#include "iocontrollerprivate_p.h"

namespace TQ_SPAPI {

IIOController::IIOController(DeviceId id, DeviceType type)
{
    setPrivate(new IOControllerPrivate(this, id, type));
}

IIOController::IOMode IIOController::mode() const
{
    return d_func<IOControllerPrivate>()->mode;
}

void IIOController::setMode(IOMode mode)
{
    d_func<IOControllerPrivate>()->setMode(mode);
}

void IIOController::restart()
{
    d_func<IOControllerPrivate>()->restart();
}

} // namespace TQ_SPAPI

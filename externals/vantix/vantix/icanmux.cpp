#include "icanmux.h"

#include "canmuxprivate_p.h"

namespace TQ_SPAPI {

ICanMux::ICanMux(QObject *parent)
    : QObject(parent)
    , d(new CanMuxPrivate(this))
{
}

ICanMux::~ICanMux()
{
    delete d;
}

IDevice::DeviceId ICanMux::activeDevice() const
{
    return d->activeDevice;
}

void ICanMux::setActiveDevice(IDevice::DeviceId id)
{
    d->setActiveDevice(id);
}

ICanMux::CanTermination ICanMux::termination() const
{
    return d->termination;
}

void ICanMux::setTermination(CanTermination term)
{
    d->setTermination(term);
}

} // namespace TQ_SPAPI

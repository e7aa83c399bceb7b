#include "iocontrollerprivate_p.h"

#include <QDebug>

namespace TQ_SPAPI {

IOControllerPrivate::IOControllerPrivate(IIOController *q, IDevice::DeviceId id, IDevice::DeviceType type)
    : DevicePrivate(q, id, type)
{
}

void IOControllerPrivate::setMode(IIOController::IOMode newMode)
{
    if (newMode == mode) {
        return;
    }
    mode = newMode;
    Q_EMIT static_cast<IIOController *>(q)->modeChanged(mode);
}

void IOControllerPrivate::restart()
{
    // There is no co-processor to reset on the desktop.
    qDebug() << "stub!";
}

} // namespace TQ_SPAPI

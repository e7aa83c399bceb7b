#ifndef VANTIX_IOCONTROLLERPRIVATE_P_H
#define VANTIX_IOCONTROLLERPRIVATE_P_H

#include <vantix/iiocontroller.h>
#include <vantix/vantix_private_export.h>

#include "deviceprivate_p.h"

namespace TQ_SPAPI {

class VANTIX_PRIVATE_EXPORT IOControllerPrivate : public DevicePrivate
{
    Q_OBJECT

public:
    IOControllerPrivate(IIOController *q, IDevice::DeviceId id, IDevice::DeviceType type);

    void setMode(IIOController::IOMode newMode);

    IIOController::IOMode mode = IIOController::IOC_NORMAL;

public Q_SLOTS:
    virtual void restart();
};

} // namespace TQ_SPAPI

#endif

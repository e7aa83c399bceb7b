#include "usbprivate_p.h"

namespace TQ_SPAPI {

UsbPrivate::UsbPrivate(IUsb *q, IDevice::DeviceId id)
    : DevicePrivate(q, id, IDevice::DEVICE_USB)
{
}

} // namespace TQ_SPAPI

#include "iusb.h"

#include "usbprivate_p.h"

namespace TQ_SPAPI {

IUsb::IUsb(DeviceId id)
{
    setPrivate(new UsbPrivate(this, id));
}

QString IUsb::model() const
{
    return d_func<UsbPrivate>()->model;
}

QString IUsb::modelRaw() const
{
    return d_func<UsbPrivate>()->modelRaw;
}

QString IUsb::modelDb() const
{
    return d_func<UsbPrivate>()->modelDb;
}

QString IUsb::modelId() const
{
    return d_func<UsbPrivate>()->modelId;
}

QString IUsb::revision() const
{
    return d_func<UsbPrivate>()->revision;
}

QString IUsb::serial() const
{
    return d_func<UsbPrivate>()->serial;
}

QString IUsb::serialShort() const
{
    return d_func<UsbPrivate>()->serialShort;
}

QString IUsb::vendor() const
{
    return d_func<UsbPrivate>()->vendor;
}

QString IUsb::vendorId() const
{
    return d_func<UsbPrivate>()->vendorId;
}

QString IUsb::usbInterfaces() const
{
    return d_func<UsbPrivate>()->usbInterfaces;
}

} // namespace TQ_SPAPI

#include "idevice.h"

#include "deviceprivate_p.h"

#include <QMetaType>

namespace TQ_SPAPI {

namespace {
void registerDeviceMetaTypes()
{
    // Names under which these types travel in queued signals.
    qRegisterMetaType<IDevicePtr>("TQ_SPAPI::IDevicePtr");
    qRegisterMetaType<IDevicePtr>("IDevicePtr");
    qRegisterMetaType<IDevice::DeviceFlags>("TQ_SPAPI::IDevice::DeviceFlags");
    qRegisterMetaType<IDevice::DeviceError>("TQ_SPAPI::IDevice::DeviceError");
    qRegisterMetaType<IDevice::DeviceId>("TQ_SPAPI::IDevice::DeviceId");
    qRegisterMetaType<IDevice::DeviceType>("TQ_SPAPI::IDevice::DeviceType");
}
} // namespace
Q_CONSTRUCTOR_FUNCTION(registerDeviceMetaTypes)

IDevice::IDevice() = default;

IDevice::IDevice(DeviceId id, DeviceType type, const QString &path)
{
    setPrivate(new DevicePrivate(this, id, type, path));
}

IDevice::~IDevice()
{
    // The private goes first, so it never outlives the object it emits on.
    delete d;
    d = nullptr;
}

void IDevice::setPrivate(DevicePrivate *p)
{
    if (d == p) {
        return;
    }
    delete d;
    d = p;
}

IDevice::DeviceId IDevice::id() const
{
    return d->id;
}

IDevice::DeviceType IDevice::type() const
{
    return d->type;
}

const QString &IDevice::path() const
{
    return d->path;
}

IDevice::DeviceFlags IDevice::status() const
{
    return d->status;
}

void IDevice::setAbility(Flags flags)
{
    d->setAbility(flags);
}

void IDevice::clearAbility(Flags flags)
{
    d->clearAbility(flags);
}

void IDevice::reset()
{
    d->reset();
}

IDevice::DeviceError IDevice::error() const
{
    return d->error();
}

void IDevice::initialize()
{
    d->initialize();
}

} // namespace TQ_SPAPI

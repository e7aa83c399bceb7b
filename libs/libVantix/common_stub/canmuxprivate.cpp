#include "canmuxprivate_p.h"

#include "metaenum_p.h"

#include <QDebug>

namespace TQ_SPAPI {

namespace {
// An id without an enumerator name is written as its number.
QByteArray idName(IDevice::DeviceId id)
{
    const QByteArray name = enumKey(id);
    return name.isEmpty() ? QByteArray::number(int(id)) : name;
}
} // namespace

CanMuxPrivate::CanMuxPrivate(ICanMux *q)
    : q(q)
{
}

CanMuxPrivate::~CanMuxPrivate() = default;

void CanMuxPrivate::setCanBus(const IDevicePtr &device)
{
    if (canBus) {
        disconnect(canBus.data(), &IDevice::statusChanged, this, &CanMuxPrivate::canBusStatus);
    }
    canBus = device;
    if (canBus) {
        connect(canBus.data(), &IDevice::statusChanged, this, &CanMuxPrivate::canBusStatus);
    }
}

void CanMuxPrivate::setCanSerial(const IDevicePtr &device)
{
    if (canSerial) {
        disconnect(canSerial.data(), &IDevice::statusChanged, this, &CanMuxPrivate::canSerialStatus);
    }
    canSerial = device;
    if (canSerial) {
        connect(canSerial.data(), &IDevice::statusChanged, this, &CanMuxPrivate::canSerialStatus);
    }
}

// Only the chosen outlet is asked to enable; the other one is left as it is,
// and activeDevice stays unchanged, since the desktop has no switch to report.
void CanMuxPrivate::setActiveDevice(IDevice::DeviceId id)
{
    IDevicePtr device;
    if (id == IDevice::ID_CAN_BUS) {
        if (!canBus) {
            qWarning() << "No can bus exist in CanMux object!";
            return;
        }
        device = canBus;
    } else if (id == IDevice::ID_CAN_SERIAL) {
        if (!canSerial) {
            qWarning() << "No can serial exist in CanMux object!";
            return;
        }
        device = canSerial;
    } else {
        qWarning() << "Invalid can device ID:" << idName(id).constData();
        return;
    }
    device->setAbility(IDevice::F_ENABLE);
    qDebug() << "Activate can device" << idName(id).constData();
}

// The termination shows only as F_TERMINATE on the bus device.
void CanMuxPrivate::setTermination(ICanMux::CanTermination term)
{
    if (!canBus) {
        qWarning() << "No can bus exist in CanMux object!";
        return;
    }
    if (term == ICanMux::CAN_TERM_ON) {
        canBus->setAbility(IDevice::F_TERMINATE);
        qDebug() << "Terminate can bus ON";
    } else {
        canBus->clearAbility(IDevice::F_TERMINATE);
        qDebug() << "Terminate can bus OFF";
    }
}

void CanMuxPrivate::canBusStatus(IDevice::DeviceFlags newStatus)
{
    Q_UNUSED(newStatus)
}

void CanMuxPrivate::canSerialStatus(IDevice::DeviceFlags newStatus)
{
    Q_UNUSED(newStatus)
}

} // namespace TQ_SPAPI

#ifndef VANTIX_CANMUXPRIVATE_P_H
#define VANTIX_CANMUXPRIVATE_P_H

#include <vantix/icanmux.h>
#include <vantix/vantix_private_export.h>

#include <QObject>

namespace TQ_SPAPI {

/**
 * The desktop CAN multiplexer: it only passes the requests on to the CAN
 * devices as ability bits. It has no QObject parent; ICanMux deletes it.
 */
class VANTIX_PRIVATE_EXPORT CanMuxPrivate : public QObject
{
    Q_OBJECT

public:
    explicit CanMuxPrivate(ICanMux *q);
    ~CanMuxPrivate() override;

    static CanMuxPrivate *get(ICanMux *mux) { return mux ? mux->d : nullptr; }

    void setActiveDevice(IDevice::DeviceId id);
    void setTermination(ICanMux::CanTermination term);
    /// Hands over the device behind an outlet; the status slots follow it from then on.
    void setCanBus(const IDevicePtr &device);
    void setCanSerial(const IDevicePtr &device);

public Q_SLOTS:
    // A hardware build learns the outlet state here; the desktop has nothing to learn.
    void canBusStatus(TQ_SPAPI::IDevice::DeviceFlags newStatus);
    void canSerialStatus(TQ_SPAPI::IDevice::DeviceFlags newStatus);

public:
    ICanMux *q;
    IDevice::DeviceId activeDevice = IDevice::ID_UNKNOWN_DEV;
    ICanMux::CanTermination termination = ICanMux::CAN_TERM_OFF;
    IDevicePtr canBus;
    IDevicePtr canSerial;

private:
    Q_DISABLE_COPY(CanMuxPrivate)
};

} // namespace TQ_SPAPI

#endif

#ifndef VANTIX_ICANMUX_H
#define VANTIX_ICANMUX_H

#include <vantix/idevice.h>
#include <vantix/vantix_export.h>

#include <QObject>

namespace TQ_SPAPI {

class CanMuxPrivate;

/**
 * Chooses which outlet of the one CAN controller is active, the CAN bus or
 * the CAN serial device, and switches the bus termination. Not a device
 * itself: System creates it on the platforms that have one and hands it the
 * two CAN devices.
 *
 * On the desktop the choices show only in the devices' status words (F_ENABLE,
 * F_TERMINATE, each 100 ms after the call); activeDevice() and termination()
 * keep their start values.
 */
class VANTIX_EXPORT ICanMux : public QObject
{
    Q_OBJECT
    Q_PROPERTY(
        TQ_SPAPI::IDevice::DeviceId activeDevice READ activeDevice WRITE setActiveDevice NOTIFY activeDeviceChanged)
    Q_PROPERTY(CanTermination termination READ termination WRITE setTermination NOTIFY terminationChanged)

public:
    enum CanTermination {
        CAN_TERM_ON = 0,
        CAN_TERM_OFF = 1,
    };
    Q_ENUM(CanTermination)

    explicit ICanMux(QObject *parent = nullptr);
    ~ICanMux() override;

    IDevice::DeviceId activeDevice() const;
    /// Enables ID_CAN_BUS or ID_CAN_SERIAL; any other id is refused with a warning.
    void setActiveDevice(IDevice::DeviceId id);
    CanTermination termination() const;
    /// Switches F_TERMINATE on the CAN bus device.
    void setTermination(CanTermination term);

Q_SIGNALS:
    void activeDeviceChanged(TQ_SPAPI::IDevicePtr newDevice);
    void terminationChanged(TQ_SPAPI::ICanMux::CanTermination newTerm);

private:
    friend class CanMuxPrivate;
    CanMuxPrivate *d;
    Q_DISABLE_COPY(ICanMux)
};

} // namespace TQ_SPAPI

#endif

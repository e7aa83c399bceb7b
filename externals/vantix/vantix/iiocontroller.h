#ifndef VANTIX_IIOCONTROLLER_H
#define VANTIX_IIOCONTROLLER_H

#include <vantix/idevice.h>
#include <vantix/vantix_export.h>

namespace TQ_SPAPI {

/// The I/O co-processor, which runs normally or waits to be programmed.
class VANTIX_EXPORT IIOController : public IDevice
{
    Q_OBJECT
    Q_PROPERTY(IOMode mode READ mode WRITE setMode NOTIFY modeChanged)

public:
    enum IOMode {
        IOC_NORMAL = 0,
        IOC_PROGRAMMING = 1,
    };
    Q_ENUM(IOMode)

    /// @p type is the bus the controller sits on, normally DEVICE_SERIAL.
    IIOController(DeviceId id, DeviceType type);

    virtual IOMode mode() const;
    virtual void setMode(IOMode mode);

public Q_SLOTS:
    Q_INVOKABLE virtual void restart();

Q_SIGNALS:
    void modeChanged(TQ_SPAPI::IIOController::IOMode mode);
};

} // namespace TQ_SPAPI

#endif

#ifndef VANTIX_IUSB_H
#define VANTIX_IUSB_H

#include <vantix/idevice.h>
#include <vantix/vantix_export.h>

namespace TQ_SPAPI {

/// A function attached to a USB port, as the USB descriptors identify it.
class VANTIX_EXPORT IUsb : public IDevice
{
    Q_OBJECT
    Q_PROPERTY(QString model READ model CONSTANT)
    Q_PROPERTY(QString modelRaw READ modelRaw CONSTANT)
    Q_PROPERTY(QString modelDb READ modelDb CONSTANT)
    Q_PROPERTY(QString modelId READ modelId CONSTANT)
    Q_PROPERTY(QString revision READ revision CONSTANT)
    Q_PROPERTY(QString serial READ serial CONSTANT)
    Q_PROPERTY(QString serialShort READ serialShort CONSTANT)
    Q_PROPERTY(QString vendor READ vendor CONSTANT)
    Q_PROPERTY(QString vendorId READ vendorId CONSTANT)
    Q_PROPERTY(QString usbInterfaces READ usbInterfaces CONSTANT)

public:
    explicit IUsb(DeviceId id);

    virtual QString model() const;
    virtual QString modelRaw() const;
    virtual QString modelDb() const;
    virtual QString modelId() const;
    virtual QString revision() const;
    virtual QString serial() const;
    virtual QString serialShort() const;
    virtual QString vendor() const;
    virtual QString vendorId() const;
    virtual QString usbInterfaces() const;
};

} // namespace TQ_SPAPI

#endif

#ifndef VANTIX_IBUTTON_H
#define VANTIX_IBUTTON_H

#include <vantix/idevice.h>
#include <vantix/vantix_export.h>

namespace TQ_SPAPI {

/**
 * A hardware push button. keyId() is the key code the button also produces
 * as a key event.
 */
class VANTIX_EXPORT IButton : public IDevice
{
    Q_OBJECT
    Q_PROPERTY(bool pressed READ pressed NOTIFY pressedChanged)
    Q_PROPERTY(uint keyId READ keyId CONSTANT)

public:
    explicit IButton(DeviceId id);

    virtual bool pressed() const;
    virtual uint keyId() const;

Q_SIGNALS:
    /// Emitted on every press and release report, also when the state repeats.
    void pressedChanged(bool pressed);
};

} // namespace TQ_SPAPI

#endif

#ifndef VANTIX_IDISPLAY_H
#define VANTIX_IDISPLAY_H

#include <vantix/idevice.h>
#include <vantix/vantix_export.h>

namespace TQ_SPAPI {

/// The display: its brightness and backlight switch.
class VANTIX_EXPORT IDisplay : public IDevice
{
    Q_OBJECT
    Q_PROPERTY(uint brightnes READ brightnes WRITE setBrightnes NOTIFY brightnesChanged)
    Q_PROPERTY(bool backlight READ backlight WRITE setBacklight NOTIFY backlightChanged)
    Q_PROPERTY(uint maxBrightness READ maxBrightness CONSTANT)
    Q_PROPERTY(uint steps READ steps CONSTANT)

public:
    explicit IDisplay(DeviceId id);

    virtual uint brightnes() const;
    /**
     * The display controller takes a 16-bit value: higher bits are dropped,
     * and the value is not limited to maxBrightness().
     */
    virtual void setBrightnes(uint brightnes);
    virtual bool backlight() const;
    virtual void setBacklight(bool backlight);
    virtual uint maxBrightness() const;
    virtual uint steps() const;

Q_SIGNALS:
    void brightnesChanged(uint brightnes);
    void backlightChanged(bool backlight);
    /// Declared for applications; the maximum never changes, so it is never emitted.
    void maxBrightnessChanged(uint maxBrightness);
};

} // namespace TQ_SPAPI

#endif

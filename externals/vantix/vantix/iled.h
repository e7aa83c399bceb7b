#ifndef VANTIX_ILED_H
#define VANTIX_ILED_H

#include <vantix/idevice.h>
#include <vantix/vantix_export.h>

#include <QList>

namespace TQ_SPAPI {

/**
 * A status LED. It can show only the colours of its own list (getColors());
 * asking for another one reports E_INVALID_COLOR and changes nothing.
 * The status bit F_ENABLE tells whether the LED is lit steadily.
 */
class VANTIX_EXPORT ILed : public IDevice
{
    Q_OBJECT
    Q_PROPERTY(LedMode mode READ mode NOTIFY modeChanged)
    Q_PROPERTY(Qt::GlobalColor color READ color NOTIFY colorChanged)
    Q_PROPERTY(int msOn READ msOn NOTIFY msOnChanged)
    Q_PROPERTY(int msOff READ msOff NOTIFY msOffChanged)

public:
    enum LedMode {
        LED_DEFAULT = 0,
        LED_ON = 1,
        LED_OFF = 2,
        LED_FLASH = 3,
    };
    Q_ENUM(LedMode)

    explicit ILed(DeviceId id);

    virtual LedMode mode() const;
    virtual Qt::GlobalColor color() const;
    virtual int msOn() const;
    virtual int msOff() const;
    /// Lights the LED steadily in @p color.
    Q_INVOKABLE virtual void on(Qt::GlobalColor color);
    /// Switches the LED off; colour and flash times are kept.
    Q_INVOKABLE virtual void off();
    /**
     * Flashes the LED in @p color. Flashing leaves F_ENABLE as it is.
     * A new off-time is announced through msOnChanged(); msOffChanged() is
     * never emitted. Applications depend on this, so it stays.
     */
    Q_INVOKABLE virtual void setFlash(Qt::GlobalColor color, int msOn, int msOff);
    /// The colours this LED can show, in order.
    virtual const QList<Qt::GlobalColor> &getColors() const;

Q_SIGNALS:
    void modeChanged(TQ_SPAPI::ILed::LedMode newMode);
    void colorChanged(Qt::GlobalColor newColor);
    void msOnChanged(int newMsOn);
    void msOffChanged(int newMsOff);
};

} // namespace TQ_SPAPI

#endif

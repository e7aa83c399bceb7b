#ifndef VANTIX_LEDPRIVATE_P_H
#define VANTIX_LEDPRIVATE_P_H

#include <vantix/iled.h>
#include <vantix/vantix_private_export.h>

#include "deviceprivate_p.h"

#include <QList>

namespace TQ_SPAPI {

class VANTIX_PRIVATE_EXPORT LedPrivate : public DevicePrivate
{
    Q_OBJECT

public:
    LedPrivate(ILed *q, IDevice::DeviceId id);

    virtual void on(Qt::GlobalColor newColor);
    virtual void off();
    virtual void setFlash(Qt::GlobalColor newColor, int newMsOn, int newMsOff);

    ILed::LedMode mode = ILed::LED_DEFAULT;
    Qt::GlobalColor color = Qt::green;
    int msOn = 0;
    int msOff = 0;
    QList<Qt::GlobalColor> colors;

private:
    ILed *q_func() const { return static_cast<ILed *>(q); }
    // Stores @p newColor if the LED can show it; false after reporting E_INVALID_COLOR.
    bool takeColor(Qt::GlobalColor newColor);
};

} // namespace TQ_SPAPI

#endif

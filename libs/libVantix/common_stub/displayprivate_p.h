#ifndef VANTIX_DISPLAYPRIVATE_P_H
#define VANTIX_DISPLAYPRIVATE_P_H

#include <vantix/idisplay.h>
#include <vantix/vantix_private_export.h>

#include "deviceprivate_p.h"

namespace TQ_SPAPI {

class VANTIX_PRIVATE_EXPORT DisplayPrivate : public DevicePrivate
{
    Q_OBJECT

public:
    static constexpr uint MaxBrightness = 100;

    DisplayPrivate(IDisplay *q, IDevice::DeviceId id);

    void setBrightnes(uint newBrightnes);
    void setBacklight(bool newBacklight);

    // The width of the display controller's brightness register.
    quint16 brightnes = 100;
    bool backlight = false;
    uint steps = 10;

private:
    IDisplay *q_func() const { return static_cast<IDisplay *>(q); }
};

} // namespace TQ_SPAPI

#endif

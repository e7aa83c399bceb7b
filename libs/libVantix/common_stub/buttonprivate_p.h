#ifndef VANTIX_BUTTONPRIVATE_P_H
#define VANTIX_BUTTONPRIVATE_P_H

#include <vantix/ibutton.h>
#include <vantix/vantix_private_export.h>

#include "deviceprivate_p.h"

namespace TQ_SPAPI {

class VANTIX_PRIVATE_EXPORT ButtonPrivate : public DevicePrivate
{
    Q_OBJECT

public:
    ButtonPrivate(IButton *q, IDevice::DeviceId id);

    /// Every report is passed on, repeated ones included: a repeat is a new press.
    void setPressed(bool newPressed);
    void setKeyId(uint newKeyId);

    bool pressed = false;
    uint keyId = Qt::Key_F11;
};

} // namespace TQ_SPAPI

#endif

#ifndef VANTIX_AUDIOPRIVATE_P_H
#define VANTIX_AUDIOPRIVATE_P_H

#include <vantix/iaudio.h>
#include <vantix/vantix_private_export.h>

#include "deviceprivate_p.h"

namespace TQ_SPAPI {

class VANTIX_PRIVATE_EXPORT AudioPrivate : public DevicePrivate
{
    Q_OBJECT

public:
    AudioPrivate(IAudio *q, IDevice::DeviceId id);

    /// A jack plugged or pulled; F_ACTIVE follows whether anything is plugged.
    void setJackFlags(IAudio::JackFlags newFlags);

    IAudio::JackFlags jackFlags = IAudio::JACK_NOT_CONNECTED;
};

} // namespace TQ_SPAPI

#endif

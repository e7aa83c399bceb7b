#ifndef VANTIX_SOUNDAMPLIFIERPRIVATE_P_H
#define VANTIX_SOUNDAMPLIFIERPRIVATE_P_H

#include <vantix/isoundamplifier.h>
#include <vantix/vantix_private_export.h>

#include "deviceprivate_p.h"

namespace TQ_SPAPI {

class VANTIX_PRIVATE_EXPORT SoundAmplifierPrivate : public DevicePrivate
{
    Q_OBJECT

public:
    SoundAmplifierPrivate(ISoundAmplifier *q, IDevice::DeviceId id);
};

} // namespace TQ_SPAPI

#endif

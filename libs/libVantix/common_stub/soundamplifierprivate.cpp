#include "soundamplifierprivate_p.h"

namespace TQ_SPAPI {

SoundAmplifierPrivate::SoundAmplifierPrivate(ISoundAmplifier *q, IDevice::DeviceId id)
    : DevicePrivate(q, id, IDevice::DEVICE_AUDIO)
{
}

} // namespace TQ_SPAPI

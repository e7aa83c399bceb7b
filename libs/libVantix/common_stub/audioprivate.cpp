#include "audioprivate_p.h"

namespace TQ_SPAPI {

AudioPrivate::AudioPrivate(IAudio *q, IDevice::DeviceId id)
    : DevicePrivate(q, id, IDevice::DEVICE_AUDIO)
{
}

void AudioPrivate::setJackFlags(IAudio::JackFlags newFlags)
{
    if (newFlags == jackFlags) {
        return;
    }
    jackFlags = newFlags;
    Q_EMIT static_cast<IAudio *>(q)->jackFlagsChanged(jackFlags);
    if (jackFlags != IAudio::JACK_NOT_CONNECTED) {
        setStatus(status | IDevice::F_ACTIVE);
    } else {
        setStatus(status & ~IDevice::DeviceFlags(IDevice::F_ACTIVE));
    }
}

} // namespace TQ_SPAPI

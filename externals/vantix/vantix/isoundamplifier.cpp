#include "isoundamplifier.h"

#include "soundamplifierprivate_p.h"

namespace TQ_SPAPI {

ISoundAmplifier::ISoundAmplifier(DeviceId id)
{
    setPrivate(new SoundAmplifierPrivate(this, id));
}

} // namespace TQ_SPAPI

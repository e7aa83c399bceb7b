#include "iaudio.h"

#include "audioprivate_p.h"

namespace TQ_SPAPI {

IAudio::IAudio(DeviceId id)
{
    setPrivate(new AudioPrivate(this, id));
}

IAudio::JackFlags IAudio::jackFlags() const
{
    return d_func<AudioPrivate>()->jackFlags;
}

} // namespace TQ_SPAPI

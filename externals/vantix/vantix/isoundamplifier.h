#ifndef VANTIX_ISOUNDAMPLIFIER_H
#define VANTIX_ISOUNDAMPLIFIER_H

#include <vantix/idevice.h>
#include <vantix/vantix_export.h>

namespace TQ_SPAPI {

/// The loudspeaker amplifier: a device with the common status only.
class VANTIX_EXPORT ISoundAmplifier : public IDevice
{
    Q_OBJECT

public:
    explicit ISoundAmplifier(DeviceId id);
};

} // namespace TQ_SPAPI

#endif

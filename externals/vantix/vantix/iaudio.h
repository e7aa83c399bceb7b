#ifndef VANTIX_IAUDIO_H
#define VANTIX_IAUDIO_H

#include <vantix/idevice.h>
#include <vantix/vantix_export.h>

namespace TQ_SPAPI {

/**
 * The audio output and its jack. The status bit F_ACTIVE tells whether
 * anything is plugged into the jack.
 */
class VANTIX_EXPORT IAudio : public IDevice
{
    Q_OBJECT
    Q_PROPERTY(JackFlags jackFlags READ jackFlags NOTIFY jackFlagsChanged)

public:
    enum JackFlag {
        JACK_NOT_CONNECTED = 0,
        JACK_HEADPHONE = 1,
        JACK_MIC = 2,
    };
    Q_DECLARE_FLAGS(JackFlags, JackFlag)
    Q_FLAG(JackFlags)

    explicit IAudio(DeviceId id);

    /// What is plugged into the jack.
    virtual JackFlags jackFlags() const;

Q_SIGNALS:
    void jackFlagsChanged(TQ_SPAPI::IAudio::JackFlags jackFlags);
};

} // namespace TQ_SPAPI

Q_DECLARE_OPERATORS_FOR_FLAGS(TQ_SPAPI::IAudio::JackFlags)

#endif

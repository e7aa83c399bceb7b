#ifndef VANTIX_IVIBRATOR_H
#define VANTIX_IVIBRATOR_H

#include <vantix/idevice.h>
#include <vantix/vantix_export.h>

namespace TQ_SPAPI {

/// The vibration motor and its modulation frequency.
class VANTIX_EXPORT IVibrator : public IDevice
{
    Q_OBJECT
    Q_PROPERTY(double modulationHz READ modulationHz WRITE setModulationHz NOTIFY modulationHzChanged)

public:
    explicit IVibrator(DeviceId id);

    virtual double modulationHz() const;
    /// Always announced, also when the frequency repeats.
    virtual void setModulationHz(double modulationHz);

public Q_SLOTS:
    virtual void start();
    virtual void stop();

Q_SIGNALS:
    void modulationHzChanged(double modulationHz);
};

} // namespace TQ_SPAPI

#endif

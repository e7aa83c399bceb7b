#ifndef VANTIX_IBATTERY_H
#define VANTIX_IBATTERY_H

#include <vantix/idevice.h>
#include <vantix/isensor.h>
#include <vantix/vantix_export.h>

#include <QSharedPointer>
#include <QString>

namespace TQ_SPAPI {

class BatteryPrivate;

/**
 * A battery: fuel gauge, electrical readings, identity texts, the number of
 * charge starts and its temperature sensor. A new battery reports itself as
 * charging (status F_CHARGE).
 */
class VANTIX_EXPORT IBattery : public IDevice
{
    Q_OBJECT
    Q_PROPERTY(int fuelGauge READ fuelGauge NOTIFY fuelGaugeChanged)
    Q_PROPERTY(QString modelName READ modelName CONSTANT)
    Q_PROPERTY(QString manufacturer READ manufacturer CONSTANT)
    Q_PROPERTY(QString label READ label CONSTANT)
    Q_PROPERTY(double voltage READ voltage NOTIFY voltageChanged)
    Q_PROPERTY(double current READ current NOTIFY currentChanged)
    Q_PROPERTY(double currentAvg READ currentAvg NOTIFY currentAvgChanged)
    Q_PROPERTY(int chargeCounter READ chargeCounter NOTIFY chargeCounterChanged)

public:
    explicit IBattery(DeviceId id);
    ~IBattery() override;

    /// Percent; not range-checked, so a simulated value outside 0..100 is kept.
    virtual int fuelGauge() const;
    /// The battery's temperature sensor, null while none is attached.
    virtual QSharedPointer<ISensor> temperature() const;
    virtual QString modelName() const;
    virtual QString manufacturer() const;
    virtual QString label() const;
    virtual double voltage() const;
    virtual double current() const;
    virtual double currentAvg() const;
    /// How many times charging has been switched on.
    virtual int chargeCounter() const;

    /// Attaches @p sensor as the battery's temperature, replacing any earlier one.
    void setSensor(QSharedPointer<ISensor> sensor);

Q_SIGNALS:
    void fuelGaugeChanged(int newValue);
    void voltageChanged(double newValue);
    void currentChanged(double newValue);
    void currentAvgChanged(double newValue);
    void chargeCounterChanged(int newValue);

private:
    Q_DISABLE_COPY(IBattery)
};

} // namespace TQ_SPAPI

#endif

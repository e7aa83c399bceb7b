#include "isensor.h"

#include "sensorprivate_p.h"

namespace TQ_SPAPI {

ISensor::ISensor(DeviceId id, DeviceType type)
{
    setPrivate(new SensorPrivate(this, id, type));
}

ISensor::~ISensor() = default;

double ISensor::value() const
{
    return d_func<SensorPrivate>()->value;
}

uint ISensor::pollMs() const
{
    return d_func<SensorPrivate>()->pollMs;
}

double ISensor::threshold() const
{
    return d_func<SensorPrivate>()->threshold;
}

double ISensor::highLimit() const
{
    return d_func<SensorPrivate>()->highLimit;
}

double ISensor::lowLimit() const
{
    return d_func<SensorPrivate>()->lowLimit;
}

double ISensor::criticalLimit() const
{
    return d_func<SensorPrivate>()->criticalLimit;
}

void ISensor::setPollMs(uint pollMs)
{
    d_func<SensorPrivate>()->setPollMs(pollMs);
}

void ISensor::setThreshold(double threshold)
{
    d_func<SensorPrivate>()->setThreshold(threshold);
}

void ISensor::setHighLimit(double highLimit)
{
    d_func<SensorPrivate>()->setHighLimit(highLimit);
}

void ISensor::setLowLimit(double lowLimit)
{
    d_func<SensorPrivate>()->setLowLimit(lowLimit);
}

} // namespace TQ_SPAPI

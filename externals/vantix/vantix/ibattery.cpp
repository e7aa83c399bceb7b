#include "ibattery.h"

#include "batteryprivate_p.h"

#include <utility>

namespace TQ_SPAPI {

IBattery::IBattery(DeviceId id)
{
    setPrivate(new BatteryPrivate(this, id));
}

IBattery::~IBattery() = default;

int IBattery::fuelGauge() const
{
    return d_func<BatteryPrivate>()->fuelGauge;
}

QSharedPointer<ISensor> IBattery::temperature() const
{
    return d_func<BatteryPrivate>()->sensor;
}

QString IBattery::modelName() const
{
    return d_func<BatteryPrivate>()->modelName;
}

QString IBattery::manufacturer() const
{
    return d_func<BatteryPrivate>()->manufacturer;
}

QString IBattery::label() const
{
    return d_func<BatteryPrivate>()->label;
}

double IBattery::voltage() const
{
    return d_func<BatteryPrivate>()->voltage;
}

double IBattery::current() const
{
    return d_func<BatteryPrivate>()->current;
}

double IBattery::currentAvg() const
{
    return d_func<BatteryPrivate>()->currentAvg;
}

int IBattery::chargeCounter() const
{
    return d_func<BatteryPrivate>()->chargeCounter;
}

void IBattery::setSensor(QSharedPointer<ISensor> sensor)
{
    d_func<BatteryPrivate>()->sensor = std::move(sensor);
}

} // namespace TQ_SPAPI

#include "batteryprivate_p.h"

namespace TQ_SPAPI {

BatteryPrivate::BatteryPrivate(IBattery *q, IDevice::DeviceId id)
    : DevicePrivate(q, id, IDevice::DEVICE_BATTERY)
{
    // A new battery reports itself as charging. Nobody listens yet, so the
    // field is written directly instead of through setStatus().
    status = IDevice::F_CHARGE;
}

BatteryPrivate::~BatteryPrivate() = default;

void BatteryPrivate::overrideFuelGauge(int value)
{
    setStatus(status | IDevice::F_OVERRIDE);
    fuelGauge = value;
    Q_EMIT q_func()->fuelGaugeChanged(value);
}

void BatteryPrivate::overrideChargeToggle()
{
    setStatus((status ^ IDevice::F_CHARGE) | IDevice::F_OVERRIDE);
    if (status & IDevice::F_CHARGE) {
        ++chargeCounter;
        Q_EMIT q_func()->chargeCounterChanged(chargeCounter);
    }
}

void BatteryPrivate::overridePowerConnectedToggle()
{
    setStatus((status ^ IDevice::F_POWER_CONNECTED) | IDevice::F_OVERRIDE);
}

void BatteryPrivate::overrideCurrent(double value)
{
    setStatus(status | IDevice::F_OVERRIDE);
    current = value;
    Q_EMIT q_func()->currentChanged(current);
}

} // namespace TQ_SPAPI

#include "sensorprivate_p.h"

#include <cmath>

namespace TQ_SPAPI {

namespace {
using D = IDevice;

const D::DeviceFlags StateBits = D::F_SENSORCRITICAL | D::F_SENSORHIGH | D::F_SENSORLOW;

// Two missing readings (NaN) are the same reading, not a change.
bool sameValue(double a, double b)
{
    return a == b || (std::isnan(a) && std::isnan(b));
}

struct StartValues
{
    double value;
    double highLimit;
    double lowLimit;
    double criticalLimit;
    D::DeviceFlags status;
};

// What the simulated hardware reads right after power-up.
StartValues startValuesFor(D::DeviceId id)
{
    const D::DeviceFlags watched = D::F_ENABLE | D::F_ENABLEHIGH;
    switch (id) {
    case D::ID_TEMP_BATT_1ST:
        return {35.0, 80.0, -20.0, 100.0, watched};
    case D::ID_TEMP_BATT_2ND:
        return {50.0, 80.0, -20.0, 100.0, watched};
    case D::ID_TEMP_BOARD:
        return {45.0, 80.0, 0.0, 100.0, watched};
    case D::ID_TEMP_CPU:
        // Watched from the start; F_ENABLE comes later, from the device list's request.
        return {45.0, 80.0, 0.0, 100.0, D::F_ENABLEHIGH};
    default:
        return {0.0, 0.0, 0.0, 0.0, D::F_NOFLAGS};
    }
}
} // namespace

SensorPrivate::SensorPrivate(ISensor *q, IDevice::DeviceId id, IDevice::DeviceType type)
    : DevicePrivate(q, id, type)
{
    const StartValues start = startValuesFor(id);
    value = start.value;
    highLimit = start.highLimit;
    lowLimit = start.lowLimit;
    criticalLimit = start.criticalLimit;
    // Nobody listens yet: written directly, without statusChanged.
    status |= start.status;
}

SensorPrivate::~SensorPrivate() = default;

void SensorPrivate::setPollMs(quint32 newPollMs)
{
    // Only stored: no timer polls in the simulation, so this is no override.
    if (newPollMs == pollMs) {
        return;
    }
    pollMs = newPollMs;
    Q_EMIT q_func()->pollMsChanged(pollMs);
}

void SensorPrivate::setThreshold(double newThreshold)
{
    if (changeLimit(threshold, newThreshold)) {
        Q_EMIT q_func()->thresholdChanged(threshold);
    }
}

void SensorPrivate::setHighLimit(double newHighLimit)
{
    if (changeLimit(highLimit, newHighLimit)) {
        Q_EMIT q_func()->highLimitChanged(highLimit);
    }
}

void SensorPrivate::setLowLimit(double newLowLimit)
{
    if (changeLimit(lowLimit, newLowLimit)) {
        Q_EMIT q_func()->lowLimitChanged(lowLimit);
    }
}

bool SensorPrivate::changeLimit(double &field, double newValue)
{
    if (sameValue(field, newValue)) {
        return false;
    }
    field = newValue;
    setStatus(status | IDevice::F_OVERRIDE);
    return true;
}

bool SensorPrivate::updateValue(double newValue)
{
    if (sameValue(value, newValue)) {
        return false;
    }
    value = newValue;
    Q_EMIT q_func()->valueChanged(value);
    return true;
}

void SensorPrivate::poll()
{
    setStatus(status | IDevice::F_ACTIVE);
    if (status & IDevice::F_ENABLEHIGH) {
        checkHighMode();
    } else if (status & IDevice::F_ENABLELOW) {
        checkLowMode();
    }
}

// Every comparison is written so that a NaN value or limit fails it: a sensor
// without a valid reading keeps its state.
void SensorPrivate::checkHighMode()
{
    const double v = value;
    if (!(status & IDevice::F_SENSORHIGH) && highLimit <= v && v < criticalLimit) {
        enterHigh();
    } else if (!(status & IDevice::F_SENSORCRITICAL) && v >= criticalLimit) {
        enterCritical();
    } else if ((status & (IDevice::F_SENSORCRITICAL | IDevice::F_SENSORHIGH)) && v < highLimit) {
        // Falling back below the high limit is what listeners know as "low".
        enterLow();
    }
}

void SensorPrivate::checkLowMode()
{
    const double v = value;
    if (!(status & IDevice::F_SENSORLOW) && criticalLimit < v && v <= lowLimit) {
        enterLow();
    } else if (!(status & IDevice::F_SENSORCRITICAL) && v <= criticalLimit) {
        enterCritical();
    } else if ((status & (IDevice::F_SENSORCRITICAL | IDevice::F_SENSORHIGH)) && v > lowLimit) {
        // The same two bits as in the high mode, on purpose: a low sensor stays
        // low above the limit, and a high one repeats highLimitReached at every
        // check while the value stays above it.
        enterHigh();
    }
}

void SensorPrivate::enterHigh()
{
    setState(IDevice::F_SENSORHIGH);
    Q_EMIT q_func()->highLimitReached();
}

void SensorPrivate::enterLow()
{
    setState(IDevice::F_SENSORLOW);
    Q_EMIT q_func()->lowLimitReached();
}

void SensorPrivate::enterCritical()
{
    // Critical has no signal of its own; listeners see it in the status.
    setState(IDevice::F_SENSORCRITICAL);
}

void SensorPrivate::setState(IDevice::Flags state)
{
    setStatus((status & ~StateBits) | state);
}

} // namespace TQ_SPAPI

#include "vantixdebug.h"

#include "systemprivate_p.h"

namespace TQ_SPAPI {

VantixDebug::VantixDebug() = default;

VantixDebug::~VantixDebug() = default;

VantixDebug *VantixDebug::instance()
{
    static VantixDebug debug;
    return &debug;
}

void VantixDebug::setSystemPrivate(SystemPrivate *p)
{
    m_systemPrivate = p;
}

void VantixDebug::detachSystemPrivate(SystemPrivate *p)
{
    if (m_systemPrivate == p) {
        m_systemPrivate = nullptr;
    }
}

void VantixDebug::addBattery(IDevice::DeviceId id)
{
    if (m_systemPrivate) {
        m_systemPrivate->addBattery(id);
    }
}

void VantixDebug::removeBattery(IDevice::DeviceId id)
{
    if (m_systemPrivate) {
        m_systemPrivate->removeBattery(id);
    }
}

void VantixDebug::overrideFuelGauge(IDevice::DeviceId id, int value)
{
    if (m_systemPrivate) {
        m_systemPrivate->overrideFuelGauge(id, value);
    }
}

void VantixDebug::overrideChargeToggle(IDevice::DeviceId id)
{
    if (m_systemPrivate) {
        m_systemPrivate->overrideChargeToggle(id);
    }
}

void VantixDebug::overridePowerConnectedToggle(IDevice::DeviceId id)
{
    if (m_systemPrivate) {
        m_systemPrivate->overridePowerConnectedToggle(id);
    }
}

void VantixDebug::overrideCurrent(IDevice::DeviceId id, double current)
{
    if (m_systemPrivate) {
        m_systemPrivate->overrideCurrent(id, current);
    }
}

} // namespace TQ_SPAPI

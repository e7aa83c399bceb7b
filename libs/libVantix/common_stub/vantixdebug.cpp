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

void VantixDebug::overridePowerConnectedToggle(IDevice::DeviceId id)
{
    if (m_systemPrivate) {
        m_systemPrivate->overridePowerConnectedToggle(id);
    }
}

} // namespace TQ_SPAPI

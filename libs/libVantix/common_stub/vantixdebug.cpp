#include "vantixdebug.h"

#include "systemprivate_p.h"

#include <qbcom/parametercontroller.h>
#include <qbcom/qbparameter.h>

#include <QDebug>

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

void VantixDebug::setParameterController(TQ_QBCom::ParameterController &controller)
{
    auto *parameter = new TQ_QBCom::QBParameter(QStringLiteral("VantixDebug"), QVariant(QString()), QVariant());
    m_parameter = controller.addParameter(parameter);
    connect(m_parameter, &TQ_QBCom::QBParameter::valueChanged, this, &VantixDebug::onVantixDebugChanged);
}

void VantixDebug::onVantixDebugChanged(QString newValue)
{
    // Blanks are kept: "addbattery, 2" names the battery " 2", not "2".
    const QStringList tokens = newValue.split(QLatin1Char(','), Qt::SkipEmptyParts);
    if (tokens.isEmpty()) {
        return;
    }
    if (!runCommand(tokens.first().toLower(), tokens.mid(1))) {
        qDebug() << "Illegal command";
    }
}

namespace {
// The battery a selector names: the second only for exactly "2".
IDevice::DeviceId batteryOf(const QStringList &args)
{
    return !args.isEmpty() && args.first() == QLatin1String("2") ? IDevice::ID_BATTERY_2ND : IDevice::ID_BATTERY_1ST;
}
} // namespace

// Compared in order; a command lacking a required argument matches nothing.
bool VantixDebug::runCommand(const QString &command, const QStringList &args)
{
    if (command == QLatin1String("addbattery")) {
        addBattery(batteryOf(args));
    } else if (command == QLatin1String("rmbattery")) {
        removeBattery(batteryOf(args));
    } else {
        return false;
    }
    return true;
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

IDevicePtr VantixDebug::addDevice(IDevice::DeviceId id, IDevice::DeviceType type, const QString &path)
{
    return m_systemPrivate ? m_systemPrivate->addDevice(id, type, path) : IDevicePtr();
}

void VantixDebug::removeDevice(IDevice::DeviceId id)
{
    if (m_systemPrivate) {
        m_systemPrivate->removeDevice(id);
    }
}

} // namespace TQ_SPAPI

#include "system.h"

#include "inetwork.h"
#include "iwifi.h"
#include "systemprivate_p.h"

#include <QCoreApplication>
#include <QDebug>

namespace TQ_SPAPI {

System::PlatformType SystemPlatformType::type = System::PT_UNKNOWN;

System *System::sysRef_ = nullptr;
QMetaEnum System::PlatformTypeEnum = QMetaEnum::fromType<System::PlatformType>();
QMetaEnum System::OSTypeEnum = QMetaEnum::fromType<System::OSType>();
QMetaEnum System::BootTypeEnum = QMetaEnum::fromType<System::BootType>();

System::System(QObject *parent)
    : QObject(parent)
    , d(new SystemPrivate(this))
{
}

System::~System()
{
    delete d;
    if (sysRef_ == this) {
        // Deleted with the application object rather than through releaseInstance().
        sysRef_ = nullptr;
    }
}

System *System::instance()
{
    if (sysRef_) {
        return sysRef_;
    }
    qRegisterMetaType<IDevice::DeviceFlags>("DeviceFlags");
    qRegisterMetaType<IDevice::DeviceId>("IDevice::DeviceId");
    qRegisterMetaType<System::FligtModeFlags>("FligtModeFlags");
    qRegisterMetaType<INetwork::NetworkState>("NetworkState");
    qRegisterMetaType<IWifi::ReconnectState>("ReconnectState");
    sysRef_ = new System(QCoreApplication::instance());
    return sysRef_;
}

void System::releaseInstance()
{
    if (sysRef_) {
        System *system = sysRef_;
        sysRef_ = nullptr;
        delete system;
    }
}

System::PlatformType System::platform() const
{
    return d->platform;
}

System::OSType System::operatingSystem() const
{
    return OS_WINDOWS;
}

System::BootType System::bootReason() const
{
    return d->bootReason;
}

const QVariantMap &System::systemInfo() const
{
    return d->systemInfo;
}

void System::addSystemInfoPair(const QString &key, const QString &value)
{
    d->addSystemInfoPair(key, value);
}

void System::deleteSystemInfoKey(const QString &key)
{
    d->systemInfo.remove(key);
}

QList<IDevicePtr> System::devices() const
{
    return d->deviceList->allDevices();
}

QList<IDevicePtr> System::devices(IDevice::Devices type) const
{
    return d->deviceList->devices(type);
}

IDevicePtr System::device(IDevice::DeviceId id) const
{
    return d->deviceList->device(quint32(id));
}

ITimeSettings *System::timeSettings()
{
    return d->timeSettings;
}

ICanMux *System::canMux()
{
    return d->canMux;
}

IApiMessage *System::apiMessage()
{
    return d->apiMessage;
}

void System::initialize(const QString &name)
{
    d->initialize(name);
}

void System::close()
{
    d->close();
}

bool System::isReady()
{
    return d->ready;
}

QStringList &System::registeredIds()
{
    return d->registeredIds;
}

QMap<QString, QVariantMap> &System::services()
{
    return d->services;
}

System::FligtModeFlags System::flightModeStatus()
{
    return d->flightMode;
}

void System::setFlightMode(bool enabled)
{
    d->setFlightMode(enabled);
}

void System::powerOff()
{
    qDebug() << "stub called";
    d->close();
}

void System::reboot()
{
    qDebug() << "stub called";
}

void System::suspend()
{
    qDebug() << "stub called";
}

void System::serviceSwitch(QString oldService, QString newService)
{
    qDebug() << "oldService" << oldService << "newService" << newService;
}

void System::serviceStop(QString app)
{
    qDebug() << "name" << app;
}

void System::serviceStart(QString app)
{
    qDebug() << "name" << app;
}

void System::serviceRestart(QString app)
{
    qDebug() << "name" << app;
}

} // namespace TQ_SPAPI

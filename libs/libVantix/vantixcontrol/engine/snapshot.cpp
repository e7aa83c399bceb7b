#include "snapshot_p.h"

#include "devicenames_p.h"
#include "reflection_p.h"
#include "systemprivate_p.h"
#include "valuetext_p.h"

#include <vantix/icanmux.h>
#include <vantix/itimesettings.h>

#include <QMetaProperty>

#include <algorithm>

using namespace TQ_SPAPI;

namespace VantixControl {

namespace {
// What an object shows of another object (a list model, a peer) is no value of its own.
bool isObjectValued(const QMetaProperty &property)
{
    const QByteArray type(property.typeName());
    return ValueText::holdsObject(property.userType()) || type.endsWith('*') || type.endsWith("Ptr");
}

SavedObject savedObject(const QString &name, const QObject *object)
{
    SavedObject saved;
    saved.name = name;
    if (object) {
        saved.values = Snapshot::valuesOf(object);
    }
    return saved;
}
} // namespace

const SavedValue *SavedObject::value(const QByteArray &property) const
{
    for (const SavedValue &saved : values) {
        if (saved.name == property) {
            return &saved;
        }
    }
    return nullptr;
}

QVector<SavedValue> Snapshot::valuesOf(const QObject *object)
{
    QVector<SavedValue> values;
    for (const QMetaProperty &property : Reflection::properties(object->metaObject())) {
        if (!property.isReadable() || isObjectValued(property)) {
            continue;
        }
        const QVariant value = property.read(object);
        values.append({property.name(), value, ValueText::format(value, Reflection::enumOf(object, property))});
    }
    return values;
}

Snapshot Snapshot::take(System *system)
{
    Snapshot snapshot;
    for (const IDevicePtr &device : system->devices()) {
        SavedDevice saved;
        static_cast<SavedObject &>(saved) = savedObject(DeviceNames::name(device->id()), device.data());
        saved.id = device->id();
        saved.type = device->type();
        saved.path = device->path();
        saved.className = device->metaObject()->className();
        saved.status = device->status();
        snapshot.devices.append(saved);
    }
    snapshot.timeSettings = savedObject(QStringLiteral("ITimeSettings"), system->timeSettings());
    snapshot.canMux = savedObject(QStringLiteral("ICanMux"), system->canMux());
    snapshot.systemInfo = system->systemInfo();
    snapshot.flightMode = system->flightModeStatus();
    snapshot.takenMs = SystemPrivate::get(system)->elapsedMs();
    return snapshot;
}

bool Snapshot::isSettled(System *system)
{
    if (system->flightModeStatus().testFlag(System::FLIGHT_MODE_TRANSITION)) {
        return false;
    }
    const QList<IDevicePtr> devices = system->devices();
    return std::none_of(devices.begin(), devices.end(), [](const IDevicePtr &device) {
        const DevicePrivate *d = DevicePrivate::get(device.data());
        return d && d->hasPendingAbilities();
    });
}

const SavedDevice *Snapshot::device(IDevice::DeviceId id) const
{
    for (const SavedDevice &saved : devices) {
        if (saved.id == id) {
            return &saved;
        }
    }
    return nullptr;
}

} // namespace VantixControl

#include "targets_p.h"

#include "devicenames_p.h"
#include "eventwatcher_p.h"
#include "reflection_p.h"

#include <vantix/system.h>

using namespace TQ_SPAPI;

namespace VantixControl {

QList<QObject *> Targets::systemObjects(System *system)
{
    QList<QObject *> result;
    const QList<QObject *> children = system->findChildren<QObject *>();
    for (QObject *child : children) {
        if (EventWatcher::isInterfaceObject(child)) {
            result.append(child);
        }
    }
    return result;
}

bool Targets::resolve(System *system, const EventWatcher *watcher, const QString &name, Target *target, QString *error)
{
    if (!system) {
        *error = QStringLiteral("the system has gone");
        return false;
    }
    if (name.compare(QLatin1String("system"), Qt::CaseInsensitive) == 0) {
        target->object = system;
        target->name = QStringLiteral("System");
        return true;
    }
    IDevice::DeviceId id = IDevice::ID_UNKNOWN_DEV;
    if (DeviceNames::parse(name, &id)) {
        target->device = system->device(id);
        if (!target->device) {
            *error = QStringLiteral("%1 is not present").arg(DeviceNames::name(id));
            return false;
        }
        target->object = target->device.data();
        target->name = DeviceNames::name(id);
        return true;
    }
    if (QObject *object = watcher ? watcher->find(name) : nullptr) {
        target->object = object;
        target->name = watcher->nameOf(object);
        return true;
    }
    // The interface objects System owns, also before they are watched.
    for (QObject *child : systemObjects(system)) {
        if (EventWatcher::aliasOf(child) == name.toLower() ||
            Reflection::shortClassName(child).compare(name, Qt::CaseInsensitive) == 0) {
            target->object = child;
            target->name = Reflection::shortClassName(child);
            return true;
        }
    }
    *error = QStringLiteral("unknown device or object \"%1\"; devices lists the devices").arg(name);
    return false;
}

} // namespace VantixControl

#include "statedump_p.h"

#include "devicenames_p.h"
#include "eventwatcher_p.h"
#include "reflection_p.h"
#include "valuetext_p.h"

#include <vantix/system.h>

#include <QMetaProperty>

using namespace TQ_SPAPI;

namespace VantixControl {

QJsonObject StateDump::properties(const QObject *object, const ObjectNamer *namer)
{
    QJsonObject result;
    for (const QMetaProperty &p : Reflection::properties(object->metaObject())) {
        if (p.isReadable()) {
            result.insert(
                QString::fromLatin1(p.name()), ValueText::toJson(p.read(object), Reflection::enumOf(object, p), namer));
        }
    }
    return result;
}

QJsonObject StateDump::build(System *system, const EventWatcher *watcher)
{
    QJsonObject devices;
    for (const IDevicePtr &device : system->devices()) {
        QJsonObject entry;
        entry.insert(QStringLiteral("number"), int(device->id()));
        entry.insert(QStringLiteral("alias"), DeviceNames::alias(device->id()));
        entry.insert(QStringLiteral("class"), QString::fromLatin1(device->metaObject()->className()));
        entry.insert(QStringLiteral("properties"), properties(device.data(), watcher));
        devices.insert(DeviceNames::name(device->id()), entry);
    }

    // System's own objects, and whatever the watcher reached beyond the devices.
    QList<const QObject *> others;
    const QList<QObject *> children = system->findChildren<QObject *>();
    for (const QObject *child : children) {
        if (EventWatcher::isInterfaceObject(child)) {
            others.append(child);
        }
    }
    if (watcher) {
        for (const QObject *object : watcher->objects()) {
            if (object != system && !qobject_cast<const IDevice *>(object) && !others.contains(object)) {
                others.append(object);
            }
        }
    }
    QJsonObject objects;
    for (const QObject *object : others) {
        QString name = watcher ? watcher->nameOf(object) : QString();
        if (name.isEmpty()) {
            name = Reflection::shortClassName(object);
        }
        QJsonObject entry;
        entry.insert(QStringLiteral("class"), QString::fromLatin1(object->metaObject()->className()));
        entry.insert(QStringLiteral("properties"), properties(object, watcher));
        objects.insert(name, entry);
    }

    QJsonObject result;
    result.insert(
        QStringLiteral("platform"), QString::fromLatin1(System::PlatformTypeEnum.valueToKey(system->platform())));
    result.insert(QStringLiteral("system"), properties(system, watcher));
    result.insert(QStringLiteral("devices"), devices);
    result.insert(QStringLiteral("objects"), objects);
    return result;
}

} // namespace VantixControl

#include "statedump.h"

#include "devicenames.h"
#include "eventwatcher.h"
#include "valuetext.h"

#include <vantix/system.h>

#include <QMetaProperty>

using namespace TQ_SPAPI;

QJsonObject StateDump::properties(const QObject *object)
{
    QJsonObject result;
    const QMetaObject *metaObject = object->metaObject();
    for (int i = QObject::staticMetaObject.propertyCount(); i < metaObject->propertyCount(); ++i) {
        const QMetaProperty p = metaObject->property(i);
        if (!p.isReadable()) {
            continue;
        }
        const QMetaEnum e = p.isEnumType() ? p.enumerator() : ValueText::findEnum(QByteArray(p.typeName()), metaObject);
        result.insert(QString::fromLatin1(p.name()), ValueText::toJson(p.read(object), e));
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
        entry.insert(QStringLiteral("properties"), properties(device.data()));
        devices.insert(DeviceNames::name(device->id()), entry);
    }

    // System's own objects, and whatever the watcher reached beyond the devices.
    QList<const QObject *> others;
    QHash<const QObject *, QString> names;
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
            names.insert(object, watcher->nameOf(object));
        }
    }
    QJsonObject objects;
    for (const QObject *object : others) {
        QString name = names.value(object);
        if (name.isEmpty()) {
            const QString className = QString::fromLatin1(object->metaObject()->className());
            name = className.mid(className.lastIndexOf(QLatin1Char(':')) + 1);
        }
        QJsonObject entry;
        entry.insert(QStringLiteral("class"), QString::fromLatin1(object->metaObject()->className()));
        entry.insert(QStringLiteral("properties"), properties(object));
        objects.insert(name, entry);
    }

    QJsonObject result;
    result.insert(
        QStringLiteral("platform"), QString::fromLatin1(System::PlatformTypeEnum.valueToKey(system->platform())));
    result.insert(QStringLiteral("system"), properties(system));
    result.insert(QStringLiteral("devices"), devices);
    result.insert(QStringLiteral("objects"), objects);
    return result;
}

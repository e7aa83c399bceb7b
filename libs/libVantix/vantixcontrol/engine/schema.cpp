#include "schema_p.h"

#include "commandtable_p.h"
#include "devicenames_p.h"
#include "effects_p.h"
#include "enumlabels_p.h"
#include "eventwatcher_p.h"
#include "reflection_p.h"
#include "keynames_p.h"
#include "protocol.h"
#include "targets_p.h"
#include "valuetext_p.h"
#include <vantix/vantixdebug.h>

#include <vantix/system.h>

#include <QMetaMethod>
#include <QMetaProperty>

using namespace TQ_SPAPI;

namespace VantixControl {

namespace {
QJsonArray argumentsOf(const QMetaMethod &method, const QMetaObject *context, QHash<QString, QMetaEnum> *enums)
{
    QJsonArray result;
    const QList<QByteArray> types = method.parameterTypes();
    const QList<QByteArray> names = method.parameterNames();
    for (int i = 0; i < types.size(); ++i) {
        const QMetaEnum e = ValueText::findEnum(types.at(i), context);
        if (e.isValid()) {
            enums->insert(QString::fromLatin1(e.name()), e);
        }
        result.append(QJsonObject{{QStringLiteral("name"), QString::fromLatin1(names.at(i))},
            {QStringLiteral("type"), ValueText::typeName(method.parameterType(i), types.at(i), e)}});
    }
    return result;
}

QJsonObject enumJson(const QMetaEnum &e)
{
    QJsonObject keys;
    for (int i = 0; i < e.keyCount(); ++i) {
        keys.insert(QString::fromLatin1(e.key(i)), e.value(i));
    }
    QJsonObject result{{QStringLiteral("flag"), e.isFlag()}, {QStringLiteral("scope"), QString::fromLatin1(e.scope())},
        {QStringLiteral("keys"), keys}};
    // The words clients show for the values, so that all of them show the same.
    const QJsonObject labels = EnumLabels::labels(e);
    if (!labels.isEmpty()) {
        result.insert(QStringLiteral("labels"), labels);
    }
    return result;
}

QJsonObject describeWithEnums(const QObject *object, const QString &name, const ObjectNamer *namer, bool withValues,
    QHash<QString, QMetaEnum> *enums)
{
    const QMetaObject *metaObject = object->metaObject();
    QJsonObject result{
        {QStringLiteral("name"), name}, {QStringLiteral("class"), QString::fromLatin1(metaObject->className())}};
    if (const auto *device = qobject_cast<const IDevice *>(object)) {
        result.insert(QStringLiteral("number"), int(device->id()));
        result.insert(QStringLiteral("alias"), DeviceNames::alias(device->id()));
        result.insert(QStringLiteral("kind"), QStringLiteral("device"));
    } else {
        result.insert(QStringLiteral("kind"), QStringLiteral("object"));
        if (EventWatcher::isInterfaceObject(object)) {
            result.insert(QStringLiteral("alias"), EventWatcher::aliasOf(object));
        }
    }

    QJsonArray properties;
    for (const QMetaProperty &p : Reflection::properties(metaObject)) {
        const QMetaEnum e = Reflection::enumOf(object, p);
        if (e.isValid()) {
            enums->insert(QString::fromLatin1(e.name()), e);
        }
        const Effect effect = effectOf(metaObject, p.name());
        QJsonObject property{{QStringLiteral("name"), QString::fromLatin1(p.name())},
            {QStringLiteral("type"), Reflection::propertyType(object, p)},
            // A setter that does nothing is not offered as writable.
            {QStringLiteral("writable"), p.isWritable() && effect.kind != Effect::None},
            {QStringLiteral("notify"), p.hasNotifySignal() ? QString::fromLatin1(p.notifySignal().name()) : QString()}};
        if (effect.kind != Effect::Normal && p.isWritable()) {
            property.insert(QStringLiteral("effect"), effect.name());
            property.insert(QStringLiteral("hint"), effect.hint);
        }
        if (withValues && p.isReadable()) {
            const QVariant value = p.read(object);
            property.insert(QStringLiteral("value"), ValueText::toJson(value, e, namer));
            property.insert(QStringLiteral("text"), ValueText::format(value, e, namer));
        }
        properties.append(property);
    }
    result.insert(QStringLiteral("properties"), properties);

    QJsonArray methods;
    for (const QMetaMethod &m : Reflection::callableMethods(metaObject)) {
        const Effect effect = effectOf(metaObject, m.name());
        QJsonObject method{{QStringLiteral("name"), QString::fromLatin1(m.name())},
            {QStringLiteral("signature"), Reflection::methodText(m)},
            {QStringLiteral("arguments"), argumentsOf(m, metaObject, enums)},
            {QStringLiteral("returns"), Reflection::shortType(m.typeName())}};
        if (effect.kind != Effect::Normal) {
            method.insert(QStringLiteral("effect"), effect.name());
            method.insert(QStringLiteral("hint"), effect.hint);
        }
        methods.append(method);
    }
    result.insert(QStringLiteral("methods"), methods);

    QJsonArray signalList;
    for (const QMetaMethod &m : Reflection::signalMethods(metaObject)) {
        signalList.append(QJsonObject{{QStringLiteral("name"), QString::fromLatin1(m.name())},
            {QStringLiteral("signature"), Reflection::methodText(m)},
            {QStringLiteral("arguments"), argumentsOf(m, metaObject, enums)}});
    }
    result.insert(QStringLiteral("signals"), signalList);
    return result;
}
} // namespace

QJsonObject Schema::describeObject(
    const QObject *object, const QString &name, const ObjectNamer *namer, bool withValues)
{
    QHash<QString, QMetaEnum> enums;
    return describeWithEnums(object, name, namer, withValues, &enums);
}

namespace {
QJsonArray argumentsJson(const QVector<Argument> &arguments)
{
    QJsonArray result;
    for (const Argument &a : arguments) {
        result.append(a.toJson());
    }
    return result;
}

QJsonObject commandJson(const QString &name, const QStringList &usages, const QVector<QVector<Argument>> &forms,
    const QString &help, const QString &label)
{
    QJsonArray formList;
    for (int i = 0; i < forms.size(); ++i) {
        formList.append(QJsonObject{
            {QStringLiteral("usage"), usages.value(i)}, {QStringLiteral("arguments"), argumentsJson(forms.at(i))}});
    }
    return QJsonObject{{QStringLiteral("name"), name}, {QStringLiteral("usage"), QJsonArray::fromStringList(usages)},
        {QStringLiteral("help"), help}, {QStringLiteral("label"), label},
        {QStringLiteral("arguments"), argumentsJson(forms.value(0))}, {QStringLiteral("forms"), formList}};
}

Argument::Type argumentType(VantixDebug::ArgumentInfo::Type type)
{
    switch (type) {
    case VantixDebug::ArgumentInfo::Integer:
        return Argument::Integer;
    case VantixDebug::ArgumentInfo::Real:
        return Argument::Number;
    case VantixDebug::ArgumentInfo::Choice:
        return Argument::Choice;
    case VantixDebug::ArgumentInfo::Text:
        break;
    }
    return Argument::Text;
}
} // namespace

QJsonArray Schema::commands(const CommandTable &table)
{
    QJsonArray &result = table.described();
    if (!result.isEmpty()) {
        return result;
    }
    for (const CommandEntry &command : table.commands()) {
        QJsonObject json = commandJson(command.name, command.usageLines(), command.forms, command.help, command.label);
        json.insert(QStringLiteral("host"), command.host);
        json.insert(QStringLiteral("debug"), false);
        json.insert(QStringLiteral("readOnly"), command.readOnly);
        result.append(json);
    }
    return result;
}

// The debug controller's tables are fixed when the library is built: made once.
QJsonArray Schema::debugCommands()
{
    static const QJsonArray made = [] {
        QJsonArray result;
        for (const VantixDebug::CommandInfo &c : VantixDebug::commands()) {
            QVector<Argument> arguments;
            for (const VantixDebug::ArgumentInfo &info : c.arguments) {
                Argument argument;
                argument.name = info.name;
                argument.type = argumentType(info.type);
                argument.optional = info.optional;
                argument.choices = info.choices;
                arguments.append(argument);
            }
            QJsonObject json = commandJson(c.word, {c.usage}, {arguments}, c.help, c.label);
            json.insert(QStringLiteral("host"), false);
            json.insert(QStringLiteral("debug"), true);
            json.insert(QStringLiteral("readOnly"), false);
            result.append(json);
        }
        return result;
    }();
    return made;
}

QJsonArray Schema::shortcuts()
{
    static const QJsonArray made = [] {
        QJsonArray result;
        for (const VantixDebug::ShortcutInfo &s : VantixDebug::shortcuts()) {
            result.append(QJsonObject{{QStringLiteral("key"), KeyNames::name(s.key, s.modifiers)},
                {QStringLiteral("label"), s.label}, {QStringLiteral("help"), s.help},
                {QStringLiteral("passedOn"), s.passedOn}});
        }
        return result;
    }();
    return made;
}

QJsonObject Schema::describe(System *system, const CommandTable &commandTable, const EventWatcher *watcher)
{
    QHash<QString, QMetaEnum> enums;
    QJsonArray targets;
    targets.append(describeWithEnums(system, QStringLiteral("System"), watcher, false, &enums));
    for (const IDevicePtr &device : system->devices()) {
        targets.append(describeWithEnums(device.data(), DeviceNames::name(device->id()), watcher, false, &enums));
    }
    QList<QObject *> others = Targets::systemObjects(system);
    if (watcher) {
        for (QObject *object : watcher->objects()) {
            if (object != system && !qobject_cast<IDevice *>(object) && !others.contains(object)) {
                others.append(object);
            }
        }
    }
    for (QObject *object : others) {
        QString name = watcher ? watcher->nameOf(object) : QString();
        targets.append(describeWithEnums(
            object, name.isEmpty() ? Reflection::shortClassName(object) : name, watcher, false, &enums));
    }

    const QMetaEnum types = QMetaEnum::fromType<IDevice::DeviceType>();
    enums.insert(QString::fromLatin1(types.name()), types);
    QJsonArray devices;
    for (const IDevice::DeviceId id : DeviceNames::knownIds()) {
        devices.append(QJsonObject{{QStringLiteral("name"), DeviceNames::name(id)}, {QStringLiteral("number"), int(id)},
            {QStringLiteral("alias"), DeviceNames::alias(id)},
            {QStringLiteral("present"), !system->device(id).isNull()},
            {QStringLiteral("defaultType"), ValueText::enumText(types, int(DeviceNames::defaultType(id)))}});
    }

    QJsonObject enumObjects;
    for (auto it = enums.cbegin(); it != enums.cend(); ++it) {
        enumObjects.insert(it.key(), enumJson(it.value()));
    }
    return QJsonObject{{QStringLiteral("protocol"), Protocol::Version},
        {QStringLiteral("platform"), QString::fromLatin1(System::PlatformTypeEnum.valueToKey(system->platform()))},
        {QStringLiteral("commands"), commands(commandTable)}, {QStringLiteral("debugCommands"), debugCommands()},
        {QStringLiteral("shortcuts"), shortcuts()}, {QStringLiteral("devices"), devices},
        {QStringLiteral("targets"), targets}, {QStringLiteral("enums"), enumObjects}};
}

} // namespace VantixControl

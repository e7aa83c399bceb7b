// get <target> <property> and set <target> <property> <value>.

#include "commandtable_p.h"
#include "effects_p.h"
#include "eventwatcher_p.h"
#include "reflection_p.h"
#include "session_p.h"
#include "valuetext_p.h"

namespace VantixControl {

namespace {
bool findTargetProperty(Invocation &invocation, Target *target, QMetaProperty *property, Reply *failure)
{
    QString error;
    if (!invocation.session.resolve(invocation.word(QStringLiteral("target")), target, &error) ||
        !Reflection::findProperty(
            target->object, target->name, invocation.word(QStringLiteral("property")), property, &error)) {
        *failure = Reply::failure(ErrorClass::UnknownTarget, error);
        return false;
    }
    return true;
}

Reply get(Invocation &invocation)
{
    Target target;
    QMetaProperty property;
    Reply failure;
    if (!findTargetProperty(invocation, &target, &property, &failure)) {
        return failure;
    }
    const QMetaEnum e = Reflection::enumOf(target.object, property);
    const QVariant value = property.read(target.object);
    const ObjectNamer *namer = invocation.session.watcher;
    return Reply::success(ValueText::format(value, e, namer))
        .withValue(Reflection::propertyType(target.object, property), ValueText::toJson(value, e, namer));
}

Reply set(Invocation &invocation)
{
    Target target;
    QMetaProperty property;
    Reply failure;
    if (!findTargetProperty(invocation, &target, &property, &failure)) {
        return failure;
    }
    const QString label = target.name + QLatin1Char('.') + QString::fromLatin1(property.name());
    if (!property.isWritable()) {
        return Reply::failure(ErrorClass::Failed, QStringLiteral("%1 is read-only").arg(label));
    }
    const Effect effect = effectOf(target.object->metaObject(), property.name());
    if (effect.kind == Effect::None) {
        return Reply::failure(ErrorClass::Failed,
            QStringLiteral("%1: its setter has no effect in this build; %2").arg(label, effect.hint));
    }
    const QMetaEnum e = Reflection::enumOf(target.object, property);
    const QString text = invocation.word(QStringLiteral("value"));
    QVariant value;
    QString error;
    if (!ValueText::parse(text, property.userType(), QByteArray(property.typeName()), e, &value, &error)) {
        return Reply::failure(
            ErrorClass::BadValue, QStringLiteral("%1: %2").arg(QString::fromLatin1(property.name()), error));
    }
    if (!property.write(target.object, value)) {
        return Reply::failure(ErrorClass::Failed, QStringLiteral("%1 did not take %2").arg(label, text));
    }
    if (effect.kind == Effect::Indirect) {
        return Reply::success().withLines({QStringLiteral("  ") + label + QStringLiteral(": ") + effect.hint});
    }
    // The answer says what the device holds now, not what was asked for.
    const QString wanted = ValueText::format(value, e);
    const QString now = ValueText::format(property.read(target.object), e);
    if (now != wanted) {
        return Reply::failure(ErrorClass::Failed,
            QStringLiteral("%1 is %2 after writing %3: the device kept another value").arg(label, now, wanted));
    }
    return Reply::success();
}
} // namespace

void addGetAndSet(CommandTable &table)
{
    CommandEntry get;
    get.name = QStringLiteral("get");
    get.forms = {{required(QStringLiteral("target"), Argument::Target),
        required(QStringLiteral("property"), Argument::Property)}};
    get.help = QStringLiteral("one property's value");
    get.label = QStringLiteral("Get");
    get.readOnly = true;
    get.run = VantixControl::get;
    table.add(get);

    CommandEntry set;
    set.name = QStringLiteral("set");
    set.forms = {{required(QStringLiteral("target"), Argument::Target),
        required(QStringLiteral("property"), Argument::Writable), required(QStringLiteral("value"), Argument::Value)}};
    set.help = QStringLiteral("write a writable property (brightnes, timeZone, ...); quote a value with blanks; the "
                              "answer checks what the device kept");
    set.label = QStringLiteral("Set");
    set.run = VantixControl::set;
    table.add(set);
}

} // namespace VantixControl

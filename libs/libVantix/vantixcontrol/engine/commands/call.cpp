// call <target> <method> [args...]: a slot or invokable, the overload picked by argument count.

#include "commandtable_p.h"
#include "effects_p.h"
#include "eventwatcher_p.h"
#include "reflection_p.h"
#include "session_p.h"
#include "valuetext_p.h"

namespace VantixControl {

namespace {
constexpr int MaxArguments = 10;

Reply call(Invocation &invocation)
{
    const QString methodName = invocation.word(QStringLiteral("method"));
    Target target;
    QString error;
    if (!invocation.session.resolve(invocation.word(QStringLiteral("target")), &target, &error)) {
        return Reply::failure(ErrorClass::UnknownTarget, error);
    }
    const QMetaObject *metaObject = target.object->metaObject();
    const QList<QMetaMethod> methods = Reflection::callableMethods(metaObject);
    QList<QMetaMethod> named;
    for (const Qt::CaseSensitivity cs : {Qt::CaseSensitive, Qt::CaseInsensitive}) {
        for (const QMetaMethod &m : methods) {
            if (QString::fromLatin1(m.name()).compare(methodName, cs) == 0) {
                named.append(m);
            }
        }
        if (!named.isEmpty()) {
            break;
        }
    }
    if (named.isEmpty()) {
        QStringList names;
        for (const QMetaMethod &m : methods) {
            names.append(Reflection::methodText(m));
        }
        return Reply::failure(ErrorClass::UnknownTarget,
            QStringLiteral("%1 has no method \"%2\"; it has %3")
                .arg(target.name, methodName,
                    names.isEmpty() ? QStringLiteral("none") : names.join(QLatin1String(", "))));
    }
    const QString label = target.name + QLatin1Char('.') + QString::fromLatin1(named.first().name());
    const Effect effect = effectOf(metaObject, named.first().name());
    if (effect.kind == Effect::None) {
        return Reply::failure(ErrorClass::Failed,
            QStringLiteral("%1 has no effect in this build%2")
                .arg(label, effect.hint.isEmpty() ? QString() : QStringLiteral("; ") + effect.hint));
    }
    const QStringList values = invocation.words(QStringLiteral("args"));
    if (values.size() > MaxArguments) {
        return Reply::failure(ErrorClass::BadRequest, QStringLiteral("a method takes at most 10 arguments"));
    }
    QStringList overloads;
    QString conversionError;
    for (const QMetaMethod &m : named) {
        overloads.append(Reflection::methodText(m));
        if (m.parameterCount() != values.size()) {
            continue;
        }
        const QList<QByteArray> types = m.parameterTypes();
        QVariantList converted;
        bool convertible = true;
        for (int i = 0; i < values.size() && convertible; ++i) {
            QVariant v;
            QString why;
            const QMetaEnum e = ValueText::findEnum(types.at(i), metaObject);
            convertible = ValueText::parse(values.at(i), m.parameterType(i), types.at(i), e, &v, &why);
            if (convertible) {
                converted.append(v);
            } else if (conversionError.isEmpty()) {
                conversionError =
                    QStringLiteral("argument %1 of %2: %3").arg(i + 1).arg(Reflection::methodText(m), why);
            }
        }
        if (!convertible) {
            continue;
        }
        QGenericArgument arguments[MaxArguments];
        for (int i = 0; i < converted.size(); ++i) {
            arguments[i] = QGenericArgument(types.at(i).constData(), converted[i].data());
        }
        // A result is shown when its type can be built here.
        const int returnType = m.returnType();
        QVariant result;
        QGenericReturnArgument returnArgument;
        if (returnType != QMetaType::Void && returnType != QMetaType::UnknownType) {
            result = QVariant(returnType, nullptr);
            returnArgument = QGenericReturnArgument(m.typeName(), result.data());
        }
        if (!m.invoke(target.object, Qt::DirectConnection, returnArgument, arguments[0], arguments[1], arguments[2],
                arguments[3], arguments[4], arguments[5], arguments[6], arguments[7], arguments[8], arguments[9])) {
            return Reply::failure(
                ErrorClass::Failed, QStringLiteral("%1 could not be called").arg(Reflection::methodText(m)));
        }
        if (effect.kind == Effect::TraceOnly) {
            return Reply::failure(ErrorClass::Failed,
                QStringLiteral("%1 only writes a trace line in this build; nothing changed%2")
                    .arg(label, effect.hint.isEmpty() ? QString() : QStringLiteral("; ") + effect.hint));
        }
        if (!result.isValid()) {
            return Reply::success();
        }
        const QMetaEnum e = ValueText::findEnum(QByteArray(m.typeName()), metaObject);
        const ObjectNamer *namer = invocation.session.watcher;
        return Reply::success(ValueText::format(result, e, namer))
            .withValue(ValueText::typeName(returnType, m.typeName(), e), ValueText::toJson(result, e, namer));
    }
    if (!conversionError.isEmpty()) {
        return Reply::failure(ErrorClass::BadValue, conversionError);
    }
    return Reply::failure(ErrorClass::BadRequest,
        QStringLiteral("%1 takes other arguments: %2").arg(methodName, overloads.join(QLatin1String("; "))));
}
} // namespace

void addCall(CommandTable &table)
{
    CommandEntry entry;
    entry.name = QStringLiteral("call");
    entry.forms = {{required(QStringLiteral("target"), Argument::Target),
        required(QStringLiteral("method"), Argument::Method), repeated(QStringLiteral("args"), Argument::Value)}};
    entry.help = QStringLiteral(
        "run a slot or invokable method (mount, format 0, on red); the overload is picked by argument count");
    entry.label = QStringLiteral("Call");
    entry.run = call;
    table.add(entry);
}

} // namespace VantixControl

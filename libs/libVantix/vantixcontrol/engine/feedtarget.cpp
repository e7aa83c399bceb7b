#include "feedtarget_p.h"

#include "effects_p.h"
#include "reflection_p.h"
#include "session_p.h"
#include "valuetext_p.h"

#include <QLocale>
#include <QPointer>

#include <cmath>
#include <limits>

using TQ_SPAPI::VantixDebug;

namespace VantixControl {

bool FeedTarget::resolve(SessionPrivate &session, const QString &targetName, const QString &what, Reply *refusal)
{
    Target target;
    QString error;
    if (!session.resolve(targetName, &target, &error)) {
        *refusal = Reply::failure(ErrorClass::UnknownTarget, error);
        return false;
    }
    if (isDebugCommand({what}, session.commands()) || what.contains(QLatin1Char(','))) {
        return resolveDebugCommand(what, refusal);
    }
    QMetaProperty property;
    if (!Reflection::findProperty(target.object, target.name, what, &property, &error)) {
        *refusal = Reply::failure(ErrorClass::UnknownTarget, error);
        return false;
    }
    const QString label = target.name + QLatin1Char('.') + QString::fromLatin1(property.name());
    const Effect effect = effectOf(target.object->metaObject(), property.name());
    if (!property.isWritable() || effect.kind == Effect::None) {
        *refusal = Reply::failure(
            ErrorClass::Failed, QStringLiteral("%1 is not writable; feed a debug command instead").arg(label));
        return false;
    }
    const QMetaEnum enumerator = Reflection::enumOf(target.object, property);
    const auto parse = [property, enumerator](const QString &text, QVariant *value, QString *why) {
        return ValueText::parse(text, property.userType(), QByteArray(property.typeName()), enumerator, value, why);
    };
    m_check = [parse](const QString &text, QString *why) {
        QVariant value;
        return parse(text, &value, why);
    };
    const QPointer<QObject> object = target.object;
    // The device stays alive while the feed runs, even if it is unplugged meanwhile.
    const TQ_SPAPI::IDevicePtr keep = target.device;
    m_apply = [object, keep, property, parse, label](const QString &text) {
        QVariant value;
        QString why;
        if (!object) {
            return Reply::failure(ErrorClass::Failed, QStringLiteral("%1 went away").arg(label));
        }
        if (!parse(text, &value, &why)) {
            return Reply::failure(ErrorClass::BadValue, label + QStringLiteral(": ") + why);
        }
        if (!property.write(object, value)) {
            return Reply::failure(ErrorClass::Failed, QStringLiteral("%1 did not take %2").arg(label, text));
        }
        return Reply::success();
    };
    return true;
}

bool FeedTarget::resolveDebugCommand(const QString &what, Reply *refusal)
{
    const QString word = what.section(QLatin1Char(','), 0, 0).trimmed().toLower();
    const VantixDebug::CommandInfo *command = debugCommand(word);
    if (!command) {
        *refusal = Reply::failure(ErrorClass::UnknownCommand,
            QStringLiteral("illegal command: the debug controller has no command \"%1\"; help lists them").arg(word));
        return false;
    }
    if (command->arguments.isEmpty()) {
        *refusal = Reply::failure(ErrorClass::BadRequest,
            QStringLiteral("%1 takes no value; feed a debug command whose last argument takes one")
                .arg(command->usage));
        return false;
    }
    using A = VantixDebug::ArgumentInfo;
    const A argument = command->arguments.last();
    m_check = [argument](const QString &text, QString *why) {
        switch (argument.type) {
        case A::Integer: {
            qlonglong number = 0;
            if (ValueText::parseInteger(text, &number) && number >= std::numeric_limits<int>::min() &&
                number <= std::numeric_limits<int>::max()) {
                return true;
            }
            *why = QStringLiteral("%1 takes a whole number from %2 to %3, got \"%4\"")
                       .arg(argument.name)
                       .arg(std::numeric_limits<int>::min())
                       .arg(std::numeric_limits<int>::max())
                       .arg(text);
            return false;
        }
        case A::Real: {
            bool ok = false;
            const double number = QLocale::c().toDouble(text, &ok);
            if (ok && std::isfinite(number)) {
                return true;
            }
            *why = QStringLiteral("%1 takes a finite number such as 2.5, got \"%2\"").arg(argument.name, text);
            return false;
        }
        case A::Choice:
            if (argument.choices.contains(text)) {
                return true;
            }
            *why = QStringLiteral("%1 takes %2, got \"%3\"")
                       .arg(argument.name, argument.choices.join(QLatin1Char('|')), text);
            return false;
        case A::Text:
            break;
        }
        // The debug controller splits at commas, and a line break would end the command.
        for (const QChar c : text) {
            if (c == QLatin1Char(',') || c.category() == QChar::Other_Control) {
                *why = QStringLiteral("%1 cannot hold a comma or a control character").arg(argument.name);
                return false;
            }
        }
        return true;
    };
    const QString prefix = what + QLatin1Char(',');
    m_apply = [prefix](const QString &text) { return runDebugCommand(prefix + text); };
    return true;
}

} // namespace VantixControl

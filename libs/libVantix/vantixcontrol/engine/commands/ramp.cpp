// ramp <target> <property|debug command> <from> <to> <ms>: a gradual change,
// one step per 100 ms, through the property's setter or the debug command.
// Each step's value and time are worked out when it comes due, so a ramp
// holds the same few numbers whatever its length.

#include "commandtable_p.h"
#include "effects_p.h"
#include "reflection_p.h"
#include "session_p.h"
#include "timedjob_p.h"
#include "timing_p.h"
#include "valuetext_p.h"

#include <QPointer>

#include <cmath>
#include <limits>

using TQ_SPAPI::VantixDebug;

namespace VantixControl {

namespace {
using Apply = std::function<Reply(double value)>;

/// What the values of a ramp may be: the bounds of the type they are written as, and whether they are whole.
struct Scale
{
    double low = -std::numeric_limits<double>::max();
    double high = std::numeric_limits<double>::max();
    bool integral = false;
};

class RampJob : public TimedJob
{
public:
    RampJob(SessionPrivate &session, Apply apply, double from, double to, qint64 ms, const Scale &scale)
        : TimedJob(session)
        , m_apply(std::move(apply))
        , m_from(from)
        , m_to(to)
        , m_ms(ms)
    {
        // Whole numbers never repeat a value.
        m_steps = std::max<qint64>(1, ms / Timing::RampStepMs);
        if (scale.integral) {
            const double wholes = std::abs(std::round(to) - std::round(from));
            m_steps = std::max<qint64>(1, wholes < double(m_steps) ? qint64(wholes) : m_steps);
        }
    }

private:
    void begin() override { step(); }

    // Weighted so that no sum leaves the range: ramping 1e308 to -1e308 never passes through infinity.
    double valueAt(qint64 index) const
    {
        if (index == m_steps) {
            return m_to;
        }
        const double t = double(index) / double(m_steps);
        return m_from * (1 - t) + m_to * t;
    }

    void step()
    {
        const Reply reply = m_apply(valueAt(m_index));
        if (!reply.ok || m_index == m_steps) {
            finish(reply);
            return;
        }
        ++m_index;
        // At most a day's ms times its steps: no overflow. Rounded up, so that no step comes early.
        const qint64 dueNs = m_ms * m_index / m_steps * 1000000 - elapsedNs();
        after(std::max<qint64>(0, (dueNs + 999999) / 1000000), [this] { step(); });
    }

    Apply m_apply;
    double m_from;
    double m_to;
    qint64 m_ms;
    qint64 m_steps = 1;
    qint64 m_index = 0;
};

QString numberText(double value, bool integral)
{
    // Adding 0 turns -0 into 0, which every integer type reads.
    return integral ? QString::number(std::round(value) + 0.0, 'f', 0) : QString::number(value, 'g', 10);
}

QString rangeText(const Scale &scale)
{
    return QStringLiteral("from %1 to %2")
        .arg(numberText(scale.low, scale.integral), numberText(scale.high, scale.integral));
}

// What a debug command's last argument takes, which the ramp's value fills.
bool debugScale(const QString &what, const QString &from, const QString &to, Scale *scale, Reply *refusal)
{
    const QString word = what.section(QLatin1Char(','), 0, 0).trimmed().toLower();
    const VantixDebug::CommandInfo *command = debugCommand(word);
    if (!command) {
        *refusal = Reply::failure(ErrorClass::UnknownCommand,
            QStringLiteral("illegal command: the debug controller has no command \"%1\"; help lists them").arg(word));
        return false;
    }
    using A = VantixDebug::ArgumentInfo;
    const A::Type type = command->arguments.isEmpty() ? A::Choice : command->arguments.last().type;
    switch (type) {
    case A::Integer:
        scale->low = std::numeric_limits<int>::min();
        scale->high = std::numeric_limits<int>::max();
        scale->integral = true;
        return true;
    case A::Real:
        return true;
    case A::Text: {
        // Text takes numbers as they are written: whole ones stay whole.
        qlonglong whole = 0;
        scale->integral = ValueText::parseInteger(from, &whole) && ValueText::parseInteger(to, &whole);
        return true;
    }
    case A::Choice:
        break;
    }
    *refusal = Reply::failure(ErrorClass::BadRequest,
        QStringLiteral("%1 takes no number last; ramp a debug command whose last argument is a number")
            .arg(command->usage));
    return false;
}

Apply debugApply(const QString &what, bool integral)
{
    return [what, integral](
               double value) { return runDebugCommand(what + QLatin1Char(',') + numberText(value, integral)); };
}

bool propertyApply(const Target &target, const QString &what, Scale *scale, Apply *apply, Reply *refusal)
{
    QMetaProperty property;
    QString error;
    if (!Reflection::findProperty(target.object, target.name, what, &property, &error)) {
        *refusal = Reply::failure(ErrorClass::UnknownTarget, error);
        return false;
    }
    const Effect effect = effectOf(target.object->metaObject(), property.name());
    if (!property.isWritable() || !ValueText::numberRange(property.userType(), &scale->low, &scale->high) ||
        effect.kind == Effect::None) {
        *refusal = Reply::failure(ErrorClass::Failed,
            QStringLiteral("%1.%2 is not a writable number; ramp a debug command instead").arg(target.name, what));
        return false;
    }
    scale->integral = ValueText::isIntegral(property.userType());
    const bool integral = scale->integral;
    const QPointer<QObject> object = target.object;
    const TQ_SPAPI::IDevicePtr keep = target.device;
    const QString name = target.name;
    *apply = [object, keep, property, integral, name](double value) {
        if (!object) {
            return Reply::failure(ErrorClass::Failed, QStringLiteral("%1 went away").arg(name));
        }
        const QString text = numberText(value, integral);
        QVariant v;
        QString why;
        if (!ValueText::parse(text, property.userType(), QByteArray(property.typeName()), QMetaEnum(), &v, &why)) {
            return Reply::failure(
                ErrorClass::BadValue, QStringLiteral("%1: %2").arg(QString::fromLatin1(property.name()), why));
        }
        if (!property.write(object, v)) {
            return Reply::failure(ErrorClass::Failed,
                QStringLiteral("%1.%2 did not take %3").arg(name, QString::fromLatin1(property.name()), text));
        }
        return Reply::success();
    };
    return true;
}

TimedJob *ramp(Invocation &invocation, Reply *refusal)
{
    const qint64 ms = invocation.integer(QStringLiteral("ms"));
    if (ms > Timing::MaxRampMs) {
        *refusal = Reply::failure(ErrorClass::BadValue,
            QStringLiteral("ms: a ramp takes at most %1 ms (24 hours), got %2").arg(Timing::MaxRampMs).arg(ms));
        return nullptr;
    }
    Target target;
    QString error;
    if (!invocation.session.resolve(invocation.word(QStringLiteral("target")), &target, &error)) {
        *refusal = Reply::failure(ErrorClass::UnknownTarget, error);
        return nullptr;
    }
    const QString what = invocation.word(QStringLiteral("property|command"));
    const QString fromText = invocation.word(QStringLiteral("from"));
    const QString toText = invocation.word(QStringLiteral("to"));
    Scale scale;
    Apply apply;
    if (isDebugCommand({what}, invocation.session.commands()) || what.contains(QLatin1Char(','))) {
        if (!debugScale(what, fromText, toText, &scale, refusal)) {
            return nullptr;
        }
        apply = debugApply(what, scale.integral);
    } else if (!propertyApply(target, what, &scale, &apply, refusal)) {
        return nullptr;
    }
    const double from = invocation.number(QStringLiteral("from"));
    const double to = invocation.number(QStringLiteral("to"));
    for (const double value : {from, to}) {
        const double shown = scale.integral ? std::round(value) : value;
        if (shown < scale.low || shown > scale.high) {
            *refusal = Reply::failure(ErrorClass::BadValue,
                QStringLiteral("%1: %2 is beyond what it takes, %3")
                    .arg(what, value == from ? fromText : toText, rangeText(scale)));
            return nullptr;
        }
    }
    return new RampJob(invocation.session, apply, from, to, ms, scale);
}
} // namespace

void addRamp(CommandTable &table)
{
    CommandEntry entry;
    entry.name = QStringLiteral("ramp");
    entry.forms = {{required(QStringLiteral("target"), Argument::Target),
        required(QStringLiteral("property|command"), Argument::Property),
        required(QStringLiteral("from"), Argument::Number), required(QStringLiteral("to"), Argument::Number),
        required(QStringLiteral("ms"), Argument::Milliseconds)}};
    entry.help = QStringLiteral("change a value step by step, for at most 24 hours; a debug command gets the value as "
                                "its last argument");
    entry.label = QStringLiteral("Ramp");
    entry.job = ramp;
    table.add(entry);
}

} // namespace VantixControl

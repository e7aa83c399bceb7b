// ramp <target> <property|debug command> <from> <to> <ms>: a gradual change,
// one step per 100 ms, through the property's setter or the debug command.

#include "commandtable_p.h"
#include "effects_p.h"
#include "reflection_p.h"
#include "session_p.h"
#include "timedjob_p.h"
#include "timing_p.h"
#include "valuetext_p.h"

#include <QPointer>

#include <cmath>

namespace VantixControl {

namespace {
using Apply = std::function<Reply(double value)>;

class RampJob : public TimedJob
{
public:
    RampJob(SessionPrivate &session, Apply apply, double from, double to, qint64 ms, bool integral)
        : TimedJob(session)
        , m_apply(std::move(apply))
    {
        // Whole numbers never repeat a value.
        qint64 steps = std::max<qint64>(1, ms / Timing::RampStepMs);
        if (integral) {
            steps = std::max<qint64>(1, std::min<qint64>(steps, std::llabs(std::llround(to) - std::llround(from))));
        }
        for (qint64 i = 0; i <= steps; ++i) {
            m_values.append(from + (to - from) * double(i) / double(steps));
            m_times.append(ms * i / steps);
        }
    }

private:
    void begin() override { step(); }

    void step()
    {
        const Reply reply = m_apply(m_values.at(m_index));
        if (!reply.ok || ++m_index == m_values.size()) {
            finish(reply);
            return;
        }
        // Rounded up, so that no step comes before its time.
        const qint64 dueNs = m_times.at(m_index) * 1000000 - elapsedNs();
        after(std::max<qint64>(0, (dueNs + 999999) / 1000000), [this] { step(); });
    }

    Apply m_apply;
    QVector<double> m_values;
    QVector<qint64> m_times;
    int m_index = 0;
};

QString numberText(double value, bool integral)
{
    return integral ? QString::number(qRound64(value)) : QString::number(value, 'g', 10);
}

TimedJob *ramp(Invocation &invocation, Reply *refusal)
{
    const QStringList args = invocation.args;
    Target target;
    QString error;
    if (!invocation.session.resolve(args.at(0), &target, &error)) {
        *refusal = Reply::failure(ErrorClass::UnknownTarget, error);
        return nullptr;
    }
    const double from = invocation.number(QStringLiteral("from"));
    const double to = invocation.number(QStringLiteral("to"));
    const qlonglong ms = invocation.integer(QStringLiteral("ms"));
    const QString what = args.at(1);
    Apply apply;
    bool integral = true;
    if (isDebugCommand({what}, invocation.session.commands()) || what.contains(QLatin1Char(','))) {
        qlonglong whole = 0;
        integral = ValueText::parseInteger(args.at(2), &whole) && ValueText::parseInteger(args.at(3), &whole);
        apply = [what, integral](
                    double value) { return runDebugCommand(what + QLatin1Char(',') + numberText(value, integral)); };
    } else {
        QMetaProperty property;
        if (!Reflection::findProperty(target.object, target.name, what, &property, &error)) {
            *refusal = Reply::failure(ErrorClass::UnknownTarget, error);
            return nullptr;
        }
        const Effect effect = effectOf(target.object->metaObject(), property.name());
        if (!property.isWritable() || !ValueText::isNumeric(property.userType()) || effect.kind == Effect::None) {
            *refusal = Reply::failure(ErrorClass::Failed,
                QStringLiteral("%1.%2 is not a writable number; ramp a debug command instead").arg(target.name, what));
            return nullptr;
        }
        integral = ValueText::isIntegral(property.userType());
        const QPointer<QObject> object = target.object;
        const TQ_SPAPI::IDevicePtr keep = target.device;
        const QString name = target.name;
        apply = [object, keep, property, integral, name](double value) {
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
    }
    return new RampJob(invocation.session, apply, from, to, ms, integral);
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
    entry.help = QStringLiteral("change a value step by step; a debug command gets the value as its last argument");
    entry.label = QStringLiteral("Ramp");
    entry.job = ramp;
    table.add(entry);
}

} // namespace VantixControl

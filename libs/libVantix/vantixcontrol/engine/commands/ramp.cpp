// ramp <target> <property|debug command> <from> <to> <ms>: a gradual change,
// one step per 100 ms, through the property's setter or the debug command.

#include "commandtable_p.h"
#include "effects_p.h"
#include "reflection_p.h"
#include "session_p.h"
#include "timedjob_p.h"
#include "valuetext_p.h"

#include <QLocale>
#include <QPointer>

#include <cmath>

namespace VantixControl {

namespace {
constexpr int StepMs = 100;

using Apply = std::function<Reply(double value)>;

class RampJob : public TimedJob
{
public:
    RampJob(SessionPrivate &session, const Done &done, Apply apply, double from, double to, qint64 ms, bool integral)
        : TimedJob(session, done)
        , m_apply(std::move(apply))
    {
        // Whole numbers never repeat a value.
        qint64 steps = std::max<qint64>(1, ms / StepMs);
        if (integral) {
            steps = std::max<qint64>(1, std::min<qint64>(steps, std::llabs(std::llround(to) - std::llround(from))));
        }
        for (qint64 i = 0; i <= steps; ++i) {
            m_values.append(from + (to - from) * double(i) / double(steps));
            m_times.append(ms * i / steps);
        }
        step();
    }

private:
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

void ramp(Invocation &invocation, const Done &done)
{
    const QStringList &args = invocation.args;
    if (args.size() != 5) {
        done(Reply::failure(
            ErrorClass::BadRequest, QStringLiteral("usage: ramp <target> <property|debug command> <from> <to> <ms>")));
        return;
    }
    Target target;
    QString error;
    if (!invocation.session.resolve(args.at(0), &target, &error)) {
        done(Reply::failure(ErrorClass::UnknownTarget, error));
        return;
    }
    bool fromOk = false;
    bool toOk = false;
    const double from = QLocale::c().toDouble(args.at(2), &fromOk);
    const double to = QLocale::c().toDouble(args.at(3), &toOk);
    qlonglong ms = 0;
    if (!fromOk || !toOk || !std::isfinite(from) || !std::isfinite(to) || !ValueText::parseInteger(args.at(4), &ms) ||
        ms < 0 || ms > std::numeric_limits<int>::max()) {
        done(Reply::failure(
            ErrorClass::BadValue, QStringLiteral("ramp needs numbers for <from> and <to> and a whole number of ms")));
        return;
    }
    const QString what = args.at(1);
    Apply apply;
    bool integral = true;
    if (isDebugCommand(what) || what.contains(QLatin1Char(','))) {
        qlonglong whole = 0;
        integral = ValueText::parseInteger(args.at(2), &whole) && ValueText::parseInteger(args.at(3), &whole);
        apply = [what, integral](
                    double value) { return runDebugCommand(what + QLatin1Char(',') + numberText(value, integral)); };
    } else {
        QMetaProperty property;
        if (!Reflection::findProperty(target.object, target.name, what, &property, &error)) {
            done(Reply::failure(ErrorClass::UnknownTarget, error));
            return;
        }
        const Effect effect = effectOf(target.object->metaObject(), property.name());
        if (!property.isWritable() || !ValueText::isNumeric(property.userType()) || effect.kind == Effect::None) {
            done(Reply::failure(ErrorClass::Failed,
                QStringLiteral("%1.%2 is not a writable number; ramp a debug command instead").arg(target.name, what)));
            return;
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
    new RampJob(invocation.session, done, apply, from, to, ms, integral);
}
} // namespace

void addRamp(CommandTable &table)
{
    CommandEntry entry;
    entry.name = QStringLiteral("ramp");
    entry.arguments = {{QStringLiteral("target"), QStringLiteral("target")},
        {QStringLiteral("what"), QStringLiteral("property")}, {QStringLiteral("from"), QStringLiteral("number")},
        {QStringLiteral("to"), QStringLiteral("number")}, {QStringLiteral("ms"), QStringLiteral("ms")}};
    entry.usages = QStringList{QStringLiteral("ramp <target> <property|debug command> <from> <to> <ms>")};
    entry.help = QStringLiteral("change a value step by step; a debug command gets the value as its last argument");
    entry.start = ramp;
    table.add(entry);
}

} // namespace VantixControl

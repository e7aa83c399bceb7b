// expect: checks of a value, a device's presence or a signal, each optionally
// waited for up to a given time; a script stops at the first that fails.

#include "commandtable_p.h"
#include "devicenames_p.h"
#include "eventwatcher_p.h"
#include "reflection_p.h"
#include "session_p.h"
#include "timedjob_p.h"
#include "valuetext_p.h"

#include <cmath>

using namespace TQ_SPAPI;

namespace VantixControl {

namespace {
// Polled: a property need not announce its changes to be checked.
constexpr int PollMs = 10;

/// Looks once: met, not yet (with what was seen), or a failure that no waiting mends.
using Check = std::function<bool(QString *actual, Reply *fatal)>;
using Failure = std::function<QString(const QString &actual)>;

class ExpectJob : public TimedJob
{
public:
    ExpectJob(SessionPrivate &session, Check check, Failure failure, qint64 withinMs)
        : TimedJob(session)
        , m_check(std::move(check))
        , m_failure(std::move(failure))
        , m_deadlineNs(withinMs * 1000000)
    {
    }

private:
    void begin() override { poll(); }

    void poll()
    {
        QString actual;
        Reply fatal;
        const bool met = m_check(&actual, &fatal);
        if (!fatal.ok) {
            finish(fatal);
        } else if (met) {
            finish(Reply::success());
        } else if (elapsedNs() >= m_deadlineNs) {
            finish(Reply::failure(ErrorClass::Failed, m_failure(actual)));
        } else {
            after(PollMs, [this] { poll(); });
        }
    }

    Check m_check;
    Failure m_failure;
    qint64 m_deadlineNs;
};

const QStringList &comparisons()
{
    static const QStringList ops{QStringLiteral("="), QStringLiteral("=="), QStringLiteral("!="), QStringLiteral("<"),
        QStringLiteral("<="), QStringLiteral(">"), QStringLiteral(">="), QStringLiteral("has"),
        QStringLiteral("lacks")};
    return ops;
}

// False with @p why when @p op cannot compare such values.
bool compareValues(
    const QVariant &current, const QVariant &expected, const QMetaEnum &e, const QString &op, bool *met, QString *why)
{
    if (op == QLatin1String("has") || op == QLatin1String("lacks")) {
        if (!e.isValid() || !e.isFlag()) {
            *why = QStringLiteral("%1 needs a flags property such as status").arg(op);
            return false;
        }
        const int a = ValueText::enumValue(current);
        const int x = ValueText::enumValue(expected);
        *met = op == QLatin1String("has") ? (a & x) == x : (a & x) == 0;
        return true;
    }
    const bool equal = op == QLatin1String("=") || op == QLatin1String("==");
    if (e.isValid()) {
        if (!equal && op != QLatin1String("!=")) {
            *why = QStringLiteral("names are compared with =, !=, has or lacks, not %1").arg(op);
            return false;
        }
        *met = (ValueText::enumValue(current) == ValueText::enumValue(expected)) == equal;
        return true;
    }
    if (ValueText::isNumeric(current.userType())) {
        const double a = current.toDouble();
        const double x = expected.toDouble();
        const bool same = std::abs(a - x) <= 1e-9 * std::max({1.0, std::abs(a), std::abs(x)});
        if (equal) {
            *met = same;
        } else if (op == QLatin1String("!=")) {
            *met = !same;
        } else if (op == QLatin1String("<")) {
            *met = a < x && !same;
        } else if (op == QLatin1String("<=")) {
            *met = a < x || same;
        } else if (op == QLatin1String(">")) {
            *met = a > x && !same;
        } else {
            *met = a > x || same;
        }
        return true;
    }
    if (!equal && op != QLatin1String("!=")) {
        *why = QStringLiteral("%1 values are compared with = or !=, not %2")
                   .arg(QString::fromLatin1(current.typeName()), op);
        return false;
    }
    const bool same = current == expected || ValueText::format(current) == ValueText::format(expected);
    *met = same == equal;
    return true;
}

// The forms, in the order they are tried: present and emitted are words, not properties.
enum ExpectForm { PresenceForm, EmittedForm, ValueForm };

TimedJob *expect(Invocation &invocation, Reply *refusal)
{
    SessionPrivate &session = invocation.session;
    const qlonglong within = invocation.has(QStringLiteral("within")) ? invocation.integer(QStringLiteral("ms")) : -1;
    const QString targetName = invocation.word(QStringLiteral("target"));
    const QString timing = within >= 0 ? QStringLiteral(" within %1 ms").arg(within) : QString();
    QString error;
    Target target;
    const bool known = session.resolve(targetName, &target, &error);
    IDevice::DeviceId id = IDevice::ID_UNKNOWN_DEV;
    if (!known && !DeviceNames::parse(targetName, &id)) {
        *refusal = Reply::failure(ErrorClass::UnknownTarget, error);
        return nullptr;
    }
    const QString subject = known ? target.name : DeviceNames::name(id);
    Check check;
    Failure failure;

    if (invocation.form == PresenceForm) {
        const QString what = invocation.text(QStringLiteral("state"));
        const bool wanted = what == QLatin1String("present");
        check = [&session, targetName, wanted](QString *actual, Reply *) {
            Target t;
            QString e;
            const bool present = session.resolve(targetName, &t, &e);
            *actual = present ? QStringLiteral("present") : QStringLiteral("absent");
            return present == wanted;
        };
        failure = [subject, what, timing](const QString &actual) {
            return QStringLiteral("%1 is %2, expected %3%4").arg(subject, actual, what, timing);
        };
    } else if (invocation.form == EmittedForm) {
        const QByteArray signal = invocation.word(QStringLiteral("signal")).toLatin1();
        check = [&session, targetName, signal](QString *actual, Reply *fatal) {
            Target t;
            QString e;
            *actual = QStringLiteral("not emitted");
            if (!session.resolve(targetName, &t, &e)) {
                return false;
            }
            if (!Reflection::hasSignal(t.object->metaObject(), signal)) {
                *fatal = Reply::failure(ErrorClass::UnknownTarget,
                    QStringLiteral("%1 has no signal \"%2\"").arg(t.name, QString::fromLatin1(signal)));
                return false;
            }
            const QString key = t.name + QLatin1Char('.') + QString::fromLatin1(signal);
            const int count = session.watcher->emissions(t.name, signal);
            if (count > session.emittedSeen.value(key)) {
                session.emittedSeen[key] = count;
                return true;
            }
            return false;
        };
        failure = [subject, signal, timing](const QString &) {
            return QStringLiteral("%1 did not emit %2%3").arg(subject, QString::fromLatin1(signal), timing);
        };
    } else {
        const QString propertyName = invocation.word(QStringLiteral("property"));
        const QString op =
            invocation.has(QStringLiteral("op")) ? invocation.text(QStringLiteral("op")) : QStringLiteral("=");
        const QString expectedText = invocation.word(QStringLiteral("value"));
        auto expectedShown = std::make_shared<QString>(expectedText);
        check = [&session, targetName, propertyName, op, expectedText, expectedShown](QString *actual, Reply *fatal) {
            Target t;
            QString e;
            if (!session.resolve(targetName, &t, &e)) {
                *actual = QStringLiteral("(device not present)");
                return false;
            }
            QMetaProperty p;
            if (!Reflection::findProperty(t.object, t.name, propertyName, &p, &e)) {
                *fatal = Reply::failure(ErrorClass::UnknownTarget, e);
                return false;
            }
            const QMetaEnum enumerator = Reflection::enumOf(t.object, p);
            QVariant expected;
            if (!ValueText::parse(expectedText, p.userType(), QByteArray(p.typeName()), enumerator, &expected, &e)) {
                *fatal = Reply::failure(
                    ErrorClass::BadValue, QStringLiteral("%1: %2").arg(QString::fromLatin1(p.name()), e));
                return false;
            }
            *expectedShown = ValueText::format(expected, enumerator);
            const QVariant current = p.read(t.object);
            *actual = ValueText::format(current, enumerator, session.watcher);
            bool met = false;
            if (!compareValues(current, expected, enumerator, op, &met, &e)) {
                *fatal = Reply::failure(ErrorClass::BadRequest, e);
                return false;
            }
            return met;
        };
        const QString shownOp =
            op == QLatin1String("=") || op == QLatin1String("==") ? QString() : op + QLatin1Char(' ');
        failure = [subject, propertyName, shownOp, timing, expectedShown](const QString &actual) {
            return QStringLiteral("%1.%2 is %3, expected %4%5%6")
                .arg(subject, propertyName, actual, shownOp, *expectedShown, timing);
        };
    }
    return new ExpectJob(session, check, failure, std::max<qlonglong>(0, within));
}
} // namespace

void addExpect(CommandTable &table)
{
    const Argument target = required(QStringLiteral("target"), Argument::Target);
    const Argument within = keywordWithValue(QStringLiteral("within"), QStringLiteral("ms"), Argument::Milliseconds);
    CommandEntry entry;
    entry.name = QStringLiteral("expect");
    entry.forms.resize(3);
    entry.forms[PresenceForm] = {
        target, keyword(QStringLiteral("state"), {QStringLiteral("present"), QStringLiteral("absent")}), within};
    entry.forms[EmittedForm] = {target, keyword(QStringLiteral("emitted"), {QStringLiteral("emitted")}),
        required(QStringLiteral("signal"), Argument::Signal), within};
    entry.forms[ValueForm] = {target, required(QStringLiteral("property"), Argument::Property),
        keyword(QStringLiteral("op"), comparisons(), true), required(QStringLiteral("value"), Argument::Value), within};
    entry.help = QStringLiteral("check a value, a device's presence or a signal since the last such check, waiting up "
                                "to <ms> for it; a script stops when it fails");
    entry.label = QStringLiteral("Expect");
    entry.job = expect;
    table.add(entry);
}

} // namespace VantixControl

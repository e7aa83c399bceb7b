// feed <target> <property|debug command> <file> [--loop]: plays a CSV of
// milliseconds,value rows into a property or a debug command's last
// argument, each row at its time. The file is read and checked whole before
// the first value is applied; each row's time is counted from the start, so
// a long feed does not drift.

#include "commandtable_p.h"
#include "feedtarget_p.h"
#include "session_p.h"
#include "timedjob_p.h"
#include "timeseries_p.h"
#include "timing_p.h"

namespace VantixControl {

namespace {
const QString Loop = QStringLiteral("--loop");

class FeedJob : public TimedJob
{
public:
    FeedJob(SessionPrivate &session, const FeedTarget &target, const TimeSeries &series, bool loop)
        : TimedJob(session)
        , m_target(target)
        , m_series(series)
        , m_loop(loop)
    {
    }

private:
    void begin() override { next(); }

    // Runs the row that is due, then waits for the next one; a looped file starts again at its span.
    void play()
    {
        const Reply reply = m_target.apply(m_series.value(m_row));
        if (!reply.ok) {
            finish(Reply::failure(reply.error,
                QStringLiteral("%1:%2 at %3 ms: %4")
                    .arg(m_series.fileName())
                    .arg(m_series.line(m_row))
                    .arg(m_series.ms(m_row))
                    .arg(reply.text)));
            return;
        }
        ++m_played;
        if (++m_row == m_series.size()) {
            if (!m_loop) {
                finish(Reply::success(QStringLiteral("%1 values over %2 ms").arg(m_played).arg(m_series.span())));
                return;
            }
            m_row = 0;
            ++m_pass;
        }
        next();
    }

    void next()
    {
        const qint64 dueMs = m_pass * m_series.span() + m_series.ms(m_row);
        // Rounded up, so that no row comes early.
        const qint64 waitNs = dueMs * 1000000 - elapsedNs();
        after(std::max<qint64>(0, (waitNs + 999999) / 1000000), [this] { play(); });
    }

    FeedTarget m_target;
    TimeSeries m_series;
    bool m_loop;
    int m_row = 0;
    qint64 m_pass = 0;
    qint64 m_played = 0;
};

TimedJob *feed(Invocation &invocation, Reply *refusal)
{
    FeedTarget target;
    if (!target.resolve(invocation.session, invocation.word(QStringLiteral("target")),
            invocation.word(QStringLiteral("property|command")), refusal)) {
        return nullptr;
    }
    TimeSeries series;
    const auto check = [&target](const QString &value, QString *why) { return target.check(value, why); };
    if (!TimeSeries::read(invocation.text(QStringLiteral("file")), check, &series, refusal)) {
        return nullptr;
    }
    const bool loop = invocation.has(Loop);
    if (loop && series.span() == 0) {
        *refusal = Reply::failure(ErrorClass::BadValue,
            QStringLiteral("%1: every row is at 0 ms; a looped file must last some time").arg(series.fileName()));
        return nullptr;
    }
    return new FeedJob(invocation.session, target, series, loop);
}
} // namespace

void addFeed(CommandTable &table)
{
    CommandEntry entry;
    entry.name = QStringLiteral("feed");
    entry.forms = {{required(QStringLiteral("target"), Argument::Target),
        required(QStringLiteral("property|command"), Argument::Property),
        required(QStringLiteral("file"), Argument::File), keyword(Loop, {Loop}, true)}};
    entry.help = QStringLiteral("play a CSV file of milliseconds,value rows into a property or a debug command's last "
                                "argument, each at its time (at most %1 rows over 24 hours); --loop repeats it until "
                                "cancelled")
                     .arg(Timing::MaxFeedRows);
    entry.label = QStringLiteral("Feed");
    entry.job = feed;
    table.add(entry);
}

} // namespace VantixControl

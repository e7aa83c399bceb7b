#include "timedjob_p.h"

#include "session_p.h"

#include <limits>

namespace VantixControl {

TimedJob::TimedJob(SessionPrivate &session)
    : QObject(&session)
    , m_session(session)
{
    m_timer.setSingleShot(true);
    // Waits and ramps must not end early, as coarse timers may.
    m_timer.setTimerType(Qt::PreciseTimer);
    connect(&m_timer, &QTimer::timeout, this, [this] {
        const std::function<void()> step = std::move(m_step);
        m_step = nullptr;
        if (step) {
            step();
        }
    });
}

void TimedJob::start(const Done &done)
{
    m_done = done;
    m_clock.start();
    begin();
}

void TimedJob::cancel()
{
    m_timer.stop();
    m_step = nullptr;
    m_done = nullptr;
    deleteLater();
}

void TimedJob::finish(const Reply &reply)
{
    m_timer.stop();
    m_step = nullptr;
    deleteLater();
    // The callback may start the next command; this job is done before it runs.
    const Done done = std::move(m_done);
    m_done = nullptr;
    if (done) {
        done(reply);
    }
}

void TimedJob::after(qint64 ms, std::function<void()> step)
{
    m_step = std::move(step);
    m_timer.start(int(qBound<qint64>(0, ms, std::numeric_limits<int>::max())));
}

} // namespace VantixControl

#ifndef VANTIXCONTROL_TIMEDJOB_P_H
#define VANTIXCONTROL_TIMEDJOB_P_H

#include "commandtable_p.h"

#include <QElapsedTimer>
#include <QObject>
#include <QTimer>

#include <functional>

namespace VantixControl {

class SessionPrivate;

/**
 * A command that takes time (wait, ramp, expect ... within): made by its
 * command, then started by the session, it runs on the event loop, belongs
 * to its session and ends with it. It reports once, through finish(), the
 * one way it ends; cancelled, it stops where it is and reports nothing.
 */
class TimedJob : public QObject
{
    Q_OBJECT

public:
    explicit TimedJob(SessionPrivate &session);

    /// Runs the job; @p done gets its reply once. Called once, after whoever made the job has returned.
    void start(const Done &done);
    void cancel();

protected:
    /// The job's first step; its time counts from here.
    virtual void begin() = 0;
    /// Reports @p reply and ends the job.
    void finish(const Reply &reply);
    /// Runs @p step after @p ms of event-loop time; one step is pending at a time.
    void after(qint64 ms, std::function<void()> step);
    qint64 elapsedNs() const { return m_clock.nsecsElapsed(); }

    SessionPrivate &m_session;

private:
    Done m_done;
    QTimer m_timer;
    QElapsedTimer m_clock;
    std::function<void()> m_step;
};

} // namespace VantixControl

#endif

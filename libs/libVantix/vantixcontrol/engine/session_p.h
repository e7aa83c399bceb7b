#ifndef VANTIXCONTROL_SESSION_P_H
#define VANTIXCONTROL_SESSION_P_H

#include "commandtable_p.h"
#include "recorder_p.h"
#include "session.h"
#include "targets_p.h"

#include <vantix/system.h>
#include <vantix/vantix_private_export.h>

#include <QHash>
#include <QList>
#include <QObject>
#include <QPointer>

namespace VantixControl {

class EventWatcher;
class TimedJob;

class VANTIX_PRIVATE_EXPORT SessionPrivate : public QObject
{
    Q_OBJECT

public:
    SessionPrivate(Session *q, TQ_SPAPI::System *system);
    ~SessionPrivate() override;

    static SessionPrivate *get(Session *session) { return session->d; }

    bool resolve(const QString &name, Target *target, QString *error) const;
    /// Starts @p job as the command that runs; it reports through the callback it was given.
    void setJob(TimedJob *job);
    qint64 elapsedMs() const;

    Session *q;
    QPointer<TQ_SPAPI::System> system;
    EventWatcher *watcher;
    Recorder recorder;
    /// Emissions already matched by "expect ... emitted", by object and signal.
    QHash<QString, int> emittedSeen;

    void enqueue(const QString &line, const Session::Done &done);
    void cancel();
    bool isIdle() const { return !m_busy && m_queue.isEmpty(); }
    void setLogEnabled(bool enabled);
    bool logEnabled() const { return m_log; }

private:
    struct Pending
    {
        QString line;
        Session::Done done;
    };
    void process();
    void run(const Pending &pending);
    void complete(quint64 generation, const QString &line, const Session::Done &done, const Reply &reply);

    QList<Pending> m_queue;
    QPointer<TimedJob> m_job;
    bool m_busy = false;
    bool m_processing = false;
    bool m_log = false;
    // Raised by cancel(): replies of what was running then are dropped.
    quint64 m_generation = 0;
};

/// Whether @p line is a command of the debug controller ("setbatteryfuel,2,40") rather than of the console.
VANTIX_PRIVATE_EXPORT bool isDebugCommand(const QString &line);
/// Runs a debug command as the "VantixDebug" parameter would and says what it did.
VANTIX_PRIVATE_EXPORT Reply runDebugCommand(const QString &line);

} // namespace VantixControl

#endif

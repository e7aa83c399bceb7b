#ifndef VANTIXCONTROL_SESSION_P_H
#define VANTIXCONTROL_SESSION_P_H

#include "commandtable_p.h"
#include "engine.h"
#include "recorder_p.h"
#include "session.h"
#include "targets_p.h"

#include <vantix/system.h>
#include <vantix/vantix_private_export.h>
#include <vantix/vantixdebug.h>

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
    qint64 elapsedMs() const;

    /// The commands of the System's engine; none once the System has gone.
    const CommandTable *commands() const;

    Session *q;
    QPointer<TQ_SPAPI::System> system;
    QPointer<Engine> engine;
    EventWatcher *watcher;
    Recorder recorder;
    /// Emissions already matched by "expect ... emitted", by object and signal.
    QHash<QString, int> emittedSeen;

    void enqueue(const QString &line, const QString &folder, const Session::Done &done);
    void cancel();
    bool isIdle() const { return !m_busy && m_queue.isEmpty(); }
    void setLogEnabled(bool enabled);
    bool logEnabled() const { return m_log; }

private:
    struct Pending
    {
        QString line;
        QString folder;
        Session::Done done;
    };
    /// How a line's end is recorded: its words as read (none if it could not be read), or not at all.
    struct Record
    {
        QString line;
        QStringList words;
        bool skip = false;
    };
    void process();
    void run(const Pending &pending);
    void complete(quint64 generation, const Record &record, const Session::Done &done, const Reply &reply);

    QList<Pending> m_queue;
    QPointer<TimedJob> m_job;
    bool m_busy = false;
    bool m_processing = false;
    bool m_log = false;
    // Raised by cancel(): replies of what was running then are dropped.
    quint64 m_generation = 0;
};

/**
 * Whether a line of @p words is a command of the debug controller
 * ("setbatteryfuel,2,40") rather than of the console: its first word
 * names a debug command before its first comma, or the line holds a comma
 * and does not start with a console command.
 */
VANTIX_PRIVATE_EXPORT bool isDebugCommand(const QStringList &words, const CommandTable *commands);
/// The debug command a line of @p words stands for: the words as typed, one blank between them.
VANTIX_PRIVATE_EXPORT QString debugCommandText(const QStringList &words);
/// The declaration of the debug command @p word (lower case), or null.
VANTIX_PRIVATE_EXPORT const TQ_SPAPI::VantixDebug::CommandInfo *debugCommand(const QString &word);
/// Runs a debug command as the "VantixDebug" parameter would and says what it did.
VANTIX_PRIVATE_EXPORT Reply runDebugCommand(const QString &text);

} // namespace VantixControl

#endif

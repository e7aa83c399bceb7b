#ifndef VANTIXCONTROL_SCRIPTRUNNER_H
#define VANTIXCONTROL_SCRIPTRUNNER_H

#include <vantixcontrol/protocol/reply.h>

#include <QHash>
#include <QList>
#include <QObject>
#include <QStringList>

#include <functional>

namespace VantixControl {

/**
 * Feeds console lines, one at a time, to whatever runs them: a session in
 * this process or an application over the control protocol. Comments and
 * blank lines are skipped. A line of a script that fails ends the run with
 * "<source>:<line>: <command>: <reason>" and exit code 1; typed lines go on
 * after a failure. When input has ended and every line has run, the run ends
 * with exit code 0.
 */
class ScriptRunner : public QObject
{
    Q_OBJECT

public:
    using Executor = std::function<void(const QString &line, const std::function<void(const Reply &)> &done)>;

    explicit ScriptRunner(Executor executor, QObject *parent = nullptr);

    /// Lines run only once started: a host starts the runner when its system is ready.
    void start();
    /// Queues @p lines from @p source; with @p script, the first failure ends the run.
    void feed(const QStringList &lines, const QString &source, bool script);
    /// No more input will come: finished() follows once everything queued has run.
    void endOfInput();
    /// Ends the run now (quit); what is queued does not run.
    void stop(int exitCode = 0, const QString &message = QString());
    bool isFinished() const { return m_finished; }
    /// A line has been handed on and not answered yet.
    bool isBusy() const { return m_busy; }

Q_SIGNALS:
    /// @p line is about to run; @p script tells whether it came from a script.
    void lineStarted(const QString &line, bool script);
    void answered(const QString &line, const VantixControl::Reply &reply);
    void finished(int exitCode, const QString &message);

private:
    struct Line
    {
        QString text;
        QString source;
        int number = 0;
        bool script = false;
    };
    void process();
    void complete(const Line &line, const Reply &reply);

    Executor m_executor;
    QList<Line> m_queue;
    QHash<QString, int> m_lineNumbers;
    bool m_started = false;
    bool m_busy = false;
    bool m_processing = false;
    bool m_inputEnded = false;
    bool m_finished = false;
};

} // namespace VantixControl

#endif

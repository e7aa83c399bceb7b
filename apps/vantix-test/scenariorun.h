#ifndef VANTIXTEST_SCENARIORUN_H
#define VANTIXTEST_SCENARIORUN_H

#include "outcome.h"
#include "suite.h"

#include <QElapsedTimer>
#include <QList>
#include <QObject>
#include <QTimer>

class ApplicationProcess;
class SimulatedClock;

namespace VantixControl {
class Client;
class ScriptRunner;
} // namespace VantixControl

/// How every scenario's application is started and given time.
struct RunSettings
{
    QString program;
    QStringList arguments;
    double speed = 0;
    QString fakeTimeLibrary;
    double timeoutSeconds = 300;
    /// Between SIGTERM and SIGKILL.
    int graceMs = 3000;
};

/**
 * One scenario against one fresh application: start it in @p folder, wait
 * for its greeting, turn its events and message log on, feed the scenario's
 * lines, take a dump when a line fails, stop the application. finished()
 * comes once, after the application has gone.
 */
class ScenarioRun : public QObject
{
    Q_OBJECT

public:
    ScenarioRun(
        const Scenario &scenario, const RunSettings &settings, const QString &folder, QObject *parent = nullptr);
    ~ScenarioRun() override;

    void start();
    /// Ctrl+C: stops the application now; the outcome is Interrupted unless the run had already ended.
    void interrupt();

    const Scenario &scenario() const { return m_scenario; }
    const Outcome &outcome() const { return m_outcome; }
    bool isDone() const { return m_state == State::Done; }

Q_SIGNALS:
    void finished();

private:
    enum class State { Starting, Preparing, Running, Lost, Ending, Stopping, Done };

    void connectClient();
    void prepare();
    void begin();
    void scriptFinished(int exitCode, const QString &message);
    void connectionLost(const QString &reason);
    void timedOut();
    void end(bool dump);
    void endStep();
    void halt();
    void stopApplication();
    void applicationExited();
    void error(const QString &message);
    /// " at <file>:<line>: <command>" for the line that runs, empty before the first.
    QString where() const;

    Scenario m_scenario;
    RunSettings m_settings;
    QString m_folder;
    State m_state = State::Starting;
    Outcome m_outcome;

    ApplicationProcess *m_application = nullptr;
    VantixControl::Client *m_client = nullptr;
    VantixControl::ScriptRunner *m_runner = nullptr;
    SimulatedClock *m_clock = nullptr;

    QList<int> m_commandLines; ///< the line number of each line that is sent
    int m_linesStarted = 0;
    int m_pendingEndSteps = 0;
    QString m_lostReason;

    QElapsedTimer m_total;
    QElapsedTimer m_scenarioClock;
    QTimer m_deadline;
    QTimer m_patience; ///< for an application that lost its connection, or does not answer at the end
};

#endif

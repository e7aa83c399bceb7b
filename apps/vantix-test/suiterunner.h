#ifndef VANTIXTEST_SUITERUNNER_H
#define VANTIXTEST_SUITERUNNER_H

#include "options.h"
#include "outcome.h"
#include "suite.h"

#include <QDateTime>
#include <QElapsedTimer>
#include <QList>
#include <QObject>
#include <QTimer>
#include <QVector>

#include <memory>

class QTemporaryDir;
class Report;
class ScenarioRun;

/**
 * Runs the suite's scenarios, --jobs at a time, each in its own folder under
 * one private folder that goes away at the end; reports each as it finishes,
 * keeps the artifacts of those that did not pass, and writes the JUnit file
 * once all have run or Ctrl+C stopped them.
 */
class SuiteRunner : public QObject
{
    Q_OBJECT

public:
    SuiteRunner(const Options &options, const QList<Scenario> &scenarios, Report *report, QObject *parent = nullptr);
    ~SuiteRunner() override;

    /// False, with a message, when the private folder cannot be made; nothing has started then.
    bool prepare(QString *error);
    void start();
    /// Stops every application and starts no more; finished() follows once they have gone.
    void interrupt();

Q_SIGNALS:
    /// 0 when every scenario passed, 1 when one failed or erred, 130 after an interruption.
    void finished(int exitCode);

private:
    void startNext();
    void runFinished(ScenarioRun *run, int index);
    void complete();

    Options m_options;
    QList<Scenario> m_scenarios;
    Report *m_report;
    std::unique_ptr<QTemporaryDir> m_private;
    QVector<Outcome> m_outcomes;
    QVector<bool> m_done;
    QList<ScenarioRun *> m_active;
    int m_next = 0;
    bool m_interrupted = false;
    bool m_completed = false;
    QDateTime m_started;
    QElapsedTimer m_clock;
    QTimer m_tick;
};

#endif

#include "suiterunner.h"

#include "artifacts.h"
#include "junitwriter.h"
#include "report.h"
#include "scenariorun.h"

#include <QDir>
#include <QTemporaryDir>

namespace {
// sockaddr_un holds 108 bytes with the terminating zero.
constexpr int SocketPathLimit = 107;
} // namespace

SuiteRunner::SuiteRunner(const Options &options, const QList<Scenario> &scenarios, Report *report, QObject *parent)
    : QObject(parent)
    , m_options(options)
    , m_scenarios(scenarios)
    , m_report(report)
    , m_outcomes(scenarios.size())
    , m_done(scenarios.size(), false)
{
    m_tick.setInterval(1000);
    connect(&m_tick, &QTimer::timeout, this, [this] { m_report->refresh(); });
}

SuiteRunner::~SuiteRunner() = default;

bool SuiteRunner::prepare(QString *error)
{
    m_private.reset(new QTemporaryDir(QDir::temp().filePath(QStringLiteral("vantix-test-XXXXXX"))));
    if (!m_private->isValid()) {
        *error =
            QStringLiteral("cannot make a private folder in %1: %2").arg(QDir::tempPath(), m_private->errorString());
        return false;
    }
    const QString longest = QStringLiteral("%1/%2/run/control").arg(m_private->path()).arg(m_scenarios.size());
    if (QFile::encodeName(longest).size() > SocketPathLimit) {
        *error = QStringLiteral("the private folder %1 is too deep for a control socket; set TMPDIR to a shorter path")
                     .arg(m_private->path());
        return false;
    }
    return true;
}

void SuiteRunner::start()
{
    m_started = QDateTime::currentDateTime();
    m_clock.start();
    m_report->setTotal(m_scenarios.size());
    m_tick.start();
    startNext();
}

void SuiteRunner::startNext()
{
    while (!m_interrupted && m_active.size() < m_options.jobs && m_next < m_scenarios.size()) {
        const int index = m_next++;
        RunSettings settings;
        settings.program = m_options.program;
        settings.arguments = m_options.arguments;
        settings.speed = m_options.speed;
        settings.fakeTimeLibrary = m_options.fakeTimeLibrary;
        settings.timeoutSeconds = m_options.timeoutSeconds;
        auto *run = new ScenarioRun(
            m_scenarios.at(index), settings, QDir(m_private->path()).filePath(QString::number(index + 1)), this);
        connect(run, &ScenarioRun::finished, this, [this, run, index] { runFinished(run, index); });
        m_active.append(run);
        m_report->started(m_scenarios.at(index));
        run->start();
    }
    if (m_active.isEmpty()) {
        complete();
    }
}

void SuiteRunner::runFinished(ScenarioRun *run, int index)
{
    m_active.removeOne(run);
    const Outcome &outcome = run->outcome();
    m_outcomes[index] = outcome;
    m_done[index] = true;
    const Scenario &scenario = m_scenarios.at(index);
    QString kept;
    if (!m_options.artifactsDir.isEmpty() &&
        (outcome.kind == Outcome::Kind::Failed || outcome.kind == Outcome::Kind::Error)) {
        QString error;
        kept = Artifacts::folderFor(m_options.artifactsDir, scenario);
        if (!Artifacts::write(kept, scenario, outcome, &error)) {
            m_report->print(QStringLiteral("vantix-test: %1").arg(error));
            kept.clear();
        }
    }
    m_report->finished(scenario, outcome, kept);
    // The application has gone; its folder goes now rather than at the end.
    QDir(QDir(m_private->path()).filePath(QString::number(index + 1))).removeRecursively();
    run->deleteLater();
    startNext();
}

void SuiteRunner::interrupt()
{
    if (m_interrupted) {
        return;
    }
    m_interrupted = true;
    const QList<ScenarioRun *> active = m_active;
    for (ScenarioRun *run : active) {
        run->interrupt();
    }
    if (m_active.isEmpty()) {
        complete();
    }
}

void SuiteRunner::complete()
{
    if (m_completed) {
        return;
    }
    m_completed = true;
    m_tick.stop();
    int passed = 0;
    int failed = 0;
    int errors = 0;
    int stopped = 0;
    int notStarted = 0;
    QList<JUnitWriter::Entry> entries;
    for (int i = 0; i < m_scenarios.size(); ++i) {
        Outcome outcome = m_outcomes.at(i);
        if (!m_done.at(i)) {
            ++notStarted;
            outcome.kind = Outcome::Kind::Interrupted;
            outcome.message = QStringLiteral("not run: interrupted");
        }
        switch (outcome.kind) {
        case Outcome::Kind::Passed:
            ++passed;
            break;
        case Outcome::Kind::Failed:
            ++failed;
            break;
        case Outcome::Kind::Error:
            ++errors;
            break;
        case Outcome::Kind::Interrupted:
            stopped += m_done.at(i) ? 1 : 0;
            break;
        }
        entries.append({m_scenarios.at(i), outcome});
    }
    int exitCode = failed + errors > 0 ? 1 : 0;
    if (m_interrupted) {
        m_report->print(QStringLiteral("Interrupted: %1 running scenario(s) stopped, %2 not started.")
                            .arg(stopped)
                            .arg(notStarted));
        exitCode = 130;
    }
    if (!m_options.junitFile.isEmpty()) {
        QString error;
        if (!JUnitWriter::write(m_options.junitFile, entries, m_started, m_clock.elapsed() / 1000.0, &error)) {
            m_report->print(QStringLiteral("vantix-test: %1").arg(error));
            exitCode = exitCode == 0 ? 1 : exitCode;
        }
    }
    m_report->summary(passed, failed, errors);
    m_private.reset();
    Q_EMIT finished(exitCode);
}

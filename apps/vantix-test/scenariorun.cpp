#include "scenariorun.h"

#include "application.h"
#include "simulatedclock.h"

#include <vantixcontrol/client/client.h>
#include <vantixcontrol/client/scriptrunner.h>
#include <vantixcontrol/protocol/event.h>
#include <vantixcontrol/protocol/reply.h>

#include <QDir>
#include <QFileInfo>

#include <csignal>
#include <limits>

using namespace VantixControl;

namespace {
// Log lines kept per run; a story that floods its log keeps its end.
constexpr int LogLimit = 200000;
// An application whose connection dropped usually exits a moment later; its exit says more than the socket.
constexpr int LostPatienceMs = 2000;
// The clock and the dump at the end; an application that stopped answering is not waited for longer.
constexpr int EndPatienceMs = 5000;
// A connection refused while the socket is being set up is tried again after this.
constexpr int RetryMs = 20;

void keep(QStringList &lines, const QString &line)
{
    lines.append(line);
    if (lines.size() > LogLimit) {
        lines.removeFirst();
    }
}

QString seconds(double value)
{
    return QString::number(value, 'g', 6);
}

int milliseconds(double seconds)
{
    return int(qBound(0.0, seconds * 1000, double(std::numeric_limits<int>::max())));
}
} // namespace

ScenarioRun::ScenarioRun(const Scenario &scenario, const RunSettings &settings, const QString &folder, QObject *parent)
    : QObject(parent)
    , m_scenario(scenario)
    , m_settings(settings)
    , m_folder(folder)
{
    for (int i = 0; i < scenario.lines.size(); ++i) {
        const QString text = scenario.lines.at(i).trimmed();
        if (!text.isEmpty() && !text.startsWith(QLatin1Char('#'))) {
            m_commandLines.append(i + 1);
        }
    }
    m_deadline.setSingleShot(true);
    // A coarse timer may fire 5 % early: --timeout is a promise of at least that long.
    m_deadline.setTimerType(Qt::PreciseTimer);
    connect(&m_deadline, &QTimer::timeout, this, &ScenarioRun::timedOut);
    m_patience.setSingleShot(true);
}

ScenarioRun::~ScenarioRun() = default;

void ScenarioRun::start()
{
    m_total.start();
    ApplicationProcess::Setup setup;
    setup.program = m_settings.program;
    setup.arguments = m_settings.arguments;
    setup.folder = m_folder;
    setup.speed = m_settings.speed;
    setup.fakeTimeLibrary = m_settings.fakeTimeLibrary;
    m_application = new ApplicationProcess(setup, this);
    connect(m_application, &ApplicationProcess::socketAppeared, this, &ScenarioRun::connectClient);
    connect(m_application, &ApplicationProcess::exited, this, &ScenarioRun::applicationExited);

    m_client = new Client(this);
    // A scenario's files (a feed's CSV) lie beside it, wherever the suite is run from.
    m_client->setWorkingFolder(QFileInfo(m_scenario.path).absolutePath());
    connect(m_client, &Client::connected, this, &ScenarioRun::prepare);
    connect(m_client, &Client::disconnected, this, [this](const QString &reason) {
        if (m_state == State::Starting) {
            // Not listening yet, or no greeting within the client's own limit: the deadline decides.
            if (m_application->isRunning()) {
                QTimer::singleShot(RetryMs, this, [this] {
                    if (m_state == State::Starting && m_application->isRunning()) {
                        connectClient();
                    }
                });
            }
        } else if (m_state == State::Preparing || m_state == State::Running) {
            connectionLost(reason);
        }
    });
    connect(m_client, &Client::event, this, [this](const Event &event) { keep(m_outcome.events, event.text()); });
    connect(m_client, &Client::logged, this, [this](const LogEntry &entry) { keep(m_outcome.messages, entry.text()); });

    m_deadline.start(milliseconds(m_settings.timeoutSeconds));
    m_application->start();
}

void ScenarioRun::connectClient()
{
    m_client->connectToServer(m_application->socketPath());
}

void ScenarioRun::prepare()
{
    if (m_state != State::Starting) {
        return;
    }
    m_state = State::Preparing;
    m_clock = new SimulatedClock(m_application->socketPath(), m_folder + QStringLiteral("/run/clock.vsim"), this);
    m_client->setEventsEnabled(true, [this](const Reply &) {
        m_client->setLogEnabled(true, [this](const Reply &) {
            if (m_state != State::Preparing) {
                return;
            }
            // Without the clock the scenario still runs; only its simulated time is unknown.
            m_clock->start([this](bool) {
                if (m_state == State::Preparing) {
                    begin();
                }
            });
        });
    });
}

void ScenarioRun::begin()
{
    m_state = State::Running;
    m_deadline.start(milliseconds(m_settings.timeoutSeconds));
    m_runner = new ScriptRunner(
        [this](const QString &line, const std::function<void(const Reply &)> &done) { m_client->execute(line, done); },
        this);
    connect(m_runner, &ScriptRunner::lineStarted, this, [this] { ++m_linesStarted; });
    connect(m_runner, &ScriptRunner::finished, this, &ScenarioRun::scriptFinished);
    m_scenarioClock.start();
    m_runner->start();
    m_runner->feed(m_scenario.lines, m_scenario.path, true);
    m_runner->endOfInput();
}

QString ScenarioRun::where() const
{
    if (m_linesStarted < 1 || m_linesStarted > m_commandLines.size()) {
        return QString();
    }
    const int line = m_commandLines.at(m_linesStarted - 1);
    return QStringLiteral(" at %1:%2: %3").arg(m_scenario.path).arg(line).arg(m_scenario.lines.at(line - 1).trimmed());
}

void ScenarioRun::scriptFinished(int exitCode, const QString &message)
{
    if (m_state != State::Running) {
        return;
    }
    // A line answered "the connection was lost" tells of the application, not of the scenario.
    if (!m_client->isConnected()) {
        connectionLost(message);
        return;
    }
    m_outcome.seconds = m_scenarioClock.elapsed() / 1000.0;
    if (exitCode == 0) {
        m_outcome.kind = Outcome::Kind::Passed;
    } else {
        m_outcome.kind = Outcome::Kind::Failed;
        m_outcome.message = message;
        m_outcome.line =
            m_linesStarted >= 1 && m_linesStarted <= m_commandLines.size() ? m_commandLines.at(m_linesStarted - 1) : 0;
    }
    end(exitCode != 0);
}

void ScenarioRun::connectionLost(const QString &reason)
{
    if (m_state == State::Running) {
        m_outcome.seconds = m_scenarioClock.elapsed() / 1000.0;
    }
    m_lostReason = reason;
    m_state = State::Lost;
    m_deadline.stop();
    if (m_application->hasExited()) {
        applicationExited();
        return;
    }
    m_patience.disconnect();
    connect(&m_patience, &QTimer::timeout, this, [this] {
        error(QStringLiteral("the application closed the control connection (%1)%2").arg(m_lostReason, where()));
        stopApplication();
    });
    m_patience.start(LostPatienceMs);
}

void ScenarioRun::timedOut()
{
    if (m_state == State::Starting || m_state == State::Preparing) {
        error(QStringLiteral("the application did not greet within --timeout %1 s (it is still running; does it "
                             "call System::initialize()?)")
                  .arg(seconds(m_settings.timeoutSeconds)));
        stopApplication();
    } else if (m_state == State::Running) {
        m_outcome.seconds = m_scenarioClock.elapsed() / 1000.0;
        error(
            QStringLiteral("the scenario outlived --timeout %1 s%2").arg(seconds(m_settings.timeoutSeconds), where()));
        // What runs is stopped, so that the state can be dumped.
        m_client->cancel();
        end(true);
    }
}

void ScenarioRun::end(bool dump)
{
    m_state = State::Ending;
    m_deadline.stop();
    m_pendingEndSteps = dump ? 2 : 1;
    m_patience.disconnect();
    connect(&m_patience, &QTimer::timeout, this, &ScenarioRun::stopApplication);
    m_patience.start(EndPatienceMs);
    m_clock->stop([this](qint64 ms) {
        if (m_state == State::Ending) {
            m_outcome.simulatedSeconds = ms < 0 ? -1 : ms / 1000.0;
        }
        endStep();
    });
    if (dump) {
        m_client->execute(QStringLiteral("dump"), [this](const Reply &reply) {
            if (reply.ok && m_state == State::Ending) {
                m_outcome.dump = reply.value.toObject();
            }
            endStep();
        });
    }
}

void ScenarioRun::endStep()
{
    if (m_state == State::Ending && --m_pendingEndSteps == 0) {
        stopApplication();
    }
}

void ScenarioRun::error(const QString &message)
{
    m_outcome.kind = Outcome::Kind::Error;
    m_outcome.message = message;
    m_outcome.line =
        m_linesStarted >= 1 && m_linesStarted <= m_commandLines.size() ? m_commandLines.at(m_linesStarted - 1) : 0;
}

void ScenarioRun::interrupt()
{
    if (m_state == State::Done || m_state == State::Stopping) {
        return;
    }
    // A run whose outcome is known keeps it; the others were cut short.
    if (m_state != State::Ending) {
        m_outcome.kind = Outcome::Kind::Interrupted;
        m_outcome.message = QStringLiteral("interrupted") + where();
        if (m_state == State::Running) {
            m_outcome.seconds = m_scenarioClock.elapsed() / 1000.0;
        }
    }
    stopApplication();
}

void ScenarioRun::halt()
{
    // No more lines, no more deadlines, and nothing more heard from the application.
    m_state = State::Stopping;
    m_deadline.stop();
    m_patience.stop();
    if (m_runner) {
        m_runner->stop(0);
    }
    m_client->disconnect(this);
}

void ScenarioRun::stopApplication()
{
    if (m_state == State::Stopping || m_state == State::Done) {
        return;
    }
    halt();
    m_client->disconnectFromServer();
    if (m_application->hasExited()) {
        applicationExited();
    } else {
        m_application->stop(m_settings.graceMs);
    }
}

void ScenarioRun::applicationExited()
{
    const QString exit = m_application->exitDescription();
    switch (m_state) {
    case State::Starting:
        error(m_application->failedToStart() ? QStringLiteral("the application %1").arg(exit)
                                             : QStringLiteral("the application %1 before it greeted").arg(exit));
        break;
    case State::Preparing:
        error(QStringLiteral("the application %1 before the scenario started").arg(exit));
        break;
    case State::Running:
        m_outcome.seconds = m_scenarioClock.elapsed() / 1000.0;
        error(QStringLiteral("the application %1 during the scenario%2").arg(exit, where()));
        break;
    case State::Lost:
        error(QStringLiteral("the application %1 during the scenario%2").arg(exit, where()));
        break;
    case State::Ending:
        // It ended by itself after the last line (vantix-sim's quit): the outcome stands.
        break;
    case State::Stopping: {
        // SIGTERM or SIGKILL are how it was stopped; any other signal is a crash on the way out.
        const int signal = m_application->exitSignal();
        if (signal != 0 && signal != SIGTERM && signal != SIGKILL && m_outcome.kind == Outcome::Kind::Passed) {
            error(QStringLiteral("the application %1 when it was stopped").arg(exit));
            m_outcome.line = 0;
        }
        break;
    }
    case State::Done:
        return;
    }
    if (m_state != State::Stopping && m_state != State::Done) {
        // Exited by itself: whatever it left in its group goes, and the run ends here.
        halt();
    }
    m_state = State::Done;
    m_outcome.totalSeconds = m_total.elapsed() / 1000.0;
    m_outcome.standardOutput = m_application->standardOutput();
    m_outcome.standardError = m_application->standardError();
    Q_EMIT finished();
}

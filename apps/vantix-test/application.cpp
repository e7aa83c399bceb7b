#include "application.h"

#include "faketime.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QFileSystemWatcher>
#include <QProcess>

#include <csignal>
#include <cstring>
#include <sys/prctl.h>
#include <unistd.h>

namespace {
// What is kept of each output stream: its end, where a crash's last words are.
constexpr int OutputLimit = 8 * 1024 * 1024;
// Should no change of the folder be reported, the socket is looked for this often.
constexpr int SocketPollMs = 50;
// "off" keeps the application from reading the host's Wi-Fi configurations.
const QString HostWifi = QStringLiteral("VANTIX_HOST_WIFI");

class GroupedProcess : public QProcess
{
public:
    explicit GroupedProcess(QObject *parent)
        : QProcess(parent)
        , m_parent(::getpid())
    {
    }

protected:
    // In the child, between fork and exec: only async-signal-safe calls.
    void setupChildProcess() override
    {
        ::setpgid(0, 0);
        ::prctl(PR_SET_PDEATHSIG, SIGKILL);
        if (::getppid() != m_parent) {
            ::_exit(127);
        }
    }

private:
    const pid_t m_parent;
};

void append(QByteArray &buffer, const QByteArray &data)
{
    buffer += data;
    if (buffer.size() > OutputLimit) {
        buffer.remove(0, buffer.size() - OutputLimit);
    }
}
} // namespace

QString signalName(int signal)
{
#if defined(__GLIBC__) && (__GLIBC__ > 2 || (__GLIBC__ == 2 && __GLIBC_MINOR__ >= 32))
    if (const char *name = ::sigabbrev_np(signal)) {
        return QStringLiteral("SIG") + QLatin1String(name);
    }
#endif
    return QString::number(signal);
}

ApplicationProcess::ApplicationProcess(const Setup &setup, QObject *parent)
    : QObject(parent)
    , m_setup(setup)
{
    m_socketPoll.setInterval(SocketPollMs);
    connect(&m_socketPoll, &QTimer::timeout, this, &ApplicationProcess::checkSocket);
    m_killTimer.setSingleShot(true);
    connect(&m_killTimer, &QTimer::timeout, this, [this] { signalGroup(SIGKILL); });
}

ApplicationProcess::~ApplicationProcess()
{
    if (isRunning()) {
        signalGroup(SIGKILL);
        m_process->waitForFinished(1000);
    }
}

QString ApplicationProcess::socketPath() const
{
    return m_setup.folder + QStringLiteral("/run/control");
}

QString ApplicationProcess::unitRoot() const
{
    return m_setup.folder + QStringLiteral("/unit");
}

bool ApplicationProcess::isRunning() const
{
    return m_process && !m_exited && m_process->state() != QProcess::NotRunning;
}

void ApplicationProcess::start()
{
    const QDir folder(m_setup.folder);
    for (const char *name : {"run", "unit", "tmp", "work"}) {
        if (!folder.mkpath(QLatin1String(name))) {
            m_exited = true;
            m_failedToStart = true;
            m_exitDescription =
                QStringLiteral("could not be started: cannot make %1").arg(folder.filePath(QLatin1String(name)));
            QMetaObject::invokeMethod(this, &ApplicationProcess::exited, Qt::QueuedConnection);
            return;
        }
    }
    // A runtime folder is its user's alone; Qt and the control server insist on it.
    QFile::setPermissions(folder.filePath(QStringLiteral("run")),
        QFileDevice::ReadOwner | QFileDevice::WriteOwner | QFileDevice::ExeOwner);

    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QStringLiteral("XDG_RUNTIME_DIR"), folder.filePath(QStringLiteral("run")));
    environment.insert(QStringLiteral("VANTIX_CONTROL"), socketPath());
    environment.insert(QStringLiteral("QBCOMMON_ROOT"), unitRoot());
    environment.insert(QStringLiteral("TMPDIR"), folder.filePath(QStringLiteral("tmp")));
    // Every reading of the host's network configurations (the first one
    // arrives a while after start-up, then one every 10 s) rewrites the Wi-Fi
    // values a scenario set; a scenario must not depend on when they fall.
    if (!environment.contains(HostWifi)) {
        environment.insert(HostWifi, QStringLiteral("off"));
    }
    if (m_setup.speed > 0) {
        environment = FakeTime::environment(environment, m_setup.fakeTimeLibrary, m_setup.speed);
    }

    m_process = new GroupedProcess(this);
    m_process->setProgram(m_setup.program);
    m_process->setArguments(m_setup.arguments);
    m_process->setProcessEnvironment(environment);
    m_process->setWorkingDirectory(folder.filePath(QStringLiteral("work")));
    connect(m_process, &QProcess::readyReadStandardOutput, this,
        [this] { append(m_out, m_process->readAllStandardOutput()); });
    connect(m_process, &QProcess::readyReadStandardError, this,
        [this] { append(m_err, m_process->readAllStandardError()); });
    connect(m_process, QOverload<int, QProcess::ExitStatus>::of(&QProcess::finished), this,
        [this](int exitCode, QProcess::ExitStatus status) { finish(exitCode, status == QProcess::CrashExit); });
    connect(m_process, &QProcess::errorOccurred, this, [this](QProcess::ProcessError error) {
        if (error == QProcess::FailedToStart && !m_exited) {
            m_exited = true;
            m_failedToStart = true;
            m_exitDescription = QStringLiteral("could not be started: %1").arg(m_process->errorString());
            m_socketPoll.stop();
            Q_EMIT exited();
        }
    });

    m_watcher = new QFileSystemWatcher({folder.filePath(QStringLiteral("run"))}, this);
    connect(m_watcher, &QFileSystemWatcher::directoryChanged, this, &ApplicationProcess::checkSocket);
    m_socketPoll.start();
    // Standard input stays open: vantix-sim, for one, ends when its input does.
    m_process->start(QIODevice::ReadWrite);
    m_pid = m_process->processId();
}

void ApplicationProcess::checkSocket()
{
    if (m_socketSeen || !QFileInfo::exists(socketPath())) {
        return;
    }
    m_socketSeen = true;
    m_socketPoll.stop();
    delete m_watcher;
    m_watcher = nullptr;
    Q_EMIT socketAppeared();
}

void ApplicationProcess::stop(int graceMs)
{
    if (!isRunning()) {
        return;
    }
    if (!m_stopping) {
        m_stopping = true;
        signalGroup(SIGTERM);
        m_killTimer.start(graceMs);
    }
}

void ApplicationProcess::signalGroup(int signal)
{
    if (m_pid <= 0) {
        return;
    }
    // The whole group: helpers the application started go with it. Once the
    // application is reaped its pid may belong to another process, so only
    // its group, which lives while a member does, is signalled then.
    if (::kill(pid_t(-m_pid), signal) != 0 && !m_exited) {
        ::kill(pid_t(m_pid), signal);
    }
}

void ApplicationProcess::finish(int exitCode, bool crashed)
{
    if (m_exited) {
        return;
    }
    m_exited = true;
    m_killTimer.stop();
    m_socketPoll.stop();
    append(m_out, m_process->readAllStandardOutput());
    append(m_err, m_process->readAllStandardError());
    // Whatever the application left running in its group goes too.
    signalGroup(SIGKILL);
    if (crashed) {
        // QProcess reports the signal as the exit code of a crash.
        m_exitSignal = exitCode;
        m_exitDescription = QStringLiteral("crashed with signal %1 (%2)").arg(exitCode).arg(signalName(exitCode));
    } else {
        m_exitDescription = QStringLiteral("exited with status %1").arg(exitCode);
    }
    Q_EMIT exited();
}

QStringList ApplicationProcess::lastErrorLines(int count) const
{
    QStringList lines = QString::fromLocal8Bit(m_err).split(QLatin1Char('\n'));
    while (!lines.isEmpty() && lines.last().trimmed().isEmpty()) {
        lines.removeLast();
    }
    return lines.mid(qMax(0, lines.size() - count));
}

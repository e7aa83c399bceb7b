#include "simlauncher.h"

#include <vantixcontrol/client/client.h>

#include <QCoreApplication>
#include <QFileInfo>
#include <QPointer>
#include <QStandardPaths>
#include <QTimer>

using VantixControl::Client;

namespace {
constexpr int pollMs = 100;
constexpr int maxAttempts = 100;
} // namespace

SimLauncher::SimLauncher(QObject *parent)
    : QObject(parent)
    , m_poll(new QTimer(this))
{
    m_poll->setInterval(pollMs);
    connect(m_poll, &QTimer::timeout, this, &SimLauncher::poll);
}

SimLauncher::~SimLauncher()
{
    // Closing the console ends the simulators this panel started.
    const QList<QProcess *> processes = findChildren<QProcess *>();
    for (QProcess *process : processes) {
        process->closeWriteChannel();
        if (!process->waitForFinished(2000)) {
            process->kill();
            process->waitForFinished(1000);
        }
    }
}

QString SimLauncher::defaultProgram()
{
    const QString dir = QCoreApplication::applicationDirPath();
    for (const QString &candidate :
        {dir + QStringLiteral("/vantix-sim"), dir + QStringLiteral("/../vantix-sim/vantix-sim")}) {
        if (QFileInfo(candidate).isExecutable()) {
            return QFileInfo(candidate).canonicalFilePath();
        }
    }
    return QStandardPaths::findExecutable(QStringLiteral("vantix-sim"));
}

void SimLauncher::start(const QString &platform)
{
    const QString path = m_program;
    if (path.isEmpty()) {
        Q_EMIT failed(tr("vantix-sim was not found beside vantix-panel nor on PATH"));
        return;
    }
    m_process = new QProcess(this);
    m_process->setProgram(path);
    m_process->setArguments({QStringLiteral("--platform"), platform, QStringLiteral("--quiet")});
    m_process->setProcessChannelMode(QProcess::ForwardedErrorChannel);
    m_process->setStandardOutputFile(QProcess::nullDevice());
    QProcess *process = m_process;
    connect(process, QOverload<int, QProcess::ExitStatus>::of(&QProcess::finished), this, [this, process](int code) {
        if (process == m_process && m_poll->isActive()) {
            m_poll->stop();
            Q_EMIT failed(tr("vantix-sim ended with exit code %1 before it served its socket").arg(code));
        }
    });
    connect(process, &QProcess::errorOccurred, this, [this, process](QProcess::ProcessError error) {
        if (error == QProcess::FailedToStart && process == m_process) {
            m_poll->stop();
            Q_EMIT failed(tr("vantix-sim could not be started: %1").arg(process->errorString()));
        }
    });
    m_attempts = 0;
    m_process->start();
    m_poll->start();
}

void SimLauncher::poll()
{
    if (!m_process || m_process->state() != QProcess::Running) {
        return;
    }
    if (++m_attempts > maxAttempts) {
        m_poll->stop();
        Q_EMIT failed(tr("vantix-sim serves no control socket after %1 s").arg(maxAttempts * pollMs / 1000));
        return;
    }
    const qint64 pid = m_process->processId();
    m_poll->stop();
    QPointer<SimLauncher> self(this);
    Client::findApplications(
        [self, this, pid](const QList<Client::Application> &applications) {
            if (!self) {
                return;
            }
            for (const Client::Application &a : applications) {
                if (a.pid == pid) {
                    Q_EMIT ready(a.socketPath);
                    return;
                }
            }
            if (m_process && m_process->processId() == pid && m_process->state() == QProcess::Running) {
                m_poll->start();
            }
        },
        200);
}

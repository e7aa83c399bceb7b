#include "instancewatcher.h"

#include <vantixcontrol/protocol/socketdirectory.h>

#include <QDir>
#include <QPointer>

using VantixControl::Client;

namespace {
// Sockets come and go in bursts (an application's socket, then the stale one removed): one listing per burst.
constexpr int settleMs = 100;
// The folder appears with the first application of the session.
constexpr int retryMs = 1000;
} // namespace

InstanceWatcher::InstanceWatcher(QObject *parent)
    : QObject(parent)
{
    m_settle.setSingleShot(true);
    m_settle.setInterval(settleMs);
    m_retry.setInterval(retryMs);
    connect(&m_settle, &QTimer::timeout, this, [this] {
        // A folder removed with its last socket is watched again once it is back.
        if (m_watcher.directories().isEmpty()) {
            m_retry.start();
        }
        scan();
    });
    connect(&m_retry, &QTimer::timeout, this, &InstanceWatcher::watch);
    connect(&m_watcher, &QFileSystemWatcher::directoryChanged, this, [this] { m_settle.start(); });
    watch();
}

void InstanceWatcher::watch()
{
    const QString folder = VantixControl::SocketDirectory::path();
    if (m_watcher.directories().contains(folder)) {
        m_retry.stop();
        return;
    }
    if (QDir(folder).exists() && m_watcher.addPath(folder)) {
        m_retry.stop();
        scan();
    } else {
        m_retry.start();
    }
}

void InstanceWatcher::scan()
{
    if (m_scanning) {
        m_again = true;
        return;
    }
    m_scanning = true;
    QPointer<InstanceWatcher> self(this);
    Client::findApplications([self](const QList<Client::Application> &applications) {
        if (!self) {
            return;
        }
        self->m_scanning = false;
        Q_EMIT self->applicationsChanged(applications);
        if (self->m_again) {
            self->m_again = false;
            self->scan();
        }
    });
}

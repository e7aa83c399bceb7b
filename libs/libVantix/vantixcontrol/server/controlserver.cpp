#include "controlserver_p.h"

#include "controlconnection_p.h"
#include "logging_p.h"
#include "socketdirectory.h"

#include <vantix/system.h>

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
#include <QLocalServer>
#include <QLocalSocket>

#include <sys/socket.h>
#include <sys/stat.h>
#include <unistd.h>

using TQ_SPAPI::System;

namespace VantixControl {

namespace {
// The user at the other end of a connection, or -1 when it cannot be told.
qint64 peerUid(qintptr descriptor)
{
    struct ucred credentials = {};
    socklen_t size = sizeof credentials;
    if (::getsockopt(int(descriptor), SOL_SOCKET, SO_PEERCRED, &credentials, &size) != 0) {
        return -1;
    }
    return credentials.uid;
}

// Whether a server answers at @p path; a socket file nobody answers is a leftover.
bool isServing(const QString &path)
{
    QLocalSocket probe;
    probe.connectToServer(path);
    const bool serving = probe.state() == QLocalSocket::ConnectedState || probe.waitForConnected(0);
    probe.abort();
    return serving;
}
} // namespace

ControlServer *ControlServer::start(System *system, QObject *parent)
{
    const QString setting = qEnvironmentVariable("VANTIX_CONTROL");
    if (setting == QLatin1String("off")) {
        return nullptr;
    }
    QString path;
    if (setting.isEmpty()) {
        const QString folder = SocketDirectory::path();
        QString error;
        if (!SocketDirectory::prepare(folder, &error)) {
            qCWarning(lcControl).noquote() << "Control server off:" << error;
            return nullptr;
        }
        // Leftovers of processes that are gone; one may even carry this process's number.
        SocketDirectory::sockets(folder);
        path = QDir(folder).filePath(
            SocketDirectory::socketName(QCoreApplication::applicationName(), QCoreApplication::applicationPid()));
    } else if (QDir::isAbsolutePath(setting)) {
        path = setting;
    } else {
        qCWarning(lcControl).noquote() << "Control server off: VANTIX_CONTROL must be \"off\" or an absolute path, not"
                                       << setting;
        return nullptr;
    }
    auto *server = new ControlServer(system, parent);
    if (!server->listen(path)) {
        delete server;
        return nullptr;
    }
    return server;
}

ControlServer::ControlServer(System *system, QObject *parent)
    : QObject(parent)
    , m_system(system)
    , m_server(new QLocalServer(this))
{
    // Only this user may connect: the socket itself, besides the folder and the peer check.
    m_server->setSocketOptions(QLocalServer::UserAccessOption);
    connect(m_server, &QLocalServer::newConnection, this, &ControlServer::accept);
    // Connections made before wait in the server's queue until then.
    connect(system, &System::apiReady, this, [this] {
        m_ready = true;
        accept();
    });
}

ControlServer::~ControlServer()
{
    // Clients first: their sessions act on the System that goes next.
    qDeleteAll(findChildren<ControlConnection *>(QString(), Qt::FindDirectChildrenOnly));
    m_server->close();
}

bool ControlServer::listen(const QString &path)
{
    if (QFileInfo::exists(path) || QFileInfo(path).isSymLink()) {
        struct stat info = {};
        if (::lstat(QFile::encodeName(path).constData(), &info) != 0 || !S_ISSOCK(info.st_mode) ||
            info.st_uid != ::geteuid()) {
            qCWarning(lcControl).noquote() << "Control server off:" << path << "exists and is not a socket of ours";
            return false;
        }
        if (isServing(path)) {
            qCWarning(lcControl).noquote() << "Control server off: another application serves" << path;
            return false;
        }
        QLocalServer::removeServer(path);
    }
    if (!m_server->listen(path)) {
        qCWarning(lcControl).noquote() << "Control server off: cannot listen at" << path << ":"
                                       << m_server->errorString();
        return false;
    }
    qCDebug(lcControl).noquote() << "Control server at" << m_server->fullServerName();
    return true;
}

QString ControlServer::socketPath() const
{
    return m_server->fullServerName();
}

int ControlServer::clientCount() const
{
    return findChildren<ControlConnection *>(QString(), Qt::FindDirectChildrenOnly).size();
}

void ControlServer::accept()
{
    if (!m_ready) {
        return;
    }
    while (QLocalSocket *socket = m_server->nextPendingConnection()) {
        const qint64 uid = peerUid(socket->socketDescriptor());
        if (uid != qint64(::geteuid())) {
            qCWarning(lcControl) << "Control server: refused a connection of uid" << uid;
            socket->abort();
            socket->deleteLater();
            continue;
        }
        if (!m_system) {
            socket->abort();
            socket->deleteLater();
            continue;
        }
        new ControlConnection(socket, m_system, this);
    }
}

} // namespace VantixControl

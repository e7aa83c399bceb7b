#include "controlserver_p.h"

#include "channelpoller_p.h"
#include "clientchannel_p.h"
#include "controlconnection_p.h"
#include "logging_p.h"
#include "reply.h"
#include "socketlistener_p.h"

#include <vantix/system.h>

#include <QCoreApplication>
#include <QDir>

#include <sys/socket.h>
#include <unistd.h>

using TQ_SPAPI::System;

namespace VantixControl {

namespace {
// The user at the other end of a connection, or -1 when it cannot be told.
qint64 peerUid(int descriptor)
{
    struct ucred credentials = {};
    socklen_t size = sizeof credentials;
    if (::getsockopt(descriptor, SOL_SOCKET, SO_PEERCRED, &credentials, &size) != 0) {
        return -1;
    }
    return credentials.uid;
}

int maxClientsSetting()
{
    const QByteArray setting = qgetenv("VANTIX_CONTROL_MAX_CLIENTS");
    if (setting.isEmpty()) {
        return ControlServer::DefaultMaxClients;
    }
    bool ok = false;
    const int value = setting.toInt(&ok);
    if (!ok || value <= 0) {
        qCWarning(lcControl).noquote() << "Control server: VANTIX_CONTROL_MAX_CLIENTS must be a positive number, not"
                                       << setting << "; it serves at most" << ControlServer::DefaultMaxClients;
        return ControlServer::DefaultMaxClients;
    }
    return value;
}
} // namespace

ControlServer *ControlServer::start(System *system, QObject *parent)
{
    const QString setting = qEnvironmentVariable("VANTIX_CONTROL");
    if (setting == QLatin1String("off")) {
        return nullptr;
    }
    QString folder;
    QString name;
    auto mode = SocketDirectory::Folder::Mode::Create;
    if (setting.isEmpty()) {
        folder = SocketDirectory::path();
        name = SocketDirectory::socketName(QCoreApplication::applicationName(), QCoreApplication::applicationPid());
    } else if (QDir::isAbsolutePath(setting)) {
        const QString path = QDir::cleanPath(setting);
        folder = path.section(QLatin1Char('/'), 0, -2, QString::SectionIncludeLeadingSep);
        name = path.section(QLatin1Char('/'), -1);
        mode = SocketDirectory::Folder::Mode::Unchecked;
    } else {
        qCWarning(lcControl).noquote() << "Control server off: VANTIX_CONTROL must be \"off\" or an absolute path, not"
                                       << setting;
        return nullptr;
    }
    auto *server = new ControlServer(system, parent);
    if (!server->listen(folder.isEmpty() ? QStringLiteral("/") : folder, mode, name)) {
        delete server;
        return nullptr;
    }
    return server;
}

ControlServer::ControlServer(System *system, QObject *parent)
    : QObject(parent)
    , m_system(system)
    , m_listener(new SocketListener(this))
    , m_maxClients(maxClientsSetting())
{
    m_listener->setRefusal(
        Reply::failure(ErrorClass::Failed,
            QStringLiteral("the application has no file descriptor to spare for another client; try again later"))
            .toJsonLine(QJsonValue()) +
        '\n');
    connect(m_listener, &SocketListener::pending, this, &ControlServer::accept);
    // Connections made before wait in the socket's backlog until then.
    connect(system, &System::apiReady, this, [this] {
        m_ready = true;
        m_listener->setAccepting(true);
    });
}

ControlServer::~ControlServer()
{
    // Clients first: their sessions act on the System that goes next.
    const QList<ControlConnection *> connections =
        findChildren<ControlConnection *>(QString(), Qt::FindDirectChildrenOnly);
    for (ControlConnection *connection : connections) {
        connection->disconnect(this);
        delete connection;
    }
    delete m_listener;
    delete m_poller;
}

bool ControlServer::listen(const QString &folder, SocketDirectory::Folder::Mode mode, const QString &name)
{
    QString error;
    if (!m_folder.open(folder, mode, &error)) {
        qCWarning(lcControl).noquote() << "Control server off:" << error;
        return false;
    }
    if (mode != SocketDirectory::Folder::Mode::Unchecked) {
        // Leftovers of processes that are gone; one may even carry this process's number.
        m_folder.sockets();
    }
    if (!m_listener->listen(&m_folder, name, &error)) {
        qCWarning(lcControl).noquote() << "Control server off:" << error;
        return false;
    }
    qCDebug(lcControl).noquote() << "Control server at" << m_listener->path();
    return true;
}

QString ControlServer::socketPath() const
{
    return m_listener->path();
}

void ControlServer::turnAway(int descriptor, const QString &message)
{
    const QByteArray line = Reply::failure(ErrorClass::BadRequest, message).toJsonLine(QJsonValue()) + '\n';
    ::send(descriptor, line.constData(), size_t(line.size()), MSG_DONTWAIT | MSG_NOSIGNAL);
    ::shutdown(descriptor, SHUT_RDWR);
    ::close(descriptor);
}

void ControlServer::accept()
{
    if (!m_ready) {
        return;
    }
    for (int fd = m_listener->next(); fd >= 0; fd = m_listener->next()) {
        const qint64 uid = peerUid(fd);
        if (uid != qint64(::geteuid())) {
            qCWarning(lcControl) << "Control server: refused a connection of uid" << uid;
            ::close(fd);
        } else if (!m_system) {
            ::close(fd);
        } else if (m_clients >= m_maxClients) {
            turnAway(fd,
                QStringLiteral("the application serves at most %1 clients at a time (VANTIX_CONTROL_MAX_CLIENTS)")
                    .arg(m_maxClients));
        } else {
            // Made for the first client: an application nobody drives carries none of it.
            if (!m_poller) {
                m_poller = new ChannelPoller(this);
            }
            auto *connection = new ControlConnection(new ClientChannel(fd, m_poller), m_system, this);
            ++m_clients;
            connect(connection, &QObject::destroyed, this, [this] { --m_clients; });
        }
    }
}

} // namespace VantixControl

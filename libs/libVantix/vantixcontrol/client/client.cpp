#include "client.h"

#include <vantixcontrol/protocol/event.h>
#include <vantixcontrol/protocol/protocol.h>
#include <vantixcontrol/protocol/reply.h>
#include <vantixcontrol/protocol/socketdirectory.h>

#include <QCoreApplication>
#include <QDir>
#include <QHash>
#include <QJsonDocument>
#include <QLocalSocket>
#include <QPointer>
#include <QSharedPointer>
#include <QTimer>

#include <utility>

#include <sys/socket.h>
#include <unistd.h>

namespace VantixControl {

namespace {
constexpr int GreetingTimeoutMs = 3000;
} // namespace

class ClientPrivate : public QObject
{
public:
    explicit ClientPrivate(Client *q)
        : QObject(q)
        , q(q)
        , socket(new QLocalSocket(this))
    {
        connect(socket, &QLocalSocket::connected, this, &ClientPrivate::checkPeer);
        connect(socket, &QLocalSocket::readyRead, this, &ClientPrivate::read);
        connect(socket, &QLocalSocket::disconnected, this,
            [this] { lost(QStringLiteral("the application closed the connection")); });
        connect(socket, &QLocalSocket::errorOccurred, this, [this] {
            if (socket->state() != QLocalSocket::ConnectedState) {
                lost(socket->errorString());
            }
        });
        greetingTimer.setSingleShot(true);
        connect(&greetingTimer, &QTimer::timeout, this, [this] {
            socket->abort();
            lost(QStringLiteral("no greeting from %1").arg(path));
        });
    }

    // Anyone who can write to the socket's folder could listen in the application's place.
    void checkPeer()
    {
        struct ucred credentials = {};
        socklen_t size = sizeof credentials;
        const bool known =
            ::getsockopt(int(socket->socketDescriptor()), SOL_SOCKET, SO_PEERCRED, &credentials, &size) == 0;
        if (known && credentials.uid == ::geteuid()) {
            return;
        }
        const QPointer<ClientPrivate> alive(this);
        lost(known ? QStringLiteral("the server at %1 runs as another user (uid %2, not %3); it is not trusted")
                         .arg(path)
                         .arg(credentials.uid)
                         .arg(::geteuid())
                   : QStringLiteral("cannot tell which user serves %1; it is not trusted").arg(path));
        if (alive) {
            socket->abort();
        }
    }

    void read()
    {
        buffer += socket->readAll();
        int newline;
        const QPointer<ClientPrivate> alive(this);
        while (alive && (newline = buffer.indexOf('\n')) >= 0) {
            const QByteArray line = buffer.left(newline);
            buffer.remove(0, newline + 1);
            handle(line);
        }
    }

    void handle(const QByteArray &line)
    {
        Q_EMIT q->lineReceived(line);
        const QJsonObject object = QJsonDocument::fromJson(line).object();
        if (object.contains(QLatin1String("vantix"))) {
            greetingTimer.stop();
            const int version =
                object.value(QLatin1String("vantix")).toObject().value(QLatin1String("protocol")).toInt();
            if (version != Protocol::Version) {
                // A server of another version may mean other things by the same words: talk no further.
                const QPointer<ClientPrivate> alive(this);
                lost(QStringLiteral("the application speaks control protocol %1, this client %2")
                         .arg(version)
                         .arg(Protocol::Version));
                if (alive) {
                    socket->abort();
                }
                return;
            }
            greeting = object.value(QLatin1String("vantix")).toObject();
            Q_EMIT q->connected(greeting);
        } else if (object.contains(QLatin1String("event"))) {
            Q_EMIT q->event(Event::fromJson(object));
        } else if (object.contains(QLatin1String("log"))) {
            Q_EMIT q->logged(LogEntry::fromJson(object));
        } else if (object.contains(QLatin1String("ok"))) {
            const Client::Done done = pending.take(object.value(QLatin1String("id")).toInt());
            if (done) {
                done(Reply::fromJson(object));
            }
        } else if (object.contains(QLatin1String("error"))) {
            // A last word before the server drops this client.
            lastError = object.value(QLatin1String("error")).toObject().value(QLatin1String("message")).toString();
        }
    }

    void lost(const QString &reason)
    {
        if (closed) {
            return;
        }
        closed = true;
        greetingTimer.stop();
        const QString why = lastError.isEmpty() ? reason : lastError;
        const QHash<int, Client::Done> unanswered = std::exchange(pending, {});
        for (const Client::Done &done : unanswered) {
            if (done) {
                done(Reply::failure(ErrorClass::Failed, QStringLiteral("the connection was lost: %1").arg(why)));
            }
        }
        greeting = QJsonObject();
        Q_EMIT q->disconnected(why);
    }

    Client *q;
    QLocalSocket *socket;
    QString path;
    // Empty: the process's current folder, as it is when a line is sent.
    QString workingFolder;
    QByteArray buffer;
    QJsonObject greeting;
    QHash<int, Client::Done> pending;
    QTimer greetingTimer;
    QString lastError;
    int nextId = 1;
    bool closed = true;
};

Client::Client(QObject *parent)
    : QObject(parent)
    , d(new ClientPrivate(this))
{
    qRegisterMetaType<Event>();
    qRegisterMetaType<LogEntry>();
}

Client::~Client()
{
    d->closed = true;
}

void Client::connectToServer(const QString &socketPath)
{
    d->socket->abort();
    d->buffer.clear();
    d->lastError.clear();
    d->path = socketPath;
    d->closed = false;
    d->greetingTimer.start(GreetingTimeoutMs);
    d->socket->connectToServer(socketPath);
}

void Client::disconnectFromServer()
{
    d->socket->disconnectFromServer();
    d->lost(QStringLiteral("disconnected"));
}

bool Client::isConnected() const
{
    return !d->closed && !d->greeting.isEmpty() && d->socket->state() == QLocalSocket::ConnectedState;
}

QString Client::socketPath() const
{
    return d->path;
}

QJsonObject Client::greeting() const
{
    return d->greeting;
}

void Client::request(QJsonObject request, const Done &done)
{
    if (d->closed) {
        if (done) {
            done(Reply::failure(ErrorClass::Failed, QStringLiteral("not connected")));
        }
        return;
    }
    const int id = d->nextId++;
    request.insert(QStringLiteral("id"), id);
    d->pending.insert(id, done);
    d->socket->write(QJsonDocument(request).toJson(QJsonDocument::Compact) + '\n');
}

void Client::execute(const QString &line, const Done &done)
{
    request(QJsonObject{{Protocol::requestKey(Protocol::RequestKind::Line), line},
                {QStringLiteral("cwd"), workingFolder()}},
        done);
}

void Client::setWorkingFolder(const QString &folder)
{
    d->workingFolder = folder.isEmpty() ? QString() : QDir(folder).absolutePath();
}

QString Client::workingFolder() const
{
    return d->workingFolder.isEmpty() ? QDir::currentPath() : d->workingFolder;
}

void Client::describe(const Done &done)
{
    request(QJsonObject{{Protocol::requestKey(Protocol::RequestKind::Describe), true}}, done);
}

void Client::setEventsEnabled(bool enabled, const Done &done)
{
    request(QJsonObject{{Protocol::requestKey(Protocol::RequestKind::Events), enabled}}, done);
}

void Client::setLogEnabled(bool enabled, const Done &done)
{
    request(QJsonObject{{Protocol::requestKey(Protocol::RequestKind::Log), enabled}}, done);
}

void Client::cancel(const Done &done)
{
    request(QJsonObject{{Protocol::requestKey(Protocol::RequestKind::Cancel), true}}, done);
}

Client::Application Client::applicationOf(const QJsonObject &greeting, const QString &socketPath)
{
    Application application;
    application.pid = qint64(greeting.value(QLatin1String("pid")).toDouble());
    application.name = greeting.value(QLatin1String("application")).toString();
    application.platform = greeting.value(QLatin1String("platform")).toString();
    application.platformName = greeting.value(QLatin1String("platformName")).toString();
    application.version = greeting.value(QLatin1String("version")).toString();
    application.socketPath = socketPath;
    return application;
}

void Client::findApplications(const std::function<void(const QList<Application> &)> &done, int timeoutMs)
{
    probeApplications(SocketDirectory::sockets(SocketDirectory::path()), done, timeoutMs);
}

void Client::probeApplications(
    const QStringList &sockets, const std::function<void(const QList<Application> &)> &done, int timeoutMs)
{
    if (sockets.isEmpty()) {
        // Answer later all the same: a caller may start its event loop only after asking.
        QTimer::singleShot(0, [done] { done({}); });
        return;
    }
    struct Search
    {
        QList<Application> found;
        int open = 0;
        std::function<void(const QList<Application> &)> done;
    };
    auto search = QSharedPointer<Search>::create();
    search->open = sockets.size();
    search->done = done;
    for (const QString &path : sockets) {
        // Owned by the application object, so that a search still running when it goes goes with it.
        auto *client = new Client(QCoreApplication::instance());
        const auto finish = [search, client](const Application *application) {
            if (application) {
                search->found.append(*application);
            }
            client->deleteLater();
            if (--search->open == 0) {
                std::sort(search->found.begin(), search->found.end(),
                    [](const Application &a, const Application &b) { return a.pid < b.pid; });
                search->done(search->found);
            }
        };
        auto answered = QSharedPointer<bool>::create(false);
        connect(client, &Client::connected, client, [client, path, finish, answered](const QJsonObject &greeting) {
            *answered = true;
            const Application application = applicationOf(greeting, path);
            client->disconnect();
            finish(&application);
        });
        connect(client, &Client::disconnected, client, [finish, answered, client] {
            if (!*answered) {
                *answered = true;
                client->disconnect();
                finish(nullptr);
            }
        });
        QTimer::singleShot(timeoutMs, client, [finish, answered, client] {
            if (!*answered) {
                *answered = true;
                client->disconnect();
                finish(nullptr);
            }
        });
        client->connectToServer(path);
    }
}

} // namespace VantixControl

#ifndef VANTIXCONTROL_CLIENT_H
#define VANTIXCONTROL_CLIENT_H

#include <QJsonObject>
#include <QList>
#include <QObject>
#include <QString>

#include <functional>

namespace VantixControl {

class ClientPrivate;
struct Event;
struct LogEntry;
struct Reply;

/**
 * Talks to an application's control server: runs console lines there,
 * fetches its schema, and receives its events and log. Everything is
 * asynchronous; each request's callback runs once, with a failed reply if
 * the connection is lost first. vantix-ctl, vantix-panel and a user's own
 * test programs all use this one client.
 *
 * It talks only to a server of its own user: one run by another user (who
 * may have put a socket where the application's was expected) is refused
 * before anything is sent, with the message naming that user's uid.
 */
class Client : public QObject
{
    Q_OBJECT

public:
    using Done = std::function<void(const VantixControl::Reply &)>;

    /// A running application, as its greeting tells.
    struct Application
    {
        qint64 pid = 0;
        QString name;
        QString platform; ///< "PT_TOLVEX"
        QString platformName; ///< "tolvex"
        QString version;
        QString socketPath;
    };

    explicit Client(QObject *parent = nullptr);
    ~Client() override;

    /// connected() follows with the server's greeting, or disconnected() with the reason.
    void connectToServer(const QString &socketPath);
    void disconnectFromServer();
    /// Connected and greeted.
    bool isConnected() const;
    QString socketPath() const;
    QJsonObject greeting() const;

    /// Runs one console line; relative file names in it are taken from workingFolder().
    void execute(const QString &line, const Done &done);
    /**
     * The folder the application takes relative file names of lines from
     * (dump FILE, feed ... FILE.csv): by default this process's current
     * folder; a script's runner sets the script's own, so that the files
     * beside it are found wherever it is run from.
     */
    void setWorkingFolder(const QString &folder);
    QString workingFolder() const;
    /// The reply's value is the schema.
    void describe(const Done &done);
    void setEventsEnabled(bool enabled, const Done &done = Done());
    void setLogEnabled(bool enabled, const Done &done = Done());
    /// Stops what runs for this client; its lines are answered "cancelled".
    void cancel(const Done &done = Done());
    /// Any request object; the id is added here.
    void request(QJsonObject request, const Done &done);

    /**
     * The applications of this user that answer on the socket folder; sockets
     * of processes that are gone are removed on the way.
     */
    static void findApplications(const std::function<void(const QList<Application> &)> &done, int timeoutMs = 1000);
    /// The applications that answer at @p socketPaths, all asked at once; sorted by pid.
    static void probeApplications(const QStringList &socketPaths,
        const std::function<void(const QList<Application> &)> &done, int timeoutMs = 1000);
    static Application applicationOf(const QJsonObject &greeting, const QString &socketPath);

Q_SIGNALS:
    void connected(const QJsonObject &greeting);
    void disconnected(const QString &reason);
    void event(const VantixControl::Event &event);
    void logged(const VantixControl::LogEntry &entry);
    /// Every line the server sends, as it comes (for tools that print the protocol).
    void lineReceived(const QByteArray &line);

private:
    ClientPrivate *d;
    friend class ClientPrivate;
    Q_DISABLE_COPY(Client)
};

} // namespace VantixControl

#endif

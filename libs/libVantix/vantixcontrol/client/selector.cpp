#include "selector.h"

#include <vantixcontrol/protocol/socketdirectory.h>

#include <QCommandLineOption>
#include <QCommandLineParser>

namespace VantixControl {

namespace {
QString noneRunning()
{
    return QStringLiteral("no application that uses Vantix is running (or VANTIX_CONTROL is off in it)");
}

// Tells why nothing matched, with what does run.
void explainNoMatch(const QStringList &sockets, const std::function<void(const QString &, const QString &)> &done)
{
    Client::probeApplications(sockets, [done](const QList<Client::Application> &running) {
        done(QString(),
            running.isEmpty() ? noneRunning()
                              : QStringLiteral("no running application matches; running:\n") +
                    Selector::table(running).join(QLatin1Char('\n')));
    });
}
} // namespace

QList<QCommandLineOption> Selector::options()
{
    return {QCommandLineOption(
                QStringLiteral("pid"), QStringLiteral("The application with this process id."), QStringLiteral("pid")),
        QCommandLineOption(
            QStringLiteral("app"), QStringLiteral("The application with this name."), QStringLiteral("name")),
        QCommandLineOption(
            QStringLiteral("socket"), QStringLiteral("The application serving this socket."), QStringLiteral("path"))};
}

bool Selector::fromParser(const QCommandLineParser &parser, Selector *selector, QString *error)
{
    selector->name = parser.value(QStringLiteral("app"));
    selector->socketPath = parser.value(QStringLiteral("socket"));
    if (parser.isSet(QStringLiteral("pid"))) {
        bool ok = false;
        selector->pid = parser.value(QStringLiteral("pid")).toLongLong(&ok);
        if (!ok || selector->pid <= 0) {
            *error = QStringLiteral("--pid needs a process id, not \"%1\"").arg(parser.value(QStringLiteral("pid")));
            return false;
        }
    }
    return true;
}

QStringList Selector::table(const QList<Client::Application> &applications)
{
    QStringList lines{QStringLiteral("%1 %2 %3 %4")
                          .arg(QStringLiteral("PID"), -8)
                          .arg(QStringLiteral("APPLICATION"), -20)
                          .arg(QStringLiteral("PLATFORM"), -18)
                          .arg(QStringLiteral("SOCKET"))};
    for (const Client::Application &a : applications) {
        lines.append(
            QStringLiteral("%1 %2 %3 %4").arg(a.pid, -8).arg(a.name, -20).arg(a.platform, -18).arg(a.socketPath));
    }
    return lines;
}

void Selector::resolve(const std::function<void(const QString &, const QString &)> &done) const
{
    if (!socketPath.isEmpty()) {
        done(socketPath, QString());
        return;
    }
    const QStringList sockets = SocketDirectory::sockets(SocketDirectory::path());
    // The socket names tell pid and name: only those that may match are asked.
    QStringList candidates;
    for (const QString &path : sockets) {
        const qint64 socketPid = SocketDirectory::pidOf(path);
        if ((pid < 0 || socketPid == pid) &&
            (name.isEmpty() || path.section(QLatin1Char('/'), -1) == SocketDirectory::socketName(name, socketPid))) {
            candidates.append(path);
        }
    }
    if (pid > 0 && candidates.size() == 1) {
        // Its greeting, read on connecting, is proof enough.
        done(candidates.first(), QString());
        return;
    }
    if (candidates.isEmpty()) {
        explainNoMatch(sockets, done);
        return;
    }
    const Selector wanted = *this;
    Client::probeApplications(candidates, [wanted, sockets, done](const QList<Client::Application> &applications) {
        QList<Client::Application> matching;
        for (const Client::Application &a : applications) {
            if ((wanted.pid < 0 || a.pid == wanted.pid) && (wanted.name.isEmpty() || a.name == wanted.name)) {
                matching.append(a);
            }
        }
        if (matching.size() == 1) {
            done(matching.first().socketPath, QString());
        } else if (matching.isEmpty()) {
            explainNoMatch(sockets, done);
        } else {
            done(QString(),
                QStringLiteral("%1 applications match; choose one with --pid or --app:\n").arg(matching.size()) +
                    table(matching).join(QLatin1Char('\n')));
        }
    });
}

} // namespace VantixControl

#include "appselector.h"

#include <QCommandLineOption>
#include <QCommandLineParser>
#include <QStringList>

using VantixControl::Client;

QList<QCommandLineOption> AppSelector::options()
{
    return {QCommandLineOption(
                QStringLiteral("pid"), QStringLiteral("The application with this process id."), QStringLiteral("pid")),
        QCommandLineOption(
            QStringLiteral("app"), QStringLiteral("The application with this name."), QStringLiteral("name")),
        QCommandLineOption(
            QStringLiteral("socket"), QStringLiteral("The application serving this socket."), QStringLiteral("path"))};
}

bool AppSelector::fromParser(const QCommandLineParser &parser, AppSelector *selector, QString *error)
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

QStringList AppSelector::table(const QList<Client::Application> &applications)
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

void AppSelector::resolve(const std::function<void(const QString &, const QString &)> &done) const
{
    if (!socketPath.isEmpty()) {
        done(socketPath, QString());
        return;
    }
    const AppSelector wanted = *this;
    Client::findApplications([wanted, done](const QList<Client::Application> &applications) {
        QList<Client::Application> matching;
        for (const Client::Application &a : applications) {
            if ((wanted.pid < 0 || a.pid == wanted.pid) && (wanted.name.isEmpty() || a.name == wanted.name)) {
                matching.append(a);
            }
        }
        if (matching.size() == 1) {
            done(matching.first().socketPath, QString());
        } else if (matching.isEmpty()) {
            done(QString(),
                applications.isEmpty()
                    ? QStringLiteral("no application that uses Vantix is running (or VANTIX_CONTROL is off in it)")
                    : QStringLiteral("no running application matches; running:\n") +
                        table(applications).join(QLatin1Char('\n')));
        } else {
            done(QString(),
                QStringLiteral("%1 applications match; choose one with --pid or --app:\n").arg(matching.size()) +
                    table(matching).join(QLatin1Char('\n')));
        }
    });
}

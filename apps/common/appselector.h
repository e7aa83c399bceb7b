#ifndef VANTIXAPPS_APPSELECTOR_H
#define VANTIXAPPS_APPSELECTOR_H

#include <vantixcontrol/client/client.h>

#include <QList>
#include <QString>

#include <functional>

class QCommandLineOption;
class QCommandLineParser;

/// Which running application a tool talks to: by pid, by name, by socket, or the only one.
struct AppSelector
{
    qint64 pid = -1;
    QString name;
    QString socketPath;

    bool isEmpty() const { return pid < 0 && name.isEmpty() && socketPath.isEmpty(); }

    /**
     * Finds the application. @p done gets its socket, or an empty path and
     * the reason none or several match.
     */
    void resolve(const std::function<void(const QString &socketPath, const QString &error)> &done) const;

    /// The --pid, --app and --socket options every tool offers.
    static QList<QCommandLineOption> options();
    /// The selector of a parsed command line; false, with @p error, for a --pid that is no process id.
    static bool fromParser(const QCommandLineParser &parser, AppSelector *selector, QString *error);

    /// One line per application: pid, name, platform, socket.
    static QStringList table(const QList<VantixControl::Client::Application> &applications);
};

#endif

#ifndef VANTIXCONTROL_SELECTOR_H
#define VANTIXCONTROL_SELECTOR_H

#include <vantixcontrol/client/client.h>

#include <QList>
#include <QString>
#include <QStringList>

#include <functional>

class QCommandLineOption;
class QCommandLineParser;

namespace VantixControl {

/**
 * Which running application a tool talks to: by process id, by name, by
 * socket, or the only one that runs. vantix-ctl, vantix-panel and
 * vantix-test select through this one set of rules and messages.
 *
 * A socket's name holds the application's name and pid, so --pid goes
 * straight to its socket and --app asks only the sockets of that name; only
 * choosing without a selector, or telling the user what runs, asks every
 * application (all at once).
 */
struct Selector
{
    qint64 pid = -1;
    QString name;
    QString socketPath;

    bool isEmpty() const { return pid < 0 && name.isEmpty() && socketPath.isEmpty(); }

    /**
     * Finds the application. @p done gets its socket, or an empty path and
     * the reason none or several match (the running ones listed).
     */
    void resolve(const std::function<void(const QString &socketPath, const QString &error)> &done) const;

    /// The --pid, --app and --socket options every tool offers.
    static QList<QCommandLineOption> options();
    /// The selector of a parsed command line; false, with @p error, for a --pid that is no process id.
    static bool fromParser(const QCommandLineParser &parser, Selector *selector, QString *error);

    /// One line per application: pid, name, platform, socket, under a heading.
    static QStringList table(const QList<Client::Application> &applications);
};

} // namespace VantixControl

#endif

#ifndef VANTIXTEST_APPLICATION_H
#define VANTIXTEST_APPLICATION_H

#include <QByteArray>
#include <QObject>
#include <QString>
#include <QStringList>
#include <QTimer>

class QFileSystemWatcher;
class QProcess;

/**
 * One fresh instance of the application under test, in a private folder of
 * its own: its runtime folder (XDG_RUNTIME_DIR), its control socket there
 * (VANTIX_CONTROL), the unit's files (QBCOMMON_ROOT), TMPDIR and its working
 * folder, so that parallel instances share nothing and nothing is written
 * elsewhere; nor does it read the host's Wi-Fi configurations (VANTIX_HOST_WIFI). It runs in a process group of its own: Ctrl+C in the terminal
 * reaches the tester alone, which stops the group itself, and the group dies
 * with the tester.
 */
class ApplicationProcess : public QObject
{
    Q_OBJECT

public:
    struct Setup
    {
        QString program; ///< absolute
        QStringList arguments;
        QString folder; ///< private to this instance; made here
        double speed = 0; ///< 0: real time
        QString fakeTimeLibrary;
    };

    explicit ApplicationProcess(const Setup &setup, QObject *parent = nullptr);
    ~ApplicationProcess() override;

    /// exited() follows in any case, with a description when it did not start.
    void start();
    QString socketPath() const;
    QString unitRoot() const;
    bool isRunning() const;
    /// SIGTERM to the application's process group, SIGKILL after @p graceMs.
    void stop(int graceMs);

    bool hasExited() const { return m_exited; }
    /// It never ran: the program could not be executed.
    bool failedToStart() const { return m_failedToStart; }
    /// "exited with status 3", "crashed with signal 6 (SIGABRT)", "could not be started: ...".
    QString exitDescription() const { return m_exitDescription; }
    /// Whether the exit came after stop() asked for it.
    bool wasStopped() const { return m_stopping; }
    /// The signal that ended it, 0 when it exited by itself.
    int exitSignal() const { return m_exitSignal; }
    QByteArray standardOutput() const { return m_out; }
    QByteArray standardError() const { return m_err; }
    /// The last @p count lines of its standard error.
    QStringList lastErrorLines(int count) const;

Q_SIGNALS:
    /// Its control socket is there; connecting may start.
    void socketAppeared();
    void exited();

private:
    void checkSocket();
    void finish(int exitCode, bool crashed);
    void signalGroup(int signal);

    Setup m_setup;
    QProcess *m_process = nullptr;
    QFileSystemWatcher *m_watcher = nullptr;
    QTimer m_socketPoll;
    QTimer m_killTimer;
    QByteArray m_out;
    QByteArray m_err;
    qint64 m_pid = 0;
    QString m_exitDescription;
    int m_exitSignal = 0;
    bool m_socketSeen = false;
    bool m_stopping = false;
    bool m_exited = false;
    bool m_failedToStart = false;
};

/// "SIGABRT" for 6; the number for a signal without a name.
QString signalName(int signal);

#endif

#ifndef VANTIXTEST_SIMULATEDCLOCK_H
#define VANTIXTEST_SIMULATEDCLOCK_H

#include <QObject>
#include <QString>

#include <functional>

namespace VantixControl {
class Client;
}

/**
 * How much time a scenario took on the application's own clock: the
 * monotonic clock that stamps its events and log entries, which libfaketime
 * speeds up. A second connection of its own records while the scenario runs
 * on the first; its recorder writes the pause between the start of the
 * recording and a comment sent at the end as "wait <ms>", measured by the
 * application. The scenario's session is left alone, so a scenario may make
 * its own recordings.
 */
class SimulatedClock : public QObject
{
    Q_OBJECT

public:
    /// @p recordFile: a file in the application's private folder.
    SimulatedClock(const QString &socketPath, const QString &recordFile, QObject *parent = nullptr);

    /// Connects and starts recording; @p started says whether the clock runs.
    void start(const std::function<void(bool started)> &started);
    /// @p stopped gets the milliseconds since start(), or -1 when they could not be read.
    void stop(const std::function<void(qint64 ms)> &stopped);

private:
    VantixControl::Client *m_client;
    QString m_socketPath;
    QString m_recordFile;
    bool m_running = false;
};

#endif

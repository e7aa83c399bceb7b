#ifndef VANTIXCONTROL_SESSION_H
#define VANTIXCONTROL_SESSION_H

#include <vantix/vantix_export.h>

#include <QJsonObject>
#include <QObject>
#include <QStringList>

#include <functional>

namespace TQ_SPAPI {
class System;
}

namespace VantixControl {

class SessionPrivate;
struct Event;
struct LogEntry;
struct Reply;

/**
 * One user's conversation with the simulated hardware: console lines in,
 * replies out, and if asked, every signal and log record as it happens.
 * The simulator's console, each client of the control server and the tests
 * each have a session of their own; sessions share nothing but the System,
 * so one session's waits, names and recordings never show in another.
 *
 * Lines run one after the other in the order given. Lines that take time
 * (wait, ramp, expect ... within) run on the event loop; nothing here ever
 * blocks or runs a nested loop.
 */
class VANTIX_EXPORT Session : public QObject
{
    Q_OBJECT

public:
    using Done = std::function<void(const VantixControl::Reply &)>;

    explicit Session(TQ_SPAPI::System *system, QObject *parent = nullptr);
    ~Session() override;

    /// Queues @p line; @p done gets its reply once, at once or when a timed command ends.
    void execute(const QString &line, const Done &done);
    /// The same, with relative file names taken from @p folder (a client's working folder).
    void execute(const QString &line, const QString &folder, const Done &done);
    /// Nothing runs and nothing is queued.
    bool isIdle() const;
    /// Stops what runs (a ramp stops where it is) and drops the queue; their callbacks never come.
    void cancel();

    /// Whether eventRaised() is emitted for every signal of the simulated hardware.
    void setEventsEnabled(bool enabled);
    bool eventsEnabled() const;
    /// Whether logged() gets a copy of the application's message log; the application's own output is untouched.
    void setLogEnabled(bool enabled);
    bool logEnabled() const;

    /// Shows @p object's signals and lets commands reach it under @p name (tests, hosts).
    void watch(QObject *object, const QString &name);
    /// Every command, device, target, property, method and signal: what front ends build on.
    QJsonObject describe() const;
    /// Every device's and interface object's properties.
    QJsonObject dump() const;
    /// The device table as the console shows it.
    QStringList deviceTable() const;
    /// Milliseconds since the System started, as events are stamped.
    qint64 elapsedMs() const;

Q_SIGNALS:
    void eventRaised(const VantixControl::Event &event);
    void logged(const VantixControl::LogEntry &entry);

private:
    SessionPrivate *d;
    friend class SessionPrivate;
    Q_DISABLE_COPY(Session)
};

} // namespace VantixControl

#endif

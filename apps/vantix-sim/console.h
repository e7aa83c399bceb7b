#ifndef VANTIXSIM_CONSOLE_H
#define VANTIXSIM_CONSOLE_H

#include <vantix/idevice.h>

#include <qbcom/parametercontroller.h>

#include <QElapsedTimer>
#include <QHash>
#include <QJsonObject>
#include <QList>
#include <QObject>
#include <QPair>
#include <QStringList>
#include <QTextStream>
#include <QTimer>

#include <functional>

class EventWatcher;
struct QMetaObject;
class QMetaProperty;

namespace TQ_SPAPI {
class System;
}

/**
 * The simulator's console: shows the devices and every event they raise, and
 * runs commands typed or scripted one per line, answering each with "OK" or
 * "KO: <reason>". Devices, properties and methods are reached through the
 * meta-object only, so every device class is shown, set and called without
 * code of its own here. Debug-controller commands go to the "VantixDebug"
 * parameter unchanged.
 */
class Console : public QObject
{
    Q_OBJECT

public:
    explicit Console(QTextStream &out, QObject *parent = nullptr);
    ~Console() override;

    /// Only command answers are shown; events, tables and debug log lines are not.
    void setQuiet(bool quiet);
    void setColour(bool colour) { m_colour = colour; }

    EventWatcher *watcher() const { return m_watcher; }
    /// The object whose key events the debug controller filters.
    QObject *keyTarget() { return &m_keyTarget; }

    /// Shows the devices and system information, starts showing events and running input.
    void start();
    /// Queues lines. Lines of a @p script end the run at their first KO; @p source names them in messages.
    void feed(const QStringList &lines, const QString &source, bool script);
    /// No more input will come: finished() follows once everything queued has run.
    void endOfInput();
    bool isIdle() const { return !m_busy && m_queue.isEmpty(); }

    /// Every device's and interface object's properties.
    QJsonObject dump() const;
    bool writeDump(const QString &path, QString *error) const;

    void printOverview();

    /// The debug controller's command words, each with its arguments.
    static const QList<QPair<QString, QString>> &debugCommands();

Q_SIGNALS:
    /// @p answer is "OK", "OK <result>" or "KO: <reason>".
    void answered(const QString &command, bool ok, const QString &answer);
    void finished(int exitCode, const QString &message);

private:
    struct Line
    {
        QString text;
        QString source;
        int number = 0;
        bool script = false;
    };
    struct Reply
    {
        bool ok = true;
        QString text;
        QStringList lines;
    };
    struct Target
    {
        QObject *object = nullptr;
        TQ_SPAPI::IDevicePtr device;
        QString name;
    };
    using Done = std::function<void(const Reply &)>;

    static Reply ok(const QString &text = QString()) { return Reply{true, text, {}}; }
    static Reply ko(const QString &reason) { return Reply{false, reason, {}}; }

    void processQueue();
    void execute(const QString &text);
    void complete(const Reply &reply);
    void finish(int exitCode, const QString &message);
    void print(const QString &text);
    void printEvent(const QString &objectName, const QString &signal, const QStringList &arguments);
    QString paint(const QString &text, const char *code) const;

    bool isDebugCommand(const QString &text) const;
    Reply runDebugCommand(const QString &text);

    bool resolve(const QString &name, Target *target, QString *error) const;
    bool findProperty(const Target &target, const QString &name, QMetaProperty *property, QString *error) const;
    QStringList deviceTable() const;

    Reply help(const QStringList &args);
    Reply devices(const QStringList &args);
    Reply show(const QStringList &args);
    Reply get(const QStringList &args);
    Reply set(const QStringList &args);
    Reply call(const QStringList &args);
    Reply plug(const QStringList &args);
    Reply unplug(const QStringList &args);
    Reply flightMode(const QStringList &args);
    Reply sysinfo(const QStringList &args);
    Reply key(const QStringList &args);
    Reply dumpCommand(const QStringList &args);
    Reply quit(const QStringList &args);
    void wait(const QStringList &args, const Done &done);
    void ramp(const QStringList &args, const Done &done);
    void expect(const QStringList &args, const Done &done);
    void pollCheck();
    void finishAsync(const Reply &reply);
    void rampStep();
    /// Runs @p step after @p ms of event-loop time; one at a time.
    void after(int ms, std::function<void()> step);

    QTextStream &m_out;
    EventWatcher *m_watcher;
    TQ_QBCom::ParameterController m_controller;
    QObject m_keyTarget;
    QElapsedTimer m_clock;
    QTimer m_timer;
    std::function<void()> m_step;
    QList<Line> m_queue;
    Line m_current;
    QHash<QString, int> m_lineNumbers;
    QHash<QString, int> m_emittedSeen;

    // The asynchronous command running (wait, ramp, expect ... within).
    Done m_done;
    std::function<bool(QString *actual, Reply *fatal)> m_check;
    std::function<QString(const QString &actual)> m_checkFailure;
    QString m_expectedShown;
    qint64 m_deadline = 0; // ns of m_clock
    std::function<Reply(double value)> m_rampApply;
    QList<double> m_rampValues;
    QList<qint64> m_rampTimes;
    int m_rampIndex = 0;
    qint64 m_rampStart = 0; // ns of m_clock
    bool m_quiet = false;
    bool m_colour = false;
    bool m_started = false;
    bool m_busy = false;
    bool m_processing = false;
    bool m_inputEnded = false;
    bool m_quitting = false;
    bool m_finished = false;
};

#endif

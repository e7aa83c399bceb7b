#include "logtap_p.h"

#include "event.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QHash>
#include <QMutex>
#include <QPointer>

namespace VantixControl {

namespace {
struct Subscriber
{
    QPointer<QObject> receiver;
    LogTap::Sink sink;
};

struct Tap
{
    QMutex mutex;
    QHash<QObject *, Subscriber> subscribers;
    QtMessageHandler previous = nullptr;
    bool installed = false;
};

Tap &tap()
{
    static Tap t;
    return t;
}

// A message logged while a copy is being made is passed on, not copied again.
thread_local bool t_copying = false;

const char *typeName(QtMsgType type)
{
    switch (type) {
    case QtDebugMsg:
        return "debug";
    case QtInfoMsg:
        return "info";
    case QtWarningMsg:
        return "warning";
    case QtCriticalMsg:
        return "critical";
    case QtFatalMsg:
        return "fatal";
    }
    return "debug";
}

void handler(QtMsgType type, const QMessageLogContext &context, const QString &message)
{
    Tap &t = tap();
    QtMessageHandler previous = nullptr;
    {
        QMutexLocker lock(&t.mutex);
        previous = t.previous;
        if (!t_copying && !t.subscribers.isEmpty()) {
            t_copying = true;
            LogEntry entry;
            // Each session stamps it from this moment, on the clock its events are stamped with.
            QElapsedTimer now;
            now.start();
            entry.type = QLatin1String(typeName(type));
            entry.category = QLatin1String(context.category ? context.category : "default");
            entry.function = QLatin1String(context.function ? context.function : "");
            entry.message = message;
            for (const Subscriber &s : qAsConst(t.subscribers)) {
                if (s.receiver) {
                    const auto sink = s.sink;
                    QMetaObject::invokeMethod(
                        s.receiver, [sink, entry, now] { sink(entry, now); }, Qt::QueuedConnection);
                }
            }
            t_copying = false;
        }
    }
    if (previous) {
        previous(type, context, message);
    }
}
} // namespace

void LogTap::subscribe(QObject *receiver, Sink sink)
{
    Tap &t = tap();
    QMutexLocker lock(&t.mutex);
    t.subscribers.insert(receiver, {receiver, std::move(sink)});
    if (!t.installed) {
        t.installed = true;
        t.previous = qInstallMessageHandler(handler);
    }
}

void LogTap::unsubscribe(QObject *receiver)
{
    Tap &t = tap();
    QMutexLocker lock(&t.mutex);
    t.subscribers.remove(receiver);
    if (!t.subscribers.isEmpty() || !t.installed) {
        return;
    }
    const QtMessageHandler current = qInstallMessageHandler(t.previous);
    if (current == handler) {
        t.installed = false;
        t.previous = nullptr;
    } else {
        // Someone installed a handler over ours and may chain to it: theirs stays, ours passes messages on.
        qInstallMessageHandler(current);
    }
}

} // namespace VantixControl

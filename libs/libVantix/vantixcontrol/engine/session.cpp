#include "session.h"

#include "devicenames_p.h"
#include "event.h"
#include "eventwatcher_p.h"
#include "logtap_p.h"
#include "reply.h"
#include "schema_p.h"
#include "session_p.h"
#include "statedump_p.h"
#include "systemprivate_p.h"
#include "textrenderer_p.h"
#include "timedjob_p.h"
#include "words.h"

#include <vantix/system.h>

#include "logging_p.h"

using namespace TQ_SPAPI;

namespace VantixControl {

namespace {
// A client may send lines faster than they run; past this many it is told to wait for answers.
constexpr int MaxQueued = 10000;
} // namespace

SessionPrivate::SessionPrivate(Session *q, System *system)
    : QObject(q)
    , q(q)
    , system(system)
    , watcher(new EventWatcher(system, this))
{
    connect(watcher, &EventWatcher::signalled, q, &Session::event);
    watcher->start();
}

SessionPrivate::~SessionPrivate()
{
    setLogEnabled(false);
}

bool SessionPrivate::resolve(const QString &name, Target *target, QString *error) const
{
    return Targets::resolve(system, watcher, name, target, error);
}

qint64 SessionPrivate::elapsedMs() const
{
    return system ? SystemPrivate::get(system)->elapsedMs() : 0;
}

void SessionPrivate::setLogEnabled(bool enabled)
{
    if (enabled == m_log) {
        return;
    }
    m_log = enabled;
    if (enabled) {
        LogTap::subscribe(this, [this](const LogEntry &entry, const QElapsedTimer &loggedAt) {
            LogEntry stamped = entry;
            stamped.ms = system ? SystemPrivate::get(system)->elapsedMsAt(loggedAt) : 0;
            Q_EMIT q->logged(stamped);
        });
    } else {
        LogTap::unsubscribe(this);
    }
}

void SessionPrivate::setJob(TimedJob *job)
{
    m_job = job;
}

void SessionPrivate::enqueue(const QString &line, const Session::Done &done)
{
    if (m_queue.size() >= MaxQueued) {
        done(Reply::failure(ErrorClass::BadRequest,
            QStringLiteral("%1 lines are waiting to run; wait for their answers first").arg(m_queue.size())));
        return;
    }
    m_queue.append({line, done});
    process();
}

void SessionPrivate::cancel()
{
    ++m_generation;
    m_queue.clear();
    if (m_job) {
        m_job->cancel();
    }
    m_busy = false;
}

void SessionPrivate::process()
{
    if (m_processing) {
        return;
    }
    m_processing = true;
    const QPointer<SessionPrivate> alive(this);
    while (alive && !m_busy && !m_queue.isEmpty()) {
        const Pending pending = m_queue.takeFirst();
        m_busy = true;
        run(pending);
    }
    if (alive) {
        m_processing = false;
    }
}

void SessionPrivate::run(const Pending &pending)
{
    const quint64 generation = m_generation;
    const QString line = pending.line.trimmed();
    const Session::Done done = pending.done;
    const auto finish = [this, generation, line, done](const Reply &reply) { complete(generation, line, done, reply); };
    recorder.begin(elapsedMs());

    if (line.isEmpty() || line.startsWith(QLatin1Char('#'))) {
        finish(Reply::success());
        return;
    }
    if (!system) {
        finish(Reply::failure(ErrorClass::Failed, QStringLiteral("the system has gone")));
        return;
    }
    if (isDebugCommand(line)) {
        finish(runDebugCommand(line));
        return;
    }
    QStringList args;
    QString error;
    if (!Words::split(line, &args, &error)) {
        finish(Reply::failure(ErrorClass::BadRequest, error));
        return;
    }
    const QString word = args.takeFirst().toLower();
    const CommandEntry *command = CommandTable::instance().find(word);
    if (!command) {
        finish(Reply::failure(
            ErrorClass::UnknownCommand, QStringLiteral("unknown command \"%1\"; help lists the commands").arg(word)));
        return;
    }
    Invocation invocation{*this, args};
    if (command->start) {
        command->start(invocation, finish);
    } else {
        finish(command->run(invocation));
    }
}

void SessionPrivate::complete(quint64 generation, const QString &line, const Session::Done &done, const Reply &reply)
{
    if (generation != m_generation) {
        return;
    }
    m_busy = false;
    recorder.note(line, reply, elapsedMs());
    const QPointer<SessionPrivate> alive(this);
    done(reply);
    if (alive && !m_processing && !m_queue.isEmpty()) {
        process();
    }
}

Session::Session(System *system, QObject *parent)
    : QObject(parent)
    , d(new SessionPrivate(this, system))
{
    qRegisterMetaType<Event>();
    qRegisterMetaType<LogEntry>();
    qCDebug(lcConsole) << "session started";
}

Session::~Session()
{
    d->cancel();
    qCDebug(lcConsole) << "session ended";
}

void Session::execute(const QString &line, const Done &done)
{
    d->enqueue(line, done);
}

bool Session::isIdle() const
{
    return d->isIdle();
}

void Session::cancel()
{
    d->cancel();
}

void Session::setEventsEnabled(bool enabled)
{
    d->watcher->setReporting(enabled);
}

bool Session::eventsEnabled() const
{
    return d->watcher->isReporting();
}

void Session::setLogEnabled(bool enabled)
{
    d->setLogEnabled(enabled);
}

bool Session::logEnabled() const
{
    return d->logEnabled();
}

void Session::watch(QObject *object, const QString &name)
{
    d->watcher->watch(object, name);
}

QJsonObject Session::describe() const
{
    return d->system ? Schema::describe(d->system, d->watcher) : QJsonObject();
}

QJsonObject Session::dump() const
{
    return d->system ? StateDump::build(d->system, d->watcher) : QJsonObject();
}

QStringList Session::deviceTable() const
{
    return d->system ? TextRenderer::deviceTable(TextRenderer::deviceRows(d->system, d->watcher)) : QStringList();
}

qint64 Session::elapsedMs() const
{
    return d->elapsedMs();
}

void Session::addHostCommand(const HostCommand &command)
{
    CommandEntry entry;
    entry.name = command.name;
    entry.help = command.help;
    entry.usages = QStringList{command.usage.isEmpty() ? command.name : command.usage};
    entry.host = true;
    const auto run = command.run;
    entry.run = [run](Invocation &invocation) { return run(*invocation.session.q, invocation.args); };
    CommandTable::instance().add(entry);
}

} // namespace VantixControl

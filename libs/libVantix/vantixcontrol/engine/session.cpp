#include "session.h"

#include "devicenames_p.h"
#include "engine_p.h"
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
    , engine(Engine::of(system))
    , watcher(new EventWatcher(system, this))
{
    connect(watcher, &EventWatcher::signalled, q, &Session::eventRaised);
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

const CommandTable *SessionPrivate::commands() const
{
    const EnginePrivate *e = EnginePrivate::get(engine);
    return e ? &e->table : nullptr;
}

void SessionPrivate::enqueue(const QString &line, const QString &folder, const Session::Done &done)
{
    if (m_queue.size() >= MaxQueued) {
        done(Reply::failure(ErrorClass::BadRequest,
            QStringLiteral("%1 lines are waiting to run; wait for their answers first").arg(m_queue.size())));
        return;
    }
    m_queue.append({line, folder, done});
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
    Record record;
    record.line = pending.line.trimmed();
    const Session::Done done = pending.done;
    recorder.begin(elapsedMs());
    const auto finish = [this, generation, &record, done](
                            const Reply &reply) { complete(generation, record, done, reply); };

    const QString &line = record.line;
    const CommandTable *table = commands();
    if (line.isEmpty() || line.startsWith(QLatin1Char('#'))) {
        record.skip = line.isEmpty();
        finish(Reply::success());
        return;
    }
    if (!system || !table) {
        finish(Reply::failure(ErrorClass::Failed, QStringLiteral("the system has gone")));
        return;
    }
    QStringList args;
    QString error;
    if (!Words::split(line, &args, &error)) {
        finish(Reply::failure(ErrorClass::BadRequest, error));
        return;
    }
    record.words = args;
    if (isDebugCommand(args, table)) {
        finish(runDebugCommand(debugCommandText(args)));
        return;
    }
    const QString word = args.takeFirst().toLower();
    const CommandEntry *command = table->find(word);
    if (!command) {
        finish(Reply::failure(
            ErrorClass::UnknownCommand, QStringLiteral("unknown command \"%1\"; help lists the commands").arg(word)));
        return;
    }
    record.skip = command->readOnly;
    Invocation invocation(*this, args);
    Reply refusal;
    if (!bindArguments(*command, *table, pending.folder, &invocation, &refusal)) {
        finish(refusal);
        return;
    }
    if (!command->job) {
        finish(command->run(invocation));
        return;
    }
    TimedJob *job = command->job(invocation, &refusal);
    if (!job) {
        finish(refusal);
        return;
    }
    m_job = job;
    job->start([this, generation, record, done](const Reply &reply) { complete(generation, record, done, reply); });
}

void SessionPrivate::complete(quint64 generation, const Record &record, const Session::Done &done, const Reply &reply)
{
    if (generation != m_generation) {
        return;
    }
    m_busy = false;
    // A read-only command that did its job is no part of the story; a failure is kept as a comment.
    if (!record.skip || !reply.ok) {
        recorder.note(record.line, reply.ok ? record.words : QStringList(), reply, elapsedMs());
    }
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
    d->enqueue(line, QString(), done);
}

void Session::execute(const QString &line, const QString &folder, const Done &done)
{
    d->enqueue(line, folder, done);
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
    const CommandTable *table = d->commands();
    return d->system && table ? Schema::describe(d->system, *table, d->watcher) : QJsonObject();
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

} // namespace VantixControl

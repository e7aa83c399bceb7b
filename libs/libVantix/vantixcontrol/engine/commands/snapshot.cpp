// snapshot save|restore|delete <name> and snapshot list: named states of
// the simulated hardware, kept by the System's engine, so that any client
// may restore what another saved.

#include "commandtable_p.h"
#include "engine_p.h"
#include "restorejob_p.h"
#include "session_p.h"
#include "simulationdelays_p.h"
#include "timing_p.h"

#include <QJsonArray>
#include <QPointer>

using TQ_SPAPI::System;

namespace VantixControl {

namespace {
// The forms, in the order they are declared.
enum Action { Save, Restore, Delete, List };

Reply save(System *system, SnapshotStore &store, const QString &name)
{
    bool replaced = false;
    if (!store.save(name, Snapshot::take(system), &replaced)) {
        return Reply::failure(ErrorClass::Failed,
            QStringLiteral("%1 snapshots are kept already; delete one first").arg(SnapshotStore::MaxNamed));
    }
    return Reply::success(replaced ? QStringLiteral("saved %1, replacing the one of that name").arg(name)
                                   : QStringLiteral("saved %1").arg(name));
}

// A save just after a change waits for it to take effect: "plug usb" then "snapshot save" means a usable port,
// and the end a flight-mode transition heads for cannot be told from its flags.
class SaveJob : public TimedJob
{
public:
    SaveJob(SessionPrivate &session, Engine *engine, const QString &name)
        : TimedJob(session)
        , m_engine(engine)
        , m_name(name)
    {
    }

private:
    void begin() override { check(); }

    void check()
    {
        System *system = m_session.system;
        if (!system || !m_engine) {
            finish(Reply::failure(ErrorClass::Failed, QStringLiteral("the system has gone")));
        } else if (Snapshot::isSettled(system) || m_waitedMs >= MaxWaitMs) {
            finish(save(system, EnginePrivate::get(m_engine)->snapshots, m_name));
        } else {
            m_waitedMs += Timing::ExpectPollMs;
            after(Timing::ExpectPollMs, [this] { check(); });
        }
    }

    // Longer than any transition, short of waiting for ever on abilities requested again and again.
    static constexpr int MaxWaitMs = 2 * TQ_SPAPI::SimulationDelays::FlightModeTransitionMs;
    QPointer<Engine> m_engine;
    QString m_name;
    int m_waitedMs = 0;
};

Reply list(const SnapshotStore &store)
{
    QStringList lines;
    QJsonArray names;
    for (const QString &name : store.names()) {
        const Snapshot *snapshot = store.find(name);
        lines.append(QStringLiteral("  %1  saved at %2 ms, %3 devices")
                         .arg(name)
                         .arg(snapshot->takenMs)
                         .arg(snapshot->devices.size()));
        names.append(name);
    }
    return Reply::success(QStringLiteral("%1 snapshots").arg(names.size()))
        .withValue(QStringLiteral("QStringList"), names)
        .withLines(lines);
}

TimedJob *snapshot(Invocation &invocation, Reply *refusal)
{
    Engine *engine = invocation.session.engine;
    if (!engine || !invocation.session.system) {
        *refusal = Reply::failure(ErrorClass::Failed, QStringLiteral("the system has gone"));
        return nullptr;
    }
    SnapshotStore &store = EnginePrivate::get(engine)->snapshots;
    if (invocation.form == List) {
        *refusal = list(store);
        return nullptr;
    }
    const QString name = invocation.word(QStringLiteral("name"));
    QString error;
    if (!SnapshotStore::isValidName(name, &error)) {
        *refusal = Reply::failure(ErrorClass::BadValue, error);
        return nullptr;
    }
    if (invocation.form == Save) {
        if (!Snapshot::isSettled(invocation.session.system)) {
            return new SaveJob(invocation.session, engine, name);
        }
        *refusal = save(invocation.session.system, store, name);
        return nullptr;
    }
    const Snapshot *snapshot = store.find(name);
    if (!snapshot) {
        *refusal = Reply::failure(
            ErrorClass::UnknownTarget, QStringLiteral("no snapshot \"%1\"; snapshot list shows them").arg(name));
        return nullptr;
    }
    if (invocation.form == Delete) {
        store.remove(name);
        *refusal = Reply::success(QStringLiteral("deleted %1").arg(name));
        return nullptr;
    }
    if (store.restoring) {
        *refusal =
            Reply::failure(ErrorClass::Failed, QStringLiteral("another restore is running; try again when it ends"));
        return nullptr;
    }
    return new RestoreJob(invocation.session, engine, *snapshot, QStringLiteral("snapshot ") + name);
}
} // namespace

void addSnapshot(CommandTable &table)
{
    const auto named = [](const QString &action) {
        return Form{keyword(action, {action}), required(QStringLiteral("name"), Argument::Text)};
    };
    CommandEntry entry;
    entry.name = QStringLiteral("snapshot");
    entry.forms = {named(QStringLiteral("save")), named(QStringLiteral("restore")), named(QStringLiteral("delete")),
        {keyword(QStringLiteral("list"), {QStringLiteral("list")})}};
    entry.help = QStringLiteral("save the simulated hardware (plugged devices, every value, flight mode) under a "
                                "name any client can restore; restore goes through the operations that own each "
                                "change, waits for their effects and names what it could not set");
    entry.label = QStringLiteral("Snapshot");
    entry.job = snapshot;
    table.add(entry);
}

} // namespace VantixControl

// reset: the simulated hardware as it was right after apiReady, restored as
// snapshot restore does.

#include "commandtable_p.h"
#include "engine_p.h"
#include "restorejob_p.h"
#include "session_p.h"

namespace VantixControl {

namespace {
TimedJob *reset(Invocation &invocation, Reply *refusal)
{
    Engine *engine = invocation.session.engine;
    const Snapshot *start = engine ? EnginePrivate::get(engine)->snapshots.start() : nullptr;
    if (!start || !invocation.session.system) {
        *refusal = Reply::failure(ErrorClass::Failed, QStringLiteral("the state after apiReady was not recorded"));
        return nullptr;
    }
    if (EnginePrivate::get(engine)->snapshots.restoring) {
        *refusal =
            Reply::failure(ErrorClass::Failed, QStringLiteral("another restore is running; try again when it ends"));
        return nullptr;
    }
    return new RestoreJob(invocation.session, engine, *start, QStringLiteral("the state after apiReady"));
}
} // namespace

void addReset(CommandTable &table)
{
    CommandEntry entry;
    entry.name = QStringLiteral("reset");
    entry.help = QStringLiteral("bring the simulated hardware back to its state right after apiReady, as snapshot "
                                "restore does");
    entry.label = QStringLiteral("Reset hardware");
    entry.job = reset;
    table.add(entry);
}

} // namespace VantixControl

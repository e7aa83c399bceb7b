#include "engine.h"

#include "engine_p.h"
#include "session.h"
#include "session_p.h"

#include <vantix/system.h>

namespace VantixControl {

namespace {
CommandEntry hostEntry(const Engine::HostCommand &command)
{
    CommandEntry entry;
    entry.name = command.name.toLower();
    entry.forms = {command.arguments};
    entry.help = command.help;
    entry.label = command.label;
    entry.readOnly = command.readOnly;
    entry.host = true;
    const auto run = command.run;
    entry.run = [run](Invocation &invocation) { return run(*invocation.session.q, invocation.args); };
    return entry;
}
} // namespace

Engine::Engine(TQ_SPAPI::System *system)
    : QObject(system)
    , d(new EnginePrivate)
{
    // reset brings the System back to this state; the engine is made as the System is initialised.
    d->snapshots.recordStartOf(system, this);
}

Engine::~Engine()
{
    delete d;
}

Engine *Engine::of(TQ_SPAPI::System *system)
{
    if (!system) {
        return nullptr;
    }
    // A direct child, so that it goes with the System; looked up among the few direct children only.
    if (auto *engine = system->findChild<Engine *>(QString(), Qt::FindDirectChildrenOnly)) {
        return engine;
    }
    return new Engine(system);
}

void Engine::addHostCommand(const HostCommand &command)
{
    d->table.add(hostEntry(command));
}

} // namespace VantixControl

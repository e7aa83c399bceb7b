#include "engine.h"

#include "engine_p.h"
#include "session.h"
#include "session_p.h"

#include <vantix/system.h>

namespace VantixControl {

namespace {
// Registered through Session::addHostCommand before Engine existed; each new engine takes them.
QList<Session::HostCommand> &earlyHostCommands()
{
    static QList<Session::HostCommand> commands;
    return commands;
}

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
    for (const Session::HostCommand &early : earlyHostCommands()) {
        // What such a command takes is its own to check, as it always was.
        CommandEntry entry = hostEntry({early.name, {}, early.help, QString(), false, early.run});
        entry.forms = {{repeated(QStringLiteral("args"), Argument::Text)}};
        d->table.add(entry);
    }
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

void Session::addHostCommand(const HostCommand &command)
{
    earlyHostCommands().append(command);
}

} // namespace VantixControl

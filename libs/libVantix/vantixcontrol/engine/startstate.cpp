// Each System's engine is made as the System is initialised, so that it
// records the state right after apiReady, which reset restores, whether or
// not any client has connected by then.

#include "engine.h"

#include "systemobserver_p.h"
#include "systemprivate_p.h"

using namespace TQ_SPAPI;

namespace VantixControl {

namespace {
class StartStateObserver : public SystemObserver
{
public:
    void systemInitialized(SystemPrivate *system) override { Engine::of(system->q); }
    void systemAboutToBeReleased(SystemPrivate *) override { }
};

void registerStartStateObserver()
{
    // Never destroyed: Systems may outlive every other static at exit.
    static auto *observer = new StartStateObserver;
    SystemObserver::add(observer);
}
} // namespace

Q_CONSTRUCTOR_FUNCTION(registerStartStateObserver)

} // namespace VantixControl

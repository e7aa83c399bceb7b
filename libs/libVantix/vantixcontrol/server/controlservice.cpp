// Every System serves its simulated hardware on a control socket from
// initialize() on, so any application can be driven from outside as
// vantix-sim is. The server attaches itself to each System's life here; the
// simulation does not know it.

#include "controlserver_p.h"

#include "systemobserver_p.h"
#include "systemprivate_p.h"

#include <QCoreApplication>
#include <QHash>
#include <QPointer>

using namespace TQ_SPAPI;

namespace VantixControl {

namespace {
class ControlService : public SystemObserver
{
public:
    void systemInitialized(SystemPrivate *system) override
    {
        // Outside the System's object tree: sessions search that tree, and must not meet the clients there.
        if (ControlServer *server = ControlServer::start(system->q, nullptr)) {
            m_servers.insert(system, server);
        }
    }

    void systemAboutToBeReleased(SystemPrivate *system) override
    {
        // Its clients go before the devices they watch.
        delete m_servers.take(system).data();
    }

private:
    QHash<SystemPrivate *, QPointer<ControlServer>> m_servers;
};

void registerControlService()
{
    // Never destroyed: Systems may outlive every other static at exit.
    static auto *service = new ControlService;
    SystemObserver::add(service);
}
} // namespace

Q_CONSTRUCTOR_FUNCTION(registerControlService)

} // namespace VantixControl

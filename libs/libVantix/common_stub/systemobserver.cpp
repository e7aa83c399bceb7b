#include "systemobserver_p.h"

#include <QVector>

namespace TQ_SPAPI {

namespace {
// Never destroyed: a System held by an application object in static storage
// goes after every other static at exit, and still tells the observers.
QVector<SystemObserver *> &observers()
{
    static auto *list = new QVector<SystemObserver *>;
    return *list;
}
} // namespace

SystemObserver::~SystemObserver()
{
    remove(this);
}

void SystemObserver::add(SystemObserver *observer)
{
    if (!observers().contains(observer)) {
        observers().append(observer);
    }
}

void SystemObserver::remove(SystemObserver *observer)
{
    observers().removeAll(observer);
}

void SystemObserver::notifyInitialized(SystemPrivate *system)
{
    // A copy: an observer may add or remove observers.
    const QVector<SystemObserver *> current = observers();
    for (SystemObserver *observer : current) {
        observer->systemInitialized(system);
    }
}

void SystemObserver::notifyAboutToBeReleased(SystemPrivate *system)
{
    const QVector<SystemObserver *> current = observers();
    for (SystemObserver *observer : current) {
        observer->systemAboutToBeReleased(system);
    }
}

} // namespace TQ_SPAPI

#ifndef VANTIX_SYSTEMOBSERVER_P_H
#define VANTIX_SYSTEMOBSERVER_P_H

#include <vantix/vantix_private_export.h>

namespace TQ_SPAPI {

class SystemPrivate;

/**
 * Told when a System has been initialised and when it is about to go.
 * Parts of the library that live exactly as long as a System (the control
 * server) attach themselves here, so that the simulation knows nothing of
 * them. Observers are called in the order they were added.
 */
class VANTIX_PRIVATE_EXPORT SystemObserver
{
public:
    virtual ~SystemObserver();

    /// @p system has created its devices; apiReady follows later.
    virtual void systemInitialized(SystemPrivate *system) = 0;
    /// @p system is being destroyed; its devices are all still there.
    virtual void systemAboutToBeReleased(SystemPrivate *system) = 0;

    static void add(SystemObserver *observer);
    static void remove(SystemObserver *observer);

    /// Called by SystemPrivate only.
    static void notifyInitialized(SystemPrivate *system);
    static void notifyAboutToBeReleased(SystemPrivate *system);
};

} // namespace TQ_SPAPI

#endif

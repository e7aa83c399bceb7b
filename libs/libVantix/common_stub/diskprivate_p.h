#ifndef VANTIX_DISKPRIVATE_P_H
#define VANTIX_DISKPRIVATE_P_H

#include <vantix/idisk.h>
#include <vantix/vantix_private_export.h>

#include "deviceprivate_p.h"

namespace TQ_SPAPI {

/**
 * A disk simulated by a directory of the host. Formatting empties and
 * recreates the directory; mounting only switches F_ACTIVE. With
 * "--diskfailures N" on the command line, mount and unmount attempts fail N
 * times in a row before one is carried out.
 *
 * Formatting deletes files on the developer's machine, so it only ever
 * touches a directory strictly inside the application's root folder, and
 * never the home directory or a parent of it.
 */
class VANTIX_PRIVATE_EXPORT DiskPrivate : public DevicePrivate
{
    Q_OBJECT

public:
    static constexpr uint Capacity = 0x20000000;

    DiskPrivate(IDisk *q, IDevice::DeviceId id, const QString &path);

    void initialize() override;
    virtual void format(uint size);
    virtual void mount();
    virtual void unmount();
    virtual uint size() const;
    virtual uint free() const;

    // Failed attempts since the last one carried out, mount and unmount together.
    int failureCount = 0;
    int maxFailures = 0;

private:
    void changeMount(bool mount);
    void failLater(IDevice::DeviceError e);
    /// The directory a format may delete, or empty with @p why set.
    QString formatTarget(const char **why) const;
};

} // namespace TQ_SPAPI

#endif

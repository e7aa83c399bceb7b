#ifndef VANTIX_IDISK_H
#define VANTIX_IDISK_H

#include <vantix/idevice.h>
#include <vantix/vantix_export.h>

namespace TQ_SPAPI {

/**
 * A storage area: the user-data disk, the system disk or a removable stick.
 * Results of format(), mount() and unmount() arrive later, as status changes
 * (F_FORMATTED, F_ACTIVE = mounted) or as error() signals.
 */
class VANTIX_EXPORT IDisk : public IDevice
{
    Q_OBJECT
    Q_PROPERTY(uint size READ size CONSTANT)
    Q_PROPERTY(uint free READ free CONSTANT)

public:
    /// @p path is the disk's directory.
    IDisk(DeviceId id, const QString &path);

    /// Empties the disk. @p size is accepted for the hardware's sake and not used.
    Q_INVOKABLE virtual void format(uint size);
    Q_INVOKABLE virtual void mount();
    Q_INVOKABLE virtual void unmount();
    /// Capacity in bytes.
    virtual uint size() const;
    /// Free space in bytes.
    virtual uint free() const;
};

} // namespace TQ_SPAPI

#endif

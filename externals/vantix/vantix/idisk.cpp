#include "idisk.h"

#include "diskprivate_p.h"

namespace TQ_SPAPI {

IDisk::IDisk(DeviceId id, const QString &path)
{
    setPrivate(new DiskPrivate(this, id, path));
}

void IDisk::format(uint size)
{
    d_func<DiskPrivate>()->format(size);
}

void IDisk::mount()
{
    d_func<DiskPrivate>()->mount();
}

void IDisk::unmount()
{
    d_func<DiskPrivate>()->unmount();
}

uint IDisk::size() const
{
    return d_func<DiskPrivate>()->size();
}

uint IDisk::free() const
{
    return d_func<DiskPrivate>()->free();
}

} // namespace TQ_SPAPI

#include "ibluetooth.h"

#include "bluetoothprivate_p.h"

namespace TQ_SPAPI {

IBluetooth::IBluetooth(DeviceId id)
{
    setPrivate(new BluetoothPrivate(this, id));
}

QString IBluetooth::address() const
{
    return d_func<BluetoothPrivate>()->address;
}

QString IBluetooth::nameAlias() const
{
    return d_func<BluetoothPrivate>()->nameAlias;
}

void IBluetooth::setNameAlias(const QString &nameAlias)
{
    d_func<BluetoothPrivate>()->onNameAliasChanged(nameAlias);
}

} // namespace TQ_SPAPI

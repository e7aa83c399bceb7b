#include "bluetoothprivate_p.h"

namespace TQ_SPAPI {

BluetoothPrivate::BluetoothPrivate(IBluetooth *q, IDevice::DeviceId id)
    : DevicePrivate(q, id, IDevice::DEVICE_BUS | IDevice::DEVICE_FIGHT_MODE)
{
}

void BluetoothPrivate::onNameAliasChanged(QString newNameAlias)
{
    nameAlias = newNameAlias;
    Q_EMIT q_func()->nameAliasChanged(nameAlias);
}

void BluetoothPrivate::onAddressChanged(QString newAddress)
{
    address = newAddress;
    Q_EMIT q_func()->addressChanged(address);
}

} // namespace TQ_SPAPI

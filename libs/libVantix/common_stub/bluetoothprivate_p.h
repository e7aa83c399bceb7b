#ifndef VANTIX_BLUETOOTHPRIVATE_P_H
#define VANTIX_BLUETOOTHPRIVATE_P_H

#include <vantix/ibluetooth.h>
#include <vantix/vantix_private_export.h>

#include "deviceprivate_p.h"

namespace TQ_SPAPI {

class VANTIX_PRIVATE_EXPORT BluetoothPrivate : public DevicePrivate
{
    Q_OBJECT

public:
    BluetoothPrivate(IBluetooth *q, IDevice::DeviceId id);

    QString address;
    QString nameAlias;

public Q_SLOTS:
    // Reports of the adapter; each one is passed on, repeated values included.
    void onNameAliasChanged(QString newNameAlias);
    void onAddressChanged(QString newAddress);

private:
    IBluetooth *q_func() const { return static_cast<IBluetooth *>(q); }
};

} // namespace TQ_SPAPI

#endif

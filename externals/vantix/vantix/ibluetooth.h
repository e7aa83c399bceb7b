#ifndef VANTIX_IBLUETOOTH_H
#define VANTIX_IBLUETOOTH_H

#include <vantix/idevice.h>
#include <vantix/vantix_export.h>

namespace TQ_SPAPI {

/**
 * The Bluetooth adapter. It is a flight-mode device: it is switched on and
 * off by System::setFlightMode(), never on its own.
 */
class VANTIX_EXPORT IBluetooth : public IDevice
{
    Q_OBJECT
    Q_PROPERTY(QString address READ address NOTIFY addressChanged)
    Q_PROPERTY(QString nameAlias READ nameAlias WRITE setNameAlias NOTIFY nameAliasChanged)

public:
    explicit IBluetooth(DeviceId id);

    virtual QString address() const;
    virtual QString nameAlias() const;
    /// Always announced, also when the name repeats.
    virtual void setNameAlias(const QString &nameAlias);

Q_SIGNALS:
    void addressChanged(QString address);
    void nameAliasChanged(QString nameAlias);
};

} // namespace TQ_SPAPI

#endif

#ifndef VANTIX_DEVICEPRIVATE_P_H
#define VANTIX_DEVICEPRIVATE_P_H

#include <vantix/idevice.h>
#include <vantix/vantix_private_export.h>

#include <QObject>
#include <QString>
#include <QVector>

namespace TQ_SPAPI {

/**
 * State and behaviour of an IDevice. Every device kind derives its own
 * private from this one; all state changes go through setStatus(), setPath(),
 * setError(), setAbility() and clearAbility(), which emit on the public object.
 */
class VANTIX_PRIVATE_EXPORT DevicePrivate : public QObject
{
    Q_OBJECT

public:
    DevicePrivate(IDevice *q, IDevice::DeviceId id, IDevice::DeviceType type, const QString &path = QString());
    ~DevicePrivate() override;

    /// The private object of @p device, for code that acts on devices from outside.
    static DevicePrivate *get(IDevice *device) { return device ? device->d : nullptr; }
    static const DevicePrivate *get(const IDevice *device) { return device ? device->d : nullptr; }

    virtual void setAbility(IDevice::Flags flags);
    virtual void clearAbility(IDevice::Flags flags);
    virtual void initialize();
    virtual IDevice::DeviceError error() const;
    virtual void setError(IDevice::DeviceError e);
    virtual void reset();

    void setStatus(IDevice::DeviceFlags newStatus) { onStatusChanged(newStatus); }
    /// Whether a switched capability has yet to show in the status.
    bool hasPendingAbilities() const { return !pendingAbilities.isEmpty(); }
    void setPath(const QString &newPath) { onPathChanged(newPath); }

    // Readers of the small value files a hardware back-end keeps under path.
    QString readString(const QString &name) const;
    qreal tryToReadqrealFromMilli(const QString &name) const;
    qreal readqrealFromMilli(const QString &name) const;
    qreal tryToReadqrealFromMicro(const QString &name) const;
    qreal readqrealFromMicro(const QString &name) const;

public Q_SLOTS:
    void onPathChanged(QString newPath);
    void onStatusChanged(TQ_SPAPI::IDevice::DeviceFlags newStatus);

public:
    IDevice *q;
    const IDevice::DeviceId id;
    const IDevice::DeviceType type;
    IDevice::DeviceFlags status;
    QString path;
    // Named apart from error(), which returns it.
    IDevice::DeviceError lastError = IDevice::E_NO_ERROR;
    IDevice::DeviceFlags abilities;

protected:
    void timerEvent(QTimerEvent *event) override;

private:
    // The readers that never fail: NaN becomes 0 after a warning.
    qreal valueOrZero(qreal value, const QString &name) const;

    /// Sets (@p set) or clears @p flags in the status once the hardware's delay has passed.
    void applyAbilityLater(IDevice::Flags flags, bool set);

    struct PendingAbility
    {
        int timerId;
        IDevice::Flags flags;
        bool set;
    };
    QVector<PendingAbility> pendingAbilities;

    Q_DISABLE_COPY(DevicePrivate)
};

} // namespace TQ_SPAPI

#endif

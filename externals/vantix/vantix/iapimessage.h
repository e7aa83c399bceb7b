#ifndef VANTIX_IAPIMESSAGE_H
#define VANTIX_IAPIMESSAGE_H

#include <vantix/vantix_export.h>

#include <QObject>
#include <QString>
#include <QVariantMap>

namespace TQ_SPAPI {

class ApiMessagePrivate;

/**
 * The channel on which the platform reports device errors and telemetry.
 * Applications get the one instance from System::apiMessage(). The desktop
 * build never emits on it, so applications must cope with silence.
 */
class VANTIX_EXPORT IApiMessage : public QObject
{
    Q_OBJECT

public:
    /// The level argument of telemetryMessage().
    enum SeverityLevel {
        Verbose = 0,
        Information = 1,
        Warning = 2,
        Critical = 3,
        Fatal = 4,
    };
    Q_ENUM(SeverityLevel)

    explicit IApiMessage(QObject *parent = nullptr);
    ~IApiMessage() override;

Q_SIGNALS:
    /// @p deviceError is an IDevice::DeviceError value.
    void deviceError(uint deviceError);
    void telemetryEvent(QString eventName, QVariantMap properties, QVariantMap tags);
    /// Note the order: level first, message last (System's signal of this name differs).
    void telemetryMessage(uint level, QVariantMap properties, QString errorMsg);

public Q_SLOTS:
    /// Asks for the system log to be checked; nothing to check on the desktop.
    void checkSystemLog();

protected:
    /// For platform implementations that bring their own private; it is adopted and deleted with this object.
    explicit IApiMessage(ApiMessagePrivate &adopted);

    ApiMessagePrivate *d;

private:
    Q_DISABLE_COPY(IApiMessage)
};

} // namespace TQ_SPAPI

#endif

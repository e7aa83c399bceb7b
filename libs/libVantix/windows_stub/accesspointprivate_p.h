#ifndef VANTIX_ACCESSPOINTPRIVATE_P_H
#define VANTIX_ACCESSPOINTPRIVATE_P_H

#include <vantix/iaccesspoint.h>
#include <vantix/vantix_private_export.h>

#include <QObject>
#include <QString>

namespace TQ_SPAPI {

/// The values of one access point; the Wi-Fi device that lists it writes them.
class VANTIX_PRIVATE_EXPORT AccessPointPrivate : public QObject
{
    Q_OBJECT

public:
    explicit AccessPointPrivate(IAccessPoint *owner);
    ~AccessPointPrivate() override;

    static AccessPointPrivate *get(IAccessPoint *accessPoint) { return accessPoint ? accessPoint->d : nullptr; }

    IAccessPoint *owner;
    QString ssid;
    int channel = 0;
    int frequency = 0;
    int signalStrength = 0;
    QString mac;
    bool secure = false;
    IAccessPoint::SecurityFlags securityFlags;
    IAccessPoint::ModeFlags modeFlag;
    qlonglong lastSeen = 0;

Q_SIGNALS:
    // For a back-end that tracks a real scan; the simulation changes values silently.
    void ssidChanged(QString newValue);
    void channelChanged(int newValue);
    void signalStrengthChanged(int newValue);
    void macChanged(QString newValue);
    void secureChanged(bool newValue);
    void securityFlagsChanged(TQ_SPAPI::IAccessPoint::SecurityFlags newValue);
    void lastSeenChanged(qlonglong newValue);

private:
    Q_DISABLE_COPY(AccessPointPrivate)
};

} // namespace TQ_SPAPI

#endif

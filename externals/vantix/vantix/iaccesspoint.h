#ifndef VANTIX_IACCESSPOINT_H
#define VANTIX_IACCESSPOINT_H

#include <vantix/listmodel.h>
#include <vantix/vantix_export.h>

#include <QMetaType>
#include <QObject>
#include <QString>

namespace TQ_SPAPI {

class AccessPointPrivate;

/// A Wi-Fi network in range, as listed by IWifi::accessPoints().
class VANTIX_EXPORT IAccessPoint : public QObject
{
    Q_OBJECT
    Q_PROPERTY(QString ssid READ ssid NOTIFY ssidChanged)
    Q_PROPERTY(int channel READ channel NOTIFY channelChanged)
    Q_PROPERTY(int frequency READ frequency NOTIFY frequencyChanged)
    Q_PROPERTY(int signalStrength READ signalStrength NOTIFY signalStrengthChanged)
    Q_PROPERTY(QString mac READ mac NOTIFY macChanged)
    Q_PROPERTY(bool secure READ secure NOTIFY secureChanged)
    Q_PROPERTY(SecurityFlags securityFlags READ securityFlags NOTIFY securityFlagsChanged)
    Q_PROPERTY(qlonglong lastSeen READ lastSeen NOTIFY lastSeenChanged)

public:
    enum Security {
        SEC_NONE = 0,
        SEC_WPA_PSK = 1,
        SEC_WPA_ENTERPRISE = 2,
        SEC_ALL = -1,
    };
    Q_DECLARE_FLAGS(SecurityFlags, Security)
    Q_FLAG(SecurityFlags)

    enum Mode {
        MODE_INFRASTRUCTURE = 0,
        MODE_AD_HOC = 1,
    };
    Q_DECLARE_FLAGS(ModeFlags, Mode)
    Q_FLAG(ModeFlags)

    explicit IAccessPoint(QObject *parent);
    ~IAccessPoint() override;

    virtual QString ssid() const;
    virtual int channel() const;
    /// In MHz.
    virtual int frequency() const;
    /// In percent.
    virtual int signalStrength() const;
    virtual QString mac() const;
    virtual bool secure() const;
    virtual SecurityFlags securityFlags() const;
    virtual ModeFlags modeFlag() const;
    virtual qlonglong lastSeen() const;

Q_SIGNALS:
    void ssidChanged(QString newValue);
    void channelChanged(int newValue);
    void frequencyChanged(int newValue);
    void signalStrengthChanged(int newValue);
    void macChanged(QString newValue);
    void secureChanged(bool newValue);
    void securityFlagsChanged(SecurityFlags newValue);
    void modeFlagChanged(ModeFlags newValue);
    void lastSeenChanged(qlonglong newValue);

private:
    friend class AccessPointPrivate;
    AccessPointPrivate *d;
    Q_DISABLE_COPY(IAccessPoint)
};

/// The access points of a Wi-Fi device; rows change through the model's signals.
using ConstAccessPointListPtr = const ListModel<IAccessPoint *> *;

} // namespace TQ_SPAPI

Q_DECLARE_OPERATORS_FOR_FLAGS(TQ_SPAPI::IAccessPoint::SecurityFlags)
Q_DECLARE_OPERATORS_FOR_FLAGS(TQ_SPAPI::IAccessPoint::ModeFlags)
Q_DECLARE_METATYPE(TQ_SPAPI::ConstAccessPointListPtr)

#endif

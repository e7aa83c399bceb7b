#ifndef VANTIX_IWIFIP2PPEER_H
#define VANTIX_IWIFIP2PPEER_H

#include <vantix/listmodel.h>
#include <vantix/vantix_export.h>
#include <vantix/wifip2pservice.h>

#include <QMetaType>
#include <QObject>
#include <QSharedPointer>
#include <QString>

namespace TQ_SPAPI {

class WifiP2PPeerPrivate;

/**
 * A Wi-Fi Direct peer as the P2P device sees it. Peers come only from
 * IWifiP2P (its peer list and groupCreated); requests made on a peer go to
 * the IWifiP2P that is its QObject parent, and do nothing without one.
 */
class VANTIX_EXPORT IWifiP2PPeer : public QObject
{
    Q_OBJECT
    Q_PROPERTY(QString bssid READ bssid CONSTANT)
    Q_PROPERTY(int channel READ channel NOTIFY channelChanged)
    Q_PROPERTY(int signalStrength READ signalStrength NOTIFY signalStrengthChanged)
    Q_PROPERTY(TQ_SPAPI::ConstWifiP2PServiceListPtr serviceList READ serviceList NOTIFY serviceListChanged)
    Q_PROPERTY(bool isGroupOwner READ isGroupOwner NOTIFY isGroupOwnerChanged)
    Q_PROPERTY(peerState state READ state NOTIFY stateChanged)
    Q_PROPERTY(QString ip READ ip NOTIFY ipChanged)

public:
    // Fixed underlying type: a daemon may report states this list does not know.
    enum peerState : int {
        PS_UNKNOWN = 0,
        PS_GROUP_OWNER = 1,
        PS_CONNECTED = 2,
        PS_REQUESTING = 3,
        PS_REFUSED = 4,
        PS_ERROR = 5,
        PS_DISCONNECTED = 6,
    };
    Q_ENUM(peerState)

    explicit IWifiP2PPeer(QObject *parent);
    ~IWifiP2PPeer() override;

    virtual QString bssid() const;
    virtual int channel() const;
    /// In percent.
    virtual int signalStrength() const;
    virtual ConstWifiP2PServiceListPtr serviceList();
    virtual bool isGroupOwner() const;
    virtual peerState state() const;
    virtual QString ip() const;

    /// Hands the peer the services to advertise to it.
    virtual void setServiceList(const TQ_SPAPI::WifiP2PServiceList &services);
    virtual void updateService(
        const QString &serviceName, const QString &serviceType, const QString &key, const QString &value);

public Q_SLOTS:
    virtual void peerConnect(const QString &pin);
    virtual void peerDisconnect();

Q_SIGNALS:
    void serviceListChanged();
    void channelChanged(int newValue);
    void signalStrengthChanged(int newValue);
    void isGroupOwnerChanged(bool groupOwner);
    void stateChanged(TQ_SPAPI::IWifiP2PPeer::peerState newState);
    void ipChanged(QString ip);

private:
    friend class WifiP2PPeerPrivate;
    WifiP2PPeerPrivate *d;
    Q_DISABLE_COPY(IWifiP2PPeer)
};

/// Shares a peer; it also tracks the QObject, so QPointer and weak pointers work.
using IWifiP2PPeerPtr = QSharedPointer<IWifiP2PPeer>;

/// The discovered peers of a P2P device, in discovery order.
using ConstWifiP2PPeerListPtr = const ListModel<IWifiP2PPeerPtr> *;

} // namespace TQ_SPAPI

Q_DECLARE_METATYPE(TQ_SPAPI::ConstWifiP2PPeerListPtr)

#endif

#ifndef VANTIX_DBUSWIFIP2PSERVICE_P_H
#define VANTIX_DBUSWIFIP2PSERVICE_P_H

#include <vantix/vantix_private_export.h>
#include <vantix/wifip2pservice.h>

#include <QDebug>
#include <QHash>
#include <QList>
#include <QMetaType>
#include <QString>

/**
 * A service record as the P2P daemon's events carry it. It lives outside the
 * namespace so that its meta-type names are the bare ones the daemon's
 * signatures use.
 */
struct DBusWifiP2PService
{
    QString serviceName;
    QString serviceType;
    int servicePort = 0;
    QHash<QString, QString> idValuePair;
};

using DBusWifiP2PServiceList = QList<DBusWifiP2PService>;

Q_DECLARE_METATYPE(DBusWifiP2PService)

/// One record as the daemon traces show it; lists print as Qt prints any QList.
VANTIX_PRIVATE_EXPORT QDebug operator<<(QDebug debug, const DBusWifiP2PService &service);

namespace TQ_SPAPI {

inline WifiP2PService toWifiP2PService(const DBusWifiP2PService &s)
{
    return WifiP2PService{s.serviceName, s.serviceType, s.servicePort, s.idValuePair};
}

inline DBusWifiP2PService toDBusWifiP2PService(const WifiP2PService &s)
{
    return DBusWifiP2PService{s.serviceName, s.serviceType, s.servicePort, s.idValuePair};
}

} // namespace TQ_SPAPI

#endif

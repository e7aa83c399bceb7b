#ifndef VANTIX_WIFIP2PSERVICE_H
#define VANTIX_WIFIP2PSERVICE_H

#include <vantix/listmodel.h>
#include <vantix/vantix_export.h>

#include <QHash>
#include <QList>
#include <QMetaType>
#include <QString>

namespace TQ_SPAPI {

/// A network service that a Wi-Fi Direct peer advertises (DNS-SD style).
struct WifiP2PService
{
    /// Instance name of the service.
    QString serviceName;
    /// Service type, such as "_bravent._tcp.local.".
    QString serviceType;
    int servicePort = 0;
    /// The service's key/value pairs.
    QHash<QString, QString> idValuePair;

    friend bool operator==(const WifiP2PService &a, const WifiP2PService &b)
    {
        return a.serviceName == b.serviceName && a.serviceType == b.serviceType && a.servicePort == b.servicePort &&
            a.idValuePair == b.idValuePair;
    }
    friend bool operator!=(const WifiP2PService &a, const WifiP2PService &b) { return !(a == b); }
};

using WifiP2PServiceList = QList<WifiP2PService>;

/// The services of a peer; a replaced list shows as a model reset.
using ConstWifiP2PServiceListPtr = const ListModel<WifiP2PService> *;

} // namespace TQ_SPAPI

Q_DECLARE_METATYPE(TQ_SPAPI::WifiP2PService)
Q_DECLARE_METATYPE(TQ_SPAPI::ConstWifiP2PServiceListPtr)

#endif

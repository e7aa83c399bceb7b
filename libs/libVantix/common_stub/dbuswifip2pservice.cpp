#include "dbuswifip2pservice_p.h"

#include <QDebugStateSaver>

namespace {
void registerDBusWifiP2PServiceMetaTypes()
{
    // The names in the signatures of the daemon's entry points.
    qRegisterMetaType<DBusWifiP2PService>("DBusWifiP2PService");
    qRegisterMetaType<DBusWifiP2PServiceList>("DBusWifiP2PServiceList");
}
} // namespace
Q_CONSTRUCTOR_FUNCTION(registerDBusWifiP2PServiceMetaTypes)

QDebug operator<<(QDebug debug, const DBusWifiP2PService &service)
{
    // Spaced words even inside a list, which prints its entries without spacing.
    const QDebugStateSaver saver(debug);
    debug.setAutoInsertSpaces(true);
    debug << "serviceName=" << service.serviceName << "serviceType=" << service.serviceType << "servicePort"
          << service.servicePort << "idValuePair=" << service.idValuePair;
    return debug;
}

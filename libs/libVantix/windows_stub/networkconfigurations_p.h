#ifndef VANTIX_NETWORKCONFIGURATIONS_P_H
#define VANTIX_NETWORKCONFIGURATIONS_P_H

#include <vantix/vantix_private_export.h>

#include <QList>
#include <QObject>
#include <QString>

namespace TQ_SPAPI {

/**
 * The host's network configurations, as far as the Wi-Fi simulation needs
 * them. The desktop build reads them from Qt's configuration manager; a test
 * installs its own list with setInstance(), since a build machine rarely has
 * wireless networks to offer.
 */
class VANTIX_PRIVATE_EXPORT NetworkConfigurations : public QObject
{
    Q_OBJECT

public:
    struct Configuration
    {
        QString name;
        bool wlan = false; // bearer type is WLAN
        bool defined = false; // the Defined state bit
        bool active = false; // every Active state bit
    };

    explicit NetworkConfigurations(QObject *parent = nullptr);
    ~NetworkConfigurations() override;

    /// Every configuration the host knows, unfiltered, in the host's order.
    virtual QList<Configuration> allConfigurations() const = 0;
    /// Asks the host to refresh; updateCompleted() follows when it is done.
    virtual void updateConfigurations() = 0;

    /**
     * The source network devices take at construction: the one given to
     * setInstance(); else none at all when VANTIX_HOST_WIFI is "off" (the
     * story runners set it); else the host's configuration manager.
     */
    static NetworkConfigurations *instance();
    /// Replaces the host's configurations for devices created from now on; null restores them.
    static void setInstance(NetworkConfigurations *configurations);

Q_SIGNALS:
    void configurationChanged();
    void configurationRemoved();
    void updateCompleted();
};

} // namespace TQ_SPAPI

#endif

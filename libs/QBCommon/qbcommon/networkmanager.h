#ifndef QBCOMMON_NETWORKMANAGER_H
#define QBCOMMON_NETWORKMANAGER_H

#include <qbcommon/qbcommon_export.h>

#include <QObject>

class QNetworkConfigurationManager;

/**
 * The application's view of the network: the host's network configurations
 * and whether the application may consider itself online.
 *
 * Setting the application object's dynamic property "TestOffline" to true
 * makes the next connectivity check report offline, whatever the host says;
 * this lets a developer test the offline paths of an application.
 */
class QBCOMMON_EXPORT NetworkManager : public QObject
{
    Q_OBJECT
    Q_PROPERTY(bool online READ isOnline NOTIFY connectivityChanged)

public:
    /// The one instance, a child of the application object.
    static NetworkManager *instance();
    ~NetworkManager() override;

    /// The configuration manager, created on first use.
    QNetworkConfigurationManager *configurationManager();

    bool isOnline() const;

public Q_SLOTS:
    /**
     * Decides again whether the application is online and emits
     * connectivityChanged() when the answer differs from the last one (the
     * first check always emits).
     */
    void startCheckConnectivity();

Q_SIGNALS:
    void connectivityChanged(bool online);

private:
    explicit NetworkManager(QObject *parent);
    bool hostIsOnline();

    QNetworkConfigurationManager *m_configurationManager = nullptr;
    bool m_online = false;
    bool m_checked = false;
};

#endif

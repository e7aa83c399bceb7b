#include "networkmanager.h"

#include <QCoreApplication>
#include <QNetworkInterface>
#include <QPointer>
#include <QVariant>

// The bearer API is deprecated in Qt 5.15 but is still the only source of
// the host's wireless configurations.
QT_WARNING_PUSH
QT_WARNING_DISABLE_DEPRECATED
#include <QNetworkConfigurationManager>

NetworkManager::NetworkManager(QObject *parent)
    : QObject(parent)
{
}

NetworkManager::~NetworkManager() = default;

NetworkManager *NetworkManager::instance()
{
    static QPointer<NetworkManager> manager;
    if (!manager) {
        manager = new NetworkManager(QCoreApplication::instance());
    }
    return manager;
}

QNetworkConfigurationManager *NetworkManager::configurationManager()
{
    if (!m_configurationManager) {
        m_configurationManager = new QNetworkConfigurationManager(this);
    }
    return m_configurationManager;
}

bool NetworkManager::isOnline() const
{
    return m_online;
}

bool NetworkManager::hostIsOnline()
{
    const auto interfaces = QNetworkInterface::allInterfaces();
    for (const QNetworkInterface &iface : interfaces) {
        const auto flags = iface.flags();
        if (flags.testFlag(QNetworkInterface::IsUp) && flags.testFlag(QNetworkInterface::IsRunning)
            && !flags.testFlag(QNetworkInterface::IsLoopBack)) {
            return true;
        }
    }
    return !configurationManager()->allConfigurations(QNetworkConfiguration::Active).isEmpty();
}

void NetworkManager::startCheckConnectivity()
{
    QCoreApplication *app = QCoreApplication::instance();
    const bool testOffline = app && app->property("TestOffline").toBool();
    const bool online = !testOffline && hostIsOnline();
    if (m_checked && online == m_online) {
        return;
    }
    m_checked = true;
    m_online = online;
    Q_EMIT connectivityChanged(online);
}

QT_WARNING_POP

#include "networkconfigurations_p.h"

#include <qbcommon/networkmanager.h>

#include <QCoreApplication>
#include <QPointer>

// The bearer API is deprecated in Qt 5.15 but is still the only way to learn
// the host's wireless configurations; the warning is silenced for it alone.
QT_WARNING_PUSH
QT_WARNING_DISABLE_DEPRECATED
#include <QNetworkConfiguration>
#include <QNetworkConfigurationManager>

namespace TQ_SPAPI {

namespace {
QPointer<NetworkConfigurations> s_installed;

class HostNetworkConfigurations : public NetworkConfigurations
{
public:
    explicit HostNetworkConfigurations(QNetworkConfigurationManager *manager)
        : NetworkConfigurations(manager)
        , configurationManager(manager)
    {
        connect(manager, &QNetworkConfigurationManager::configurationChanged, this,
            &NetworkConfigurations::configurationChanged);
        connect(manager, &QNetworkConfigurationManager::configurationRemoved, this,
            &NetworkConfigurations::configurationRemoved);
        connect(manager, &QNetworkConfigurationManager::updateCompleted, this, &NetworkConfigurations::updateCompleted);
    }

    QList<Configuration> allConfigurations() const override
    {
        QList<Configuration> result;
        const auto configurations = configurationManager->allConfigurations();
        for (const QNetworkConfiguration &c : configurations) {
            const QNetworkConfiguration::StateFlags state = c.state();
            Configuration entry;
            entry.name = c.name();
            entry.wlan = c.bearerType() == QNetworkConfiguration::BearerWLAN;
            entry.defined = state.testFlag(QNetworkConfiguration::Defined);
            entry.active = (state & QNetworkConfiguration::Active) == QNetworkConfiguration::Active;
            result.append(entry);
        }
        return result;
    }

    void updateConfigurations() override { configurationManager->updateConfigurations(); }

private:
    QNetworkConfigurationManager *configurationManager;
};

// The host is not asked at all: for runs whose outcome must not depend on it.
class NoNetworkConfigurations : public NetworkConfigurations
{
public:
    using NetworkConfigurations::NetworkConfigurations;

    QList<Configuration> allConfigurations() const override { return {}; }
    // Nothing to wait for, so nothing arrives later to overwrite what a run set.
    void updateConfigurations() override { Q_EMIT updateCompleted(); }
};
} // namespace

NetworkConfigurations::NetworkConfigurations(QObject *parent)
    : QObject(parent)
{
}

NetworkConfigurations::~NetworkConfigurations() = default;

NetworkConfigurations *NetworkConfigurations::instance()
{
    if (s_installed) {
        return s_installed;
    }
    if (qEnvironmentVariable("VANTIX_HOST_WIFI") == QLatin1String("off")) {
        static QPointer<NetworkConfigurations> none;
        if (!none) {
            none = new NoNetworkConfigurations(QCoreApplication::instance());
        }
        return none;
    }
    // One per configuration manager; it goes away with the manager.
    static QPointer<NetworkConfigurations> host;
    if (!host) {
        host = new HostNetworkConfigurations(NetworkManager::instance()->configurationManager());
    }
    return host;
}

void NetworkConfigurations::setInstance(NetworkConfigurations *configurations)
{
    s_installed = configurations;
}

} // namespace TQ_SPAPI

QT_WARNING_POP

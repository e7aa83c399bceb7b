#ifndef VANTIXPANEL_INSTANCEWATCHER_H
#define VANTIXPANEL_INSTANCEWATCHER_H

#include <vantixcontrol/client/client.h>

#include <QFileSystemWatcher>
#include <QObject>
#include <QTimer>

/**
 * Watches the folder where applications open their control sockets and
 * lists the running applications whenever a socket comes or goes, so that a
 * new instance is noticed at once rather than polled for.
 */
class InstanceWatcher : public QObject
{
    Q_OBJECT

public:
    explicit InstanceWatcher(QObject *parent = nullptr);

    /// Lists the running applications now (the answer comes as applicationsChanged()).
    void scan();

Q_SIGNALS:
    void applicationsChanged(const QList<VantixControl::Client::Application> &applications);

private:
    void watch();

    QFileSystemWatcher m_watcher;
    QTimer m_settle;
    QTimer m_retry;
    bool m_scanning = false;
    bool m_again = false;
};

#endif

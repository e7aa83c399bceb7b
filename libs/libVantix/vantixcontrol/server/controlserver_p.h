#ifndef VANTIXCONTROL_CONTROLSERVER_P_H
#define VANTIXCONTROL_CONTROLSERVER_P_H

#include "socketdirectory.h"

#include <vantix/vantix_private_export.h>

#include <QObject>
#include <QPointer>

namespace TQ_SPAPI {
class System;
}

namespace VantixControl {

class ChannelPoller;
class SocketListener;

/**
 * Lets other processes of the same user drive this application's simulated
 * hardware: a local socket that speaks the control protocol (JSON Lines),
 * one console session per client. It lives as long as the System that
 * started it and changes nothing in it until a client asks. It and its
 * clients live outside the System's object tree, which sessions search.
 *
 * VANTIX_CONTROL=off keeps it off; VANTIX_CONTROL=<absolute path> puts the
 * socket there instead of the per-user folder. VANTIX_CONTROL_MAX_CLIENTS
 * sets how many clients it serves at a time (DefaultMaxClients); one more is
 * told so and closed.
 *
 * The socket is there from initialize() on, but a client is greeted only once
 * the System has sent apiReady: an application sets itself up in its apiReady
 * slots, and a change made before then would go unnoticed by it.
 */
class VANTIX_PRIVATE_EXPORT ControlServer : public QObject
{
    Q_OBJECT

public:
    static constexpr int DefaultMaxClients = 256;

    /// The server for @p system, or null when it is switched off or cannot listen (then with a warning).
    static ControlServer *start(TQ_SPAPI::System *system, QObject *parent = nullptr);
    ~ControlServer() override;

    QString socketPath() const;
    int clientCount() const { return m_clients; }
    int maxClients() const { return m_maxClients; }

private:
    explicit ControlServer(TQ_SPAPI::System *system, QObject *parent);
    bool listen(const QString &folder, SocketDirectory::Folder::Mode mode, const QString &name);
    void accept();
    /// Tells the connection on @p descriptor why it is not served, and closes it.
    static void turnAway(int descriptor, const QString &message);

    QPointer<TQ_SPAPI::System> m_system;
    SocketDirectory::Folder m_folder;
    SocketListener *m_listener;
    ChannelPoller *m_poller = nullptr;
    int m_maxClients = DefaultMaxClients;
    int m_clients = 0;
    bool m_ready = false;
};

} // namespace VantixControl

#endif

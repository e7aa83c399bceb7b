#ifndef VANTIXCONTROL_CONTROLSERVER_P_H
#define VANTIXCONTROL_CONTROLSERVER_P_H

#include <vantix/vantix_private_export.h>

#include <QObject>
#include <QPointer>

class QLocalServer;

namespace TQ_SPAPI {
class System;
}

namespace VantixControl {

/**
 * Lets other processes of the same user drive this application's simulated
 * hardware: a local socket that speaks the control protocol (JSON Lines),
 * one console session per client. It lives as long as the System that
 * started it and changes nothing in it until a client asks.
 *
 * VANTIX_CONTROL=off keeps it off; VANTIX_CONTROL=<absolute path> puts the
 * socket there instead of the per-user folder.
 *
 * The socket is there from initialize() on, but a client is greeted only once
 * the System has sent apiReady: an application sets itself up in its apiReady
 * slots, and a change made before then would go unnoticed by it.
 */
class VANTIX_PRIVATE_EXPORT ControlServer : public QObject
{
    Q_OBJECT

public:
    /// The server for @p system, or null when it is switched off or cannot listen (then with a warning).
    static ControlServer *start(TQ_SPAPI::System *system, QObject *parent);
    ~ControlServer() override;

    QString socketPath() const;
    int clientCount() const;

private:
    ControlServer(TQ_SPAPI::System *system, QObject *parent);
    bool listen(const QString &path);
    void accept();

    QPointer<TQ_SPAPI::System> m_system;
    QLocalServer *m_server;
    bool m_ready = false;
};

} // namespace VantixControl

#endif

#ifndef VANTIXCONTROL_SOCKETLISTENER_P_H
#define VANTIXCONTROL_SOCKETLISTENER_P_H

#include "socketdirectory.h"

#include <vantix/vantix_private_export.h>

#include <QObject>

#include <sys/types.h>

class QSocketNotifier;

namespace VantixControl {

/**
 * The listening socket of the control server, bound through its folder's
 * descriptor. Clients never take the application's last 16 descriptors: a
 * connection that would is told why and closed. When the process has no
 * descriptor left at all, through its own files, it keeps listening: the
 * newest connection is taken through a descriptor held in reserve, told
 * why, and closed. Either way a warning is logged once, and connections are
 * taken again once descriptors are free. The socket file is removed when
 * the listener goes, and only then, and only if it is still the one it made.
 */
class VANTIX_PRIVATE_EXPORT SocketListener : public QObject
{
    Q_OBJECT

public:
    explicit SocketListener(QObject *parent = nullptr);
    ~SocketListener() override;

    /// Listens at @p name in @p folder (opened by the caller, and kept); false with the reason.
    bool listen(SocketDirectory::Folder *folder, const QString &name, QString *error);
    QString path() const;
    /// Whether pending() is emitted; connections wait in the socket's backlog meanwhile.
    void setAccepting(bool accepting);
    /// The next connection (non-blocking, close-on-exec), or -1 when none waits.
    int next();
    /// The line a connection turned away for want of descriptors gets before it is closed.
    void setRefusal(const QByteArray &line) { m_refusal = line; }

Q_SIGNALS:
    /// Connections wait to be taken with next().
    void pending();

private:
    void warnOnce();
    /// Tells the connection on @p descriptor why it is not served, and closes it.
    void turnAway(int descriptor);
    void turnAwayNewest();
    void pause();

    SocketDirectory::Folder *m_folder = nullptr;
    QString m_name;
    int m_fd = -1;
    ino_t m_inode = 0;
    int m_reserve = -1;
    QSocketNotifier *m_notifier = nullptr;
    QByteArray m_refusal;
    bool m_accepting = false;
    bool m_starved = false;
    // Set while no descriptor is left even for the reserve; a timer looks again.
    bool m_paused = false;
};

} // namespace VantixControl

#endif

#ifndef VANTIXCONTROL_SOCKETLISTENER_P_H
#define VANTIXCONTROL_SOCKETLISTENER_P_H

#include "socketdirectory.h"

#include <vantix/vantix_private_export.h>

#include <QObject>
#include <QTimer>

#include <sys/types.h>

class QSocketNotifier;

namespace VantixControl {

/**
 * The listening socket of the control server, bound through its folder's
 * descriptor. When the process has no file descriptor left it keeps
 * listening: the newest connection is taken through a descriptor held in
 * reserve, told why, and closed; a warning is logged once; connections are
 * taken again once a descriptor is free. The socket file is removed when
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
    void turnAwayNewest();
    void pause();

    SocketDirectory::Folder *m_folder = nullptr;
    QString m_name;
    int m_fd = -1;
    ino_t m_inode = 0;
    int m_reserve = -1;
    QSocketNotifier *m_notifier = nullptr;
    QTimer m_retry;
    QByteArray m_refusal;
    bool m_accepting = false;
    bool m_starved = false;
};

} // namespace VantixControl

#endif

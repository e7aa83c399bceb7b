#include "socketlistener_p.h"

#include "logging_p.h"

#include <QCoreApplication>
#include <QFile>
#include <QSocketNotifier>
#include <QTimer>

#include <cerrno>
#include <climits>
#include <cstring>
#include <fcntl.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

namespace VantixControl {

namespace {
// How soon to look again for a free descriptor when none was left even for the reserve.
constexpr int RetryMs = 200;
// Descriptors clients never get: the application keeps them for its own files.
constexpr int Headroom = 16;

int descriptorLimit()
{
    rlimit limit = {};
    if (::getrlimit(RLIMIT_NOFILE, &limit) != 0 || limit.rlim_cur == RLIM_INFINITY || limit.rlim_cur > INT_MAX) {
        return INT_MAX;
    }
    return int(limit.rlim_cur);
}

int openReserve()
{
    return ::open("/dev/null", O_RDONLY | O_CLOEXEC);
}

bool connectTo(const QByteArray &address)
{
    const int fd = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
    sockaddr_un target = {};
    target.sun_family = AF_UNIX;
    std::memcpy(target.sun_path, address.constData(), size_t(address.size()));
    // A full backlog (EAGAIN) still means someone listens.
    const bool answered = ::connect(fd, reinterpret_cast<sockaddr *>(&target), sizeof target) == 0 || errno == EAGAIN ||
        errno == EINPROGRESS;
    ::close(fd);
    return answered;
}
} // namespace

SocketListener::SocketListener(QObject *parent)
    : QObject(parent)
{
}

SocketListener::~SocketListener()
{
    delete m_notifier;
    if (m_fd >= 0) {
        ::close(m_fd);
        struct stat info = {};
        // Another server may have taken the name meanwhile; its socket stays.
        if (m_folder->stat(m_name, &info) && S_ISSOCK(info.st_mode) && info.st_ino == m_inode) {
            m_folder->remove(m_name);
        }
    }
    if (m_reserve >= 0) {
        ::close(m_reserve);
    }
}

bool SocketListener::listen(SocketDirectory::Folder *folder, const QString &name, QString *error)
{
    m_folder = folder;
    m_name = name;
    const QString path = folder->filePath(name);
    const int pathBytes = QFile::encodeName(path).size();
    const QByteArray address = folder->address(name);
    if (pathBytes > SocketDirectory::maxPathBytes() || address.isEmpty()) {
        *error = QStringLiteral("the socket path %1 is %2 bytes long; a socket address holds at most %3")
                     .arg(path)
                     .arg(pathBytes)
                     .arg(SocketDirectory::maxPathBytes());
        return false;
    }
    struct stat info = {};
    if (folder->stat(name, &info)) {
        if (!S_ISSOCK(info.st_mode) || info.st_uid != ::geteuid()) {
            *error = QStringLiteral("%1 exists and is not a socket of ours").arg(path);
            return false;
        }
        if (connectTo(address)) {
            *error = QStringLiteral("another application serves %1").arg(path);
            return false;
        }
        // Left by a server that is gone.
        folder->remove(name);
    }
    // Bound under a hidden name and renamed once it listens, user-only: a client
    // that sees the socket can connect at once, and nobody else ever could.
    const QString binding = QStringLiteral(".binding-%1").arg(QCoreApplication::applicationPid());
    const QByteArray bindingAddress = folder->address(binding);
    if (bindingAddress.isEmpty()) {
        *error = QStringLiteral("the socket path %1 is too long to be bound in its folder").arg(path);
        return false;
    }
    folder->remove(binding);
    m_fd = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
    sockaddr_un local = {};
    local.sun_family = AF_UNIX;
    std::memcpy(local.sun_path, bindingAddress.constData(), size_t(bindingAddress.size()));
    const bool bound = m_fd >= 0 && ::bind(m_fd, reinterpret_cast<sockaddr *>(&local), sizeof local) == 0;
    if (!bound || ::fchmodat(-1, bindingAddress.constData(), 0700, 0) != 0 || !folder->stat(binding, &info) ||
        ::listen(m_fd, SOMAXCONN) != 0 || !folder->rename(binding, name)) {
        *error = QStringLiteral("cannot listen at %1: %2").arg(path, QString::fromLocal8Bit(::strerror(errno)));
        if (bound) {
            folder->remove(binding);
        }
        if (m_fd >= 0) {
            ::close(m_fd);
            m_fd = -1;
        }
        return false;
    }
    m_inode = info.st_ino;
    m_reserve = openReserve();
    m_notifier = new QSocketNotifier(m_fd, QSocketNotifier::Read, this);
    m_notifier->setEnabled(false);
    connect(m_notifier, &QSocketNotifier::activated, this, &SocketListener::pending);
    return true;
}

QString SocketListener::path() const
{
    return m_folder ? m_folder->filePath(m_name) : QString();
}

void SocketListener::setAccepting(bool accepting)
{
    m_accepting = accepting;
    if (m_notifier) {
        m_notifier->setEnabled(accepting && !m_paused);
    }
}

int SocketListener::next()
{
    if (m_fd < 0 || m_paused) {
        return -1;
    }
    for (;;) {
        const int fd = ::accept4(m_fd, nullptr, nullptr, SOCK_NONBLOCK | SOCK_CLOEXEC);
        // Descriptors are handed out lowest first: one among the last few means the rest are taken.
        if (fd >= 0 && fd >= descriptorLimit() - Headroom) {
            turnAway(fd);
            continue;
        }
        if (fd >= 0) {
            m_starved = false;
            return fd;
        }
        if (errno == EINTR || errno == ECONNABORTED) {
            continue;
        }
        if (errno == EMFILE || errno == ENFILE || errno == ENOBUFS || errno == ENOMEM) {
            turnAwayNewest();
        }
        return -1;
    }
}

void SocketListener::warnOnce()
{
    if (!m_starved) {
        m_starved = true;
        qCWarning(lcControl).noquote() << "Control server: no file descriptor to spare for a new client; clients are "
                                          "turned away until one is free";
    }
}

void SocketListener::turnAway(int descriptor)
{
    warnOnce();
    ::send(descriptor, m_refusal.constData(), size_t(m_refusal.size()), MSG_DONTWAIT | MSG_NOSIGNAL);
    ::shutdown(descriptor, SHUT_RDWR);
    ::close(descriptor);
}

void SocketListener::turnAwayNewest()
{
    if (m_reserve < 0) {
        warnOnce();
        pause();
        return;
    }
    // The descriptor held in reserve takes the connection just long enough to say why it is closed.
    ::close(m_reserve);
    m_reserve = -1;
    const int fd = ::accept4(m_fd, nullptr, nullptr, SOCK_NONBLOCK | SOCK_CLOEXEC);
    if (fd >= 0) {
        turnAway(fd);
    }
    m_reserve = openReserve();
    if (m_reserve < 0) {
        pause();
    }
}

void SocketListener::pause()
{
    m_paused = true;
    if (m_notifier) {
        m_notifier->setEnabled(false);
    }
    QTimer::singleShot(RetryMs, this, [this] {
        m_reserve = m_reserve < 0 ? openReserve() : m_reserve;
        if (m_reserve < 0) {
            pause();
            return;
        }
        m_paused = false;
        setAccepting(m_accepting);
    });
}

} // namespace VantixControl

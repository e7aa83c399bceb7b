#include "clientchannel_p.h"

#include "channelpoller_p.h"

#include <cerrno>
#include <climits>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

namespace VantixControl {

namespace {
// Read at a time; one line of the protocol at most.
constexpr int ChunkBytes = 64 * 1024;
// Written at once rather than at the next turn of the loop past this, so quick readers never fall behind.
constexpr int EagerBytes = 64 * 1024;
// Input thrown away before closing, at most.
constexpr int DrainBytes = 1024 * 1024;
} // namespace

ClientChannel::ClientChannel(int descriptor, ChannelPoller *poller, QObject *parent)
    : QObject(parent)
    , m_fd(descriptor)
    , m_poller(poller)
{
    m_poller->add(m_fd, this);
}

ClientChannel::~ClientChannel()
{
    if (m_poller) {
        m_poller->remove(m_fd);
    }
    ::close(m_fd);
}

void ClientChannel::write(const QByteArray &data)
{
    if (m_over || m_closing) {
        return;
    }
    // Written lines are let go of before it grows, so it holds what waits and no more.
    if (m_sent > 0 && m_sent >= m_out.size() / 2) {
        m_out.remove(0, m_sent);
        m_lastAt -= m_lastAt >= 0 ? m_sent : 0;
        m_sent = 0;
    }
    m_out.append(data);
    if (pendingBytes() >= EagerBytes) {
        flush();
    } else {
        scheduleFlush();
    }
}

void ClientChannel::scheduleFlush()
{
    // What one turn of the event loop writes goes out together, as the loop comes round.
    if (!m_flushScheduled && !m_waitingForRoom) {
        m_flushScheduled = true;
        QMetaObject::invokeMethod(
            this,
            [this] {
                m_flushScheduled = false;
                flush();
            },
            Qt::QueuedConnection);
    }
}

void ClientChannel::stopReading()
{
    if (m_reading) {
        m_reading = false;
        updateInterest();
    }
}

void ClientChannel::updateInterest()
{
    if (m_poller && !m_over) {
        m_poller->watch(m_fd, m_reading, m_waitingForRoom);
    }
}

void ClientChannel::closeWhenWritten()
{
    stopReading();
    m_closing = true;
    flush();
}

void ClientChannel::closeAfter(const QByteArray &last)
{
    if (m_over || m_closing) {
        return;
    }
    m_lastAt = m_out.size();
    m_last = last;
    m_out.append(last);
    closeWhenWritten();
}

void ClientChannel::cut()
{
    if (m_over) {
        return;
    }
    if (m_lastAt < 0 || m_sent < m_lastAt) {
        // The rest of the line the socket has part of goes first, or the peer would read half a line.
        const int newline = m_midLine ? m_out.indexOf('\n', m_sent) : -1;
        const int lineEnd = m_midLine ? (newline < 0 ? m_out.size() : newline + 1) : m_sent;
        m_out = m_out.mid(m_sent, lineEnd - m_sent) + m_last;
        m_sent = 0;
    }
    // A reader that took nothing for long has filled the socket: room is made for the last words.
    const int most = INT_MAX / 2;
    ::setsockopt(m_fd, SOL_SOCKET, SO_SNDBUF, &most, sizeof most);
    m_closing = true;
    stopReading();
    flush();
    finish();
}

void ClientChannel::ready(bool readable, bool writable, bool hungUp)
{
    if (writable) {
        flush();
    }
    if (readable && m_reading && !m_over) {
        readChunk();
    } else if (hungUp && !m_reading) {
        // Gone while not being read from: nothing more can reach it.
        finish();
    }
}

void ClientChannel::readChunk()
{
    if (m_in.size() != ChunkBytes) {
        m_in.resize(ChunkBytes);
    }
    const ssize_t n = ::recv(m_fd, m_in.data(), size_t(m_in.size()), MSG_DONTWAIT);
    if (n > 0) {
        Q_EMIT received(QByteArray::fromRawData(m_in.constData(), int(n)));
        return;
    }
    if (n < 0 && (errno == EAGAIN || errno == EWOULDBLOCK || errno == EINTR)) {
        return;
    }
    stopReading();
    // The end of the input: a peer that has closed its whole end hangs up, one that only shut down its writing does
    // not.
    pollfd p = {m_fd, POLLOUT, 0};
    const bool hungUp = n < 0 || (::poll(&p, 1, 0) == 1 && (p.revents & (POLLHUP | POLLERR)));
    if (hungUp) {
        finish();
    } else {
        Q_EMIT inputEnded();
    }
}

void ClientChannel::flush()
{
    while (!m_over && m_sent < m_out.size()) {
        const ssize_t n =
            ::send(m_fd, m_out.constData() + m_sent, size_t(m_out.size() - m_sent), MSG_DONTWAIT | MSG_NOSIGNAL);
        if (n > 0) {
            m_sent += int(n);
            // Kept apart from m_sent, which starts again at 0 when sent lines are let go of.
            m_midLine = m_out.at(m_sent - 1) != '\n';
            continue;
        }
        if (n < 0 && errno == EINTR) {
            continue;
        }
        if (n < 0 && (errno == EAGAIN || errno == EWOULDBLOCK)) {
            // The socket is full: the poller tells when it has room.
            if (!m_waitingForRoom) {
                m_waitingForRoom = true;
                updateInterest();
            }
            return;
        }
        // The peer has gone: nothing more can reach it.
        finish();
        return;
    }
    if (m_over) {
        return;
    }
    m_out.clear();
    m_sent = 0;
    if (m_waitingForRoom) {
        m_waitingForRoom = false;
        updateInterest();
    }
    if (m_closing) {
        finish();
    }
}

void ClientChannel::finish()
{
    if (m_over) {
        return;
    }
    m_over = true;
    if (m_poller) {
        m_poller->remove(m_fd);
        m_poller = nullptr;
    }
    // Unread input would make the close a reset, which a peer may see before the lines it has not read.
    char sink[4096];
    for (int drained = 0; drained < DrainBytes;) {
        const ssize_t n = ::recv(m_fd, sink, sizeof sink, MSG_DONTWAIT);
        if (n <= 0) {
            break;
        }
        drained += int(n);
    }
    ::shutdown(m_fd, SHUT_RDWR);
    Q_EMIT gone();
}

} // namespace VantixControl

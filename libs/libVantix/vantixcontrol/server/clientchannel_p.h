#ifndef VANTIXCONTROL_CLIENTCHANNEL_P_H
#define VANTIXCONTROL_CLIENTCHANNEL_P_H

#include <vantix/vantix_private_export.h>

#include <QByteArray>
#include <QObject>

namespace VantixControl {

class ChannelPoller;

/**
 * The server's end of one client connection, on a non-blocking descriptor
 * it owns, watched through the server's ChannelPoller. It reads one chunk
 * at a time, writes what it is given in order (all of one turn of the event
 * loop in one go) and keeps what the socket cannot take yet, and tells apart
 * a peer that only ended its input (shutdown(SHUT_WR): it is still
 * answered) from one that has gone. Unlike QLocalSocket it never closes on
 * its own because the input ended.
 */
class VANTIX_PRIVATE_EXPORT ClientChannel : public QObject
{
    Q_OBJECT

public:
    /// Takes @p descriptor, a connected non-blocking stream socket.
    ClientChannel(int descriptor, ChannelPoller *poller, QObject *parent = nullptr);
    ~ClientChannel() override;

    int descriptor() const { return m_fd; }
    /// Queues @p data after what waits; it goes out as the socket takes it.
    void write(const QByteArray &data);
    /// What was written and has not gone out to the socket yet.
    qint64 pendingBytes() const { return m_out.size() - m_sent; }
    /// Reads nothing more.
    void stopReading();
    /// Closes once everything written has gone out; gone() follows.
    void closeWhenWritten();
    /// Writes @p last after what waits and closes once it has gone out.
    void closeAfter(const QByteArray &last);
    /**
     * Closes now, keeping of what waits only the rest of the line the socket
     * has part of and the last line given to closeAfter(), so that the peer
     * reads whole lines and that last one last, whenever it reads.
     */
    void cut();

    /// From the poller: the socket has input, has room, or the peer has hung up.
    void ready(bool readable, bool writable, bool hungUp);

Q_SIGNALS:
    /// One chunk of what the peer sent; @p data is valid during the call only.
    void received(const QByteArray &data);
    /// The peer ended its input but may still read.
    void inputEnded();
    /// The connection is over: the peer went, or it was closed here.
    void gone();

private:
    void readChunk();
    void flush();
    void scheduleFlush();
    void updateInterest();
    void finish();

    int m_fd;
    ChannelPoller *m_poller;
    QByteArray m_in;
    QByteArray m_out;
    int m_sent = 0; // bytes of m_out already handed to the socket
    QByteArray m_last;
    int m_lastAt = -1; // where m_last begins in m_out
    bool m_midLine = false; // the socket has the start of a line whose rest waits in m_out
    bool m_reading = true;
    bool m_waitingForRoom = false;
    bool m_flushScheduled = false;
    bool m_closing = false;
    bool m_over = false;
};

} // namespace VantixControl

#endif

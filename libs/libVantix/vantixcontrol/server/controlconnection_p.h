#ifndef VANTIXCONTROL_CONTROLCONNECTION_P_H
#define VANTIXCONTROL_CONTROLCONNECTION_P_H

#include "linesplitter_p.h"

#include <vantix/vantix_private_export.h>

#include <QByteArray>
#include <QJsonObject>
#include <QList>
#include <QObject>
#include <QPointer>
#include <QTimer>

namespace TQ_SPAPI {
class System;
}

namespace VantixControl {

class ClientChannel;
class Session;
struct Reply;

/**
 * One client of the control server: reads its request lines, runs them in
 * a session of its own, and writes the answers, and events and log copies
 * once asked for, one JSON object per line. A bad line is answered and the
 * connection stays usable. Answers carry the request's id as the client
 * wrote it. A client that ends its input is answered until nothing waits,
 * then closed. What waits to run is bounded by bytes as well as lines; a
 * client that stops reading is dropped before what waits for it passes a few
 * megabytes, with a last line that stays the last whenever it reads.
 *
 * The session starts with the first request that needs one, so a client
 * that only reads the greeting (a search for applications) costs nearly
 * nothing.
 */
class VANTIX_PRIVATE_EXPORT ControlConnection : public QObject
{
    Q_OBJECT

public:
    /// Serves the client on @p channel, which it takes; null for one fed through handleLine() alone.
    ControlConnection(ClientChannel *channel, TQ_SPAPI::System *system, QObject *parent);
    ~ControlConnection() override;

    /// What one request line (without its newline) holds.
    struct ParsedLine
    {
        enum Kind {
            Blank, ///< nothing but blanks: no answer
            Refused, ///< answered with @c error and @c id
            Request, ///< @c request goes on to be run and answered with @c id
        };
        Kind kind = Blank;
        QJsonObject request;
        QString error;
        /// The request's id as JSON text, as the client wrote it; "null" when none can be read.
        QByteArray id;
    };
    /// How handleLine() reads @p line; the fuzz target predicts the answers with it.
    static ParsedLine parseLine(const QByteArray &line);
    /// What a line over Protocol::MaxLineBytes is answered.
    static QString tooLongMessage();

    /// Handles one request line (without its newline); public for the fuzz target.
    void handleLine(const QByteArray &line);
    /// Handles a line of @p lineBytes bytes as parseLine() read it; the fuzz target reads each line once.
    void handleParsed(const ParsedLine &parsed, int lineBytes);
    /// Everything written so far and not yet sent.
    qint64 pendingBytes() const;

Q_SIGNALS:
    /// Written to the socket; the fuzz target listens here instead.
    void lineWritten(const QByteArray &line);

private:
    struct Waiting
    {
        quint64 serial;
        QByteArray id;
        int bytes;
    };

    Session *session();
    void received(const QByteArray &data);
    void handleRequest(const QJsonObject &request, const QByteArray &id, int lineBytes);
    void answer(const QByteArray &id, const Reply &reply);
    void refuse(const QByteArray &id, const QString &message);
    QByteArray takeWaiting(quint64 serial);
    void cancelWaiting();
    void write(const QByteArray &line);
    void drop(const QString &reason);
    void closeIfDone();
    void releaseMemory();

    ClientChannel *m_channel;
    QPointer<TQ_SPAPI::System> m_system;
    Session *m_session = nullptr;
    LineSplitter m_splitter;
    // Lines sent to the session and not answered yet, in order.
    QList<Waiting> m_waiting;
    qint64 m_waitingBytes = 0;
    qint64 m_mostWaitingBytes = 0;
    quint64 m_serial = 0;
    bool m_inputEnded = false;
    bool m_dropped = false;
    QTimer m_dropTimer;
};

} // namespace VantixControl

#endif

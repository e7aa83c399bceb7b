#ifndef VANTIXCONTROL_CONTROLCONNECTION_P_H
#define VANTIXCONTROL_CONTROLCONNECTION_P_H

#include <vantix/vantix_private_export.h>

#include <QByteArray>
#include <QJsonObject>
#include <QJsonValue>
#include <QList>
#include <QObject>
#include <QTimer>

class QLocalSocket;

namespace TQ_SPAPI {
class System;
}

namespace VantixControl {

class Session;
struct Reply;

/**
 * One client of the control server: reads its request lines, runs them in
 * a session of its own, and writes the answers, and events and log copies
 * once asked for, one JSON object per line. A bad line is answered and the
 * connection stays usable. A client that stops reading is dropped before
 * what waits for it passes a few megabytes.
 */
class VANTIX_PRIVATE_EXPORT ControlConnection : public QObject
{
    Q_OBJECT

public:
    ControlConnection(QLocalSocket *socket, TQ_SPAPI::System *system, QObject *parent);
    ~ControlConnection() override;

    /// What one request line (without its newline) holds.
    struct ParsedLine
    {
        enum Kind {
            Blank, ///< nothing but blanks: no answer
            Refused, ///< answered with @c error and a null id
            Request, ///< @c request goes on to be run and answered with its id
        };
        Kind kind = Blank;
        QJsonObject request;
        QString error;
    };
    /// How handleLine() reads @p line; the fuzz target predicts the answers with it.
    static ParsedLine parseLine(const QByteArray &line);

    /// Handles one request line (without its newline); public for the fuzz target.
    void handleLine(const QByteArray &line);
    /// Everything written so far and not yet sent.
    qint64 pendingBytes() const;

Q_SIGNALS:
    /// Written to the socket; the fuzz target listens here instead.
    void lineWritten(const QByteArray &line);

private:
    void read();
    void handleRequest(const QJsonObject &request);
    void answer(const QJsonValue &id, const Reply &reply);
    void refuse(const QJsonValue &id, const QString &message);
    void write(const QByteArray &line);
    void drop(const QString &reason);

    QLocalSocket *m_socket;
    Session *m_session;
    QByteArray m_buffer;
    // Set while the rest of a too long line is being skipped.
    bool m_skipping = false;
    bool m_dropped = false;
    // Ids of the lines sent to the session and not answered yet, in order.
    QList<QJsonValue> m_pending;
    QTimer m_dropTimer;
};

} // namespace VantixControl

#endif

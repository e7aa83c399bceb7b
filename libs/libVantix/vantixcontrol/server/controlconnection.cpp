#include "controlconnection_p.h"

#include "event.h"
#include "logging_p.h"
#include <vantix/platformnames.h>
#include "protocol.h"
#include "reply.h"
#include "session.h"

#include <vantix/system.h>
#include <vantix/vantix_version.h>

#include <QCoreApplication>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QLocalSocket>
#include <QPointer>
#include <QTextCodec>

using TQ_SPAPI::System;

namespace VantixControl {

namespace {
// A client that does not read gets this long to take its last line.
constexpr int DropGraceMs = 2000;

QByteArray greeting(System *system)
{
    const QJsonObject hello{
        {QStringLiteral("protocol"), Protocol::Version},
        {QStringLiteral("version"), QStringLiteral(VANTIX_VERSION_STRING)},
        {QStringLiteral("pid"), QCoreApplication::applicationPid()},
        {QStringLiteral("application"), QCoreApplication::applicationName()},
        {QStringLiteral("platform"), QString::fromLatin1(System::PlatformTypeEnum.valueToKey(system->platform()))},
        {QStringLiteral("platformName"), TQ_SPAPI::PlatformNames::name(system->platform())},
        {QStringLiteral("capabilities"), QJsonArray::fromStringList(Protocol::capabilities())},
    };
    return QJsonDocument(QJsonObject{{QStringLiteral("vantix"), hello}}).toJson(QJsonDocument::Compact);
}

bool isUtf8(const QByteArray &data)
{
    QTextCodec::ConverterState state;
    QTextCodec::codecForMib(106)->toUnicode(data.constData(), data.size(), &state);
    return state.invalidChars == 0 && state.remainingChars == 0;
}
} // namespace

ControlConnection::ControlConnection(QLocalSocket *socket, System *system, QObject *parent)
    : QObject(parent)
    , m_socket(socket)
    , m_session(new Session(system, this))
{
    if (m_socket) {
        m_socket->setParent(this);
        connect(m_socket, &QLocalSocket::readyRead, this, &ControlConnection::read);
        connect(m_socket, &QLocalSocket::disconnected, this, &QObject::deleteLater);
    }
    connect(m_session, &Session::event, this, [this](const Event &event) { write(event.toJsonLine()); });
    connect(m_session, &Session::logged, this, [this](const LogEntry &entry) { write(entry.toJsonLine()); });
    m_dropTimer.setSingleShot(true);
    connect(&m_dropTimer, &QTimer::timeout, this, [this] {
        if (m_socket) {
            m_socket->abort();
        }
        deleteLater();
    });
    qCDebug(lcControl) << "client connected";
    // Nothing else is sent until the client has spoken.
    write(greeting(system));
    if (m_socket) {
        read();
    }
}

ControlConnection::~ControlConnection()
{
    // The session goes first, so that nothing it ends writes to a closed socket.
    delete m_session;
    m_session = nullptr;
    qCDebug(lcControl) << "client gone";
}

qint64 ControlConnection::pendingBytes() const
{
    return m_socket ? m_socket->bytesToWrite() : 0;
}

void ControlConnection::read()
{
    while (m_socket && !m_dropped && m_socket->bytesAvailable() > 0) {
        m_buffer += m_socket->read(Protocol::MaxLineBytes);
        int newline;
        while (!m_dropped && (newline = m_buffer.indexOf('\n')) >= 0) {
            const QByteArray line = m_buffer.left(newline);
            m_buffer.remove(0, newline + 1);
            if (m_skipping) {
                m_skipping = false;
                continue;
            }
            handleLine(line);
        }
        if (m_buffer.size() > Protocol::MaxLineBytes) {
            // Refused once, the rest of the line is read and thrown away.
            if (!m_skipping) {
                refuse(QJsonValue(),
                    QStringLiteral("a request line may hold at most %1 bytes").arg(Protocol::MaxLineBytes));
            }
            m_skipping = true;
            m_buffer.clear();
        }
    }
}

ControlConnection::ParsedLine ControlConnection::parseLine(const QByteArray &rawLine)
{
    ParsedLine parsed;
    QByteArray line = rawLine;
    if (line.endsWith('\r')) {
        line.chop(1);
    }
    if (line.trimmed().isEmpty()) {
        return parsed;
    }
    parsed.kind = ParsedLine::Refused;
    if (line.size() > Protocol::MaxLineBytes) {
        parsed.error = QStringLiteral("a request line may hold at most %1 bytes").arg(Protocol::MaxLineBytes);
        return parsed;
    }
    if (!isUtf8(line)) {
        parsed.error = QStringLiteral("a request line must be UTF-8");
        return parsed;
    }
    QJsonParseError error;
    const QJsonDocument document = QJsonDocument::fromJson(line, &error);
    if (error.error != QJsonParseError::NoError) {
        parsed.error = QStringLiteral("not JSON: %1 at offset %2").arg(error.errorString()).arg(error.offset);
        return parsed;
    }
    if (!document.isObject()) {
        parsed.error = QStringLiteral("a request is a JSON object");
        return parsed;
    }
    parsed.kind = ParsedLine::Request;
    parsed.request = document.object();
    return parsed;
}

void ControlConnection::handleLine(const QByteArray &line)
{
    const ParsedLine parsed = parseLine(line);
    if (parsed.kind == ParsedLine::Refused) {
        refuse(QJsonValue(), parsed.error);
    } else if (parsed.kind == ParsedLine::Request) {
        handleRequest(parsed.request);
    }
}

void ControlConnection::handleRequest(const QJsonObject &request)
{
    const QJsonValue id = request.value(QLatin1String("id"));
    if (id.isUndefined() || id.isNull()) {
        refuse(QJsonValue(), QStringLiteral("a request needs an id, which its answer carries back"));
        return;
    }
    using Protocol::RequestKind;
    const QStringList keys = Protocol::capabilities();
    int found = 0;
    RequestKind kind = RequestKind::Line;
    for (RequestKind k : Protocol::requestKinds()) {
        if (request.contains(Protocol::requestKey(k))) {
            kind = k;
            ++found;
        }
    }
    const QString key = Protocol::requestKey(kind);
    const QJsonValue argument = request.value(key);
    if (found != 1) {
        refuse(id, QStringLiteral("a request carries exactly one of %1").arg(keys.join(QLatin1String(", "))));
    } else if (kind == RequestKind::Line) {
        if (!argument.isString()) {
            refuse(id, QStringLiteral("line is the text of one console command"));
            return;
        }
        m_pending.append(id);
        const QPointer<ControlConnection> alive(this);
        // "cwd": the client's folder, which relative file names in the line are taken from.
        const QString cwd = request.value(QLatin1String("cwd")).toString();
        m_session->execute(argument.toString(), cwd, [this, alive, id](const Reply &reply) {
            if (alive) {
                m_pending.removeOne(id);
                answer(id, reply);
            }
        });
    } else if (kind == RequestKind::Describe) {
        answer(id, Reply::success().withValue(QStringLiteral("schema"), m_session->describe()));
    } else if (!argument.isBool()) {
        refuse(id, QStringLiteral("%1 takes true or false").arg(key));
    } else if (kind == RequestKind::Events) {
        m_session->setEventsEnabled(argument.toBool());
        answer(id, Reply::success());
    } else if (kind == RequestKind::Log) {
        m_session->setLogEnabled(argument.toBool());
        answer(id, Reply::success());
    } else {
        // What was running or waiting ends unanswered by the session: it is answered here.
        // "cancel": false cancels nothing, so what runs keeps its own, single answer.
        if (argument.toBool()) {
            const QList<QJsonValue> cancelled = m_pending;
            m_pending.clear();
            m_session->cancel();
            for (const QJsonValue &pendingId : cancelled) {
                answer(pendingId, Reply::failure(ErrorClass::Failed, QStringLiteral("cancelled")));
            }
        }
        answer(id, Reply::success());
    }
}

void ControlConnection::answer(const QJsonValue &id, const Reply &reply)
{
    write(reply.toJsonLine(id));
}

void ControlConnection::refuse(const QJsonValue &id, const QString &message)
{
    answer(id, Reply::failure(ErrorClass::BadRequest, message));
}

void ControlConnection::write(const QByteArray &line)
{
    if (m_dropped) {
        return;
    }
    Q_EMIT lineWritten(line);
    if (!m_socket) {
        return;
    }
    m_socket->write(line);
    m_socket->write("\n", 1);
    if (m_socket->bytesToWrite() > Protocol::MaxPendingBytes) {
        drop(QStringLiteral("more than %1 bytes waited for this client to read them; it is dropped")
                 .arg(Protocol::MaxPendingBytes));
    }
}

void ControlConnection::drop(const QString &reason)
{
    qCWarning(lcControl).noquote() << "Control server:" << reason;
    const QJsonObject last{{QStringLiteral("error"),
        QJsonObject{
            {QStringLiteral("class"), errorClassName(ErrorClass::Failed)}, {QStringLiteral("message"), reason}}}};
    m_socket->write(QJsonDocument(last).toJson(QJsonDocument::Compact) + '\n');
    m_dropped = true;
    m_session->cancel();
    m_session->setEventsEnabled(false);
    m_session->setLogEnabled(false);
    m_socket->disconnectFromServer();
    m_dropTimer.start(DropGraceMs);
}

} // namespace VantixControl

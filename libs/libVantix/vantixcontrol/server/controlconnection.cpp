#include "controlconnection_p.h"

#include "clientchannel_p.h"
#include "event.h"
#include "logging_p.h"
#include "protocol.h"
#include "repeatedkey_p.h"
#include "reply.h"
#include "requestid_p.h"
#include "session.h"
#include "words.h"

#include <vantix/platformnames.h>
#include <vantix/system.h>
#include <vantix/vantix_version.h>

#include <QCoreApplication>
#include <QJsonArray>
#include <QJsonDocument>
#include <QTextCodec>

#include <utility>

#ifdef __GLIBC__
#include <malloc.h>
#endif

using TQ_SPAPI::System;

namespace VantixControl {

namespace {
// A client that does not read gets this long to take what waits for it.
constexpr int DropGraceMs = 2000;
// Past this much waiting at once, the memory it took is handed back when it goes.
constexpr qint64 ReleaseBytes = 1024 * 1024;
const QByteArray NullId = QByteArrayLiteral("null");

// Written directly, keys in the order a document gives them: every connection starts with it.
QByteArray greeting(System *system)
{
    QByteArray out;
    out.reserve(256);
    out.append("{\"vantix\":{\"application\":");
    appendJsonString(out, QCoreApplication::applicationName());
    out.append(",\"capabilities\":[");
    const QStringList capabilities = Protocol::capabilities();
    for (int i = 0; i < capabilities.size(); ++i) {
        out.append(i == 0 ? "" : ",");
        appendJsonString(out, capabilities.at(i));
    }
    out.append("],\"pid\":");
    out.append(QByteArray::number(QCoreApplication::applicationPid()));
    out.append(",\"platform\":");
    appendJsonString(out, QString::fromLatin1(System::PlatformTypeEnum.valueToKey(system->platform())));
    out.append(",\"platformName\":");
    appendJsonString(out, TQ_SPAPI::PlatformNames::name(system->platform()));
    out.append(",\"protocol\":");
    out.append(QByteArray::number(Protocol::Version));
    out.append(",\"version\":");
    appendJsonString(out, QStringLiteral(VANTIX_VERSION_STRING));
    out.append("}}");
    return out;
}

bool isUtf8(const QByteArray &data)
{
    QTextCodec::ConverterState state;
    QTextCodec::codecForMib(106)->toUnicode(data.constData(), data.size(), &state);
    return state.invalidChars == 0 && state.remainingChars == 0;
}

// Whether @p text is one JSON value other than null, and one Qt reads without loss.
bool isJsonValue(const QByteArray &text)
{
    if (!repeatedKey(text).isNull()) {
        return false;
    }
    QJsonParseError error;
    const QJsonDocument document = QJsonDocument::fromJson('[' + text + ']', &error);
    return error.error == QJsonParseError::NoError && document.array().size() == 1 && !document.array().at(0).isNull();
}
} // namespace

ControlConnection::ControlConnection(ClientChannel *channel, System *system, QObject *parent)
    : QObject(parent)
    , m_channel(channel)
    , m_system(system)
{
    if (m_channel) {
        m_channel->setParent(this);
        connect(m_channel, &ClientChannel::received, this, &ControlConnection::received);
        connect(m_channel, &ClientChannel::inputEnded, this, [this] {
            m_inputEnded = true;
            closeIfDone();
        });
        connect(m_channel, &ClientChannel::gone, this, [this] {
            // What runs for a client that has gone stops now, not when the connection is deleted.
            if (m_session) {
                m_session->cancel();
            }
            deleteLater();
        });
    }
    m_dropTimer.setSingleShot(true);
    connect(&m_dropTimer, &QTimer::timeout, this, [this] {
        if (m_channel) {
            m_channel->cut();
        }
    });
    qCDebug(lcControl) << "client connected";
    // Nothing else is sent until the client has spoken.
    write(greeting(system));
}

ControlConnection::~ControlConnection()
{
    // The session goes first, so that nothing it ends writes to a closed socket.
    delete m_session;
    m_session = nullptr;
    m_waiting.clear();
    releaseMemory();
    qCDebug(lcControl) << "client gone";
}

Session *ControlConnection::session()
{
    if (!m_session) {
        m_session = new Session(m_system, this);
        connect(m_session, &Session::eventRaised, this, [this](const Event &event) { write(event.toJsonLine()); });
        connect(m_session, &Session::logged, this, [this](const LogEntry &entry) { write(entry.toJsonLine()); });
    }
    return m_session;
}

qint64 ControlConnection::pendingBytes() const
{
    return m_channel ? m_channel->pendingBytes() : 0;
}

void ControlConnection::received(const QByteArray &data)
{
    m_splitter.append(data.constData(), data.size());
    QByteArray line;
    const QPointer<ControlConnection> alive(this);
    while (alive && !m_dropped) {
        const LineSplitter::Result result = m_splitter.next(&line);
        if (result == LineSplitter::NeedMore) {
            break;
        }
        if (result == LineSplitter::TooLong) {
            refuse(NullId, tooLongMessage());
        } else {
            handleLine(line);
        }
    }
}

QString ControlConnection::tooLongMessage()
{
    return QStringLiteral("a request line may hold at most %1 bytes").arg(Protocol::MaxLineBytes);
}

ControlConnection::ParsedLine ControlConnection::parseLine(const QByteArray &rawLine)
{
    ParsedLine parsed;
    QByteArray line = rawLine;
    if (line.endsWith('\r')) {
        line.chop(1);
    }
    parsed.id = NullId;
    // Over-long first: a line of blanks only is no exception.
    if (line.size() > Protocol::MaxLineBytes) {
        parsed.kind = ParsedLine::Refused;
        parsed.error = tooLongMessage();
        return parsed;
    }
    if (line.trimmed().isEmpty()) {
        return parsed;
    }
    parsed.kind = ParsedLine::Refused;
    if (!isUtf8(line)) {
        parsed.error = QStringLiteral("a request line must be UTF-8");
        // The id is answered with all the same when it can be read.
        const QByteArray id = requestIdText(line);
        if (isUtf8(id) && isJsonValue(id)) {
            parsed.id = id;
        }
        return parsed;
    }
    const QString repeated = repeatedKey(line);
    if (!repeated.isNull()) {
        parsed.error = QStringLiteral("an object of the request names \"%1\" twice").arg(Words::printable(repeated));
        const QByteArray id = requestIdText(line);
        if (isJsonValue(id)) {
            parsed.id = id;
        }
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
    parsed.request = document.object();
    const QJsonValue id = parsed.request.value(QLatin1String("id"));
    if (id.isUndefined() || id.isNull()) {
        parsed.error = QStringLiteral("a request needs an id, which its answer carries back");
        return parsed;
    }
    parsed.kind = ParsedLine::Request;
    parsed.id = requestIdText(line);
    if (parsed.id.isEmpty()) {
        // Text the scan cannot follow (a byte-order mark before the object): the id as read.
        appendJson(parsed.id, id);
    }
    return parsed;
}

void ControlConnection::handleLine(const QByteArray &line)
{
    handleParsed(parseLine(line), line.size());
}

void ControlConnection::handleParsed(const ParsedLine &parsed, int lineBytes)
{
    if (parsed.kind == ParsedLine::Refused) {
        refuse(parsed.id, parsed.error);
    } else if (parsed.kind == ParsedLine::Request) {
        handleRequest(parsed.request, parsed.id, lineBytes);
    }
}

void ControlConnection::handleRequest(const QJsonObject &request, const QByteArray &id, int lineBytes)
{
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
        if (!m_waiting.isEmpty() && m_waitingBytes + lineBytes > Protocol::MaxWaitingBytes) {
            refuse(id,
                QStringLiteral("the lines waiting to run may hold %1 bytes at most; wait for their answers first")
                    .arg(Protocol::MaxWaitingBytes));
            return;
        }
        const quint64 serial = ++m_serial;
        m_waiting.append({serial, id, lineBytes});
        m_waitingBytes += lineBytes;
        m_mostWaitingBytes = qMax(m_mostWaitingBytes, m_waitingBytes);
        const QPointer<ControlConnection> alive(this);
        // "cwd": the client's folder, which relative file names in the line are taken from.
        const QString cwd = request.value(QLatin1String("cwd")).toString();
        session()->execute(argument.toString(), cwd, [this, alive, serial](const Reply &reply) {
            if (alive) {
                answer(takeWaiting(serial), reply);
                closeIfDone();
            }
        });
    } else if (kind == RequestKind::Describe) {
        answer(id, Reply::success().withValue(QStringLiteral("schema"), session()->describe()));
    } else if (!argument.isBool()) {
        refuse(id, QStringLiteral("%1 takes true or false").arg(key));
    } else if (kind == RequestKind::Events) {
        if (m_session || argument.toBool()) {
            session()->setEventsEnabled(argument.toBool());
        }
        answer(id, Reply::success());
    } else if (kind == RequestKind::Log) {
        if (m_session || argument.toBool()) {
            session()->setLogEnabled(argument.toBool());
        }
        answer(id, Reply::success());
    } else {
        // "cancel": false cancels nothing, so what runs keeps its own, single answer.
        if (argument.toBool()) {
            cancelWaiting();
        }
        answer(id, Reply::success());
    }
}

QByteArray ControlConnection::takeWaiting(quint64 serial)
{
    for (int i = 0; i < m_waiting.size(); ++i) {
        if (m_waiting.at(i).serial == serial) {
            const Waiting taken = m_waiting.takeAt(i);
            m_waitingBytes -= taken.bytes;
            return taken.id;
        }
    }
    return NullId;
}

void ControlConnection::cancelWaiting()
{
    // What was running or waiting ends unanswered by the session: it is answered here, in order.
    const QList<Waiting> cancelled = std::exchange(m_waiting, {});
    m_waitingBytes = 0;
    if (m_session) {
        m_session->cancel();
    }
    for (const Waiting &waiting : cancelled) {
        answer(waiting.id, Reply::failure(ErrorClass::Failed, QStringLiteral("cancelled")));
    }
    releaseMemory();
}

void ControlConnection::answer(const QByteArray &id, const Reply &reply)
{
    write(reply.toJsonLineWithIdText(id));
}

void ControlConnection::refuse(const QByteArray &id, const QString &message)
{
    answer(id, Reply::failure(ErrorClass::BadRequest, message));
}

void ControlConnection::write(const QByteArray &line)
{
    if (m_dropped) {
        return;
    }
    Q_EMIT lineWritten(line);
    if (!m_channel) {
        return;
    }
    m_channel->write(line + '\n');
    if (m_channel->pendingBytes() > Protocol::MaxPendingBytes) {
        drop(QStringLiteral("more than %1 bytes waited for this client to read them; it is dropped")
                 .arg(Protocol::MaxPendingBytes));
    }
}

void ControlConnection::closeIfDone()
{
    // A client that ended its input is answered to the last line it sent, then let go.
    if (m_inputEnded && m_waiting.isEmpty() && m_channel && !m_dropped) {
        m_channel->closeWhenWritten();
    }
}

void ControlConnection::drop(const QString &reason)
{
    qCWarning(lcControl).noquote() << "Control server:" << reason;
    m_dropped = true;
    m_waiting.clear();
    m_waitingBytes = 0;
    if (m_session) {
        m_session->cancel();
        m_session->setEventsEnabled(false);
        m_session->setLogEnabled(false);
    }
    // What waits still goes out while the client reads; the notice comes last whatever it does.
    const QJsonObject last{{QStringLiteral("error"),
        QJsonObject{
            {QStringLiteral("class"), errorClassName(ErrorClass::Failed)}, {QStringLiteral("message"), reason}}}};
    m_channel->closeAfter(QJsonDocument(last).toJson(QJsonDocument::Compact) + '\n');
    m_dropTimer.start(DropGraceMs);
}

void ControlConnection::releaseMemory()
{
#ifdef __GLIBC__
    // Freed lines would otherwise stay with the process, as heap the allocator keeps.
    if (std::exchange(m_mostWaitingBytes, 0) > ReleaseBytes) {
        ::malloc_trim(0);
    }
#endif
}

} // namespace VantixControl

#include "panelsession.h"

#include <vantixcontrol/protocol/words.h>

#include <vantixcontrol/protocol/event.h>
#include <vantixcontrol/protocol/reply.h>

#include <QJsonArray>
#include <QTimer>

using namespace VantixControl;

PanelSession::PanelSession(QObject *parent)
    : QObject(parent)
{
    connect(&m_client, &Client::connected, this, [this] {
        m_client.setEventsEnabled(true);
        m_client.setLogEnabled(true);
        loadSchema();
    });
    connect(&m_client, &Client::disconnected, this, [this](const QString &reason) {
        ++m_generation;
        // A recording belongs to the session, which has ended.
        if (!m_recording.isEmpty()) {
            m_recording.clear();
            Q_EMIT recordingChanged(m_recording);
        }
        Q_EMIT detached(reason);
    });
    connect(&m_client, &Client::event, this, &PanelSession::onEvent);
    connect(&m_client, &Client::logged, this, &PanelSession::logReceived);
}

void PanelSession::attach(const QString &socketPath)
{
    ++m_generation;
    m_socketPath = socketPath;
    m_schema = QJsonObject();
    m_targets.clear();
    m_values.clear();
    m_schemaPending = false;
    m_schemaStale = false;
    m_dirty.clear();
    if (!m_recording.isEmpty()) {
        m_recording.clear();
        Q_EMIT recordingChanged(m_recording);
    }
    Q_EMIT attaching();
    m_client.connectToServer(socketPath);
}

void PanelSession::detach()
{
    m_client.disconnectFromServer();
}

bool PanelSession::isAttached() const
{
    return m_client.isConnected();
}

Client::Application PanelSession::application() const
{
    return Client::applicationOf(m_client.greeting(), m_socketPath);
}

QStringList PanelSession::targetNames() const
{
    QStringList names;
    for (const QJsonValue &t : m_schema.value(QLatin1String("targets")).toArray()) {
        names.append(t.toObject().value(QLatin1String("name")).toString());
    }
    return names;
}

QJsonObject PanelSession::target(const QString &name) const
{
    return m_targets.value(name);
}

QJsonObject PanelSession::property(const QString &target, const QString &name) const
{
    for (const QJsonValue &p : m_targets.value(target).value(QLatin1String("properties")).toArray()) {
        if (p.toObject().value(QLatin1String("name")).toString() == name) {
            return p.toObject();
        }
    }
    return QJsonObject();
}

QJsonObject PanelSession::enumOf(const QString &type) const
{
    return m_schema.value(QLatin1String("enums")).toObject().value(type).toObject();
}

QStringList PanelSession::enumKeys(const QString &type) const
{
    const QJsonObject keys = enumOf(type).value(QLatin1String("keys")).toObject();
    QList<QPair<int, QString>> sorted;
    for (auto it = keys.begin(); it != keys.end(); ++it) {
        sorted.append({it.value().toInt(), it.key()});
    }
    std::stable_sort(sorted.begin(), sorted.end(),
        [](const QPair<int, QString> &a, const QPair<int, QString> &b) { return a.first < b.first; });
    QStringList result;
    for (const auto &k : sorted) {
        result.append(k.second);
    }
    return result;
}

bool PanelSession::isFlagEnum(const QString &type) const
{
    return enumOf(type).value(QLatin1String("flag")).toBool();
}

int PanelSession::enumValue(const QString &type, const QString &key) const
{
    const QJsonObject keys = enumOf(type).value(QLatin1String("keys")).toObject();
    return keys.contains(key) ? keys.value(key).toInt() : -1;
}

bool PanelSession::hasFlag(const QString &target, const QString &property, const QString &flag) const
{
    const PropertyValue v = value(target, property);
    const QString text = v.value.isString() ? v.value.toString() : v.text;
    return text.split(QLatin1Char('|')).contains(flag);
}

PropertyValue PanelSession::value(const QString &target, const QString &property) const
{
    return m_values.value(target).value(property);
}

QString PanelSession::enumLabel(const QString &type, const QString &key) const
{
    // A value without a label in the schema (a device id, a platform) is best read by its name.
    const QString label = enumOf(type).value(QLatin1String("labels")).toObject().value(key).toString();
    return label.isEmpty() ? key : label;
}

QString PanelSession::enumText(const QString &type, const QString &text) const
{
    if (text.isEmpty()) {
        return text;
    }
    QStringList words;
    for (const QString &key : text.split(QLatin1Char('|'), Qt::SkipEmptyParts)) {
        words.append(enumLabel(type, key));
    }
    return words.join(QLatin1String(", "));
}

QString PanelSession::valueText(const QString &target, const QString &property) const
{
    const PropertyValue v = value(target, property);
    const QString text = v.value.isString() ? v.value.toString() : v.text;
    const QString type = this->property(target, property).value(QLatin1String("type")).toString();
    return enumOf(type).isEmpty() ? text : enumText(type, text);
}

void PanelSession::run(const QString &line, const Client::Done &done)
{
    Q_EMIT sent(line);
    m_client.execute(line, [this, line, done](const Reply &reply) {
        followRecording(line, reply);
        Q_EMIT answered(line, reply);
        if (done) {
            done(reply);
        }
    });
}

void PanelSession::setProperty(
    const QString &target, const QString &property, const QString &valueText, const Client::Done &done)
{
    const QString line = Words::join({QStringLiteral("set"), target, property, valueText});
    run(line, [this, target, property, done](const Reply &reply) {
        // A refused value leaves the editor showing what the application holds.
        if (!reply.ok) {
            refresh(target, property);
        }
        if (done) {
            done(reply);
        }
    });
}

void PanelSession::loadSchema()
{
    if (m_schemaPending) {
        m_schemaStale = true;
        return;
    }
    m_schemaPending = true;
    const int generation = m_generation;
    m_client.describe([this, generation](const Reply &reply) {
        if (generation != m_generation) {
            return;
        }
        m_schemaPending = false;
        if (!reply.ok) {
            return;
        }
        const bool first = m_schema.isEmpty();
        m_schema = reply.value.toObject();
        QHash<QString, QJsonObject> targets;
        for (const QJsonValue &t : m_schema.value(QLatin1String("targets")).toArray()) {
            const QJsonObject object = t.toObject();
            targets.insert(object.value(QLatin1String("name")).toString(), object);
        }
        for (auto it = targets.cbegin(); it != targets.cend(); ++it) {
            if (!m_targets.contains(it.key())) {
                loadValues(it.key());
            }
        }
        for (const QString &gone : m_targets.keys()) {
            if (!targets.contains(gone)) {
                m_values.remove(gone);
            }
        }
        m_targets = targets;
        if (first) {
            Q_EMIT attached();
        }
        Q_EMIT schemaChanged();
        if (m_schemaStale) {
            m_schemaStale = false;
            loadSchema();
        }
    });
}

void PanelSession::loadValues(const QString &target)
{
    const int generation = m_generation;
    m_client.execute(Words::join({QStringLiteral("show"), target}), [this, generation, target](const Reply &reply) {
        if (generation != m_generation || !reply.ok) {
            return;
        }
        for (const QJsonValue &p : reply.value.toObject().value(QLatin1String("properties")).toArray()) {
            const QJsonObject property = p.toObject();
            if (property.contains(QLatin1String("value"))) {
                store(target, property.value(QLatin1String("name")).toString(), property.value(QLatin1String("value")),
                    property.value(QLatin1String("text")).toString());
            }
        }
    });
}

void PanelSession::refresh(const QString &target, const QString &property)
{
    const int generation = m_generation;
    m_client.execute(Words::join({QStringLiteral("get"), target, property}),
        [this, generation, target, property](const Reply &reply) {
            if (generation == m_generation && reply.ok) {
                store(target, property, reply.value, reply.text);
            }
        });
}

void PanelSession::store(const QString &target, const QString &property, const QJsonValue &value, const QString &text)
{
    PropertyValue &stored = m_values[target][property];
    if (stored.known && stored.value == value && stored.text == text) {
        return;
    }
    stored.value = value;
    stored.text = text;
    stored.known = true;
    Q_EMIT valueChanged(target, property);
}

void PanelSession::onEvent(const Event &event)
{
    Q_EMIT eventReceived(event);
    const bool devicesChanged = event.object == QLatin1String("System") &&
        (event.signal == QLatin1String("deviceDetected") || event.signal == QLatin1String("deviceRemoved"));
    // A list (peers, access points) that gained or lost rows has objects the schema must name.
    const bool listChanged = event.signal == QLatin1String("rowsInserted") ||
        event.signal == QLatin1String("rowsRemoved") || event.signal == QLatin1String("modelReset");
    if (devicesChanged || listChanged) {
        loadSchema();
    }
    if (!m_targets.contains(event.object)) {
        // An object the schema does not know yet (a new peer): describe again.
        if (!m_schema.isEmpty()) {
            loadSchema();
        }
        return;
    }
    QStringList notified;
    for (const QJsonValue &p : m_targets.value(event.object).value(QLatin1String("properties")).toArray()) {
        const QJsonObject property = p.toObject();
        if (property.value(QLatin1String("notify")).toString() == event.signal) {
            notified.append(property.value(QLatin1String("name")).toString());
        }
    }
    // A signal that carries the one new value shows at once. Events bring the value only, so its text is
    // written here as the application writes it; the read-back below brings the application's own.
    if (notified.size() == 1 && event.arguments.size() == 1) {
        const QJsonValue value = event.arguments.first().value;
        QString text = event.arguments.first().text;
        if (text.isEmpty()) {
            text = value.isBool()  ? QLatin1String(value.toBool() ? "true" : "false")
                : value.isDouble() ? QString::number(value.toDouble())
                                   : value.toString();
        }
        store(event.object, notified.first(), value, text);
    }
    // Then the whole target is read back, once per burst of its events: a change may come with
    // another signal than its own (a LED's off time is announced as msOnChanged), or with none.
    if (m_dirty.isEmpty()) {
        QTimer::singleShot(0, this, &PanelSession::reloadDirty);
    }
    m_dirty.insert(event.object);
}

void PanelSession::reloadDirty()
{
    const QSet<QString> dirty = m_dirty;
    m_dirty.clear();
    for (const QString &target : dirty) {
        if (m_targets.contains(target)) {
            loadValues(target);
        }
    }
}

void PanelSession::followRecording(const QString &line, const Reply &reply)
{
    QStringList words;
    QString error;
    if (!reply.ok || !Words::split(line, &words, &error) || words.size() != 2 ||
        words.first().compare(QLatin1String("record"), Qt::CaseInsensitive) != 0) {
        return;
    }
    // "record stop" answers with the file it wrote, "record <file>" with the file it writes: tell them apart.
    const QString file = words.at(1) == QLatin1String("stop") ? QString() : reply.value.toString();
    if (file != m_recording) {
        m_recording = file;
        Q_EMIT recordingChanged(m_recording);
    }
}

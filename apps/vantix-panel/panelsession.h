#ifndef VANTIXPANEL_PANELSESSION_H
#define VANTIXPANEL_PANELSESSION_H

#include <vantixcontrol/client/client.h>

#include <QHash>
#include <QJsonObject>
#include <QJsonValue>
#include <QObject>
#include <QSet>
#include <QStringList>

namespace VantixControl {
struct Event;
struct LogEntry;
struct Reply;
} // namespace VantixControl

/// A property's last known value, as the application rendered it.
struct PropertyValue
{
    QJsonValue value;
    QString text;
    bool known = false;
};

/**
 * The panel's view of one application, kept only from the control protocol:
 * the schema, every target's property values, and their changes as events
 * report them. The panel holds no System of its own, so what it shows is
 * exactly what the application sees.
 */
class PanelSession : public QObject
{
    Q_OBJECT

public:
    explicit PanelSession(QObject *parent = nullptr);

    void attach(const QString &socketPath);
    void detach();
    bool isAttached() const;
    QString socketPath() const { return m_socketPath; }
    VantixControl::Client::Application application() const;
    VantixControl::Client &client() { return m_client; }

    QJsonObject schema() const { return m_schema; }
    /// The targets' names in the schema's order ("System", devices, other objects).
    QStringList targetNames() const;
    /// The schema of @p target; empty when the application has no such target now.
    QJsonObject target(const QString &name) const;
    QJsonObject property(const QString &target, const QString &name) const;
    /// The keys of enum @p type by value order; empty for a type that is no enum.
    QStringList enumKeys(const QString &type) const;
    bool isFlagEnum(const QString &type) const;
    /// The number of key @p key of enum @p type; -1 when there is none.
    int enumValue(const QString &type, const QString &key) const;
    /// Whether a flag property's value names @p flag.
    bool hasFlag(const QString &target, const QString &property, const QString &flag) const;
    PropertyValue value(const QString &target, const QString &property) const;

    /// The words a person reads for key @p key of enum @p type: the schema's label, else the key.
    QString enumLabel(const QString &type, const QString &key) const;
    /// @p text (one key, or flags joined by "|") of enum @p type in words: "enabled, charging".
    QString enumText(const QString &type, const QString &text) const;
    /// A property's value as a person reads it: enums and flags in words, the rest as the application wrote it.
    QString valueText(const QString &target, const QString &property) const;

    /// The file the panel's recording goes to; empty while it records nothing.
    QString recordingFile() const { return m_recording; }

    /// Runs a console line; @p done (may be empty) gets the reply.
    void run(const QString &line, const VantixControl::Client::Done &done = VantixControl::Client::Done());
    void setProperty(const QString &target, const QString &property, const QString &valueText,
        const VantixControl::Client::Done &done = VantixControl::Client::Done());

Q_SIGNALS:
    /// A new attach starts: everything known of the previous application is gone.
    void attaching();
    void attached();
    void detached(const QString &reason);
    /// Targets appeared or went (hot-plug), or the schema was loaded.
    void schemaChanged();
    void valueChanged(const QString &target, const QString &property);
    void eventReceived(const VantixControl::Event &event);
    void logReceived(const VantixControl::LogEntry &entry);
    /// A console line the panel sends, then its answer, for the log page.
    void sent(const QString &line);
    void answered(const QString &line, const VantixControl::Reply &reply);
    /// A recording started (with its file) or ended (empty).
    void recordingChanged(const QString &file);

private:
    /// The schema's entry for enum or flags @p type (keys, flag), empty when it has none.
    QJsonObject enumOf(const QString &type) const;

    void loadSchema();
    void loadValues(const QString &target);
    void refresh(const QString &target, const QString &property);
    void store(const QString &target, const QString &property, const QJsonValue &value, const QString &text);
    void onEvent(const VantixControl::Event &event);
    void reloadDirty();
    void followRecording(const QString &line, const VantixControl::Reply &reply);

    VantixControl::Client m_client;
    QString m_socketPath;
    QJsonObject m_schema;
    QHash<QString, QJsonObject> m_targets;
    QHash<QString, QHash<QString, PropertyValue>> m_values;
    QSet<QString> m_dirty;
    QString m_recording;
    bool m_schemaPending = false;
    bool m_schemaStale = false;
    int m_generation = 0;
};

#endif

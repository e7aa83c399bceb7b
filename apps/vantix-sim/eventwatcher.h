#ifndef VANTIXSIM_EVENTWATCHER_H
#define VANTIXSIM_EVENTWATCHER_H

#include <QHash>
#include <QList>
#include <QObject>
#include <QPointer>
#include <QStringList>

namespace TQ_SPAPI {
class System;
}

/**
 * Connects to every signal of System, of the interface objects it owns
 * (ITimeSettings, ICanMux, ...) and of every device, through the meta-object
 * only, so that a device class needs nothing here to be watched. Objects a
 * watched object reaches are watched too: values of QObject-pointer
 * properties (list models), QObject-valued signal arguments (a detected
 * device, a group-owner peer) and interface objects among its children
 * (peers, access points).
 */
class EventWatcher : public QObject
{
    Q_OBJECT

public:
    explicit EventWatcher(TQ_SPAPI::System *system, QObject *parent = nullptr);
    ~EventWatcher() override;

    /// Watches System and what it reaches, including every device present.
    void start();
    bool isStarted() const { return m_started; }

    /// Watches @p object (once) and what it reaches. @p name replaces the default name.
    void watch(QObject *object, const QString &name = QString());
    bool isWatched(const QObject *object) const { return m_entries.contains(object); }
    /// The console name of a watched object, empty for others.
    QString nameOf(const QObject *object) const;
    /// A watched object by console name or alias ("timesettings"), ignoring case.
    QObject *find(const QString &name) const;
    /// Watched objects, in the order they were first watched.
    QList<QObject *> objects() const { return m_order; }
    /// How often @p signal was emitted by objects named @p objectName.
    int emissions(const QString &objectName, const QByteArray &signal) const;

    /// Whether @p object is of a public interface class (ITimeSettings, IWifiP2PPeer).
    static bool isInterfaceObject(const QObject *object);
    /// "timesettings" for ITimeSettings.
    static QString aliasOf(const QObject *object);

Q_SIGNALS:
    void signalled(QObject *sender, const QString &objectName, const QString &signal, const QStringList &arguments);

private:
    friend class SignalRelay;

    struct Entry
    {
        QObject *relay = nullptr;
        QString fixedName;
        int serial = 0;
        QObject *root = nullptr;
    };

    void relay(QObject *sender, int methodIndex, void **arguments);
    void watchFrom(QObject *object, const QString &name, QObject *root);
    void scanReachable(QObject *object, QObject *root);
    void forget(QObject *object);
    /// The watched object, or descendant of @p root, at @p address; null for any other address.
    QObject *knownObject(const void *address, QObject *root) const;

    QPointer<TQ_SPAPI::System> m_system;
    bool m_started = false;
    QHash<const QObject *, Entry> m_entries;
    QList<QObject *> m_order;
    QHash<QString, int> m_serials;
    QHash<QString, QHash<QByteArray, int>> m_emissions;
};

#endif

#ifndef VANTIXCONTROL_SYSTEMWATCHER_P_H
#define VANTIXCONTROL_SYSTEMWATCHER_P_H

#include "event.h"
#include "valuetext_p.h"

#include <vantix/vantix_private_export.h>

#include <QHash>
#include <QList>
#include <QMetaEnum>
#include <QObject>
#include <QPointer>
#include <QVector>

#include <memory>

namespace TQ_SPAPI {
class System;
class SystemPrivate;
} // namespace TQ_SPAPI

namespace VantixControl {

class EventWatcher;

/**
 * Connects to every signal of System, of the interface objects it owns
 * (ITimeSettings, ICanMux, ...) and of every device, through the meta-object
 * only, so that a device class needs nothing here to be watched. Objects a
 * watched object reaches are watched too: values of QObject-pointer
 * properties (list models), QObject-valued signal arguments (a detected
 * device, a group-owner peer) and interface objects among its children
 * (peers, access points). A device is watched from the moment it is created,
 * so the changes made right after plugging it are seen.
 *
 * There is one per System, shared by all its sessions: the tree is watched,
 * named and counted once however many clients are connected, and each event
 * is built once and handed to the sessions that asked for events. It lives
 * as long as some session holds it.
 */
class VANTIX_PRIVATE_EXPORT SystemWatcher
    : public QObject
    , public ObjectNamer
{
    Q_OBJECT

public:
    /// The watcher of @p system, made for the first session that asks; a null system gets one of its own.
    static std::shared_ptr<SystemWatcher> of(TQ_SPAPI::System *system);
    ~SystemWatcher() override;

    /// Watches @p object (once) and what it reaches. @p name replaces the default name.
    void watch(QObject *object, const QString &name = QString());
    bool isWatched(const QObject *object) const { return m_entries.contains(object); }
    /// The console name of a watched object, empty for others.
    QString nameOf(const QObject *object) const override;
    /// A watched object by console name or alias ("timesettings"), ignoring case.
    QObject *find(const QString &name) const;
    /// Watched objects, in the order they were first watched.
    QList<QObject *> objects() const { return m_order; }

    /// Emissions by object name and signal since this watcher began; a copy is a cheap snapshot.
    using Emissions = QHash<QString, QHash<QByteArray, int>>;
    const Emissions &emissions() const { return m_emissions; }

    /// @p listener's signalled() gets every event from now on, until it is removed.
    void addListener(EventWatcher *listener);
    void removeListener(EventWatcher *listener);

    /// Whether @p object is of a public interface class (ITimeSettings, IWifiP2PPeer).
    static bool isInterfaceObject(const QObject *object);
    /// "timesettings" for ITimeSettings.
    static QString aliasOf(const QObject *object);

private:
    friend class SignalRelay;

    struct Argument
    {
        QString name;
        int typeId = QMetaType::UnknownType;
        QMetaEnum enumerator;
        bool holdsObject = false;
    };
    struct Method
    {
        QString name;
        QByteArray rawName;
        QVector<Argument> arguments;
    };
    struct Entry
    {
        QObject *relay = nullptr;
        QString fixedName;
        // The name once it can no longer change (a fixed name, a device, a known identity).
        mutable QString settledName;
        int serial = 0;
        QObject *root = nullptr;
        bool mayReach = false; // may lead to further objects, so its signals rescan it
    };

    explicit SystemWatcher(TQ_SPAPI::System *system);
    void start();
    void relay(QObject *sender, int methodIndex, void **arguments);
    Event buildEvent(QObject *sender, const Method &info, void **arguments) const;
    const Method &method(const QMetaObject *metaObject, int methodIndex);
    void watchFrom(QObject *object, const QString &name, QObject *root);
    void scanReachable(QObject *object, QObject *root);
    void forget(QObject *object);
    QString nameOf(const QObject *object, const Entry &entry) const;
    /// The watched object, or descendant of @p root, at @p address; null for any other address.
    QObject *knownObject(const void *address, QObject *root) const;

    QPointer<TQ_SPAPI::System> m_system;
    TQ_SPAPI::SystemPrivate *m_systemPrivate = nullptr;
    QHash<const QObject *, Entry> m_entries;
    QList<QObject *> m_order;
    QHash<QString, int> m_serials;
    Emissions m_emissions;
    QHash<QPair<const QMetaObject *, int>, Method> m_methods;
    QVector<QPointer<EventWatcher>> m_listeners;
    // Set while a signal is relayed: the watcher is then deleted only once it returns.
    int m_relaying = 0;
    bool m_orphaned = false;

    friend struct SystemWatcherDeleter;
};

} // namespace VantixControl

#endif

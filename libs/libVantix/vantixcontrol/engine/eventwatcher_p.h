#ifndef VANTIXCONTROL_EVENTWATCHER_P_H
#define VANTIXCONTROL_EVENTWATCHER_P_H

#include "event.h"
#include "valuetext_p.h"

#include <vantix/vantix_private_export.h>

#include <QHash>
#include <QList>
#include <QMetaEnum>
#include <QObject>
#include <QPointer>
#include <QVector>

namespace TQ_SPAPI {
class System;
class SystemPrivate;
} // namespace TQ_SPAPI

namespace VantixControl {

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
 * Each session has its own watcher: names and counts are its own.
 */
class VANTIX_PRIVATE_EXPORT EventWatcher
    : public QObject
    , public ObjectNamer
{
    Q_OBJECT

public:
    explicit EventWatcher(TQ_SPAPI::System *system, QObject *parent = nullptr);
    ~EventWatcher() override;

    /// Watches System and what it reaches, including every device present.
    void start();
    bool isStarted() const { return m_started; }
    /// Whether signalled() is emitted; emissions are counted either way.
    void setReporting(bool reporting) { m_reporting = reporting; }
    bool isReporting() const { return m_reporting; }

    /// Watches @p object (once) and what it reaches. @p name replaces the default name.
    void watch(QObject *object, const QString &name = QString());
    bool isWatched(const QObject *object) const { return m_entries.contains(object); }
    /// The console name of a watched object, empty for others.
    QString nameOf(const QObject *object) const override;
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
    void signalled(const VantixControl::Event &event);

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
        int serial = 0;
        QObject *root = nullptr;
        bool mayReach = false; // may lead to further objects, so its signals rescan it
        QHash<int, int> counts; // emissions by method index
    };

    void relay(QObject *sender, int methodIndex, void **arguments);
    const Method &method(const QMetaObject *metaObject, int methodIndex);
    void watchFrom(QObject *object, const QString &name, QObject *root);
    void scanReachable(QObject *object, QObject *root);
    void forget(QObject *object);
    /// The watched object, or descendant of @p root, at @p address; null for any other address.
    QObject *knownObject(const void *address, QObject *root) const;

    QPointer<TQ_SPAPI::System> m_system;
    TQ_SPAPI::SystemPrivate *m_systemPrivate = nullptr;
    bool m_started = false;
    bool m_reporting = false;
    QHash<const QObject *, Entry> m_entries;
    QList<QObject *> m_order;
    QHash<QString, int> m_serials;
    // Counts of objects gone, by name and signal, so a re-plugged device adds up.
    QHash<QString, QHash<QByteArray, int>> m_pastEmissions;
    QHash<QPair<const QMetaObject *, int>, Method> m_methods;
};

} // namespace VantixControl

#endif

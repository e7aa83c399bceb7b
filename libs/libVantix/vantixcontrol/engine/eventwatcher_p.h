#ifndef VANTIXCONTROL_EVENTWATCHER_P_H
#define VANTIXCONTROL_EVENTWATCHER_P_H

#include "event.h"
#include "systemwatcher_p.h"
#include "valuetext_p.h"

#include <vantix/vantix_private_export.h>

#include <QList>
#include <QObject>

#include <memory>

namespace TQ_SPAPI {
class System;
} // namespace TQ_SPAPI

namespace VantixControl {

/**
 * A session's view of the System's one SystemWatcher: the same objects and
 * names for every session, but events only while this session reports
 * them, and emission counts from this session's start, so that one
 * session's "expect ... emitted" never sees what happened before it began.
 * Objects a host or test hands to this session alone (watch()) are watched
 * for it alone, under the names it gives them.
 */
class VANTIX_PRIVATE_EXPORT EventWatcher
    : public QObject
    , public ObjectNamer
{
    Q_OBJECT

public:
    explicit EventWatcher(TQ_SPAPI::System *system, QObject *parent = nullptr);
    ~EventWatcher() override;

    /// Counts emissions from now on.
    void start();
    bool isStarted() const { return m_started; }
    /// Whether signalled() is emitted; emissions are counted either way.
    void setReporting(bool reporting);
    bool isReporting() const { return m_reporting; }

    /// Watches @p object (once) and what it reaches, for this session only. @p name replaces the default name.
    void watch(QObject *object, const QString &name = QString());
    bool isWatched(const QObject *object) const;
    /// The console name of a watched object, empty for others.
    QString nameOf(const QObject *object) const override;
    /// A watched object by console name or alias ("timesettings"), ignoring case.
    QObject *find(const QString &name) const;
    /// Watched objects: the System's in the order they were first watched, then this session's own.
    QList<QObject *> objects() const;
    /// How often @p signal was emitted by objects named @p objectName since start().
    int emissions(const QString &objectName, const QByteArray &signal) const;

    static bool isInterfaceObject(const QObject *object) { return SystemWatcher::isInterfaceObject(object); }
    static QString aliasOf(const QObject *object) { return SystemWatcher::aliasOf(object); }

Q_SIGNALS:
    void signalled(const VantixControl::Event &event);

private:
    std::shared_ptr<SystemWatcher> m_shared;
    // What only this session watches; made at its first watch().
    std::shared_ptr<SystemWatcher> m_own;
    SystemWatcher::Emissions m_before;
    bool m_started = false;
    bool m_reporting = false;
};

} // namespace VantixControl

#endif

#ifndef VANTIXCONTROL_SNAPSHOTSTORE_P_H
#define VANTIXCONTROL_SNAPSHOTSTORE_P_H

#include "snapshot_p.h"

#include <QMap>
#include <QObject>
#include <QPointer>
#include <QStringList>

namespace VantixControl {

/**
 * The snapshots of one System's engine: those saved by name, which any
 * client may restore, and the state right after apiReady, which reset
 * restores. At most MaxNamed are kept by name, a few KB each.
 */
class SnapshotStore
{
public:
    static constexpr int MaxNamed = 64;
    static constexpr int MaxNameLength = 64;

    /// Whether @p name is one a snapshot may have; why not in @p error.
    static bool isValidName(const QString &name, QString *error);

    /// Keeps @p snapshot as @p name, replacing one of that name; false when MaxNamed are kept already.
    bool save(const QString &name, const Snapshot &snapshot, bool *replaced);
    const Snapshot *find(const QString &name) const;
    bool remove(const QString &name);
    QStringList names() const { return m_named.keys(); }

    /// Records @p system's state once it has sent apiReady and any flight-mode transition begun then has ended.
    void recordStartOf(TQ_SPAPI::System *system, QObject *context);
    const Snapshot *start() const { return m_hasStart ? &m_start : nullptr; }

    /// The restore that runs now, whichever client started it; null when none does.
    QPointer<QObject> restoring;

private:
    void recordStartNowOrLater(TQ_SPAPI::System *system, QObject *context);

    QMap<QString, Snapshot> m_named;
    Snapshot m_start;
    bool m_hasStart = false;
};

} // namespace VantixControl

#endif

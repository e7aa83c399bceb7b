#ifndef VANTIXCONTROL_RESTOREJOB_P_H
#define VANTIXCONTROL_RESTOREJOB_P_H

#include "hardwarerestore_p.h"
#include "timedjob_p.h"

#include <QPointer>

namespace VantixControl {

class Engine;

/**
 * snapshot restore and reset: brings the hardware to a snapshot in passes.
 * Each pass unplugs and plugs, sets values, then flight mode, and waits for
 * what it started (abilities 100 ms, disks 250 and 500 ms, flight mode 2 s)
 * before the next one looks again: a port that becomes active brings its
 * stick, which the next pass mounts; flight mode switches the radios, which
 * the next pass sets again. The answer comes once a pass finds nothing left
 * to do, and names what still differs.
 */
class RestoreJob : public TimedJob
{
public:
    /// @p what names the snapshot in the answer ("snapshot before-drain"); the job is @p engine's restore.
    RestoreJob(SessionPrivate &session, Engine *engine, const Snapshot &snapshot, const QString &what);

private:
    void begin() override;
    void pass();
    void report();

    QPointer<Engine> m_engine;
    HardwareRestore m_restore;
    QString m_what;
    RestoreWork m_total;
    int m_passes = 0;
    int m_settleWaitMs = 0;
};

} // namespace VantixControl

#endif

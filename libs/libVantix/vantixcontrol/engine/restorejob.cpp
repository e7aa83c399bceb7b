#include "restorejob_p.h"

#include "engine_p.h"
#include "session_p.h"
#include "simulationdelays_p.h"
#include "snapshotstore_p.h"
#include "timing_p.h"

#include <vantix/system.h>

using TQ_SPAPI::System;

namespace VantixControl {

namespace {
// Enough for a port that brings a stick to be mounted, with room for the rest.
constexpr int MaxPasses = 5;
// After the longest delay: the simulation's own timer, started earlier, comes first.
constexpr int SettleMs = 2 * Timing::ExpectPollMs;
// In all, longer than any transition, short of waiting for ever on abilities requested again and again.
constexpr int MaxSettleWaitMs = 2 * TQ_SPAPI::SimulationDelays::FlightModeTransitionMs;
} // namespace

RestoreJob::RestoreJob(SessionPrivate &session, Engine *engine, const Snapshot &snapshot, const QString &what)
    : TimedJob(session)
    , m_engine(engine)
    , m_restore(session.system, snapshot)
    , m_what(what)
{
    EnginePrivate::get(engine)->snapshots.restoring = this;
}

void RestoreJob::begin()
{
    pass();
}

void RestoreJob::pass()
{
    System *system = m_session.system;
    if (!system) {
        finish(Reply::failure(ErrorClass::Failed, QStringLiteral("the system has gone")));
        return;
    }
    // Each pass looks at the hardware once what was set in motion, by this restore or before it, has taken
    // effect; a transition refuses flight-mode requests until it ends, whoever began it.
    if (!Snapshot::isSettled(system) && m_settleWaitMs < MaxSettleWaitMs) {
        m_settleWaitMs += Timing::ExpectPollMs;
        after(Timing::ExpectPollMs, [this] { pass(); });
        return;
    }
    RestoreWork step;
    if (++m_passes <= MaxPasses) {
        m_restore.plugging(&step);
        m_restore.values(&step);
        m_restore.flightMode(&step);
    }
    if (step.waitMs < 0) {
        report();
        return;
    }
    m_total.unplugged += step.unplugged;
    m_total.plugged += step.plugged;
    m_total.values += step.values;
    m_total.flightMode = m_total.flightMode || step.flightMode;
    after(step.waitMs + SettleMs, [this] { pass(); });
}

void RestoreJob::report()
{
    // The next restore may start as soon as this one has answered.
    if (m_engine) {
        EnginePrivate::get(m_engine)->snapshots.restoring = nullptr;
    }
    QStringList done;
    if (m_total.unplugged > 0) {
        done.append(QStringLiteral("%1 unplugged").arg(m_total.unplugged));
    }
    if (m_total.plugged > 0) {
        done.append(QStringLiteral("%1 plugged").arg(m_total.plugged));
    }
    if (m_total.values > 0) {
        done.append(QStringLiteral("%1 set").arg(m_total.values));
    }
    if (m_total.flightMode) {
        done.append(QStringLiteral("flight mode switched"));
    }
    QStringList lines;
    QStringList failed;
    for (const RestoreDifference &difference : m_restore.differences()) {
        if (difference.mark) {
            lines.append(QStringLiteral("  kept: ") + difference.text());
        } else {
            lines.append(QStringLiteral("  not restored: ") + difference.text());
            failed.append(difference.what);
        }
    }
    if (!failed.isEmpty()) {
        finish(Reply::failure(
            ErrorClass::Failed, QStringLiteral("%1 not restored: %2").arg(m_what, failed.join(QLatin1String(", "))))
                   .withLines(lines));
        return;
    }
    const QString summary = done.isEmpty() ? QStringLiteral("nothing differed") : done.join(QLatin1String(", "));
    finish(Reply::success(QStringLiteral("%1 restored: %2").arg(m_what, summary)).withLines(lines));
}

} // namespace VantixControl

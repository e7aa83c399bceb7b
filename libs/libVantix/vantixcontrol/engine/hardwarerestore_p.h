#ifndef VANTIXCONTROL_HARDWARERESTORE_P_H
#define VANTIXCONTROL_HARDWARERESTORE_P_H

#include "snapshot_p.h"

#include <QPointer>
#include <QString>
#include <QVector>

#include <algorithm>

namespace TQ_SPAPI {
class System;
}

namespace VantixControl {

/// What the steps of a restore did.
struct RestoreWork
{
    int unplugged = 0;
    int plugged = 0;
    /// Operations called to set values and status bits.
    int values = 0;
    bool flightMode = false;
    /// The longest of the simulation's delays among what was started; -1 when nothing was.
    int waitMs = -1;

    void started(int delayMs) { waitMs = std::max(waitMs, delayMs); }
};

/// Something that differs from its snapshot once a restore is over.
struct RestoreDifference
{
    /// "ID_BATTERY_1ST.fuelGauge", "ID_USB_OTG_A", "System.flightModeStatus".
    QString what;
    QString now;
    QString saved;
    /// Why nothing sets it; empty when an operation was there and the device did not take it.
    QString why;
    /// Left by the restoring operations themselves (the overrides' F_OVERRIDE, the charge counter): kept, no failure.
    bool mark = false;

    /// "ID_DISK_USER_DATA.status is F_ENABLE|F_FORMATTED, saved F_ENABLE: no operation clears F_FORMATTED".
    QString text() const;
};

/**
 * Brings one System's simulated hardware to a snapshot through the
 * operations that own each change, so that the application receives the
 * signals it would for those changes: hot-plug (the debug controller's own
 * operations for batteries, the USB device and the OTG ports), the override
 * operations (fuel gauge, charging, mains power, current, network state and
 * address, SSID, channel, signal, Wi-Fi on and off, country, jack, button),
 * the LEDs' on, off and setFlash, the disks' format, mount and unmount,
 * abilities, setters of writable properties, the system information and
 * flight mode. Only what differs is touched, and each step starts what it
 * can at once; what takes effect later (abilities, disks, flight mode)
 * tells the caller how long to wait before the next step looks again.
 */
class HardwareRestore
{
public:
    HardwareRestore(TQ_SPAPI::System *system, const Snapshot &saved);

    /// Unplugs what the snapshot lacks or holds as another device, then plugs what it holds.
    void plugging(RestoreWork *work) const;
    /// Sets every value of the plugged devices, the time settings, the CAN multiplexer and the system information.
    void values(RestoreWork *work) const;
    void flightMode(RestoreWork *work) const;
    /// What differs now, in the snapshot's order.
    QVector<RestoreDifference> differences() const;

private:
    QPointer<TQ_SPAPI::System> m_system;
    Snapshot m_saved;
};

} // namespace VantixControl

#endif

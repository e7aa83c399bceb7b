#include "snapshotstore_p.h"

#include <vantix/system.h>

#include <algorithm>
#include <memory>

using TQ_SPAPI::System;

namespace VantixControl {

bool SnapshotStore::isValidName(const QString &name, QString *error)
{
    const bool plain = std::all_of(name.begin(), name.end(), [](QChar c) {
        return (c.unicode() < 128 && c.isLetterOrNumber()) || c == QLatin1Char('-') || c == QLatin1Char('_') ||
            c == QLatin1Char('.');
    });
    if (name.isEmpty() || name.size() > MaxNameLength || !plain) {
        *error = QStringLiteral("name: expected 1 to %1 letters, digits, '-', '_' or '.', got \"%2\"")
                     .arg(MaxNameLength)
                     .arg(name);
        return false;
    }
    return true;
}

bool SnapshotStore::save(const QString &name, const Snapshot &snapshot, bool *replaced)
{
    *replaced = m_named.contains(name);
    if (!*replaced && m_named.size() >= MaxNamed) {
        return false;
    }
    m_named.insert(name, snapshot);
    return true;
}

const Snapshot *SnapshotStore::find(const QString &name) const
{
    const auto it = m_named.constFind(name);
    return it == m_named.constEnd() ? nullptr : &it.value();
}

bool SnapshotStore::remove(const QString &name)
{
    return m_named.remove(name) > 0;
}

void SnapshotStore::recordStartOf(System *system, QObject *context)
{
    // The engine is made as the System is initialised: the slots an application connected before that have run,
    // and the commands of clients, which come after apiReady, have not.
    QObject::connect(
        system, &System::apiReady, context, [this, system, context] { recordStartNowOrLater(system, context); });
}

void SnapshotStore::recordStartNowOrLater(System *system, QObject *context)
{
    if (!system->flightModeStatus().testFlag(System::FLIGHT_MODE_TRANSITION)) {
        m_start = Snapshot::take(system);
        m_hasStart = true;
        return;
    }
    // An application that switches flight mode as it starts: its state is the one after the switch.
    // The connection goes with its slot, which holds it, once disconnected.
    const auto connection = std::make_shared<QMetaObject::Connection>();
    *connection = QObject::connect(system, &System::flightModeStatusChanged, context,
        [this, system, context, connection](System::FligtModeFlags flags) {
            if (!flags.testFlag(System::FLIGHT_MODE_TRANSITION)) {
                QObject::disconnect(*connection);
                recordStartNowOrLater(system, context);
            }
        });
}

} // namespace VantixControl

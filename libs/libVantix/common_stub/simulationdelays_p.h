#ifndef VANTIX_SIMULATIONDELAYS_P_H
#define VANTIX_SIMULATIONDELAYS_P_H

namespace TQ_SPAPI {

/// How long the simulated hardware takes to react, stated once for the simulation and for the tools that wait for it.
namespace SimulationDelays {

/// A switched capability (setAbility, clearAbility) shows in the status this much later.
constexpr int AbilityMs = 100;
/// apiReady follows initialize() by this much.
constexpr int ApiReadyMs = 100;
/// A disk mounts or unmounts this much after being asked.
constexpr int MountMs = 250;
/// A disk is formatted this much after being asked.
constexpr int FormatMs = 500;
/// A disk operation that fails says so this much later.
constexpr int DiskFailureMs = 100;
/// Entering or leaving flight mode takes this long.
constexpr int FlightModeTransitionMs = 2000;

} // namespace SimulationDelays
} // namespace TQ_SPAPI

#endif

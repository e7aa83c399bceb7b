// Hot-plug: USB OTG port A and a second battery plugged and unplugged through
// debug commands, with a listener on System::deviceDetected/deviceRemoved.
// Memory is read after a thousand cycles and after the last one, each time
// once the event loop has run past the 100 ms delay of a plugged device.

#include "benchmarks.h"
#include "benchsupport.h"

#include <vantix/vantix.h>

#include <qbcom/parametercontroller.h>

#include <QCoreApplication>
#include <QSharedPointer>

#include <benchmark/benchmark.h>

#include <cstdlib>
#include <functional>

using namespace TQ_SPAPI;

namespace VantixBench {

namespace {
constexpr long DefaultCycles = 1000000;
constexpr long FirstCheckpoint = 1000;
// Longer than the ability delay of a new device, so its timers have fired.
constexpr int SettleMs = 150;

long cycles()
{
    const char *env = std::getenv("VANTIX_BENCH_CYCLES");
    const long n = env ? std::atol(env) : DefaultCycles;
    return n > 10 * FirstCheckpoint ? n : DefaultCycles;
}

struct Snapshot
{
    long rssKiB = 0;
    long objects = 0;
    double heapBytes = 0;
};

Snapshot snapshot()
{
    settle(SettleMs);
    return {residentKiB(), objectsAlive(), double(heapInUse())};
}

// Runs @p cycle once per iteration; @p detected and @p removed count what the listener saw.
void runCycles(benchmark::State &state, const std::function<void()> &cycle, const long &detected, const long &removed)
{
    installObjectCounter();
    // Code run for the first time adds its pages to the resident set, and
    // Qt builds some structures on first use; a warm-up and one snapshot
    // come first, so that the figures compare steady states.
    for (long i = 0; i < FirstCheckpoint; ++i) {
        cycle();
    }
    snapshot();
    const long warmDetected = detected;
    const long warmRemoved = removed;

    Snapshot first;
    long done = 0;
    for (auto _ : state) {
        cycle();
        if (++done == FirstCheckpoint) {
            state.PauseTiming();
            first = snapshot();
            state.ResumeTiming();
        }
    }
    const Snapshot last = snapshot();

    if (detected - warmDetected != done || removed - warmRemoved != done) {
        state.SkipWithError("the listener did not see every add and remove");
        return;
    }
    state.counters["rss_1k_kib"] = double(first.rssKiB);
    state.counters["rss_end_kib"] = double(last.rssKiB);
    state.counters["objects_1k"] = double(first.objects);
    state.counters["objects_end"] = double(last.objects);
    state.counters["heap_1k"] = first.heapBytes;
    state.counters["heap_end"] = last.heapBytes;
    state.counters["heap_growth_per_cycle"] = (last.heapBytes - first.heapBytes) / double(done - FirstCheckpoint);
    state.counters["cycles"] = double(done);
}

void debugCycle(benchmark::State &state, const char *add, const char *remove)
{
    System *system = benchSystem();
    TQ_QBCom::ParameterController &parameters = controller();
    long detected = 0;
    long removed = 0;
    QObject listener;
    QObject::connect(system, &System::deviceDetected, &listener, [&detected] { ++detected; });
    QObject::connect(system, &System::deviceRemoved, &listener, [&removed] { ++removed; });
    const QVariant addValue(QString::fromLatin1(add));
    const QVariant removeValue(QString::fromLatin1(remove));
    // The port operations write an empty debug line each; the log is not what is measured.
    QuietLog quiet;
    runCycles(
        state,
        [&] {
            parameters.setValue(debugParameterName(), addValue);
            // deviceDetected is queued.
            QCoreApplication::processEvents();
            parameters.setValue(debugParameterName(), removeValue);
        },
        detected, removed);
}

// A plain object shared, announced by a queued call, and announced again when it goes.
void plainCycle(benchmark::State &state)
{
    QObject hub;
    long detected = 0;
    long removed = 0;
    runCycles(
        state,
        [&] {
            QSharedPointer<QObject> object(new QObject);
            QObject::connect(object.data(), &QObject::destroyed, &hub, [&removed] { ++removed; });
            QMetaObject::invokeMethod(
                &hub, [object, &detected] { ++detected; }, Qt::QueuedConnection);
            QCoreApplication::processEvents();
            object.reset();
        },
        detected, removed);
}
} // namespace

void registerHotplugBenchmarks()
{
    using benchmark::RegisterBenchmark;
    const long n = cycles();
    RegisterBenchmark("Hotplug/plain", plainCycle)->Iterations(n)->Unit(benchmark::kMicrosecond);
    RegisterBenchmark("Hotplug/otg-a", debugCycle, "addotga", "rmotga")->Iterations(n)->Unit(benchmark::kMicrosecond);
    RegisterBenchmark("Hotplug/battery", debugCycle, "addbattery,2", "rmbattery,2")
        ->Iterations(n)
        ->Unit(benchmark::kMicrosecond);
}

} // namespace VantixBench

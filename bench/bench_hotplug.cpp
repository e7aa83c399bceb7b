// Hot-plug: USB OTG port A and a second battery plugged and unplugged through
// debug commands, with a listener on System::deviceDetected/deviceRemoved.
// Memory is read after a thousand cycles and after the last one; both after
// the event loop has run the 100 ms timers that the plugged devices leave.

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
constexpr long SecondCheckpoint = 100000;
// Longer than the ability delay of a new device, so its timers have fired.
constexpr int SettleMs = 150;

long cycles()
{
    const char *env = std::getenv("VANTIX_BENCH_CYCLES");
    const long n = env ? std::atol(env) : DefaultCycles;
    return n > SecondCheckpoint ? n : DefaultCycles;
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
    Snapshot first;
    Snapshot second;
    long done = 0;
    for (auto _ : state) {
        cycle();
        ++done;
        if (done == FirstCheckpoint || done == SecondCheckpoint) {
            state.PauseTiming();
            (done == FirstCheckpoint ? first : second) = snapshot();
            state.ResumeTiming();
        }
    }
    const Snapshot last = snapshot();

    if (detected != done || removed != done) {
        state.SkipWithError("the listener did not see every add and remove");
        return;
    }
    state.counters["rss_1k_kib"] = double(first.rssKiB);
    state.counters["rss_end_kib"] = double(last.rssKiB);
    state.counters["objects_1k"] = double(first.objects);
    state.counters["objects_end"] = double(last.objects);
    state.counters["heap_1k"] = first.heapBytes;
    state.counters["heap_end"] = last.heapBytes;
    // Past the warm-up of Qt's own bookkeeping, what each further cycle keeps.
    state.counters["heap_growth_per_cycle"] = (last.heapBytes - second.heapBytes) / double(done - SecondCheckpoint);
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

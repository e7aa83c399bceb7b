// Idle cost: CPU time of an initialised PT_TOLVEX_PLUS system whose network
// devices poll the host once a second, against an empty event loop, each in
// a fresh child process and over the same window, side by side.

#include "benchmarks.h"
#include "benchsupport.h"

#include <vantix/system.h>

#include <qbcommon/appconfig.h>

#include <QElapsedTimer>
#include <QTemporaryDir>

#include <benchmark/benchmark.h>

#include <cstdio>
#include <cstdlib>

#include <sys/resource.h>

using namespace TQ_SPAPI;

namespace VantixBench {

namespace {
constexpr int DefaultIdleMs = 10000;
// Past apiReady and the ability timers of the start.
constexpr int StartSettleMs = 300;

int idleMs()
{
    const char *env = std::getenv("VANTIX_BENCH_IDLE_MS");
    const int ms = env ? std::atoi(env) : DefaultIdleMs;
    return ms > 0 ? ms : DefaultIdleMs;
}

double cpuSeconds()
{
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    const auto seconds = [](const timeval &t) { return double(t.tv_sec) + double(t.tv_usec) / 1e6; };
    return seconds(usage.ru_utime) + seconds(usage.ru_stime);
}

void idle(benchmark::State &state)
{
    double system = 0;
    double empty = 0;
    double window = 0;
    for (auto _ : state) {
        // Side by side: the two children barely use a core between them.
        const Child withSystem = startChild({selfPath(), "--vantix-bench-child=idle-system"});
        const Child emptyLoop = startChild({selfPath(), "--vantix-bench-child=idle-empty"});
        int systemExit = -1;
        int emptyExit = -1;
        const auto systemFigures = parseFigures(finishChild(withSystem, &systemExit));
        const auto emptyFigures = parseFigures(finishChild(emptyLoop, &emptyExit));
        if (systemExit != 0 || emptyExit != 0 || !systemFigures.count("cpu_us") || !emptyFigures.count("cpu_us")) {
            state.SkipWithError("idle child failed");
            return;
        }
        system += systemFigures.at("cpu_us") / 1e6;
        empty += emptyFigures.at("cpu_us") / 1e6;
        window = systemFigures.at("wall_us") / 1e6;
        state.SetIterationTime(window);
    }
    state.counters["cpu_system_s"] = system;
    state.counters["cpu_empty_s"] = empty;
    state.counters["window_s"] = window;
}
} // namespace

void registerIdleBenchmarks()
{
    benchmark::RegisterBenchmark("Idle/tolvex-plus-vs-empty-loop", idle)
        ->Iterations(1)
        ->UseManualTime()
        ->Unit(benchmark::kSecond);
}

int runIdleChild(const std::string &mode)
{
    QTemporaryDir root;
    AppConfig::instance()->setRootPath(root.path());
    if (mode == "idle-system") {
        SystemPlatformType::type = System::PT_TOLVEX_PLUS;
        System::instance()->initialize(QStringLiteral("vantix-bench-idle"));
    }
    settle(StartSettleMs);

    QElapsedTimer clock;
    const double before = cpuSeconds();
    clock.start();
    settle(idleMs());
    const double used = cpuSeconds() - before;
    std::printf("cpu_us=%.0f wall_us=%lld\n", used * 1e6, clock.nsecsElapsed() / 1000);
    System::releaseInstance();
    return 0;
}

} // namespace VantixBench

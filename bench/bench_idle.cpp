// Idle cost: CPU time and wake-ups of an initialised PT_TOLVEX_PLUS system
// whose network devices poll the host once a second, with its control server
// and with VANTIX_CONTROL=off, against an empty event loop; each in a fresh
// child process, all three over the same window, side by side.

#include "benchmarks.h"
#include "benchsupport.h"

#include <vantix/system.h>

#include <qbcommon/appconfig.h>

#include <QElapsedTimer>
#include <QTemporaryDir>

#include <benchmark/benchmark.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <map>
#include <utility>

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

struct Usage
{
    double cpuSeconds = 0;
    long wakeups = 0; // voluntary context switches: each time the process slept and woke
};

Usage usage()
{
    rusage r{};
    getrusage(RUSAGE_SELF, &r);
    const auto seconds = [](const timeval &t) { return double(t.tv_sec) + double(t.tv_usec) / 1e6; };
    return {seconds(r.ru_utime) + seconds(r.ru_stime), r.ru_nvcsw};
}

void idle(benchmark::State &state)
{
    // Side by side, over the same window: the children barely use a core between them.
    const std::vector<std::pair<const char *, Environment>> children{
        {"system", {}},
        {"system_off", {"VANTIX_CONTROL=off"}},
        {"empty", {}},
    };
    std::map<std::string, double> cpu;
    std::map<std::string, double> wakeups;
    double window = 0;
    for (auto _ : state) {
        std::vector<Child> started;
        for (const auto &c : children) {
            const char *mode = std::strcmp(c.first, "empty") == 0 ? "idle-empty" : "idle-system";
            started.push_back(startChild({selfPath(), std::string("--vantix-bench-child=") + mode}, c.second));
        }
        for (std::size_t i = 0; i < children.size(); ++i) {
            int exitCode = -1;
            const auto figures = parseFigures(finishChild(started[i], &exitCode));
            if (exitCode != 0 || !figures.count("cpu_us") || !figures.count("wakeups")) {
                state.SkipWithError("idle child failed");
                return;
            }
            cpu[children[i].first] += figures.at("cpu_us") / 1e6;
            wakeups[children[i].first] += figures.at("wakeups");
            window = figures.at("wall_us") / 1e6;
        }
        state.SetIterationTime(window);
    }
    for (const auto &c : children) {
        state.counters[std::string("cpu_") + c.first + "_s"] = cpu[c.first];
        state.counters[std::string("wakeups_") + c.first] = wakeups[c.first];
    }
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
    const Usage before = usage();
    clock.start();
    settle(idleMs());
    const Usage after = usage();
    std::printf("cpu_us=%.0f wakeups=%ld wall_us=%lld\n", (after.cpuSeconds - before.cpuSeconds) * 1e6,
        after.wakeups - before.wakeups, clock.nsecsElapsed() / 1000);
    System::releaseInstance();
    return 0;
}

} // namespace VantixBench

// vantix-bench: start-up, command path, hot-plug, idle cost and memory of the
// desktop stub, each figure beside a plain-Qt baseline measured in the same
// run. Google Benchmark prints its own lines as it goes; a table of figures,
// baselines, ratios and targets follows at the end.

#include "benchmarks.h"
#include "benchsupport.h"

#include <vantix/system.h>

#include <QCoreApplication>
#include <QFile>

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <map>
#include <string>
#include <vector>

using namespace VantixBench;

namespace {

struct Result
{
    double seconds = 0; // wall (or manual) time per iteration
    double cpuSeconds = 0; // CPU time of this thread per iteration
    std::map<std::string, double> counters;
    bool failed = false;
};

std::map<std::string, Result> s_results;

class CollectingReporter : public benchmark::ConsoleReporter
{
public:
    void ReportRuns(const std::vector<Run> &runs) override
    {
        ConsoleReporter::ReportRuns(runs);
        for (const Run &run : runs) {
            if (run.run_type != Run::RT_Iteration) {
                continue;
            }
            Result result;
            const double iterations = run.iterations > 0 ? double(run.iterations) : 1.0;
            result.seconds = run.real_accumulated_time / iterations;
            result.cpuSeconds = run.cpu_accumulated_time / iterations;
            for (const auto &counter : run.counters) {
                result.counters[counter.first] = counter.second.value;
            }
            result.failed = run.error_occurred;
            s_results[run.run_name.function_name] = result;
        }
    }
};

const Result *result(const std::string &name)
{
    const auto it = s_results.find(name);
    return it == s_results.end() || it->second.failed ? nullptr : &it->second;
}

double counter(const Result *r, const char *name)
{
    const auto it = r->counters.find(name);
    return it == r->counters.end() ? NAN : it->second;
}

// --- Table ------------------------------------------------------------------

enum class Unit { Time, KiB, Count, Bytes };

std::string format(double value, Unit unit)
{
    if (std::isnan(value)) {
        return "-";
    }
    char text[64];
    switch (unit) {
    case Unit::Time:
        if (std::fabs(value) >= 1.0) {
            std::snprintf(text, sizeof text, "%.2f s", value);
        } else if (std::fabs(value) >= 1e-3) {
            std::snprintf(text, sizeof text, "%.2f ms", value * 1e3);
        } else if (std::fabs(value) >= 1e-6) {
            std::snprintf(text, sizeof text, "%.2f us", value * 1e6);
        } else {
            std::snprintf(text, sizeof text, "%.1f ns", value * 1e9);
        }
        break;
    case Unit::KiB:
        std::snprintf(text, sizeof text, "%.2f MiB", value / 1024.0);
        break;
    case Unit::Count:
        std::snprintf(text, sizeof text, "%.0f", value);
        break;
    case Unit::Bytes:
        std::snprintf(text, sizeof text, "%.0f B", value);
        break;
    }
    return text;
}

// A difference with its sign.
std::string signedFormat(double value, Unit unit)
{
    return (value >= 0 ? "+" : "-") + format(std::fabs(value), unit);
}

struct Row
{
    std::string label;
    double measured;
    double baseline; // NaN: a figure that only explains another
    Unit unit;
    std::string note; // what the target reads, or what explains the figure
    std::string target; // empty: a figure without a target
    bool met = true;
};

std::vector<std::pair<std::string, std::vector<Row>>> s_sections;

void section(const std::string &title)
{
    s_sections.emplace_back(title, std::vector<Row>());
}

void add(Row row)
{
    s_sections.back().second.push_back(std::move(row));
}

std::string named(const char *prefix, const Platform &p)
{
    return std::string(prefix) + p.name;
}

void buildStartup()
{
    section("Start-up in this process: System::instance() + initialize(), wall time;\n"
            "baseline: as many plain QObjects + one QSettings read");
    for (const Platform &p : platforms()) {
        const Result *plain = result(named("Startup/plain/", p));
        const std::string objects = " (" + std::to_string(objectsPerStart(p.type)) + " objects)";
        if (const Result *m = result(named("Startup/new-unit/", p))) {
            add({std::string("new unit, creates nvram, ") + p.name + objects, m->seconds, plain ? plain->seconds : NAN,
                Unit::Time, "a sync " + format(counter(m, "sync_s"), Unit::Time), "< 5 ms", m->seconds < 5e-3});
        }
        if (const Result *m = result(named("Startup/existing-unit/", p))) {
            add({std::string("existing unit, reads nvram, ") + p.name, m->seconds, plain ? plain->seconds : NAN,
                Unit::Time, "", "< 5 ms", m->seconds < 5e-3});
        }
    }

    section("Start-up, first initialize() in a new process, existing unit, wall time;\n"
            "baseline: the same plain work in a new process");
    for (const Platform &p : platforms()) {
        const Result *m = result(named("Startup/first-in-process/", p));
        const Result *b = result(named("Startup/first-plain/", p));
        if (m && b) {
            add({std::string("first start, ") + p.name, m->seconds, b->seconds, Unit::Time,
                "w/o bearer " + format(counter(m, "without_host_s"), Unit::Time), "< 5 ms", m->seconds < 5e-3});
        }
    }
    if (const Result *bearer = result("Startup/first-bearer")) {
        add({"(host part) first QNetworkConfigurationManager: bearer plugins", bearer->seconds, NAN, Unit::Time, "",
            ""});
    }

    section("Process: vantix-sim --exit-after-ready, existing unit, wall time;\n"
            "baseline: bare Qt program waiting the same 100 ms");
    const Result *bare = result("Process/bare-qt");
    if (!bare) {
        return;
    }
    for (const Platform &p : platforms()) {
        if (const Result *m = result(named("Process/vantix-sim/", p))) {
            add({std::string("vantix-sim ") + p.name, m->seconds, bare->seconds, Unit::Time,
                signedFormat(m->seconds - bare->seconds, Unit::Time), ""});
        }
    }
    if (const Result *m = result("Process/bare-qt-bearer")) {
        add({"(host part) bare Qt + configuration manager + interfaces", m->seconds, bare->seconds, Unit::Time,
            signedFormat(m->seconds - bare->seconds, Unit::Time), ""});
    }
}

void buildCommands()
{
    section("Command path: setValue(\"VantixDebug\", ...) until the listener has the signal, CPU time;\n"
            "baseline: one QString signal to a slot");
    const Result *bare = result("Command/bare-signal");
    if (!bare) {
        return;
    }
    if (const Result *m = result("Command/parameter-only")) {
        add({"(platform part) setValue() to a counting slot, no Vantix", m->cpuSeconds, bare->cpuSeconds, Unit::Time,
            "", ""});
    }
    const std::pair<const char *, const char *> commands[] = {
        {"Command/fuel", "setbatteryfuel,40 -> fuelGaugeChanged"},
        {"Command/network-state", "setwiredstate,12 -> networkStateChanged"},
        {"Command/wifi-strength", "setwifisignalstrength,55 -> wifiSignalStrengthChanged"},
        {"Command/illegal", "nosuchcommand,1 -> \"Illegal command\""},
    };
    for (const auto &c : commands) {
        const Result *m = result(c.first);
        if (!m) {
            continue;
        }
        char perSecond[64];
        std::snprintf(perSecond, sizeof perSecond, "%.0f k/s", 1e-3 / m->seconds);
        add({c.second, m->cpuSeconds, bare->cpuSeconds, Unit::Time, perSecond, "<= 5x, >= 500 k/s",
            m->cpuSeconds <= 5 * bare->cpuSeconds && m->seconds <= 2e-6});
    }
}

void buildHotplug()
{
    section("Hot-plug: add + remove through debug commands, listener on deviceDetected/deviceRemoved;\n"
            "baseline: a shared QObject announced by a queued call and deleted (CPU), the figure after 1000 cycles");
    const Result *plain = result("Hotplug/plain");
    const std::pair<const char *, const char *> kinds[] = {
        {"Hotplug/otg-a", "addotga/rmotga"},
        {"Hotplug/battery", "addbattery,2/rmbattery,2"},
    };
    for (const auto &k : kinds) {
        const Result *m = result(k.first);
        if (!m) {
            continue;
        }
        const std::string name = k.second;
        if (plain) {
            add({name + ", CPU per cycle", m->cpuSeconds, plain->cpuSeconds, Unit::Time, "", ""});
        }
        const std::string after = " after " + format(counter(m, "cycles"), Unit::Count) + " cycles";
        const double rssEnd = counter(m, "rss_end_kib");
        const double rss1k = counter(m, "rss_1k_kib");
        char rssDiff[64];
        std::snprintf(rssDiff, sizeof rssDiff, "%+.0f KiB", rssEnd - rss1k);
        add({name + ", VmRSS" + after, rssEnd, rss1k, Unit::KiB, rssDiff, "equal", rssEnd <= rss1k});
        const double objEnd = counter(m, "objects_end");
        const double obj1k = counter(m, "objects_1k");
        add({name + ", live QObjects" + after, objEnd, obj1k, Unit::Count, format(objEnd - obj1k, Unit::Count), "equal",
            objEnd == obj1k});
        const double growth = counter(m, "heap_growth_per_cycle");
        char perCycle[64];
        std::snprintf(perCycle, sizeof perCycle, "%+.4f B/cycle", growth);
        // Which free chunk serves a request moves the allocator's count by some
        // hundred bytes either way; a byte kept per cycle would be a megabyte.
        const double heapEnd = counter(m, "heap_end");
        const double heap1k = counter(m, "heap_1k");
        add({name + ", heap in use" + after, heapEnd, heap1k, Unit::Bytes, perCycle, "< 4 KiB in all",
            heapEnd - heap1k < 4096});
    }
}

void buildIdle()
{
    const Result *m = result("Idle/tolvex-plus-vs-empty-loop");
    if (!m) {
        return;
    }
    const double window = counter(m, "window_s");
    section("Idle: CPU time over " + format(window, Unit::Time) +
        ", initialised tolvex-plus (network polls every 1000 ms);\nbaseline: an empty event loop");
    const double system = counter(m, "cpu_system_s");
    const double empty = counter(m, "cpu_empty_s");
    const double share = (system - empty) / window;
    char above[64];
    std::snprintf(above, sizeof above, "%+.3f %% of a core", share * 100);
    add({"CPU time, whole process", system, empty, Unit::Time, above, "< 0.1 %", share < 0.001});
}

void buildMemory()
{
    section("Memory: peak resident set (ru_maxrss) of vantix-sim --exit-after-ready;\n"
            "baseline: bare Qt program");
    const Result *bare = result("Process/bare-qt");
    if (!bare) {
        return;
    }
    const double base = counter(bare, "maxrss_kib");
    for (const Platform &p : platforms()) {
        const Result *m = result(named("Process/vantix-sim/", p));
        if (!m) {
            continue;
        }
        const double rss = counter(m, "maxrss_kib");
        add({std::string("vantix-sim ") + p.name, rss, base, Unit::KiB, signedFormat(rss - base, Unit::KiB), "< +2 MiB",
            rss - base < 2048});
    }
    if (const Result *m = result("Process/bare-qt-bearer")) {
        const double rss = counter(m, "maxrss_kib");
        add({"(host part) bare Qt + configuration manager + interfaces", rss, base, Unit::KiB,
            signedFormat(rss - base, Unit::KiB), ""});
    }
}

std::string loadAverage()
{
    QFile file(QStringLiteral("/proc/loadavg"));
    if (!file.open(QIODevice::ReadOnly)) {
        return "?";
    }
    const QList<QByteArray> fields = file.readAll().split(' ');
    return fields.size() >= 3 ? (fields[0] + " " + fields[1] + " " + fields[2]).toStdString() : "?";
}

void printTable(const std::string &loadBefore)
{
    buildStartup();
    buildCommands();
    buildHotplug();
    buildIdle();
    buildMemory();

    std::size_t width = 0;
    for (const auto &s : s_sections) {
        for (const Row &row : s.second) {
            width = std::max(width, row.label.size());
        }
    }
    int missed = 0;
    std::printf(
        "\nVantix benchmark summary (load average before: %s, after: %s)\n", loadBefore.c_str(), loadAverage().c_str());
    for (const auto &s : s_sections) {
        if (s.second.empty()) {
            continue;
        }
        std::printf("\n%s\n", s.first.c_str());
        std::printf(
            "  %-*s %12s %12s %8s %20s  %s\n", int(width), "figure", "measured", "baseline", "ratio", "note", "target");
        for (const Row &row : s.second) {
            char ratio[32] = "-";
            if (!std::isnan(row.baseline) && row.baseline != 0) {
                std::snprintf(ratio, sizeof ratio, "%.2fx", row.measured / row.baseline);
            }
            std::string verdict = row.target;
            if (!row.target.empty()) {
                verdict += row.met ? "  ok" : "  MISSED";
                missed += row.met ? 0 : 1;
            }
            std::printf("  %-*s %12s %12s %8s %20s  %s\n", int(width), row.label.c_str(),
                format(row.measured, row.unit).c_str(), format(row.baseline, row.unit).c_str(), ratio, row.note.c_str(),
                verdict.c_str());
        }
    }
    std::printf("\n%d target(s) missed.\n", missed);
}

int runChild(int argc, char *argv[])
{
    const char *prefix = "--vantix-bench-child=";
    const std::string mode = argv[1] + std::strlen(prefix);
    QCoreApplication app(argc, argv);
    if (mode == "first-init" || mode == "first-plain" || mode == "first-bearer") {
        return runFirstStartChild(mode, argc - 2, argv + 2);
    }
    if (mode == "idle-system" || mode == "idle-empty") {
        return runIdleChild(mode);
    }
    return 2;
}

} // namespace

int main(int argc, char *argv[])
{
    if (argc > 1 && std::strncmp(argv[1], "--vantix-bench-child=", 21) == 0) {
        return runChild(argc, argv);
    }

    QCoreApplication app(argc, argv);
    QCoreApplication::setApplicationName(QStringLiteral("vantix-bench"));
    const std::string loadBefore = loadAverage();

    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) {
        return 1;
    }

    probeStartObjects();
    registerStartupBenchmarks();
    registerCommandBenchmarks();
    registerHotplugBenchmarks();
    registerIdleBenchmarks();

    CollectingReporter reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);
    benchmark::Shutdown();
    {
        // Its network devices would say goodbye in the middle of the table.
        const QuietLog quiet;
        TQ_SPAPI::System::releaseInstance();
    }
    printTable(loadBefore);
    return 0;
}

// vantix-bench: start-up, command path, hot-plug, idle cost, memory and the
// control channel of the desktop stub, each figure beside a plain baseline
// measured in the same run. Google Benchmark prints its own lines as it goes;
// a table of figures, baselines, ratios and targets follows at the end, then
// the comparison with the recorded run (--vantix-bench-recorded=FILE, which
// --vantix-bench-record overwrites with this run's figures).

#include "benchmarks.h"
#include "benchsupport.h"
#include "recordedrun.h"

#include <vantix/system.h>

#include <QCoreApplication>
#include <QDateTime>
#include <QDir>
#include <QFile>

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <map>
#include <string>
#include <vector>

#include <linux/magic.h>
#include <sys/vfs.h>

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

enum class Unit { Time, KiB, Count, Bytes, Rate, Factor };

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
    case Unit::Rate:
        std::snprintf(text, sizeof text, "%.0f k/s", value / 1e3);
        break;
    case Unit::Factor:
        std::snprintf(text, sizeof text, "%.1fx", value);
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
    bool higherIsBetter = false;
    double noise = -1; // below zero: its group's
};

struct Section
{
    std::string key; // names the group's figures in bench/recorded.json
    double noise; // how far its figures move between runs without a change (bench/README.md)
    std::string title;
    std::vector<Row> rows;
};

std::vector<Section> s_sections;

// A new unit's start waits for a synced write: its start took 1.2 ms to 13 ms with what else used the disk.
constexpr double NewUnitNoise = 9.0;
// What the host costs (bearer plugins, a file system on disk) moves with the host, up to threefold.
constexpr double HostPartNoise = 2.0;

void section(const std::string &key, double noise, const std::string &title)
{
    s_sections.push_back({key, noise, title, {}});
}

void add(Row row)
{
    s_sections.back().rows.push_back(std::move(row));
}

const char *unitName(Unit unit)
{
    switch (unit) {
    case Unit::Time:
        return "s";
    case Unit::KiB:
        return "KiB";
    case Unit::Count:
        return "count";
    case Unit::Bytes:
        return "B";
    case Unit::Rate:
        return "1/s";
    case Unit::Factor:
        return "x";
    }
    return "";
}

std::string named(const char *prefix, const Platform &p)
{
    return std::string(prefix) + p.name;
}

void buildStartup()
{
    section("startup", 1.5,
        "Start-up in this process: System::instance() + initialize(), wall time;\n"
        "baseline: as many plain QObjects + one QSettings read");
    for (const Platform &p : platforms()) {
        const Result *plain = result(named("Startup/plain/", p));
        const std::string objects = " (" + std::to_string(objectsPerStart(p.type)) + " objects)";
        if (const Result *m = result(named("Startup/new-unit/", p))) {
            // The synced write keeps a new unit's identity through a power cut; it is the disk's, not ours.
            const double own = m->seconds - counter(m, "sync_s");
            add({std::string("new unit w/o its synced write, ") + p.name + objects, own, plain ? plain->seconds : NAN,
                Unit::Time, "sync " + format(counter(m, "sync_s"), Unit::Time), "< 5 ms", own < 5e-3, false,
                NewUnitNoise});
        }
        if (const Result *m = result(named("Startup/existing-unit/", p))) {
            add({std::string("existing unit, reads nvram, ") + p.name, m->seconds, plain ? plain->seconds : NAN,
                Unit::Time, "", "< 5 ms", m->seconds < 5e-3});
        }
    }

    section("first-start", 3.0,
        "Start-up, first initialize() in a new process, existing unit, wall time;\n"
        "baseline: the same plain work in a new process");
    for (const Platform &p : platforms()) {
        const Result *m = result(named("Startup/first-in-process/", p));
        const Result *b = result(named("Startup/first-plain/", p));
        if (m && b) {
            // The bearer plugins are the host's part, reported below on their own.
            const double own = counter(m, "without_host_s");
            add({std::string("first start w/o the host part, ") + p.name, own, b->seconds, Unit::Time,
                "with it " + format(m->seconds, Unit::Time), "< 5 ms", own < 5e-3});
        }
    }
    if (const Result *bearer = result("Startup/first-bearer")) {
        add({"(host part) first QNetworkConfigurationManager: bearer plugins", bearer->seconds, NAN, Unit::Time, "",
            ""});
    }

    section("process", 0.25,
        "Process: vantix-sim --exit-after-ready, existing unit, wall time;\n"
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
    section("command", 0.75,
        "Command path: setValue(\"VantixDebug\", ...) until the listener has the signal, CPU time;\n"
        "baseline: the platform part, setValue() to a counting slot without Vantix (itself against one signal)");
    const Result *bare = result("Command/bare-signal");
    const Result *floor = result("Command/parameter-only");
    if (!bare || !floor) {
        return;
    }
    add({"(platform part) setValue() to a counting slot, no Vantix", floor->cpuSeconds, bare->cpuSeconds, Unit::Time,
        "", ""});
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
        add({c.second, m->cpuSeconds, floor->cpuSeconds, Unit::Time, perSecond, "<= 5x, >= 500 k/s",
            m->cpuSeconds <= 5 * floor->cpuSeconds && m->seconds <= 2e-6});
    }
}

void buildHotplug()
{
    section("hotplug", 0.5,
        "Hot-plug: add + remove through debug commands, listener on deviceDetected/deviceRemoved;\n"
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
        add({name + ", VmRSS" + after, rssEnd, rss1k, Unit::KiB, rssDiff, "equal", rssEnd <= rss1k, false, 0.03});
        const double objEnd = counter(m, "objects_end");
        const double obj1k = counter(m, "objects_1k");
        add({name + ", live QObjects" + after, objEnd, obj1k, Unit::Count, format(objEnd - obj1k, Unit::Count), "equal",
            objEnd == obj1k, false, 0});
        const double growth = counter(m, "heap_growth_per_cycle");
        char perCycle[64];
        std::snprintf(perCycle, sizeof perCycle, "%+.4f B/cycle", growth);
        // Which free chunk serves a request moves the allocator's count by some
        // hundred bytes either way; a byte kept per cycle would be a megabyte.
        const double heapEnd = counter(m, "heap_end");
        const double heap1k = counter(m, "heap_1k");
        add({name + ", heap in use" + after, heapEnd, heap1k, Unit::Bytes, perCycle, "< 4 KiB in all",
            heapEnd - heap1k < 4096, false, 0.05});
    }
}

void buildIdle()
{
    const Result *m = result("Idle/tolvex-plus-vs-empty-loop");
    if (!m) {
        return;
    }
    const double window = counter(m, "window_s");
    section("idle", 0.5,
        "Idle: CPU time and wake-ups (voluntary context switches) over " + format(window, Unit::Time) +
            ", initialised tolvex-plus (network polls every 1000 ms);\n"
            "baseline: an empty event loop; for the server's share, the same application with VANTIX_CONTROL=off");
    const double on = counter(m, "cpu_system_s");
    const double off = counter(m, "cpu_system_off_s");
    const double empty = counter(m, "cpu_empty_s");
    const auto share = [window](double cpu) {
        char text[64];
        std::snprintf(text, sizeof text, "%+.3f %% of a core", cpu / window * 100);
        return std::string(text);
    };
    add({"CPU time, whole process, control server on", on, empty, Unit::Time, share(on - empty), "< 0.1 %",
        (on - empty) / window < 0.001});
    add({"CPU time, whole process, VANTIX_CONTROL=off", off, empty, Unit::Time, share(off - empty), "< 0.1 %",
        (off - empty) / window < 0.001});
    // Run to run, the same child's idle CPU moves by about a hundredth of a percent of a core.
    add({"CPU time, server on against off", on, off, Unit::Time, share(on - off), "< 0.01 % more",
        (on - off) / window < 0.0001});
    const double wakeOn = counter(m, "wakeups_system");
    const double wakeOff = counter(m, "wakeups_system_off");
    const double wakeEmpty = counter(m, "wakeups_empty");
    add({"wake-ups, control server on", wakeOn, wakeEmpty, Unit::Count, signedFormat(wakeOn - wakeEmpty, Unit::Count),
        "", true, false, 0.3});
    // A poll of its own would wake the process at least once per period; a few come and go with the host.
    add({"wake-ups, server on against off", wakeOn, wakeOff, Unit::Count, signedFormat(wakeOn - wakeOff, Unit::Count),
        "at most +2 (no polling)", wakeOn - wakeOff <= 2, false, 0.3});
}

void buildMemory()
{
    section("memory", 0.03,
        "Memory: peak resident set (ru_maxrss) of a plain application (the README's example, initialises System\n"
        "and exits at apiReady) and of vantix-sim --exit-after-ready; baseline: bare Qt program, and for\n"
        "vantix-sim the host part that every System needs (bare Qt + configuration manager + interfaces)");
    const Result *bare = result("Process/bare-qt");
    if (!bare) {
        return;
    }
    const double base = counter(bare, "maxrss_kib");
    const Result *hostPart = result("Process/bare-qt-bearer");
    const double host = hostPart ? counter(hostPart, "maxrss_kib") : NAN;
    const std::pair<const char *, const char *> plain[] = {
        {"Process/readme-example", "README example (plain application), control server on"},
        {"Process/readme-example-off", "README example, VANTIX_CONTROL=off"},
    };
    for (const auto &p : plain) {
        if (const Result *m = result(p.first)) {
            const double rss = counter(m, "maxrss_kib");
            add({p.second, rss, base, Unit::KiB, signedFormat(rss - base, Unit::KiB), ""});
        }
    }
    for (const Platform &p : platforms()) {
        const Result *m = result(named("Process/vantix-sim/", p));
        if (!m) {
            continue;
        }
        const double rss = counter(m, "maxrss_kib");
        add({std::string("vantix-sim over the host part, ") + p.name, rss, host, Unit::KiB,
            signedFormat(rss - host, Unit::KiB), "< +2 MiB", rss - host < 2048});
    }
    if (hostPart) {
        add({"(host part) bare Qt + configuration manager + interfaces", host, base, Unit::KiB,
            signedFormat(host - base, Unit::KiB), ""});
    }
}

// What the socket folder lives on: binding a socket creates an inode there.
std::string fileSystemOf(const QString &path)
{
    struct statfs info = {};
    if (statfs(QFile::encodeName(path).constData(), &info) != 0) {
        return "?";
    }
    switch (info.f_type) {
    case TMPFS_MAGIC:
        return "tmpfs";
    case EXT4_SUPER_MAGIC:
        return "ext4";
    default:
        char text[32];
        std::snprintf(text, sizeof text, "fs 0x%lx", static_cast<unsigned long>(info.f_type));
        return text;
    }
}

void buildControl()
{
    section("control-rtt", 0.5,
        "Control channel: round trip of one request over the local socket to another process, median wall time;\n"
        "baseline: a bare QLocalSocket echo server, same client, same framing");
    if (const Result *m = result("Control/round-trip")) {
        const double vantix = counter(m, "vantix_s");
        const double echo = counter(m, "echo_s");
        char note[64];
        std::snprintf(
            note, sizeof note, "%.0f B in, %.0f B out", counter(m, "request_bytes"), counter(m, "reply_bytes"));
        add({"get battery1 fuelGauge (" + format(counter(m, "round_trips"), Unit::Count) + " round trips)", vantix,
            echo, Unit::Time, note, "<= 2x", vantix <= 2 * echo});
        // Wall time is mostly waiting for the scheduler; this is the servers' own work.
        add({"(server CPU) user + system time per request, server process", counter(m, "vantix_cpu_s"),
            counter(m, "echo_cpu_s"), Unit::Time, "", ""});
    }

    if (const Result *m = result("Control/events")) {
        section("control-events", 0.5,
            "Events: bursts of " + format(counter(m, "events"), Unit::Count) +
                " fuel changes in the server process, one watching client counts the fuelGaugeChanged lines;\n"
                "figure: median of the bursts, from the request to the last event");
        const double rate = counter(m, "events_per_s");
        char note[64];
        std::snprintf(note, sizeof note, "%.0f bursts", counter(m, "bursts"));
        add({"events delivered per second", rate, NAN, Unit::Rate, note, ">= 200 k/s", rate >= 200000, true});
        const double lost = counter(m, "lost");
        const double disordered = counter(m, "disordered");
        std::snprintf(note, sizeof note, "out of order %.0f, others %.0f", disordered, counter(m, "other_events"));
        add({"events lost", lost, NAN, Unit::Count, note, "0, in order", lost == 0 && disordered == 0, false, 0});
    }

    if (const Result *m = result("Control/initialize-server")) {
        const QString runtime = qEnvironmentVariable("XDG_RUNTIME_DIR");
        const std::string folder = runtime.isEmpty() ? std::string("unset") : fileSystemOf(runtime);
        section("control-server", 0.5,
            "Control server's cost: initialize() of an existing tolvex-plus unit, median wall time, socket folder\n"
            "in XDG_RUNTIME_DIR (" +
                folder + ") or on disk (" + fileSystemOf(QDir::tempPath()) + "); baseline: VANTIX_CONTROL=off");
        const double on = counter(m, "on_s");
        const double off = counter(m, "off_s");
        const double disk = counter(m, "on_disk_s");
        add({"server on, socket folder in XDG_RUNTIME_DIR", on, off, Unit::Time, signedFormat(on - off, Unit::Time),
            "< +0.2 ms", on - off < 2e-4});
        add({"(host part) server on, socket folder on disk (/tmp)", disk, off, Unit::Time,
            signedFormat(disk - off, Unit::Time), ""});
    }
}

void buildRunner()
{
    section("runner", 0.5,
        "vantix-test: a scenario against a fresh vantix-sim (start, greeting, scenario, stop), wall time;\n"
        "baseline: the application's own start to its greeting, a new unit each time, medians");
    if (const Result *m = result("Runner/overhead")) {
        const double perScenario = counter(m, "per_scenario_s");
        const double greeting = counter(m, "greeting_s");
        add({"per empty scenario, --jobs 1 (" + format(counter(m, "scenarios"), Unit::Count) + " in a suite)",
            perScenario, greeting, Unit::Time, signedFormat(perScenario - greeting, Unit::Time), "< 1.3x",
            perScenario < 1.3 * greeting});
    }
    if (const Result *m = result("Runner/accelerated-suite")) {
        const double wall = counter(m, "wall_s");
        const double scenarios = counter(m, "scenarios");
        char rate[64];
        std::snprintf(rate, sizeof rate, "%.1f scenarios/s", scenarios / wall);
        add({format(scenarios, Unit::Count) + " scenarios of 10 s simulated, --jobs 4 --speed 100", wall, NAN,
            Unit::Time, rate, "< 20 s", wall < 20});
        char lowest[64];
        std::snprintf(lowest, sizeof lowest, "lowest %.1fx", counter(m, "ratio_lowest"));
        add({"simulated over wall time per scenario, --speed 100, median", counter(m, "ratio_median"), NAN,
            Unit::Factor, lowest, ">= 50x", counter(m, "ratio_median") >= 50, true});
    }
}

void buildClients()
{
    if (const Result *m = result("Clients/idle")) {
        const double clients = counter(m, "clients");
        section("control-crowd", 1.0,
            "Many clients: a healthy client's requests while " + format(clients, Unit::Count) +
                " idle clients are connected (each answered once, then silent), median wall time;\n"
                "baseline: the same with no other client, in the same run");
        const auto row = [&](const std::string &label, const char *crowded, const char *alone) {
            const double measured = counter(m, crowded);
            const double baseline = counter(m, alone);
            add({label, measured, baseline, Unit::Time, "", "<= 2x", measured <= 2 * baseline});
        };
        row("get battery1 fuelGauge", "get_s", "get_alone_s");
        row("hot-plug: addotgb, rmotgb, get", "hotplug_s", "hotplug_alone_s");
        row("one more client: connect, greeting, get", "connect_s", "connect_alone_s");
        const double crowd = counter(m, "crowd_s");
        add({"(crowd) connecting them, each answered once", crowd, NAN, Unit::Time,
            format(crowd / clients, Unit::Time) + " each", ""});
    }
    if (const Result *m = result("Clients/selector")) {
        section("control-selector", 1.0,
            "Finding one of " + format(counter(m, "applications"), Unit::Count) +
                " running applications: vantix-ctl as a whole program, median wall time;\n"
                "baseline: the same with one application running");
        const double pid = counter(m, "pid_s");
        const double list = counter(m, "list_s");
        add({"vantix-ctl --pid N get battery1 fuelGauge", pid, counter(m, "pid_alone_s"), Unit::Time, "", "< 15 ms",
            pid < 15e-3});
        add({"vantix-ctl list", list, counter(m, "list_alone_s"), Unit::Time, "", "< 50 ms", list < 50e-3});
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
    buildControl();
    buildRunner();
    buildClients();

    std::size_t width = 0;
    for (const Section &s : s_sections) {
        for (const Row &row : s.rows) {
            width = std::max(width, row.label.size());
        }
    }
    int missed = 0;
    std::printf(
        "\nVantix benchmark summary (load average before: %s, after: %s)\n", loadBefore.c_str(), loadAverage().c_str());
    for (const Section &s : s_sections) {
        if (s.rows.empty()) {
            continue;
        }
        std::printf("\n%s\n", s.title.c_str());
        std::printf(
            "  %-*s %12s %12s %8s %20s  %s\n", int(width), "figure", "measured", "baseline", "ratio", "note", "target");
        for (const Row &row : s.rows) {
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

std::vector<Figure> figures()
{
    std::vector<Figure> all;
    for (const Section &s : s_sections) {
        for (const Row &row : s.rows) {
            double noise = row.noise >= 0 ? row.noise : s.noise;
            if (row.label.compare(0, 11, "(host part)") == 0) {
                noise = std::max(noise, HostPartNoise);
            }
            // A figure with an in-run baseline is judged by its ratio: on a busy machine the two move
            // together, and the ratio stays where the figure alone moves by half or more.
            if (std::isfinite(row.baseline) && row.baseline > 0) {
                all.push_back(
                    {s.key + "/" + row.label, row.measured / row.baseline, "ratio", row.higherIsBetter, noise});
            } else {
                all.push_back({s.key + "/" + row.label, row.measured, unitName(row.unit), row.higherIsBetter, noise});
            }
        }
    }
    return all;
}

// Compares this run with the recorded one and, when asked, records this run instead.
void checkRecorded(const std::string &path, bool record, const std::string &loadBefore)
{
    const std::vector<Figure> now = figures();
    RecordedRun recorded;
    std::string error;
    if (!recorded.load(path, &error)) {
        std::printf("\nNo recorded run to compare with (%s: %s).\n", path.c_str(), error.c_str());
    } else {
        const std::vector<std::string> warnings = recorded.compare(now);
        std::printf("\nAgainst the run recorded %s: %d figure(s) compared, %d worse beyond their noise.\n",
            recorded.date().c_str(), recorded.comparable(now), int(warnings.size()));
        for (const std::string &w : warnings) {
            std::printf("%s\n", w.c_str());
        }
    }
    if (record) {
        const std::string date = QDateTime::currentDateTimeUtc().toString(Qt::ISODate).toStdString();
        if (recorded.save(path, now, date, loadBefore, &error)) {
            std::printf("Recorded %d figure(s) in %s.\n", int(now.size()), path.c_str());
        } else {
            std::printf("Could not record the run in %s: %s\n", path.c_str(), error.c_str());
        }
    }
}

// Takes this program's own options out of the arguments, leaving Google Benchmark's.
bool takeOption(int *argc, char *argv[], const char *name, std::string *value = nullptr)
{
    const std::size_t length = std::strlen(name);
    for (int i = 1; i < *argc; ++i) {
        const bool bare = std::strcmp(argv[i], name) == 0;
        const bool valued = value && std::strncmp(argv[i], name, length) == 0 && argv[i][length] == '=';
        if (bare || valued) {
            if (valued) {
                *value = argv[i] + length + 1;
            }
            for (int j = i; j + 1 < *argc; ++j) {
                argv[j] = argv[j + 1];
            }
            --*argc;
            return true;
        }
    }
    return false;
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

    std::string recordedPath;
    takeOption(&argc, argv, "--vantix-bench-recorded", &recordedPath);
    const bool record = takeOption(&argc, argv, "--vantix-bench-record");
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) {
        return 1;
    }

    probeStartObjects();
    registerStartupBenchmarks();
    registerCommandBenchmarks();
    registerHotplugBenchmarks();
    registerIdleBenchmarks();
    registerControlBenchmarks();
    registerRunnerBenchmarks();
    registerClientBenchmarks();

    CollectingReporter reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);
    benchmark::Shutdown();
    {
        // Its network devices would say goodbye in the middle of the table.
        const QuietLog quiet;
        TQ_SPAPI::System::releaseInstance();
    }
    printTable(loadBefore);
    if (!recordedPath.empty()) {
        checkRecorded(recordedPath, record, loadBefore);
    }
    return 0;
}

// Start-up: System::instance() + initialize() per platform, in this process
// and as the first start of a fresh process, and the whole vantix-sim
// process; each against plain Qt doing the least comparable work.

#include "benchmarks.h"
#include "benchsupport.h"

#include <vantix/system.h>

#include <qbcommon/appconfig.h>
#include <qbcommon/networkmanager.h>

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QFile>
#include <QSettings>
#include <QTemporaryDir>

// The bearer API is deprecated in Qt 5.15; its start-up cost is measured here.
QT_WARNING_PUSH
QT_WARNING_DISABLE_DEPRECATED
#include <QNetworkConfigurationManager>
QT_WARNING_POP

#include <benchmark/benchmark.h>

#include <cstdio>
#include <cstring>
#include <map>
#include <memory>

using namespace TQ_SPAPI;

namespace VantixBench {

namespace {
constexpr int NewUnitRuns = 50;
constexpr double InProcessMinTime = 0.3;
constexpr int FirstStartRuns = 5;
constexpr int ProcessRuns = 8;

// QObjects that instance() + initialize() construct, per platform, once the
// process-wide objects (network manager, configuration source) exist.
std::map<int, long> s_objectsPerStart;

// An nvram-sized settings file, as a unit's first start leaves it.
void writeSettingsFile(const QString &path)
{
    QFile file(path);
    if (file.open(QIODevice::WriteOnly)) {
        file.write("[General]\n"
                   "API_VERSION=0.01\nHW_BOARD_ID=30DA\nHW_BOARD_REVISION=C\nTQ_PRODUCT_DATE=2024-01-01\n"
                   "TQ_PRODUCT_ID=200-00000\nTQ_PRODUCT_SERIAL=TSBF12123456\n"
                   "TQ_PRODUCT_UUID=0b3c1a84-6c1e-4f0c-9a57-1d2e3f405162\n");
    }
}

// The baseline's work: as many plain QObjects as a start makes, and one
// settings file read. The objects are handed back for deletion off the clock.
QObject *plainStart(long objects, const QString &settingsPath)
{
    auto *root = new QObject;
    for (long i = 1; i < objects; ++i) {
        new QObject(root);
    }
    const QSettings settings(settingsPath, QSettings::IniFormat);
    const QStringList keys = settings.allKeys();
    for (const QString &key : keys) {
        benchmark::DoNotOptimize(settings.value(key));
    }
    return root;
}

void startPlatform(System::PlatformType platform)
{
    SystemPlatformType::type = platform;
    System::instance()->initialize(QStringLiteral("vantix-bench"));
}

void release()
{
    // A network device says goodbye in the log; not wanted hundreds of times.
    const QuietLog quiet;
    System::releaseInstance();
    // Fires the expired timers of earlier starts, so they do not pile up.
    QCoreApplication::processEvents();
}

// One small settings file written and synced, as creating the nvram file does.
double syncedWriteSeconds(const QString &path)
{
    QElapsedTimer clock;
    clock.start();
    {
        QSettings settings(path, QSettings::IniFormat);
        settings.setValue(QStringLiteral("TQ_PRODUCT_ID"), QStringLiteral("200-00000"));
        settings.sync();
    }
    return double(clock.nsecsElapsed()) / 1e9;
}

// A new unit each time: the start generates the identity and creates the
// nvram file. How long the disk takes to sync a file swings with what else
// runs, so a synced write of its own is timed beside every start.
void newUnit(benchmark::State &state, System::PlatformType platform)
{
    System::releaseInstance();
    double sync = 0;
    for (auto _ : state) {
        state.PauseTiming();
        auto root = std::make_unique<QTemporaryDir>();
        AppConfig::instance()->setRootPath(root->path());
        state.ResumeTiming();

        startPlatform(platform);

        state.PauseTiming();
        release();
        sync += syncedWriteSeconds(root->filePath(QStringLiteral("synced")));
        root.reset();
        state.ResumeTiming();
    }
    state.counters["sync_s"] = benchmark::Counter(sync, benchmark::Counter::kAvgIterations);
    AppConfig::instance()->setRootPath(QString());
}

// The same unit started again and again: the start reads its nvram file.
void existingUnit(benchmark::State &state, System::PlatformType platform)
{
    System::releaseInstance();
    QTemporaryDir root;
    AppConfig::instance()->setRootPath(root.path());
    startPlatform(platform);
    release();
    for (auto _ : state) {
        startPlatform(platform);

        state.PauseTiming();
        release();
        state.ResumeTiming();
    }
    AppConfig::instance()->setRootPath(QString());
}

void plainInProcess(benchmark::State &state, long objects)
{
    // QSettings keeps about twenty parsed files; going round more than that,
    // every read parses its file again, as a start reads one it has not seen.
    constexpr int Files = 64;
    QTemporaryDir dir;
    QStringList paths;
    for (int i = 0; i < Files; ++i) {
        paths.append(dir.filePath(QStringLiteral("nvram-%1").arg(i)));
        writeSettingsFile(paths.last());
    }
    int n = 0;
    for (auto _ : state) {
        QObject *root = plainStart(objects, paths.at(n++ % Files));

        state.PauseTiming();
        delete root;
        state.ResumeTiming();
    }
    state.counters["objects"] = double(objects);
}

// Runs one child mode of this program per iteration; its "init_us" is the time.
bool runTimedChild(benchmark::State &state, const std::vector<std::string> &argv)
{
    int exitCode = -1;
    const auto figures = parseFigures(runChild(argv, &exitCode));
    const auto it = figures.find("init_us");
    if (exitCode != 0 || it == figures.end()) {
        state.SkipWithError("child failed");
        return false;
    }
    state.SetIterationTime(it->second / 1e6);
    return true;
}

std::string childMode(const char *mode)
{
    return std::string("--vantix-bench-child=") + mode;
}

// An existing unit started in a fresh process: the first initialize() there.
// A second process per run builds the host's configuration manager before
// initialize(), which tells the start without the bearer plugins apart.
void firstInProcess(benchmark::State &state, System::PlatformType platform)
{
    QTemporaryDir root;
    const std::vector<std::string> argv{
        selfPath(), childMode("first-init"), std::to_string(int(platform)), root.path().toStdString()};
    std::vector<std::string> hostFirst = argv;
    hostFirst.push_back("host-first");
    // The unit's first start creates its nvram file; it is not what is measured.
    runChild(argv);
    double withoutHost = 0;
    double host = 0;
    for (auto _ : state) {
        if (!runTimedChild(state, argv)) {
            return;
        }
        int exitCode = -1;
        const auto split = parseFigures(runChild(hostFirst, &exitCode));
        if (exitCode != 0 || !split.count("init_us") || !split.count("host_us")) {
            state.SkipWithError("child failed");
            return;
        }
        withoutHost += split.at("init_us") / 1e6;
        host += split.at("host_us") / 1e6;
    }
    state.counters["without_host_s"] = benchmark::Counter(withoutHost, benchmark::Counter::kAvgIterations);
    state.counters["host_s"] = benchmark::Counter(host, benchmark::Counter::kAvgIterations);
}

void firstPlain(benchmark::State &state, long objects)
{
    for (auto _ : state) {
        if (!runTimedChild(state, {selfPath(), childMode("first-plain"), std::to_string(objects)})) {
            return;
        }
    }
}

void firstBearer(benchmark::State &state)
{
    for (auto _ : state) {
        if (!runTimedChild(state, {selfPath(), childMode("first-bearer")})) {
            return;
        }
    }
}

// How a measured program is told the folder of its unit.
enum class Root { None, Argument, Environment };

void wholeProcess(benchmark::State &state, const std::vector<std::string> &argv, Root rootBy, Environment env)
{
    std::vector<std::string> args = argv;
    QTemporaryDir root;
    if (rootBy == Root::Argument) {
        args.push_back("--root");
        args.push_back(root.path().toStdString());
    } else if (rootBy == Root::Environment) {
        env.push_back("QBCOMMON_ROOT=" + root.path().toStdString());
    }
    if (rootBy != Root::None) {
        // The unit's first start creates its nvram file; later starts read it.
        measureProcess(args, env);
    }
    long maxRss = 0;
    for (auto _ : state) {
        const ProcessStat stat = measureProcess(args, env);
        if (stat.exitCode != 0) {
            state.SkipWithError("process failed");
            return;
        }
        state.SetIterationTime(stat.wallSeconds);
        maxRss += stat.maxRssKiB;
    }
    state.counters["maxrss_kib"] = benchmark::Counter(double(maxRss), benchmark::Counter::kAvgIterations);
}
} // namespace

void probeStartObjects()
{
    installObjectCounter();
    // The first pass creates the process-wide objects; the second counts a start alone.
    for (int pass = 0; pass < 2; ++pass) {
        for (const Platform &p : platforms()) {
            QTemporaryDir root;
            AppConfig::instance()->setRootPath(root.path());
            const long before = objectsCreated();
            startPlatform(p.type);
            s_objectsPerStart[p.type] = objectsCreated() - before;
            release();
        }
    }
    AppConfig::instance()->setRootPath(QString());
}

long objectsPerStart(int platform)
{
    const auto it = s_objectsPerStart.find(platform);
    return it == s_objectsPerStart.end() ? 0 : it->second;
}

void registerStartupBenchmarks()
{
    using benchmark::RegisterBenchmark;
    for (const Platform &p : platforms()) {
        const std::string name = p.name;
        // A fixed count: each start waits for the disk, whose speed varies with what else runs.
        RegisterBenchmark(("Startup/new-unit/" + name).c_str(), newUnit, p.type)
            ->Iterations(NewUnitRuns)
            ->Unit(benchmark::kMicrosecond);
        RegisterBenchmark(("Startup/existing-unit/" + name).c_str(), existingUnit, p.type)
            ->MinTime(InProcessMinTime)
            ->Unit(benchmark::kMicrosecond);
        RegisterBenchmark(("Startup/plain/" + name).c_str(), plainInProcess, objectsPerStart(p.type))
            ->MinTime(InProcessMinTime)
            ->Unit(benchmark::kMicrosecond);
    }
    for (const Platform &p : platforms()) {
        const std::string name = p.name;
        RegisterBenchmark(("Startup/first-in-process/" + name).c_str(), firstInProcess, p.type)
            ->Iterations(FirstStartRuns)
            ->UseManualTime()
            ->Unit(benchmark::kMicrosecond);
        RegisterBenchmark(("Startup/first-plain/" + name).c_str(), firstPlain, objectsPerStart(p.type))
            ->Iterations(FirstStartRuns)
            ->UseManualTime()
            ->Unit(benchmark::kMicrosecond);
    }
    RegisterBenchmark("Startup/first-bearer", firstBearer)
        ->Iterations(FirstStartRuns)
        ->UseManualTime()
        ->Unit(benchmark::kMicrosecond);

    RegisterBenchmark(
        "Process/bare-qt", wholeProcess, std::vector<std::string>{bareQtPath()}, Root::None, Environment())
        ->Iterations(ProcessRuns)
        ->UseManualTime()
        ->Unit(benchmark::kMillisecond);
    RegisterBenchmark(
        "Process/bare-qt-bearer", wholeProcess, std::vector<std::string>{bareQtBearerPath()}, Root::None, Environment())
        ->Iterations(ProcessRuns)
        ->UseManualTime()
        ->Unit(benchmark::kMillisecond);
    for (const Platform &p : platforms()) {
        RegisterBenchmark((std::string("Process/vantix-sim/") + p.name).c_str(), wholeProcess,
            std::vector<std::string>{vantixSimPath(), "--exit-after-ready", "--platform", p.name}, Root::Argument,
            Environment())
            ->Iterations(ProcessRuns)
            ->UseManualTime()
            ->Unit(benchmark::kMillisecond);
    }
    // The README's example: the plain application a user starts from, with its control server and without.
    RegisterBenchmark("Process/readme-example", wholeProcess, std::vector<std::string>{readmeExamplePath()},
        Root::Environment, Environment())
        ->Iterations(ProcessRuns)
        ->UseManualTime()
        ->Unit(benchmark::kMillisecond);
    RegisterBenchmark("Process/readme-example-off", wholeProcess, std::vector<std::string>{readmeExamplePath()},
        Root::Environment, Environment{"VANTIX_CONTROL=off"})
        ->Iterations(ProcessRuns)
        ->UseManualTime()
        ->Unit(benchmark::kMillisecond);
}

int runFirstStartChild(const std::string &mode, int argc, char *argv[])
{
    QElapsedTimer clock;
    qint64 ns = 0;
    if (mode == "first-init" && argc >= 2) {
        AppConfig::instance()->setRootPath(QString::fromLocal8Bit(argv[1]));
        if (argc >= 3 && std::strcmp(argv[2], "host-first") == 0) {
            clock.start();
            NetworkManager::instance()->configurationManager();
            std::printf("host_us=%.3f ", double(clock.nsecsElapsed()) / 1e3);
        }
        clock.start();
        startPlatform(System::PlatformType(std::atoi(argv[0])));
        ns = clock.nsecsElapsed();
        release();
    } else if (mode == "first-plain" && argc >= 1) {
        QTemporaryDir dir;
        const QString path = dir.filePath(QStringLiteral("nvram-plain"));
        writeSettingsFile(path);
        clock.start();
        QObject *objects = plainStart(std::atol(argv[0]), path);
        ns = clock.nsecsElapsed();
        delete objects;
    } else if (mode == "first-bearer") {
        QT_WARNING_PUSH
        QT_WARNING_DISABLE_DEPRECATED
        clock.start();
        const QNetworkConfigurationManager manager;
        ns = clock.nsecsElapsed();
        QT_WARNING_POP
    } else {
        return 2;
    }
    std::printf("init_us=%.3f\n", double(ns) / 1e3);
    return 0;
}

} // namespace VantixBench

// The control channel: a request's round trip over the local socket to an
// application in another process, against a bare echo server; events
// streamed to one watching client; and what the server adds to initialize().

#include "benchmarks.h"
#include "benchsupport.h"

#include <vantix/system.h>

#include <qbcommon/appconfig.h>

#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QLocalSocket>
#include <QTemporaryDir>

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <map>
#include <vector>

#include <sched.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

using namespace TQ_SPAPI;

namespace VantixBench {

namespace {
constexpr int TimeoutMs = 10000;
// Round trips: blocks of each server taken in turn, so both see the same load.
constexpr int RoundTripBlocks = 24;
constexpr int RoundTripsPerBlock = 500;
constexpr int EventBursts = 3;
constexpr int DefaultBurstEvents = 200000;
constexpr int InitializeRounds = 120;

const QByteArray s_getLine = QByteArrayLiteral("{\"id\":1,\"line\":\"get battery1 fuelGauge\"}\n");

int burstEvents()
{
    const char *env = std::getenv("VANTIX_BENCH_EVENTS");
    const int n = env ? std::atoi(env) : DefaultBurstEvents;
    return n > 0 ? n : DefaultBurstEvents;
}

double median(std::vector<double> values)
{
    if (values.empty()) {
        return 0;
    }
    std::sort(values.begin(), values.end());
    return values[values.size() / 2];
}

// A server process of the bench, running until this object goes.
class ServerProcess
{
public:
    explicit ServerProcess(const std::vector<std::string> &argv)
        : m_child(startChild(argv))
        , m_ready(readChildLine(m_child) == "ready")
    {
    }
    ~ServerProcess()
    {
        if (m_child.pid > 0) {
            kill(m_child.pid, SIGTERM);
            finishChild(m_child);
        }
    }
    bool isReady() const { return m_ready; }

    // CPU time the process has used so far (user and system), from /proc.
    double cpuSeconds() const
    {
        QFile file(QStringLiteral("/proc/%1/stat").arg(m_child.pid));
        if (!file.open(QIODevice::ReadOnly)) {
            return NAN;
        }
        // Fields after the command name, which is in parentheses and may hold blanks.
        const QByteArray text = file.readAll();
        const QList<QByteArray> fields = text.mid(text.lastIndexOf(')') + 2).split(' ');
        // utime and stime are fields 14 and 15 of the whole line, 12 and 13 here.
        if (fields.size() < 13) {
            return NAN;
        }
        return double(fields.at(11).toLongLong() + fields.at(12).toLongLong()) / double(sysconf(_SC_CLK_TCK));
    }

private:
    Child m_child;
    bool m_ready;
};

// A blocking line client: nothing but the socket and a buffer, the same for both servers.
class LineClient
{
public:
    bool connectTo(const QString &path)
    {
        m_socket.connectToServer(path);
        return m_socket.waitForConnected(TimeoutMs);
    }

    bool send(const QByteArray &line)
    {
        m_socket.write(line);
        while (m_socket.bytesToWrite() > 0) {
            if (!m_socket.waitForBytesWritten(TimeoutMs)) {
                return false;
            }
        }
        return true;
    }

    // The next line without its newline; false once the server is gone or silent.
    bool readLine(QByteArray *line)
    {
        int newline;
        while ((newline = m_buffer.indexOf('\n', m_start)) < 0) {
            if (m_start > 0) {
                m_buffer.remove(0, m_start);
                m_start = 0;
            }
            if (m_socket.bytesAvailable() == 0 && !m_socket.waitForReadyRead(TimeoutMs)) {
                return false;
            }
            m_buffer += m_socket.readAll();
        }
        *line = QByteArray::fromRawData(m_buffer.constData() + m_start, newline - m_start);
        m_start = newline + 1;
        return true;
    }

private:
    QLocalSocket m_socket;
    QByteArray m_buffer;
    int m_start = 0;
};

// Mean seconds per round trip of @p n requests, or a negative number when one failed.
double roundTrips(LineClient &client, int n)
{
    QByteArray reply;
    QElapsedTimer clock;
    clock.start();
    for (int i = 0; i < n; ++i) {
        if (!client.send(s_getLine) || !client.readLine(&reply)) {
            return -1;
        }
    }
    return double(clock.nsecsElapsed()) / 1e9 / n;
}

// Keeps this thread, and the processes it starts, on the core it runs on while alive.
class OneCore
{
public:
    OneCore()
    {
        sched_getaffinity(0, sizeof m_saved, &m_saved);
        cpu_set_t one;
        CPU_ZERO(&one);
        CPU_SET(sched_getcpu(), &one);
        sched_setaffinity(0, sizeof one, &one);
    }
    ~OneCore() { sched_setaffinity(0, sizeof m_saved, &m_saved); }

private:
    cpu_set_t m_saved;
    Q_DISABLE_COPY(OneCore)
};

void roundTrip(benchmark::State &state)
{
    // A wake-up across cores costs this machine tens of microseconds more than
    // one on the same core, and where the scheduler puts the three processes
    // changes from run to run; on one core, each round trip costs the two
    // processes' work and two switches.
    const OneCore oneCore;
    QTemporaryDir dir;
    const QString controlPath = dir.filePath(QStringLiteral("control"));
    const QString echoPath = dir.filePath(QStringLiteral("echo"));
    const ServerProcess vantix(
        {benchServerPath(), controlPath.toStdString(), dir.filePath(QStringLiteral("root")).toStdString()});
    const ServerProcess echo({echoServerPath(), echoPath.toStdString()});
    LineClient vantixClient;
    LineClient echoClient;
    QByteArray line;
    if (!vantix.isReady() || !echo.isReady() || !vantixClient.connectTo(controlPath) ||
        !echoClient.connectTo(echoPath) || !vantixClient.readLine(&line) || !line.startsWith("{\"vantix\":")) {
        state.SkipWithError("a server did not start");
        return;
    }
    if (!vantixClient.send(s_getLine) || !vantixClient.readLine(&line) || !line.contains("\"ok\":true")) {
        state.SkipWithError("get battery1 fuelGauge failed");
        return;
    }
    const int replyBytes = line.size() + 1;
    std::vector<double> vantixBlocks;
    std::vector<double> echoBlocks;
    double vantixCpu = 0;
    double echoCpu = 0;
    for (auto _ : state) {
        // Warm-up: both servers have answered a few hundred requests before the clock runs.
        if (roundTrips(vantixClient, RoundTripsPerBlock) < 0 || roundTrips(echoClient, RoundTripsPerBlock) < 0) {
            state.SkipWithError("a round trip failed");
            return;
        }
        vantixCpu = -vantix.cpuSeconds();
        echoCpu = -echo.cpuSeconds();
        double total = 0;
        for (int block = 0; block < RoundTripBlocks; ++block) {
            const double v = roundTrips(vantixClient, RoundTripsPerBlock);
            const double e = roundTrips(echoClient, RoundTripsPerBlock);
            if (v < 0 || e < 0) {
                state.SkipWithError("a round trip failed");
                return;
            }
            vantixBlocks.push_back(v);
            echoBlocks.push_back(e);
            total += (v + e) * RoundTripsPerBlock;
        }
        state.SetIterationTime(total);
        vantixCpu += vantix.cpuSeconds();
        echoCpu += echo.cpuSeconds();
    }
    const double roundTripCount = double(RoundTripBlocks * RoundTripsPerBlock);
    state.counters["vantix_s"] = median(vantixBlocks);
    state.counters["echo_s"] = median(echoBlocks);
    // What each server's process spent per request, whatever the scheduler did meanwhile.
    state.counters["vantix_cpu_s"] = vantixCpu / roundTripCount;
    state.counters["echo_cpu_s"] = echoCpu / roundTripCount;
    state.counters["request_bytes"] = s_getLine.size();
    state.counters["reply_bytes"] = replyBytes;
    state.counters["round_trips"] = roundTripCount;
}

// The value of "newValue" in an event line, or -1.
int newValue(const QByteArray &line)
{
    static const QByteArray key = QByteArrayLiteral("\"newValue\":");
    const int at = line.indexOf(key);
    return at < 0 ? -1 : std::atoi(line.constData() + at + key.size());
}

// Reads lines until the answer to request @p id; false on a failed answer or a lost connection.
bool awaitAnswer(LineClient &client, const QByteArray &id)
{
    QByteArray line;
    const QByteArray idField = "\"id\":" + id + ",";
    while (client.readLine(&line)) {
        if (line.startsWith('{') && line.contains(idField)) {
            return line.contains("\"ok\":true");
        }
    }
    return false;
}

void events(benchmark::State &state)
{
    QTemporaryDir dir;
    const QString controlPath = dir.filePath(QStringLiteral("control"));
    const ServerProcess vantix(
        {benchServerPath(), controlPath.toStdString(), dir.filePath(QStringLiteral("root")).toStdString()});
    LineClient client;
    QByteArray line;
    // The first override also raises F_OVERRIDE; after it, a fuel change is one event.
    if (!vantix.isReady() || !client.connectTo(controlPath) || !client.readLine(&line) ||
        !client.send("{\"id\":1,\"events\":true}\n") || !awaitAnswer(client, "1") ||
        !client.send("{\"id\":2,\"line\":\"setbatteryfuel,100\"}\n") || !awaitAnswer(client, "2")) {
        state.SkipWithError("the server did not start or refused events");
        return;
    }
    const int n = burstEvents();
    const QByteArray burst = "{\"id\":3,\"line\":\"burst " + QByteArray::number(n) + "\"}\n";
    const QByteArray fuelEvent = QByteArrayLiteral("{\"event\":\"fuelGaugeChanged\"");
    long lost = 0;
    long disordered = 0;
    long others = 0;
    std::vector<double> rates;
    for (auto _ : state) {
        for (int b = 0; b < EventBursts; ++b) {
            QElapsedTimer clock;
            clock.start();
            if (!client.send(burst)) {
                state.SkipWithError("the burst request failed");
                return;
            }
            int received = 0;
            while (received < n && client.readLine(&line)) {
                if (line.startsWith(fuelEvent)) {
                    disordered += newValue(line) == received % 101 ? 0 : 1;
                    ++received;
                } else if (line.startsWith("{\"event\"")) {
                    ++others;
                } else if (line.startsWith("{\"error\"") ||
                    (line.startsWith("{\"id\"") && !line.contains("\"ok\":true"))) {
                    break;
                }
            }
            const double seconds = double(clock.nsecsElapsed()) / 1e9;
            lost += n - received;
            rates.push_back(received / seconds);
            state.SetIterationTime(seconds);
            if (received < n) {
                break;
            }
        }
    }
    state.counters["events_per_s"] = median(rates);
    state.counters["events"] = n;
    state.counters["bursts"] = double(rates.size());
    state.counters["lost"] = double(lost);
    state.counters["disordered"] = double(disordered);
    state.counters["other_events"] = double(others);
}

// Where a start puts its socket, and whether it has one.
enum class Server { Runtime, Disk, Off };

// initialize() of an existing unit with the server in the session's runtime
// folder, in a folder on disk (as where no runtime folder exists), and off, in turns.
void initializeCost(benchmark::State &state)
{
    System::releaseInstance();
    QTemporaryDir root;
    QTemporaryDir diskFolder(QDir::tempPath() + QStringLiteral("/vantix-bench-XXXXXX"));
    AppConfig::instance()->setRootPath(root.path());
    const QByteArray savedControl = qgetenv("VANTIX_CONTROL");
    const QByteArray savedRuntime = qgetenv("XDG_RUNTIME_DIR");
    std::map<Server, std::vector<double>> times;
    const Server order[] = {Server::Runtime, Server::Off, Server::Disk};
    for (auto _ : state) {
        for (int i = 0; i < 3 * (InitializeRounds + 1); ++i) {
            const Server server = order[i % 3];
            qputenv("VANTIX_CONTROL", server == Server::Off ? QByteArray("off") : savedControl);
            qputenv("XDG_RUNTIME_DIR", server == Server::Disk ? QFile::encodeName(diskFolder.path()) : savedRuntime);
            QElapsedTimer clock;
            clock.start();
            SystemPlatformType::type = System::PT_TOLVEX_PLUS;
            System::instance()->initialize(QStringLiteral("vantix-bench"));
            const double seconds = double(clock.nsecsElapsed()) / 1e9;
            {
                const QuietLog quiet;
                System::releaseInstance();
            }
            // The first round creates the nvram file and the socket folders.
            if (i >= 3) {
                times[server].push_back(seconds);
            }
        }
        state.SetIterationTime(median(times[Server::Runtime]) + median(times[Server::Off]));
    }
    const auto restore = [](const char *name, const QByteArray &value) {
        if (value.isNull()) {
            qunsetenv(name);
        } else {
            qputenv(name, value);
        }
    };
    restore("VANTIX_CONTROL", savedControl);
    restore("XDG_RUNTIME_DIR", savedRuntime);
    AppConfig::instance()->setRootPath(QString());
    state.counters["on_s"] = median(times[Server::Runtime]);
    state.counters["on_disk_s"] = median(times[Server::Disk]);
    state.counters["off_s"] = median(times[Server::Off]);
}
} // namespace

void registerControlBenchmarks()
{
    using benchmark::RegisterBenchmark;
    RegisterBenchmark("Control/round-trip", roundTrip)->Iterations(1)->UseManualTime()->Unit(benchmark::kMicrosecond);
    RegisterBenchmark("Control/events", events)->Iterations(1)->UseManualTime()->Unit(benchmark::kMillisecond);
    RegisterBenchmark("Control/initialize-server", initializeCost)
        ->Iterations(1)
        ->UseManualTime()
        ->Unit(benchmark::kMicrosecond);
}

} // namespace VantixBench

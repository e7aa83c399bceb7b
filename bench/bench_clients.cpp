// Many clients and many applications: what 1000 idle clients cost an
// application's own work (a hot-plug, a healthy client's get, one more
// connection), and how long vantix-ctl takes to find one of 100 running
// applications. Each figure is measured without the crowd and with it, in
// the same run, side by side.

#include "benchmarks.h"
#include "benchsupport.h"

#include <QDir>
#include <QElapsedTimer>
#include <QTemporaryDir>

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstring>
#include <memory>
#include <vector>

#include <poll.h>
#include <signal.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

namespace VantixBench {

namespace {
constexpr int TimeoutMs = 10000;
constexpr int IdleClients = 1000;
constexpr int Applications = 100;
// Blocks of each figure without and with the idle clients, taken in turns.
constexpr int Blocks = 3;
constexpr int GetRounds = 200;
constexpr int HotplugCycles = 20;
constexpr int ConnectRounds = 20;
constexpr int CtlRuns = 15;

double median(std::vector<double> values)
{
    if (values.empty()) {
        return 0;
    }
    std::sort(values.begin(), values.end());
    return values[values.size() / 2];
}

double secondsSince(const QElapsedTimer &clock)
{
    return double(clock.nsecsElapsed()) / 1e9;
}

// A blocking client on a bare descriptor: the bench keeps a thousand of these.
class BareClient
{
public:
    BareClient() = default;
    BareClient(const BareClient &) = delete;
    BareClient &operator=(const BareClient &) = delete;
    ~BareClient()
    {
        if (m_fd >= 0) {
            close(m_fd);
        }
    }

    // Connects and reads the greeting.
    bool open(const std::string &path)
    {
        m_fd = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
        sockaddr_un address = {};
        address.sun_family = AF_UNIX;
        std::strncpy(address.sun_path, path.c_str(), sizeof address.sun_path - 1);
        std::string greeting;
        return m_fd >= 0 && connect(m_fd, reinterpret_cast<sockaddr *>(&address), sizeof address) == 0 &&
            readLine(&greeting) && greeting.compare(0, 10, "{\"vantix\":") == 0;
    }

    // Sends @p request and reads lines up to its answer; false when it failed or none came.
    bool ask(const std::string &request)
    {
        if (send(m_fd, request.data(), request.size(), MSG_NOSIGNAL) != ssize_t(request.size())) {
            return false;
        }
        std::string line;
        while (readLine(&line)) {
            if (line.compare(0, 6, "{\"id\":") == 0 || line.compare(0, 9, "{\"error\":") == 0) {
                return line.find("\"ok\":true") != std::string::npos;
            }
        }
        return false;
    }

private:
    bool readLine(std::string *line)
    {
        std::size_t newline;
        while ((newline = m_buffer.find('\n')) == std::string::npos) {
            pollfd p = {m_fd, POLLIN, 0};
            char chunk[4096];
            const ssize_t n = poll(&p, 1, TimeoutMs) == 1 ? recv(m_fd, chunk, sizeof chunk, 0) : -1;
            if (n <= 0) {
                return false;
            }
            m_buffer.append(chunk, std::size_t(n));
        }
        *line = m_buffer.substr(0, newline);
        m_buffer.erase(0, newline + 1);
        return true;
    }

    int m_fd = -1;
    std::string m_buffer;
};

const std::string s_get = "{\"id\":1,\"line\":\"get battery1 fuelGauge\"}\n";

// A thousand clients need as many descriptors, here and in the server this process starts.
void raiseDescriptorLimit()
{
    rlimit limit = {};
    if (getrlimit(RLIMIT_NOFILE, &limit) == 0 && limit.rlim_cur < limit.rlim_max) {
        limit.rlim_cur = limit.rlim_max;
        setrlimit(RLIMIT_NOFILE, &limit);
    }
}

class Server
{
public:
    Server(const std::string &socket, const std::string &root, const Environment &env = {})
        : m_child(startChild({benchServerPath(), socket, root}, env))
        , m_ready(readChildLine(m_child) == "ready")
    {
    }
    Server(const Server &) = delete;
    Server &operator=(const Server &) = delete;
    ~Server()
    {
        if (m_child.pid > 0) {
            kill(m_child.pid, SIGTERM);
            finishChild(m_child);
        }
    }
    bool isReady() const { return m_ready; }
    int pid() const { return m_child.pid; }

private:
    Child m_child;
    bool m_ready;
};

// What one healthy client sees, in samples of wall time.
struct Samples
{
    std::vector<double> get;
    std::vector<double> hotplug;
    std::vector<double> connect;
};

// Takes one block of each figure; false when a request failed.
bool measure(BareClient &healthy, const std::string &socket, Samples *samples)
{
    for (int i = 0; i < GetRounds; ++i) {
        QElapsedTimer clock;
        clock.start();
        if (!healthy.ask(s_get)) {
            return false;
        }
        samples->get.push_back(secondsSince(clock));
    }
    for (int i = 0; i < HotplugCycles; ++i) {
        QElapsedTimer clock;
        clock.start();
        // The get behind them waits for what the plugging left queued in the application's loop.
        if (!healthy.ask("{\"id\":2,\"line\":\"addotgb\"}\n") || !healthy.ask("{\"id\":3,\"line\":\"rmotgb\"}\n") ||
            !healthy.ask(s_get)) {
            return false;
        }
        samples->hotplug.push_back(secondsSince(clock));
    }
    for (int i = 0; i < ConnectRounds; ++i) {
        QElapsedTimer clock;
        clock.start();
        BareClient one;
        if (!one.open(socket) || !one.ask(s_get)) {
            return false;
        }
        samples->connect.push_back(secondsSince(clock));
    }
    return true;
}

void idleClients(benchmark::State &state)
{
    raiseDescriptorLimit();
    QTemporaryDir dir;
    const std::string socket = dir.filePath(QStringLiteral("control")).toStdString();
    const Server server(socket, dir.filePath(QStringLiteral("root")).toStdString(),
        {"VANTIX_CONTROL_MAX_CLIENTS=" + std::to_string(IdleClients + 100)});
    BareClient healthy;
    if (!server.isReady() || !healthy.open(socket)) {
        state.SkipWithError("the server did not start");
        return;
    }
    Samples alone;
    Samples crowded;
    std::vector<double> crowdTimes;
    for (auto _ : state) {
        // Blocks without and with the crowd in turns, so that both see the same load of the machine.
        for (int block = 0; block < Blocks; ++block) {
            if (!measure(healthy, socket, &alone)) {
                state.SkipWithError("a request failed without other clients");
                return;
            }
            // Each idle client has a session of its own: it asked one thing, then nothing more.
            std::vector<std::unique_ptr<BareClient>> crowd;
            QElapsedTimer clock;
            clock.start();
            for (int i = 0; i < IdleClients; ++i) {
                crowd.push_back(std::make_unique<BareClient>());
                if (!crowd.back()->open(socket) || !crowd.back()->ask(s_get)) {
                    state.SkipWithError("an idle client was not served");
                    return;
                }
            }
            crowdTimes.push_back(secondsSince(clock));
            if (!measure(healthy, socket, &crowded)) {
                state.SkipWithError("a request failed among the idle clients");
                return;
            }
        }
        state.SetIterationTime(median(crowded.hotplug));
    }
    state.counters["get_s"] = median(crowded.get);
    state.counters["get_alone_s"] = median(alone.get);
    state.counters["hotplug_s"] = median(crowded.hotplug);
    state.counters["hotplug_alone_s"] = median(alone.hotplug);
    state.counters["connect_s"] = median(crowded.connect);
    state.counters["connect_alone_s"] = median(alone.connect);
    state.counters["crowd_s"] = median(crowdTimes);
    state.counters["clients"] = IdleClients;
}

// Median wall time of vantix-ctl with @p arguments; negative when a run failed.
double ctlSeconds(const std::vector<std::string> &arguments)
{
    std::vector<double> times;
    for (int i = 0; i < CtlRuns; ++i) {
        std::vector<std::string> argv{vantixCtlPath()};
        argv.insert(argv.end(), arguments.begin(), arguments.end());
        const ProcessStat stat = measureProcess(argv);
        if (stat.exitCode != 0) {
            return -1;
        }
        times.push_back(stat.wallSeconds);
    }
    return median(times);
}

void selector(benchmark::State &state)
{
    raiseDescriptorLimit();
    // The applications serve in the run's socket folder, as any application does.
    QTemporaryDir roots;
    std::vector<std::unique_ptr<Server>> applications;
    const auto startOne = [&]() {
        const std::string root = roots.filePath(QString::number(applications.size())).toStdString();
        applications.push_back(std::make_unique<Server>("", root));
        return applications.back()->isReady();
    };
    if (!startOne()) {
        state.SkipWithError("an application did not start");
        return;
    }
    const std::string firstPid = std::to_string(applications.front()->pid());
    const std::vector<std::string> byPid{"--pid", firstPid, "get", "battery1", "fuelGauge"};
    const std::vector<std::string> list{"list"};
    double pidAlone = 0;
    double listAlone = 0;
    double pidMany = 0;
    double listMany = 0;
    for (auto _ : state) {
        pidAlone = ctlSeconds(byPid);
        listAlone = ctlSeconds(list);
        while (int(applications.size()) < Applications) {
            if (!startOne()) {
                state.SkipWithError("an application did not start");
                return;
            }
        }
        pidMany = ctlSeconds(byPid);
        listMany = ctlSeconds(list);
        if (pidAlone < 0 || listAlone < 0 || pidMany < 0 || listMany < 0) {
            state.SkipWithError("vantix-ctl failed");
            return;
        }
        state.SetIterationTime(pidMany + listMany);
    }
    state.counters["pid_s"] = pidMany;
    state.counters["pid_alone_s"] = pidAlone;
    state.counters["list_s"] = listMany;
    state.counters["list_alone_s"] = listAlone;
    state.counters["applications"] = Applications;
}
} // namespace

void registerClientBenchmarks()
{
    using benchmark::RegisterBenchmark;
    RegisterBenchmark("Clients/idle", idleClients)->Iterations(1)->UseManualTime()->Unit(benchmark::kMillisecond);
    RegisterBenchmark("Clients/selector", selector)->Iterations(1)->UseManualTime()->Unit(benchmark::kMillisecond);
}

} // namespace VantixBench

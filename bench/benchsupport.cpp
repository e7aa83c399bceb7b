#include "benchsupport.h"

#include <vantix/vantix.h>

#include <qbcom/parametercontroller.h>
#include <qbcommon/appconfig.h>

#include <QCoreApplication>
#include <QEventLoop>
#include <QTemporaryDir>
#include <QTimer>

#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <sstream>

#include <fcntl.h>
#include <malloc.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

// Qt's hook table for tools that follow object lifetimes; exported by QtCore,
// declared in a private header that Debian does not ship with qtbase5-dev.
extern Q_DECL_IMPORT quintptr qtHookData[];

extern char **environ;

namespace VantixBench {

namespace {
// Slots of qtHookData, as QtCore numbers them.
constexpr int HookAddQObject = 3;
constexpr int HookRemoveQObject = 4;
using ObjectHook = void (*)(QObject *);

std::atomic<long> s_created{0};
std::atomic<long> s_destroyed{0};
ObjectHook s_previousAdd = nullptr;
ObjectHook s_previousRemove = nullptr;

void onObjectAdded(QObject *object)
{
    ++s_created;
    if (s_previousAdd) {
        s_previousAdd(object);
    }
}

void onObjectRemoved(QObject *object)
{
    ++s_destroyed;
    if (s_previousRemove) {
        s_previousRemove(object);
    }
}

std::atomic<long> s_swallowed{0};

void swallow(QtMsgType, const QMessageLogContext &, const QString &)
{
    ++s_swallowed;
}
} // namespace

const std::vector<Platform> &platforms()
{
    using S = TQ_SPAPI::System;
    static const std::vector<Platform> all{
        {S::PT_TOLVEX, "tolvex"},
        {S::PT_TOLVEX_PLUS, "tolvex-plus"},
        {S::PT_QUARNEL, "quarnel"},
        {S::PT_QUARNEL_PLUS, "quarnel-plus"},
        {S::PT_CAN_CPU_MODULE, "can-cpu"},
        {S::PT_VIRTUAL, "virtual"},
        {S::PT_UNKNOWN, "unknown"},
    };
    return all;
}

long residentKiB()
{
    // Plain reads into a stack buffer: reading must not itself leave heap behind.
    char buffer[128];
    const int fd = open("/proc/self/statm", O_RDONLY | O_CLOEXEC);
    if (fd < 0) {
        return -1;
    }
    const ssize_t n = read(fd, buffer, sizeof buffer - 1);
    close(fd);
    if (n <= 0) {
        return -1;
    }
    buffer[n] = '\0';
    long size = 0;
    long resident = 0;
    if (std::sscanf(buffer, "%ld %ld", &size, &resident) != 2) {
        return -1;
    }
    return resident * (sysconf(_SC_PAGESIZE) / 1024);
}

std::size_t heapInUse()
{
    const struct mallinfo2 info = mallinfo2();
    // Large blocks are mapped on their own and not counted in uordblks.
    return info.uordblks + info.hblkhd;
}

void installObjectCounter()
{
    if (qtHookData[HookAddQObject] == reinterpret_cast<quintptr>(&onObjectAdded)) {
        return;
    }
    s_previousAdd = reinterpret_cast<ObjectHook>(qtHookData[HookAddQObject]);
    s_previousRemove = reinterpret_cast<ObjectHook>(qtHookData[HookRemoveQObject]);
    qtHookData[HookAddQObject] = reinterpret_cast<quintptr>(&onObjectAdded);
    qtHookData[HookRemoveQObject] = reinterpret_cast<quintptr>(&onObjectRemoved);
}

long objectsCreated()
{
    return s_created;
}

long objectsAlive()
{
    return s_created - s_destroyed;
}

void settle(int ms)
{
    QEventLoop loop;
    QTimer::singleShot(ms, &loop, &QEventLoop::quit);
    loop.exec();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
}

QuietLog::QuietLog()
    : m_previous(qInstallMessageHandler(swallow))
{
}

QuietLog::~QuietLog()
{
    qInstallMessageHandler(m_previous);
}

long QuietLog::swallowed()
{
    return s_swallowed;
}

TQ_QBCom::ParameterController &controller()
{
    static TQ_QBCom::ParameterController *shared = [] {
        auto *c = new TQ_QBCom::ParameterController(QCoreApplication::instance());
        TQ_SPAPI::VantixDebug::instance()->setParameterController(*c);
        return c;
    }();
    return *shared;
}

const QString &debugParameterName()
{
    static const QString name = QStringLiteral("VantixDebug");
    return name;
}

TQ_SPAPI::System *benchSystem()
{
    using namespace TQ_SPAPI;
    static std::unique_ptr<QTemporaryDir> root;
    System *system = System::instance();
    if (!system->isReady() || system->platform() != System::PT_TOLVEX_PLUS) {
        System::releaseInstance();
        root = std::make_unique<QTemporaryDir>();
        AppConfig::instance()->setRootPath(root->path());
        SystemPlatformType::type = System::PT_TOLVEX_PLUS;
        system = System::instance();
        system->initialize(QStringLiteral("vantix-bench"));
        controller();
        // Past apiReady and the 100 ms ability timers: nothing is pending any more.
        settle(250);
    }
    return system;
}

namespace {
// This process's environment with @p env laid over it.
std::vector<std::string> mergedEnvironment(const Environment &env)
{
    std::vector<std::string> merged;
    for (char **e = environ; *e; ++e) {
        const std::string entry = *e;
        const std::string name = entry.substr(0, entry.find('=') + 1);
        bool replaced = false;
        for (const std::string &extra : env) {
            replaced = replaced || extra.compare(0, name.size(), name) == 0;
        }
        if (!replaced) {
            merged.push_back(entry);
        }
    }
    merged.insert(merged.end(), env.begin(), env.end());
    return merged;
}

std::vector<char *> pointers(const std::vector<std::string> &strings)
{
    std::vector<char *> result;
    for (const std::string &s : strings) {
        result.push_back(const_cast<char *>(s.c_str()));
    }
    result.push_back(nullptr);
    return result;
}
} // namespace

Child startChild(const std::vector<std::string> &argv, const Environment &env)
{
    int fds[2];
    if (pipe2(fds, O_CLOEXEC) != 0) {
        return {};
    }
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, fds[1], STDOUT_FILENO);
    posix_spawn_file_actions_addopen(&actions, STDERR_FILENO, "/dev/null", O_WRONLY, 0);

    std::vector<char *> args = pointers(argv);
    const std::vector<std::string> environment = mergedEnvironment(env);
    std::vector<char *> envp = pointers(environment);

    pid_t pid = -1;
    const int rc = posix_spawn(&pid, args[0], &actions, nullptr, args.data(), envp.data());
    posix_spawn_file_actions_destroy(&actions);
    close(fds[1]);
    if (rc != 0) {
        close(fds[0]);
        return {};
    }
    return {pid, fds[0]};
}

std::string readChildLine(const Child &child)
{
    // One byte at a time: what follows the line stays in the pipe for finishChild().
    std::string line;
    char c;
    while (child.outFd >= 0 && read(child.outFd, &c, 1) == 1 && c != '\n') {
        line += c;
    }
    return line;
}

std::string finishChild(Child child, int *exitCode)
{
    std::string out;
    if (child.pid < 0) {
        if (exitCode) {
            *exitCode = -1;
        }
        return out;
    }
    char buffer[4096];
    ssize_t n;
    while ((n = read(child.outFd, buffer, sizeof buffer)) > 0) {
        out.append(buffer, std::size_t(n));
    }
    close(child.outFd);
    int status = 0;
    waitpid(child.pid, &status, 0);
    if (exitCode) {
        *exitCode = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    }
    return out;
}

std::string runChild(const std::vector<std::string> &argv, int *exitCode)
{
    return finishChild(startChild(argv), exitCode);
}

ProcessStat measureProcess(const std::vector<std::string> &argv, const Environment &env)
{
    std::vector<std::string> full{procStatPath()};
    full.insert(full.end(), argv.begin(), argv.end());
    const auto figures = parseFigures(finishChild(startChild(full, env)));
    ProcessStat stat;
    const auto value = [&figures](const char *key) {
        const auto it = figures.find(key);
        return it == figures.end() ? -1.0 : it->second;
    };
    stat.wallSeconds = value("wall_us") / 1e6;
    stat.maxRssKiB = long(value("maxrss_kib"));
    stat.cpuSeconds = value("cpu_us") / 1e6;
    stat.exitCode = int(value("exit"));
    return stat;
}

std::map<std::string, double> parseFigures(const std::string &text)
{
    std::map<std::string, double> figures;
    std::istringstream in(text);
    std::string word;
    while (in >> word) {
        const auto eq = word.find('=');
        if (eq != std::string::npos) {
            figures[word.substr(0, eq)] = std::strtod(word.c_str() + eq + 1, nullptr);
        }
    }
    return figures;
}

std::string selfPath()
{
    char buffer[4096];
    const ssize_t n = readlink("/proc/self/exe", buffer, sizeof buffer - 1);
    return n > 0 ? std::string(buffer, std::size_t(n)) : std::string();
}

std::string vantixSimPath()
{
    return VANTIX_SIM_PATH;
}

std::string vantixCtlPath()
{
    return VANTIX_CTL_PATH;
}

std::string bareQtPath()
{
    return VANTIX_BAREQT_PATH;
}

std::string bareQtBearerPath()
{
    return VANTIX_BAREQT_BEARER_PATH;
}

std::string procStatPath()
{
    return VANTIX_PROCSTAT_PATH;
}

std::string benchServerPath()
{
    return VANTIX_BENCH_SERVER_PATH;
}

std::string echoServerPath()
{
    return VANTIX_BENCH_ECHO_PATH;
}

std::string readmeExamplePath()
{
    return VANTIX_BENCH_README_PATH;
}

} // namespace VantixBench

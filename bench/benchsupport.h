#ifndef VANTIX_BENCH_BENCHSUPPORT_H
#define VANTIX_BENCH_BENCHSUPPORT_H

#include <vantix/system.h>

#include <QObject>
#include <QString>
#include <QtGlobal>

#include <cstddef>
#include <map>
#include <string>
#include <vector>

namespace TQ_QBCom {
class ParameterController;
}

namespace VantixBench {

// --- Platforms -------------------------------------------------------------

struct Platform
{
    TQ_SPAPI::System::PlatformType type;
    const char *name; // as vantix-sim --platform spells it
};

/// Every platform, in the order the figures are printed.
const std::vector<Platform> &platforms();

// --- Memory and objects ----------------------------------------------------

/// Resident set of this process (VmRSS), in KiB.
long residentKiB();
/// Bytes the C heap has handed out and not yet taken back.
std::size_t heapInUse();

/// Counts QObject constructions and destructions through Qt's object hooks.
void installObjectCounter();
long objectsCreated();
long objectsAlive();

/// Runs the event loop for @p ms, then deletes what waits for deferred deletion.
void settle(int ms);

/// Replaces the message handler while alive; counts the messages it swallows.
class QuietLog
{
public:
    QuietLog();
    ~QuietLog();
    static long swallowed();

private:
    QtMessageHandler m_previous;
    Q_DISABLE_COPY(QuietLog)
};

// --- The system the command and hot-plug figures run on ---------------------

/**
 * An initialised PT_TOLVEX_PLUS system whose VantixDebug parameter lives on
 * one process-wide controller (each setParameterController() call adds one
 * more parameter, so it is made once). Rebuilt when another figure released it.
 */
TQ_SPAPI::System *benchSystem();
TQ_QBCom::ParameterController &controller();
const QString &debugParameterName();

// --- Child processes -------------------------------------------------------

struct ProcessStat
{
    double wallSeconds = 0;
    long maxRssKiB = 0;
    double cpuSeconds = 0;
    int exitCode = -1;
};

/// A started child whose standard output is read through a pipe.
struct Child
{
    int pid = -1;
    int outFd = -1;
};

/// "NAME=value" entries that a child gets on top of (or instead of) this process's environment.
using Environment = std::vector<std::string>;

Child startChild(const std::vector<std::string> &argv, const Environment &env = {});
/// Reads one line of the child's output (without its newline); empty at the end.
std::string readChildLine(const Child &child);
/// Reads the child's output to the end and waits for it; returns its output.
std::string finishChild(Child child, int *exitCode = nullptr);
std::string runChild(const std::vector<std::string> &argv, int *exitCode = nullptr);

/// Runs @p argv under the stat launcher: wall time and peak memory of that process alone.
ProcessStat measureProcess(const std::vector<std::string> &argv, const Environment &env = {});

/// "key=value key=value" lines, as the children print them.
std::map<std::string, double> parseFigures(const std::string &text);

std::string selfPath();
std::string vantixSimPath();
std::string vantixCtlPath();
std::string bareQtPath();
std::string bareQtBearerPath();
std::string procStatPath();
std::string benchServerPath();
std::string echoServerPath();
std::string readmeExamplePath();

} // namespace VantixBench

#endif

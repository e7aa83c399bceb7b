// vantix-test: what running a scenario against a fresh application costs
// beyond the application's own start, and how fast a suite runs in
// accelerated time (--speed 100, libfaketime).

#include "benchmarks.h"
#include "benchsupport.h"

#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QFileInfo>
#include <QLocalSocket>
#include <QProcess>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QThread>

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cmath>
#include <vector>

namespace VantixBench {

namespace {
constexpr int OverheadScenarios = 20;
constexpr int OverheadRounds = 3;
constexpr int SuiteScenarios = 100;
constexpr int GreetingTimeoutMs = 20000;

std::string vantixTestPath()
{
    return VANTIX_TEST_PATH;
}

bool writeScenarios(const QString &folder, int count, const QByteArray &text)
{
    for (int i = 0; i < count; ++i) {
        QFile file(QDir(folder).filePath(QStringLiteral("s%1.vsim").arg(i, 3, 10, QLatin1Char('0'))));
        if (!file.open(QIODevice::WriteOnly) || file.write(text) != text.size()) {
            return false;
        }
    }
    return true;
}

/**
 * The application's own start-to-greeting time, set up as vantix-test sets it
 * up: a new unit in a fresh folder, the socket at a path of its own. The
 * socket is looked for every 0.2 ms, then the greeting read.
 */
double startToGreeting(const std::vector<std::string> &argv)
{
    QTemporaryDir folder;
    QDir(folder.path()).mkpath(QStringLiteral("run"));
    QFile::setPermissions(folder.filePath(QStringLiteral("run")),
        QFileDevice::ReadOwner | QFileDevice::WriteOwner | QFileDevice::ExeOwner);
    const QString socket = folder.filePath(QStringLiteral("run/control"));
    const Environment env{"VANTIX_CONTROL=" + socket.toStdString(),
        "QBCOMMON_ROOT=" + folder.filePath(QStringLiteral("unit")).toStdString(),
        "XDG_RUNTIME_DIR=" + folder.filePath(QStringLiteral("run")).toStdString()};
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    for (const std::string &variable : env) {
        const QString text = QString::fromStdString(variable);
        environment.insert(text.section(QLatin1Char('='), 0, 0), text.section(QLatin1Char('='), 1));
    }
    QStringList arguments;
    for (std::size_t i = 1; i < argv.size(); ++i) {
        arguments.append(QString::fromStdString(argv[i]));
    }
    // Started as vantix-test starts it: through QProcess, its input open (vantix-sim ends with its input).
    QProcess child;
    child.setProcessEnvironment(environment);
    child.setStandardOutputFile(QProcess::nullDevice());
    child.setStandardErrorFile(QProcess::nullDevice());
    QElapsedTimer clock;
    clock.start();
    child.start(QString::fromStdString(argv[0]), arguments);
    double seconds = -1;
    while (child.waitForStarted(GreetingTimeoutMs) && clock.elapsed() < GreetingTimeoutMs) {
        if (!QFileInfo::exists(socket)) {
            QThread::usleep(200);
            continue;
        }
        QLocalSocket client;
        client.connectToServer(socket);
        if (client.waitForConnected(1000) && client.waitForReadyRead(GreetingTimeoutMs) &&
            client.readLine().startsWith("{\"vantix\"")) {
            seconds = clock.nsecsElapsed() / 1e9;
        }
        break;
    }
    child.kill();
    child.waitForFinished();
    return seconds;
}

double runSuite(const std::vector<std::string> &argv, int *exitCode)
{
    QElapsedTimer clock;
    clock.start();
    runChild(argv, exitCode);
    return clock.nsecsElapsed() / 1e9;
}

void overhead(benchmark::State &state)
{
    const std::vector<std::string> app{vantixSimPath(), "--platform", "tolvex-plus"};
    QTemporaryDir suite;
    if (!writeScenarios(suite.path(), OverheadScenarios, "# nothing to do\n")) {
        state.SkipWithError("cannot write the scenarios");
        return;
    }
    std::vector<std::string> argv{vantixTestPath(), "--jobs", "1", suite.path().toStdString(), "--"};
    argv.insert(argv.end(), app.begin(), app.end());
    std::vector<double> greeting;
    std::vector<double> perScenario;
    for (auto _ : state) {
        // Rounds of each in turn, so that both see the same load.
        for (int round = 0; round < OverheadRounds; ++round) {
            for (int i = 0; i < OverheadScenarios; ++i) {
                const double seconds = startToGreeting(app);
                if (seconds < 0) {
                    state.SkipWithError("the application did not greet");
                    return;
                }
                greeting.push_back(seconds);
            }
            int exitCode = -1;
            const double wall = runSuite(argv, &exitCode);
            if (exitCode != 0) {
                state.SkipWithError("vantix-test failed");
                return;
            }
            perScenario.push_back(wall / OverheadScenarios);
        }
        state.SetIterationTime(perScenario.back());
    }
    std::sort(greeting.begin(), greeting.end());
    std::sort(perScenario.begin(), perScenario.end());
    state.counters["greeting_s"] = greeting[greeting.size() / 2];
    state.counters["per_scenario_s"] = perScenario[perScenario.size() / 2];
    state.counters["scenarios"] = OverheadScenarios;
}

void acceleratedSuite(benchmark::State &state)
{
    QTemporaryDir suite;
    if (!writeScenarios(
            suite.path(), SuiteScenarios, "setbatteryfuel,1,80\nwait 10000\nexpect battery1 fuelGauge 80\n")) {
        state.SkipWithError("cannot write the scenarios");
        return;
    }
    const QString junit = QDir(suite.path()).filePath(QStringLiteral("report.xml"));
    const std::vector<std::string> argv{vantixTestPath(), "--jobs", "4", "--speed", "100", "--junit",
        junit.toStdString(), suite.path().toStdString(), "--", vantixSimPath(), "--platform", "tolvex-plus"};
    for (auto _ : state) {
        int exitCode = -1;
        const double wall = runSuite(argv, &exitCode);
        if (exitCode != 0) {
            state.SkipWithError("vantix-test failed (is libfaketime installed? Debian package faketime)");
            return;
        }
        state.SetIterationTime(wall);
        state.counters["wall_s"] = wall;
    }
    // Each scenario's simulated time over its wall time, from the report.
    QFile file(junit);
    if (!file.open(QIODevice::ReadOnly)) {
        state.SkipWithError("no JUnit report");
        return;
    }
    const QString xml = QString::fromUtf8(file.readAll());
    static const QRegularExpression testcase(
        QStringLiteral("<testcase [^>]*time=\"([0-9.]+)\">\\s*<properties>\\s*<property name=\"simulated_seconds\" "
                       "value=\"([0-9.]+)\""));
    std::vector<double> ratios;
    double simulated = 0;
    QRegularExpressionMatchIterator it = testcase.globalMatch(xml);
    while (it.hasNext()) {
        const QRegularExpressionMatch m = it.next();
        const double wall = m.captured(1).toDouble();
        simulated += m.captured(2).toDouble();
        if (wall > 0) {
            ratios.push_back(m.captured(2).toDouble() / wall);
        }
    }
    if (int(ratios.size()) != SuiteScenarios) {
        state.SkipWithError("the report lacks scenarios");
        return;
    }
    std::sort(ratios.begin(), ratios.end());
    state.counters["scenarios"] = SuiteScenarios;
    state.counters["simulated_s"] = simulated;
    state.counters["ratio_median"] = ratios[ratios.size() / 2];
    state.counters["ratio_lowest"] = ratios.front();
}
} // namespace

void registerRunnerBenchmarks()
{
    using benchmark::RegisterBenchmark;
    RegisterBenchmark("Runner/overhead", overhead)->Iterations(1)->UseManualTime()->Unit(benchmark::kMillisecond);
    RegisterBenchmark("Runner/accelerated-suite", acceleratedSuite)
        ->Iterations(1)
        ->UseManualTime()
        ->Unit(benchmark::kMillisecond);
}

} // namespace VantixBench

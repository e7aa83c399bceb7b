// vantix-test as users run it: real suites against real applications
// (example-app, vantix-sim and vantixtest_app, which misbehaves on request).
// Outcomes and their report, the JUnit file, artifacts, private folders of
// parallel runs, shards, accelerated time, bad input and Ctrl+C.

#include "programrun.h"
#include "testfiles.h"

#include <QDir>
#include <QDirIterator>
#include <QElapsedTimer>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QXmlStreamReader>
#include <QtTest>

#include <csignal>
#include <memory>
#include <unistd.h>

namespace {
using Run = ProgramRun;

bool fakeTimeInstalled()
{
    return QFileInfo::exists(QString("/usr/lib/%1/faketime/libfaketime.so.1").arg(VANTIX_MULTIARCH));
}

/// Every file under @p folder, relative to it.
QStringList filesUnder(const QString &folder)
{
    QStringList files;
    QDirIterator it(folder, QDir::Files | QDir::Hidden | QDir::System, QDirIterator::Subdirectories);
    while (it.hasNext()) {
        files.append(QDir(folder).relativeFilePath(it.next()));
    }
    files.sort();
    return files;
}

/// The JUnit file, read as a report viewer reads it.
struct JUnit
{
    struct Case
    {
        QString name, classname, file, line, kind, message, body, out, err, simulated;
    };
    QMap<QString, QString> suite;
    QList<Case> cases;
    QString error;

    explicit JUnit(const QString &path)
    {
        QFile file(path);
        if (!file.open(QIODevice::ReadOnly)) {
            error = "cannot open " + path;
            return;
        }
        QXmlStreamReader xml(&file);
        Case *current = nullptr;
        while (!xml.atEnd()) {
            if (xml.readNext() != QXmlStreamReader::StartElement) {
                continue;
            }
            const QXmlStreamAttributes a = xml.attributes();
            if (xml.name() == QLatin1String("testsuite")) {
                for (const char *key : {"tests", "failures", "errors", "skipped"}) {
                    suite[key] = a.value(key).toString();
                }
            } else if (xml.name() == QLatin1String("testcase")) {
                cases.append({a.value("name").toString(), a.value("classname").toString(), a.value("file").toString(),
                    a.value("line").toString(), "passed", {}, {}, {}, {}, {}});
                current = &cases.last();
            } else if (current && xml.name() == QLatin1String("property")) {
                current->simulated = a.value("value").toString();
            } else if (current &&
                (xml.name() == QLatin1String("failure") || xml.name() == QLatin1String("error") ||
                    xml.name() == QLatin1String("skipped"))) {
                current->kind = xml.name().toString();
                current->message = a.value("message").toString();
                current->body = xml.readElementText();
            } else if (current && xml.name() == QLatin1String("system-out")) {
                current->out = xml.readElementText();
            } else if (current && xml.name() == QLatin1String("system-err")) {
                current->err = xml.readElementText();
            }
        }
        if (xml.hasError()) {
            error = xml.errorString();
        }
    }
    const Case *find(const QString &name) const
    {
        for (const Case &c : cases) {
            if (c.name == name) {
                return &c;
            }
        }
        return nullptr;
    }
};
} // namespace

class TestVantixTest : public QObject
{
    Q_OBJECT

    std::unique_ptr<QTemporaryDir> m_dir;

    QString path(const QString &name) const { return m_dir->filePath(name); }
    QString tmp() const { return path("tmp"); }
    QString home() const { return path("home"); }
    QString work() const { return path("work"); }

    void scenario(const QString &name, const QByteArray &text) { QVERIFY(writeFile(path("suite/" + name), text)); }

    QProcessEnvironment environment() const
    {
        QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
        // The simulator is found on PATH; everything else that could be written to is the test's own.
        env.insert("PATH", QFileInfo(VANTIX_SIM).path() + ":" + env.value("PATH"));
        env.insert("TMPDIR", tmp());
        env.insert("HOME", home());
        env.remove("XDG_DATA_HOME");
        env.remove("QBCOMMON_ROOT");
        return env;
    }

    Run vantixTest(const QStringList &arguments, const QProcessEnvironment &env = QProcessEnvironment())
    {
        return runProgram(VANTIX_TEST, arguments, env.isEmpty() ? environment() : env, {}, work(), 120000);
    }

    /// The lines of a run's report, checked to be only result lines, their details and the closing count.
    static QStringList reportLines(const Run &run)
    {
        const QStringList lines = run.out.split('\n', Qt::SkipEmptyParts);
        static const QRegularExpression form(
            "^((PASS|FAIL|ERROR) \\S+ \\d+\\.\\d\\d s( \\(simulated \\d+\\.\\d s\\))?|    .*|\\d+ passed, \\d+ failed, "
            "\\d+ errors?|Interrupted: .*)$");
        for (const QString &line : lines) {
            if (!form.match(line).hasMatch()) {
                qWarning("unexpected report line: %s", qPrintable(line));
                return {};
            }
        }
        return lines;
    }

    /// The processes whose control socket lies under this test's TMPDIR: the applications vantix-test started.
    QList<qint64> applications() const
    {
        QList<qint64> pids;
        const QByteArray mark = "VANTIX_CONTROL=" + tmp().toUtf8();
        for (const QString &entry : QDir("/proc").entryList(QDir::Dirs)) {
            bool number = false;
            const qint64 pid = entry.toLongLong(&number);
            QFile environ("/proc/" + entry + "/environ");
            if (number && environ.open(QIODevice::ReadOnly)) {
                for (const QByteArray &variable : environ.readAll().split('\0')) {
                    if (variable.startsWith(mark)) {
                        pids.append(pid);
                    }
                }
            }
        }
        return pids;
    }

private Q_SLOTS:
    void init()
    {
        m_dir.reset(new QTemporaryDir);
        QVERIFY(m_dir->isValid());
        for (const QString &folder : {tmp(), home(), work(), path("suite")}) {
            QVERIFY(QDir().mkpath(folder));
        }
    }

    void cleanup()
    {
        // Whatever the run was, no application outlives it and its private folders are gone.
        QTRY_VERIFY(applications().isEmpty());
        QCOMPARE(filesUnder(tmp()), QStringList());
        QCOMPARE(filesUnder(home()), QStringList());
    }

    void suiteWithEveryOutcome()
    {
        scenario("pass.vsim", "setbatteryfuel,1,50\nexpect battery1 fuelGauge 50\n");
        scenario(
            "fail.vsim", "# the level never comes\nsetbatteryfuel,1,50\nexpect battery1 fuelGauge 99 within 100\n");
        scenario("crash.vsim", "setbatteryfuel,1,50\nsetbatteryfuel,1,10\nwait 100\n");
        const QString suite = path("suite");
        const Run run = vantixTest({"--jobs", "3", "--junit", "report.xml", "--artifacts", "kept", suite + "/", "--",
            VANTIXTEST_APP, "--abort-below", "20"});
        QCOMPARE(run.exitCode, 1);
        const QStringList lines = reportLines(run);
        QVERIFY2(!lines.isEmpty(), qPrintable(run.out));
        QCOMPARE(lines.last(), QString("1 passed, 1 failed, 1 error"));

        const QString failure = suite +
            "/fail.vsim:3: expect battery1 fuelGauge 99 within 100: "
            "ID_BATTERY_1ST.fuelGauge is 50, expected 99 within 100 ms";
        const QString crash = "the application crashed with signal 6 (SIGABRT) during the scenario at " + suite +
            "/crash.vsim:2: setbatteryfuel,1,10";
        const int failLine = lines.indexOf(QRegularExpression("FAIL fail\\.vsim .*"));
        QVERIFY2(failLine >= 0 && lines.value(failLine + 1) == "    " + failure, qPrintable(run.out));
        QCOMPARE(lines.value(failLine + 2), QString("    output, logs and state kept in kept/fail"));
        const int errorLine = lines.indexOf(QRegularExpression("ERROR crash\\.vsim .*"));
        QVERIFY2(errorLine >= 0 && lines.value(errorLine + 1) == "    " + crash, qPrintable(run.out));
        QVERIFY2(run.out.contains("    the last lines of its standard error:\n      | vantixtest_app: started\n"
                                  "      | vantixtest_app: fuel 10, aborting\n"),
            qPrintable(run.out));
        QVERIFY(
            lines.indexOf(QRegularExpression("^PASS pass\\.vsim \\d+\\.\\d\\d s \\(simulated \\d\\.\\d s\\)$")) >= 0);

        const JUnit junit(path("work/report.xml"));
        QVERIFY2(junit.error.isEmpty(), qPrintable(junit.error));
        QCOMPARE(junit.suite,
            (QMap<QString, QString>{{"tests", "3"}, {"failures", "1"}, {"errors", "1"}, {"skipped", "0"}}));
        const JUnit::Case *fail = junit.find("fail.vsim");
        QVERIFY(fail);
        QCOMPARE(fail->kind, QString("failure"));
        QCOMPARE(fail->message, failure);
        QCOMPARE(fail->file, suite + "/fail.vsim");
        QCOMPARE(fail->classname, QString("suite"));
        QCOMPARE(fail->line, QString("3"));
        QVERIFY(fail->out.contains("ID_BATTERY_1ST fuelGaugeChanged newValue=50\n"));
        const JUnit::Case *error = junit.find("crash.vsim");
        QVERIFY(error);
        QCOMPARE(error->kind, QString("error"));
        QCOMPARE(error->message, crash);
        QCOMPARE(error->line, QString("2"));
        QVERIFY(error->body.contains("vantixtest_app: fuel 10, aborting"));
        QVERIFY(error->err.contains("vantixtest_app: started\n"));
        const JUnit::Case *pass = junit.find("pass.vsim");
        QVERIFY(pass && pass->kind == "passed" && pass->line.isEmpty() && !pass->simulated.isEmpty());

        // Artifacts for the two that did not pass, with the state after the failing line.
        QCOMPARE(filesUnder(path("work/kept")),
            (QStringList{"crash/events.log", "crash/messages.log", "crash/result.txt", "crash/scenario.vsim",
                "crash/stderr.txt", "crash/stdout.txt", "fail/events.log", "fail/messages.log", "fail/result.txt",
                "fail/scenario.vsim", "fail/state.json", "fail/stderr.txt", "fail/stdout.txt"}));
        const QJsonObject state = QJsonDocument::fromJson(readFile(path("work/kept/fail/state.json"))).object();
        QCOMPARE(state["devices"]["ID_BATTERY_1ST"]["properties"]["fuelGauge"].toInt(), 50);
        QVERIFY(readFile(path("work/kept/crash/stdout.txt")).startsWith("vantixtest_app: root " + tmp().toUtf8()));
        QCOMPARE(readFile(path("work/kept/fail/result.txt")),
            "FAIL " + suite.toUtf8() + "/fail.vsim\n" + failure.toUtf8() + "\n");
        // Nothing else was written where the user ran it.
        QCOMPARE(QDir(work()).entryList(QDir::AllEntries | QDir::NoDotAndDotDot), (QStringList{"kept", "report.xml"}));
    }

    void errors_data()
    {
        QTest::addColumn<QStringList>("options");
        QTest::addColumn<QByteArray>("scenario");
        QTest::addColumn<QStringList>("application");
        QTest::addColumn<int>("exitCode");
        QTest::addColumn<QString>("expected");

        const QString app = VANTIXTEST_APP;
        QTest::newRow("exits") << QStringList() << QByteArray("wait 10\nsetbatteryfuel,1,10\nwait 1000\n")
                               << QStringList{app, "--exit-below", "20"} << 1
                               << "ERROR x.vsim \\S+ s\n    the application exited with status 3 during the scenario "
                                  "at \\S+/x.vsim:2: setbatteryfuel,1,10\n    the last lines of its standard error:\n"
                                  "      \\| vantixtest_app: started\n      \\| vantixtest_app: fuel 10, exiting\n";
        QTest::newRow("never greets")
            << QStringList{"--timeout", "0.5"} << QByteArray("wait 10\n") << QStringList{app, "--silent"} << 1
            << "ERROR x.vsim \\S+ s\n    the application did not greet within --timeout 0.5 s "
               "\\(it is still running; does it call System::initialize\\(\\)\\?\\)\n";
        QTest::newRow("outlives the timeout")
            << QStringList{"--timeout", "1"} << QByteArray("setbatteryfuel,1,40\nwait 60000\n") << QStringList{app} << 1
            << "ERROR x.vsim 1\\.\\d\\d s \\(simulated \\d\\.\\d s\\)\n    the scenario outlived --timeout 1 s at "
               "\\S+/x.vsim:2: wait 60000\n";
        QTest::newRow("exits before greeting")
            << QStringList() << QByteArray("wait 10\n") << QStringList{"/bin/sh", "-c", "echo broken >&2; exit 7"} << 1
            << "ERROR x.vsim \\S+ s\n    the application exited with status 7 before it greeted\n    the last lines of "
               "its "
               "standard error:\n      \\| broken\n";
        QTest::newRow("crashes when stopped")
            << QStringList() << QByteArray("wait 10\n") << QStringList{app, "--segv-on-term"} << 1
            << "ERROR x.vsim \\S+ s \\(simulated 0.0 s\\)\n    the application crashed with signal 11 \\(SIGSEGV\\) "
               "when it "
               "was stopped\n";
        // SIGKILL follows the ignored SIGTERM: the run ends, and passes.
        QTest::newRow("ignores SIGTERM") << QStringList() << QByteArray("wait 10\n")
                                         << QStringList{app, "--ignore-term"} << 0
                                         << "PASS x.vsim \\S+ s \\(simulated 0.0 s\\)\n1 passed, 0 failed, 0 errors\n";
    }

    void errors()
    {
        QFETCH(QStringList, options);
        QFETCH(QByteArray, scenario);
        QFETCH(QStringList, application);
        QFETCH(int, exitCode);
        QFETCH(QString, expected);
        this->scenario("x.vsim", scenario);
        QElapsedTimer clock;
        clock.start();
        const Run run =
            vantixTest(options + QStringList{"--artifacts", "kept", path("suite/x.vsim"), "--"} + application);
        QCOMPARE(run.exitCode, exitCode);
        QVERIFY2(QRegularExpression("^" + expected).match(run.out).hasMatch(), qPrintable(run.out));
        QVERIFY(!reportLines(run).isEmpty());
        if (exitCode != 0) {
            QVERIFY(run.out.endsWith("0 passed, 0 failed, 1 error\n"));
            QVERIFY(QFileInfo::exists(path("work/kept/x/result.txt")));
        }
        // The scenario that outlived its time had its state dumped once its line was cancelled.
        if (QTest::currentDataTag() == QLatin1String("outlives the timeout")) {
            const QJsonObject state = QJsonDocument::fromJson(readFile(path("work/kept/x/state.json"))).object();
            QCOMPARE(state["devices"]["ID_BATTERY_1ST"]["properties"]["fuelGauge"].toInt(), 40);
        }
    }

    void parallelRunsStayApart()
    {
        // Each instance fails if it finds another's mark in its unit folder or on its USB stick.
        scenario("overlap.vsim", "plug stick\nexpect stick present\nwait 400\n");
        const Run run =
            vantixTest({"--jobs", "4", "--repeat", "4", path("suite"), "--", VANTIXTEST_APP, "--claim-root"});
        QVERIFY2(run.exitCode == 0, qPrintable(run.out));
        const QStringList lines = reportLines(run);
        for (const QString name : {"overlap.vsim ", "overlap.vsim#2 ", "overlap.vsim#3 ", "overlap.vsim#4 "}) {
            QVERIFY2(lines.indexOf(QRegularExpression("PASS " + QRegularExpression::escape(name) + ".*")) >= 0,
                qPrintable(run.out));
        }
        QCOMPARE(lines.last(), QString("4 passed, 0 failed, 0 errors"));
    }

    void shardsPartition()
    {
        const QStringList names{"a", "b", "c", "d", "e", "f", "g"};
        for (const QString &name : names) {
            scenario("sub/" + name + ".vsim", "setbatteryfuel,1,30\n");
        }
        const Run all = vantixTest({"--list", path("suite")});
        QCOMPARE(all.exitCode, 0);
        QStringList listed = all.out.split('\n', Qt::SkipEmptyParts);
        QCOMPARE(listed.size(), 7);
        QStringList joined;
        for (int i = 1; i <= 3; ++i) {
            const Run shard = vantixTest({"--list", "--shard", QString("%1/3").arg(i), path("suite")});
            QCOMPARE(shard.exitCode, 0);
            const QStringList part = shard.out.split('\n', Qt::SkipEmptyParts);
            QStringList expected;
            for (int j = i - 1; j < listed.size(); j += 3) {
                expected.append(listed.at(j));
            }
            QCOMPARE(part, expected);
            joined += part;
        }
        joined.sort();
        QCOMPARE(joined, listed);
        QCOMPARE(listed.first(), path("suite/sub/a.vsim"));

        // What runs is what was listed; without --, vantix-sim from PATH runs them.
        const Run second = vantixTest({"--shard", "2/3", "--platform", "tolvex", path("suite")});
        QVERIFY2(second.exitCode == 0, qPrintable(second.out));
        const QStringList lines = reportLines(second);
        QCOMPARE(lines.size(), 3);
        QVERIFY(lines.at(0).startsWith("PASS sub/b.vsim ") || lines.at(0).startsWith("PASS sub/e.vsim "));
        QVERIFY(lines.at(1).startsWith("PASS sub/b.vsim ") || lines.at(1).startsWith("PASS sub/e.vsim "));
        QCOMPARE(lines.at(2), QString("2 passed, 0 failed, 0 errors"));
    }

    void definesAndRepeats()
    {
        scenario(
            "level.vsim", "# ${UNUSED} in a comment stays\nsetbatteryfuel,1,${LEVEL}\nexpect battery1 fuelGauge 35\n");
        const Run run = vantixTest({"--define", "LEVEL=35", "--repeat", "2", "--artifacts", "kept", "--jobs", "1",
            path("suite"), "--", EXAMPLE_APP});
        QVERIFY2(run.exitCode == 0, qPrintable(run.out + run.err));
        QVERIFY(run.out.startsWith("PASS level.vsim "));
        QVERIFY(run.out.contains("\nPASS level.vsim#2 "));
        const Run other = vantixTest({"--define", "LEVEL=36", "--artifacts", "kept", path("suite"), "--", EXAMPLE_APP});
        QCOMPARE(other.exitCode, 1);
        QVERIFY2(
            readFile(path("work/kept/level/scenario.vsim")).contains("\nsetbatteryfuel,1,36\n"), qPrintable(other.out));
    }

    void speedKeepsOutcomes()
    {
        if (!fakeTimeInstalled()) {
            QSKIP("libfaketime is not installed (Debian package faketime, in scripts/install-deps.sh)");
        }
        QMap<QString, QString> outcomes[2];
        int index = 0;
        for (const char *speed : {"1", "100"}) {
            const Run run = vantixTest({"--speed", speed, "--junit", "report.xml", EXAMPLE_SCENARIOS, "--", EXAMPLE_APP,
                "--platform", "tolvex-plus"});
            QVERIFY2(run.exitCode == 0, qPrintable(run.out + run.err));
            const JUnit junit(path("work/report.xml"));
            QVERIFY(junit.error.isEmpty());
            for (const JUnit::Case &c : junit.cases) {
                outcomes[index][c.name] = c.kind;
                // The application's clock covered the scenario's own waits and ramps.
                if (c.name == "low-battery-shutdown.vsim") {
                    QVERIFY2(c.simulated.toDouble() >= 3.0, qPrintable(c.simulated));
                }
            }
            ++index;
        }
        QCOMPARE(outcomes[0].size(), QDir(EXAMPLE_SCENARIOS).entryList({"*.vsim"}, QDir::Files).size());
        QCOMPARE(outcomes[1], outcomes[0]);
    }

    void speedRunsTheClockFaster()
    {
        if (!fakeTimeInstalled()) {
            QSKIP("libfaketime is not installed (Debian package faketime, in scripts/install-deps.sh)");
        }
        // 20 s of the unit's time: its stamps say so, while the run takes a fraction of it.
        // The host's network poll would have fallen twice and emptied the SSID.
        scenario("long.vsim", "setssid,Lab\nwait 20000\nsetbatteryfuel,1,30\nexpect wifi wifiSsid \"Lab\"\n");
        QElapsedTimer clock;
        clock.start();
        const Run run = vantixTest({"--speed", "100", "--junit", "report.xml", path("suite"), "--", EXAMPLE_APP});
        QVERIFY2(run.exitCode == 0, qPrintable(run.out + run.err));
        QVERIFY2(clock.elapsed() < 10000, qPrintable(QString::number(clock.elapsed())));
        const JUnit junit(path("work/report.xml"));
        QVERIFY(junit.cases.size() == 1 && junit.cases.first().simulated.toDouble() >= 20.0);
        const QRegularExpressionMatch stamp =
            QRegularExpression("\\[\\s*(\\d+) ms\\] ID_BATTERY_1ST fuelGaugeChanged newValue=30")
                .match(junit.cases.first().out);
        QVERIFY2(stamp.hasMatch() && stamp.captured(1).toInt() >= 20000, qPrintable(junit.cases.first().out));

        // vantix-sim --speed starts itself again under libfaketime.
        clock.restart();
        const Run sim = runProgram(VANTIX_SIM,
            {"--speed", "100", "--root", path("simroot"), "--script", path("suite/long.vsim")}, environment());
        QVERIFY2(sim.exitCode == 0, qPrintable(sim.err));
        QVERIFY(clock.elapsed() < 10000);
        const QRegularExpressionMatch simStamp =
            QRegularExpression("\\[\\s*(\\d+) ms\\] ID_BATTERY_1ST fuelGaugeChanged newValue=30").match(sim.out);
        QVERIFY2(simStamp.hasMatch() && simStamp.captured(1).toInt() >= 20000, qPrintable(sim.out));
    }

    void badInput_data()
    {
        QTest::addColumn<QStringList>("arguments");
        QTest::addColumn<QString>("message");

        const QString app = EXAMPLE_APP;
        QTest::newRow("missing scenario")
            << QStringList{"nowhere.vsim"} << "vantix-test: cannot read nowhere.vsim: no such file or folder\n";
        QTest::newRow("undefined name") << QStringList{"../suite/level.vsim", "--", app}
                                        << "vantix-test: ../suite/level.vsim:2: ${LEVEL} is not defined; give it with "
                                           "--define LEVEL=VALUE\n";
        QTest::newRow("not executable")
            << QStringList{"../suite", "--", "../suite/level.vsim"}
            << "vantix-test: the application ../suite/level.vsim is not an executable file\n";
        QTest::newRow("not on PATH") << QStringList{"../suite", "--", "no-such-program"}
                                     << "vantix-test: the application no-such-program is not an executable on PATH\n";
        QTest::newRow("shard 3/2") << QStringList{"--shard", "3/2", "../suite"}
                                   << "vantix-test: --shard takes I/N with I from 1 to N (2/3 runs the second of three "
                                      "shares), not \"3/2\"\n";
        QTest::newRow("jobs 0") << QStringList{"--jobs", "0", "../suite"}
                                << "vantix-test: --jobs takes a whole number of at least 1, not \"0\"\n";
        QTest::newRow("bad define")
            << QStringList{"--define", "1X=2", "../suite"}
            << "vantix-test: --define takes NAME=VALUE, NAME made of letters, digits and _, not "
               "\"1X=2\"\n";
        QTest::newRow("speed 0") << QStringList{"--speed", "0", "../suite"}
                                 << "vantix-test: --speed takes a number above 0 (100 runs time 100 times faster), not "
                                    "\"0\"\n";
        QTest::newRow("speed without libfaketime")
            << QStringList{"--speed", "100", "../suite"}
            << "vantix-test: VANTIX_FAKETIME_LIB names /nonexistent/libfaketime.so.1, which is not a file; libfaketime "
               "comes with the Debian package faketime\n";
        QTest::newRow("platform with a program")
            << QStringList{"--platform", "tolvex", "../suite", "--", app}
            << "vantix-test: --platform chooses vantix-sim's platform; give " + app + " its own options after --\n";
        QTest::newRow("junit folder missing")
            << QStringList{"--junit", "no/report.xml", "--define", "LEVEL=1", "../suite", "--", app}
            << "vantix-test: cannot write no/report.xml: the folder WORK/no does not exist\n";
        QTest::newRow("empty folder") << QStringList{"../home"} << "vantix-test: no scenarios (*.vsim) in ../home\n";
    }

    void badInput()
    {
        QFETCH(QStringList, arguments);
        QFETCH(QString, message);
        scenario("level.vsim", "# battery\nsetbatteryfuel,1,${LEVEL}\n");
        QProcessEnvironment env = environment();
        env.insert("VANTIX_FAKETIME_LIB", "/nonexistent/libfaketime.so.1");
        const Run run = vantixTest(arguments, env);
        QCOMPARE(run.exitCode, 2);
        if (QTest::currentDataTag() == QLatin1String("junit folder missing")) {
            message.replace("WORK", work());
        }
        QCOMPARE(run.err, message);
        // Nothing started: no report, and no private folder was made.
        QCOMPARE(run.out, QString());
        QCOMPARE(QDir(work()).entryList(QDir::AllEntries | QDir::NoDotAndDotDot), QStringList());
    }

    void interruptStopsEverything_data()
    {
        QTest::addColumn<int>("signal");
        QTest::newRow("Ctrl+C") << int(SIGINT);
        // A CI job that is cancelled.
        QTest::newRow("SIGTERM") << int(SIGTERM);
    }

    void interruptStopsEverything()
    {
        QFETCH(int, signal);
        for (const char *name : {"a", "b", "c", "d"}) {
            scenario(QString(name) + ".vsim", "wait 60000\n");
        }
        QProcess process;
        process.setProcessEnvironment(environment());
        process.setWorkingDirectory(work());
        process.start(VANTIX_TEST, {"--jobs", "2", "--junit", "report.xml", path("suite"), "--", EXAMPLE_APP});
        QVERIFY(process.waitForStarted());
        // Two applications run their scenarios; the other two wait for a job.
        QTRY_COMPARE_WITH_TIMEOUT(applications().size(), 2, 20000);
        // Their clocks run: the scenarios are about to start, or have.
        QTRY_VERIFY_WITH_TIMEOUT(filesUnder(tmp()).filter("run/clock.vsim").size() == 2, 20000);
        ::kill(pid_t(process.processId()), signal);
        QTRY_COMPARE_WITH_TIMEOUT(process.state(), QProcess::NotRunning, 20000);
        QCOMPARE(process.exitStatus(), QProcess::NormalExit);
        QCOMPARE(process.exitCode(), 130);
        QCOMPARE(QString(process.readAllStandardOutput()),
            QString("Interrupted: 2 running scenario(s) stopped, 2 not started.\n0 passed, 0 failed, 0 errors\n"));
        QVERIFY(applications().isEmpty());
        const JUnit junit(path("work/report.xml"));
        QCOMPARE(junit.suite["skipped"], QString("4"));
        QCOMPARE(junit.find("c.vsim")->message, QString("not run: interrupted"));
        for (const char *name : {"a.vsim", "b.vsim"}) {
            const QString message = junit.find(name)->message;
            QVERIFY2(message == "interrupted" ||
                    message == "interrupted at " + path(QString("suite/") + name) + ":1: wait 60000",
                qPrintable(message));
        }
    }
};

QTEST_GUILESS_MAIN(TestVantixTest)
#include "tst_vantixtest.moc"

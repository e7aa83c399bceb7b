// The vantix-sim program as a user runs it: scripts that pass and fail with
// their exit codes and messages, standard input, the live view of a hot-plug,
// the JSON dump at exit, the options and the example scenarios.

#include "programrun.h"
#include "testfiles.h"

#include <vantix/vantix_version.h>

#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QTemporaryDir>
#include <QtTest>

#include <memory>

namespace {
using Run = ProgramRun;

// The build puts the program next to the tests' folder; VANTIX_SIM points elsewhere.
QString program()
{
    const QString fromEnvironment = qEnvironmentVariable("VANTIX_SIM");
    return fromEnvironment.isEmpty()
        ? QDir(QCoreApplication::applicationDirPath()).filePath("../apps/vantix-sim/vantix-sim")
        : fromEnvironment;
}

QString scenarios()
{
    return QFileInfo(__FILE__).dir().filePath("../examples/scenarios");
}
} // namespace

class TestSimProgram : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        QVERIFY2(QFileInfo(program()).isExecutable(), qPrintable(program()));
        m_root.reset(new QTemporaryDir);
        QVERIFY(m_root->isValid());
    }

    void exampleScenarios_data()
    {
        QTest::addColumn<QString>("file");
        QTest::addColumn<QString>("platform");
        for (const char *row : {"low-battery-shutdown tolvex", "network-loss-recovery tolvex-plus",
                 "usb-stick-hotplug tolvex-plus", "battery-discharge tolvex", "wifi-fade tolvex"}) {
            const QStringList parts = QString(row).split(' ');
            QTest::newRow(row) << parts.at(0) + ".vsim" << parts.at(1);
        }
    }

    void exampleScenarios()
    {
        QFETCH(QString, file);
        QFETCH(QString, platform);
        const Run run = sim({"--platform", platform, "--script", QDir(scenarios()).filePath(file)});
        QVERIFY2(run.exitCode == 0, qPrintable(run.out + run.err));
        QVERIFY(!run.out.contains("KO:"));
        QVERIFY(run.out.contains("\n> expect "));
    }

    // Under libfaketime the feed's rows keep their times on the application's
    // clock, which runs a hundred times faster than the wall's.
    void feedUnderFakedTime()
    {
        const QString faketime = "/usr/lib/x86_64-linux-gnu/faketime/libfaketime.so.1";
        if (!QFileInfo::exists(faketime)) {
            QSKIP("libfaketime is not installed (Debian package faketime)");
        }
        QVERIFY(writeFile(QDir(m_root->path()).filePath("slow.csv"), "0,100\n5000,50\n10000,5\n"));
        // The current's change is stamped before the feed starts: no row may come sooner after it than its time.
        const QString script = writeScript(
            "setbatterycurrent,1,1\nfeed battery1 setbatteryfuel,1 slow.csv\nexpect battery1 fuelGauge 5\n");
        // A preloaded library trips AddressSanitizer's check that it comes first.
        const QString asan = qEnvironmentVariable("ASAN_OPTIONS");
        QElapsedTimer wall;
        wall.start();
        const Run run = sim({"--platform", "tolvex", "--script", script}, QByteArray(),
            {{"LD_PRELOAD", faketime}, {"FAKETIME", "+0 x100"}, {"FAKETIME_DONT_FAKE_MONOTONIC", "0"},
                {"ASAN_OPTIONS", asan + (asan.isEmpty() ? "" : ":") + "verify_asan_link_order=0"}});
        QVERIFY2(run.exitCode == 0, qPrintable(run.out + run.err));
        QVERIFY(run.out.contains("OK 3 values over 10000 ms"));
        QVERIFY2(wall.elapsed() < 10000, qPrintable(QString::number(wall.elapsed())));
        // The events' times are the application's clock, which the feed keeps to: never early.
        QMap<int, qint64> stamps;
        const QRegularExpression event(R"(\[\s*(\d+) ms\] ID_BATTERY_1ST (fuelGauge|current)Changed newValue=(\d+))");
        for (auto match = event.globalMatch(run.out); match.hasNext();) {
            const QRegularExpressionMatch m = match.next();
            stamps.insert(m.captured(2) == "current" ? -1 : m.captured(3).toInt(), m.captured(1).toLongLong());
        }
        QCOMPARE(stamps.keys(), (QList<int>{-1, 5, 50, 100}));
        const QString times = QString("%1 %2 %3 %4")
                                  .arg(stamps.value(-1))
                                  .arg(stamps.value(100))
                                  .arg(stamps.value(50))
                                  .arg(stamps.value(5));
        QVERIFY2(stamps.value(50) - stamps.value(-1) >= 5000, qPrintable(times));
        QVERIFY2(stamps.value(5) - stamps.value(-1) >= 10000, qPrintable(times));
    }

    void scripts_data()
    {
        QTest::addColumn<QString>("script");
        QTest::addColumn<int>("exitCode");
        QTest::addColumn<QStringList>("out");
        QTest::addColumn<QString>("err");
        QTest::addColumn<QString>("notRun");

        QTest::newRow("hot-plug shown live")
            << "# plug a port\nplug otga\nexpect otga status has F_ENABLE within 500\n"
            << 0
            << QStringList{"> plug otga\nOK\n", " ms] System deviceDetected device=ID_USB_OTG_A\n",
                   " ms] ID_USB_OTG_A statusChanged newStatus=F_ENABLE\n"}
            << QString() << QString();
        const QString unmet =
            "expect power status has F_ACTIVE within 100: ID_POWER_SUPPLY.status is F_ENABLE, expected "
            "has F_ACTIVE within 100 ms\n";
        QTest::newRow("expectation not met")
            << "get battery1 id\nexpect power status has F_ACTIVE within 100\nget battery1 type\n"
            << 1 << QStringList{"> get battery1 id\nOK ID_BATTERY_1ST\n", "KO: " + unmet.section(": ", 1)}
            << ":2: " + unmet << "> get battery1 type";
        // Comments and blank lines count in the line number.
        QTest::newRow("unknown command") << "# a comment\n\nbogus\nget battery1 id\n"
                                         << 1 << QStringList{"> bogus\nKO: unknown command \"bogus\""}
                                         << ":3: bogus: unknown command \"bogus\"; help lists the commands\n"
                                         << "> get battery1 id";
        QTest::newRow("quit ends early") << "quit\nbogus\n"
                                         << 0 << QStringList{"> quit\nOK\n"} << QString() << "> bogus";
    }

    void scripts()
    {
        QFETCH(QString, script);
        QFETCH(int, exitCode);
        QFETCH(QStringList, out);
        QFETCH(QString, err);
        QFETCH(QString, notRun);
        const QString path = writeScript(script);
        const Run run = sim({"--platform", "tolvex", "--script", path});
        QCOMPARE(run.exitCode, exitCode);
        for (const QString &text : out) {
            QVERIFY2(run.out.contains(text), qPrintable(run.out));
        }
        if (!err.isEmpty()) {
            QVERIFY2(run.err.contains("vantix-sim: " + path + err), qPrintable(run.err));
        }
        if (!notRun.isEmpty()) {
            QVERIFY(!run.out.contains(notRun));
        }
    }

    void standardInput()
    {
        const QByteArray input("bogus\nget battery1 id");
        // Typed commands go on after a KO; the last line needs no newline.
        const Run typed = sim({"--platform", "tolvex"}, input);
        QCOMPARE(typed.exitCode, 0);
        QVERIFY(typed.out.contains("KO: unknown command \"bogus\"; help lists the commands\nOK ID_BATTERY_1ST\n"));
        // A script on standard input stops at it.
        const Run script = sim({"--script", "-"}, input);
        QCOMPARE(script.exitCode, 1);
        QVERIFY(script.err.contains("vantix-sim: -:1: bogus: unknown command"));
        QVERIFY(!script.out.contains("OK ID_BATTERY_1ST"));
    }

    void answersDoNotDependOnTheLog()
    {
        // One write: the second battery's change comes before its deviceDetected, and is shown.
        const QByteArray batch("addbattery,2\nsetbatteryfuel,2,33\n");
        const Run plugged = sim({"--platform", "tolvex"}, batch);
        QVERIFY2(plugged.out.contains(" ms] ID_BATTERY_2ND fuelGaugeChanged newValue=33\n"), qPrintable(plugged.out));
        // An illegal command is refused with debug logging off as with it on.
        for (const char *rules : {"", "*.debug=false"}) {
            const Run run = sim({"--script", "-"}, "nonsense,1,2\n", {{"QT_LOGGING_RULES", rules}});
            QCOMPARE(run.exitCode, 1);
            QVERIFY2(run.err.contains("vantix-sim: -:1: nonsense,1,2: illegal command"), qPrintable(run.err));
        }
    }

    void dumpJsonAtExit()
    {
        const QString path = QDir(m_root->path()).filePath("state.json");
        const Run run = sim({"--platform", "tolvex", "--dump-json", path, "--script", writeScript("plug usb\n")});
        QCOMPARE(run.exitCode, 0);
        const QJsonObject dump = QJsonDocument::fromJson(readFile(path)).object();
        QCOMPARE(dump.value("platform").toString(), QString("PT_TOLVEX"));
        // Written after the script ran.
        QVERIFY(dump.value("devices").toObject().contains("ID_USB"));
    }

    void options()
    {
        const Run version = sim({"--version"});
        QCOMPARE(version.exitCode, 0);
        QCOMPARE(version.out.trimmed(), QString("vantix-sim " VANTIX_VERSION_STRING));

        const Run help = sim({"--help"});
        for (const char *option : {"--platform", "--root", "--exit-after-ready", "--script", "--quiet", "--dump-json",
                 "--id", "--diskfailures", "--disksformatted"}) {
            QVERIFY2(help.out.contains(QLatin1String(option)), option);
        }

        const Run platform = sim({"--platform", "toaster"});
        QCOMPARE(platform.exitCode, 2);
        QVERIFY(platform.err.contains("unknown platform \"toaster\""));
        QCOMPARE(sim({"--script", QDir(m_root->path()).filePath("none")}).exitCode, 2);

        // Quiet: only the answers, and the unit's files under the given root.
        const QTemporaryDir root;
        const Run quiet = sim(
            {"--quiet", "--root", root.path(), "--script", writeScript("plug otgb\nwait 150\nget userdata path\n")});
        QCOMPARE(quiet.exitCode, 0);
        QCOMPARE(quiet.out, QString("OK\nOK\nOK \"%1\"\n").arg(QDir(root.path()).filePath("var/data")));
        QVERIFY(sim({"--exit-after-ready", "--platform", "quarnel"}).out.contains("Platform PT_QUARNEL ready\n"));
    }

private:
    Run sim(const QStringList &arguments, const QByteArray &input = QByteArray(),
        const QList<QPair<QString, QString>> &extra = {})
    {
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert("QBCOMMON_ROOT", m_root->path());
        environment.insert("QT_QPA_PLATFORM", "offscreen");
        for (const auto &variable : extra) {
            environment.insert(variable.first, variable.second);
        }
        return runProgram(program(), arguments, environment, input);
    }

    QString writeScript(const QString &text)
    {
        const QString path = QDir(m_root->path()).filePath("test.vsim");
        QFile file(path);
        if (file.open(QIODevice::WriteOnly)) {
            file.write(text.toUtf8());
        }
        return path;
    }

    std::unique_ptr<QTemporaryDir> m_root;
};

QTEST_GUILESS_MAIN(TestSimProgram)
#include "tst_simprogram.moc"

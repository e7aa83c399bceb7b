// The vantix-sim program as a user runs it: scripts that pass and fail with
// their exit codes and messages, standard input, the live view of a hot-plug,
// the JSON dump at exit, the options and the example scenarios.

#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QTemporaryDir>
#include <QtTest>

namespace {
struct Run
{
    int exitCode = -1;
    QString out;
    QString err;
};

// The build puts the program next to the tests' folder; VANTIX_SIM points elsewhere.
QString program()
{
    const QString fromEnvironment = qEnvironmentVariable("VANTIX_SIM");
    return fromEnvironment.isEmpty()
        ? QDir(QCoreApplication::applicationDirPath()).filePath(QStringLiteral("../apps/vantix-sim/vantix-sim"))
        : fromEnvironment;
}

QString scenarios()
{
    return QFileInfo(QStringLiteral(__FILE__)).dir().filePath(QStringLiteral("../examples/scenarios"));
}
} // namespace

class TestSimProgram : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();
    void exampleScenarios_data();
    void exampleScenarios();
    void scripts_data();
    void scripts();
    void standardInput();
    void dumpJsonAtExit();
    void options();

private:
    Run sim(const QStringList &arguments, const QByteArray &input = QByteArray());
    QString writeScript(const QString &text);

    QTemporaryDir *m_root = nullptr;
};

void TestSimProgram::init()
{
    QVERIFY2(QFileInfo(program()).isExecutable(), qPrintable(program()));
    m_root = new QTemporaryDir;
    QVERIFY(m_root->isValid());
}

void TestSimProgram::cleanup()
{
    delete m_root;
    m_root = nullptr;
}

Run TestSimProgram::sim(const QStringList &arguments, const QByteArray &input)
{
    QProcess process;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QStringLiteral("QBCOMMON_ROOT"), m_root->path());
    environment.insert(QStringLiteral("QT_QPA_PLATFORM"), QStringLiteral("offscreen"));
    process.setProcessEnvironment(environment);
    process.start(program(), arguments);
    Run run;
    if (!process.waitForStarted()) {
        return run;
    }
    process.write(input);
    process.closeWriteChannel();
    if (!process.waitForFinished(60000)) {
        process.kill();
        process.waitForFinished();
        return run;
    }
    run.exitCode = process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -2;
    run.out = QString::fromUtf8(process.readAllStandardOutput());
    run.err = QString::fromUtf8(process.readAllStandardError());
    return run;
}

QString TestSimProgram::writeScript(const QString &text)
{
    const QString path = QDir(m_root->path()).filePath(QStringLiteral("test.vsim"));
    QFile file(path);
    if (file.open(QIODevice::WriteOnly)) {
        file.write(text.toUtf8());
    }
    return path;
}

void TestSimProgram::exampleScenarios_data()
{
    QTest::addColumn<QString>("file");
    QTest::addColumn<QString>("platform");
    QTest::newRow("low battery") << "low-battery-shutdown.vsim"
                                 << "tolvex";
    QTest::newRow("network loss") << "network-loss-recovery.vsim"
                                  << "tolvex-plus";
    QTest::newRow("usb stick") << "usb-stick-hotplug.vsim"
                               << "tolvex-plus";
}

void TestSimProgram::exampleScenarios()
{
    QFETCH(QString, file);
    QFETCH(QString, platform);
    const Run run =
        sim({QStringLiteral("--platform"), platform, QStringLiteral("--script"), QDir(scenarios()).filePath(file)});
    QVERIFY2(run.exitCode == 0, qPrintable(run.out + run.err));
    QVERIFY(!run.out.contains(QStringLiteral("KO:")));
    QVERIFY(run.out.contains(QStringLiteral("\n> expect ")));
}

void TestSimProgram::scripts_data()
{
    QTest::addColumn<QString>("script");
    QTest::addColumn<int>("exitCode");
    QTest::addColumn<QStringList>("out");
    QTest::addColumn<QString>("err");
    QTest::addColumn<QString>("notRun");

    QTest::newRow("hot-plug shown live") << "# plug a port\nplug otga\nexpect otga status has F_ENABLE within 500\n"
                                         << 0
                                         << QStringList{QStringLiteral("> plug otga\nOK\n"),
                                                QStringLiteral(" ms] System deviceDetected device=ID_USB_OTG_A\n"),
                                                QStringLiteral(" ms] ID_USB_OTG_A statusChanged newStatus=F_ENABLE\n")}
                                         << QString() << QString();
    QTest::newRow("expectation not met")
        << "get battery1 id\nexpect power status has F_ACTIVE within 100\nget battery1 type\n"
        << 1
        << QStringList{QStringLiteral("OK ID_BATTERY_1ST\n"),
               QStringLiteral("KO: ID_POWER_SUPPLY.status is F_ENABLE, expected has F_ACTIVE within 100 ms\n")}
        << ":2: expect power status has F_ACTIVE within 100: ID_POWER_SUPPLY.status is F_ENABLE, expected has "
           "F_ACTIVE within 100 ms\n"
        << "> get battery1 type";
    QTest::newRow("unknown command") << "bogus\nget battery1 id\n"
                                     << 1 << QStringList{QStringLiteral("KO: unknown command \"bogus\"")}
                                     << ":1: bogus: unknown command \"bogus\"; help lists the commands\n"
                                     << "> get battery1 id";
    QTest::newRow("quit ends early") << "quit\nbogus\n"
                                     << 0 << QStringList{QStringLiteral("> quit\nOK\n")} << QString() << "> bogus";
}

void TestSimProgram::scripts()
{
    QFETCH(QString, script);
    QFETCH(int, exitCode);
    QFETCH(QStringList, out);
    QFETCH(QString, err);
    QFETCH(QString, notRun);
    const QString path = writeScript(script);
    const Run run = sim({QStringLiteral("--platform"), QStringLiteral("tolvex"), QStringLiteral("--script"), path});
    QCOMPARE(run.exitCode, exitCode);
    for (const QString &text : out) {
        QVERIFY2(run.out.contains(text), qPrintable(run.out));
    }
    if (!err.isEmpty()) {
        QVERIFY2(run.err.contains(QStringLiteral("vantix-sim: ") + path + err), qPrintable(run.err));
    }
    if (!notRun.isEmpty()) {
        QVERIFY(!run.out.contains(notRun));
    }
}

void TestSimProgram::standardInput()
{
    const QByteArray input("bogus\nget battery1 id");
    // Typed commands go on after a KO; the last line needs no newline.
    const Run typed = sim({QStringLiteral("--platform"), QStringLiteral("tolvex")}, input);
    QCOMPARE(typed.exitCode, 0);
    QVERIFY(typed.out.contains(QStringLiteral("KO: unknown command \"bogus\"; help lists the commands\nOK "
                                              "ID_BATTERY_1ST\n")));
    // A script on standard input stops at it.
    const Run script = sim({QStringLiteral("--script"), QStringLiteral("-")}, input);
    QCOMPARE(script.exitCode, 1);
    QVERIFY(script.err.contains(QStringLiteral("vantix-sim: -:1: bogus: unknown command")));
    QVERIFY(!script.out.contains(QStringLiteral("OK ID_BATTERY_1ST")));
}

void TestSimProgram::dumpJsonAtExit()
{
    const QString path = QDir(m_root->path()).filePath(QStringLiteral("state.json"));
    const Run run = sim({QStringLiteral("--platform"), QStringLiteral("tolvex"), QStringLiteral("--dump-json"), path,
        QStringLiteral("--script"), writeScript(QStringLiteral("plug usb\n"))});
    QCOMPARE(run.exitCode, 0);
    QFile file(path);
    QVERIFY(file.open(QIODevice::ReadOnly));
    const QJsonObject dump = QJsonDocument::fromJson(file.readAll()).object();
    QCOMPARE(dump.value(QStringLiteral("platform")).toString(), QStringLiteral("PT_TOLVEX"));
    const QJsonObject devices = dump.value(QStringLiteral("devices")).toObject();
    QCOMPARE(devices.size(), 11);
    QVERIFY(devices.contains(QStringLiteral("ID_USB")));
    const QJsonObject disk = devices.value(QStringLiteral("ID_DISK_USER_DATA")).toObject();
    QCOMPARE(disk.value(QStringLiteral("properties")).toObject().value(QStringLiteral("path")).toString(),
        QDir(m_root->path()).filePath(QStringLiteral("var/data")));
}

void TestSimProgram::options()
{
    const Run version = sim({QStringLiteral("--version")});
    QCOMPARE(version.exitCode, 0);
    QVERIFY(version.out.startsWith(QStringLiteral("vantix-sim ")));

    const Run help = sim({QStringLiteral("--help")});
    for (const char *option : {"--platform", "--root", "--exit-after-ready", "--script", "--quiet", "--dump-json",
             "--id", "--diskfailures", "--disksformatted"}) {
        QVERIFY2(help.out.contains(QLatin1String(option)), option);
    }

    const Run platform = sim({QStringLiteral("--platform"), QStringLiteral("toaster")});
    QCOMPARE(platform.exitCode, 2);
    QVERIFY(platform.err.contains(QStringLiteral("unknown platform \"toaster\"")));

    const Run missing = sim({QStringLiteral("--script"), QDir(m_root->path()).filePath(QStringLiteral("none"))});
    QCOMPARE(missing.exitCode, 2);

    // Quiet: only the answers, and the unit's files under the given root.
    const QTemporaryDir root;
    const Run quiet = sim({QStringLiteral("--quiet"), QStringLiteral("--root"), root.path(), QStringLiteral("--script"),
        writeScript(QStringLiteral("plug otgb\nwait 150\nget userdata path\n"))});
    QCOMPARE(quiet.exitCode, 0);
    QCOMPARE(
        quiet.out, QStringLiteral("OK\nOK\nOK \"%1\"\n").arg(QDir(root.path()).filePath(QStringLiteral("var/data"))));

    const Run ready =
        sim({QStringLiteral("--exit-after-ready"), QStringLiteral("--platform"), QStringLiteral("quarnel")});
    QCOMPARE(ready.exitCode, 0);
    QVERIFY(ready.out.contains(QStringLiteral("Platform PT_QUARNEL ready\n")));
    QVERIFY(ready.out.contains(QStringLiteral("\nID_CAN_SERIAL ")));
}

QTEST_GUILESS_MAIN(TestSimProgram)
#include "tst_simprogram.moc"

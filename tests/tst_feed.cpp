// feed: a CSV time series played into a property or a debug command, each
// row at its time; every bad file refused before anything is applied; a
// looped file that runs until it is cancelled.

#include "session_p.h"
#include "testfiles.h"
#include "sessionline.h"
#include "testroot.h"
#include "testsystem.h"
#include "timing_p.h"

#include <vantix/vantix.h>

#include <vantixcontrol/engine/session.h>
#include <vantixcontrol/protocol/reply.h>

#include <QElapsedTimer>
#include <QSignalSpy>
#include <QtTest>

#include <sys/stat.h>

using namespace TQ_SPAPI;
using namespace VantixControl;

class TestFeed : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        m_root = new TestRoot;
        QSignalSpy ready(startSystem(System::PT_TOLVEX_PLUS), &System::apiReady);
        QVERIFY(ready.wait());
        m_session = new Session(System::instance());
        m_display = qobject_cast<IDisplay *>(System::instance()->device(IDevice::ID_DISPLAY).data());
        QVERIFY(m_display);
    }

    void cleanup()
    {
        delete m_session;
        System::releaseInstance();
        SystemPlatformType::type = System::PT_UNKNOWN;
        delete m_root;
    }

    void badFilesChangeNothing_data()
    {
        QTest::addColumn<QString>("line");
        QTest::addColumn<QByteArray>("content");
        QTest::addColumn<QString>("answer");
        QTest::addColumn<int>("error");

        const int bad = int(ErrorClass::BadValue);
        const int failed = int(ErrorClass::Failed);
        const QString display = "feed display brightnes FILE";
        const QString fuel = "feed battery1 setbatteryfuel,1 FILE";
        QTest::newRow("backwards") << display << QByteArray("ms,level\n0,10\n500,20\n400,30\n")
                                   << "KO: f.csv:4: 400 ms is earlier than 500 ms on line 3: times must not go "
                                      "backwards"
                                   << bad;
        QTest::newRow("beyond uint") << display << QByteArray("0,10\n100,-1\n")
                                     << "KO: f.csv:2: value: expected a whole number from 0 to 4294967295" << bad;
        QTest::newRow("beyond the argument") << fuel << QByteArray("0,10\n100,3000000000\n")
                                             << "KO: f.csv:2: value: percent takes a whole number from "
                                                "-2147483648 to 2147483647, got \"3000000000\""
                                             << bad;
        QTest::newRow("no number") << fuel << QByteArray("0,10\n100,ten\n")
                                   << "KO: f.csv:2: value: percent takes a whole number" << bad;
        QTest::newRow("a comma for the debug controller")
            << "feed wifi setssid FILE" << QByteArray("0,Lab\n100,\"a,b\"\n")
            << "KO: f.csv:2: value: ssid cannot hold a comma" << bad;
        QTest::newRow("three fields") << display << QByteArray("0,10,20\n")
                                      << "KO: f.csv:1: expected two fields, milliseconds,value; got 3" << bad;
        QTest::newRow("one field") << display << QByteArray("0,10\nwait 100\n") << "KO: f.csv:2: expected two fields"
                                   << bad;
        QTest::newRow("a second header") << display << QByteArray("ms,level\n0,10\nms,level\n")
                                         << "KO: f.csv:3: milliseconds: expected a whole number from 0 to "
                                            "86400000, got \"ms\""
                                         << bad;
        QTest::newRow("negative time") << display << QByteArray("-5,10\n")
                                       << "KO: f.csv:1: milliseconds: expected a whole number" << bad;
        QTest::newRow("past a day") << display << QByteArray("0,10\n86400001,20\n")
                                    << "KO: f.csv:2: milliseconds: expected a whole number from 0 to 86400000" << bad;
        QTest::newRow("open quote") << display << QByteArray("0,\"10\n") << "KO: f.csv:1: a quote is not closed" << bad;
        QTest::newRow("only a header") << display << QByteArray("ms,level\n\n# nothing\n")
                                       << "KO: f.csv: no rows of milliseconds,value" << bad;
        QTest::newRow("binary") << display << QByteArray("0,1\n\xff\xfe\x00\x01", 8)
                                << "KO: f.csv: not a CSV text: it is not UTF-8 text" << bad;
        QTest::newRow("a loop of no time")
            << display + " --loop" << QByteArray("0,10\n0,20\n")
            << "KO: f.csv: every row is at 0 ms; a looped file must last some time" << bad;
        QByteArray rows;
        for (int i = 0; i <= Timing::MaxFeedRows; ++i) {
            rows += QByteArray::number(i) + ",1\n";
        }
        QTest::newRow("too many rows")
            << display << rows
            << QString("KO: f.csv:%1: more than 100000 rows, the most a feed plays").arg(Timing::MaxFeedRows + 1)
            << bad;
        QTest::newRow("too large") << display << QByteArray(int(Timing::MaxFeedBytes) + 1, '\n')
                                   << "KO: cannot read ROOT/f.csv: it is larger than 4194304 bytes, the most a "
                                      "feed reads"
                                   << failed;
        QTest::newRow("missing") << display << QByteArray() << "KO: cannot read ROOT/f.csv: No such file or directory"
                                 << failed;
        QTest::newRow("a folder") << display << QByteArray("dir") << "KO: cannot read ROOT/f.csv: it is no regular file"
                                  << failed;
        QTest::newRow("a pipe nobody writes")
            << display << QByteArray("fifo") << "KO: cannot read ROOT/f.csv: it is no regular file" << failed;
        QTest::newRow("no property") << "feed display nosuch FILE" << QByteArray("0,1\n")
                                     << "KO: ID_DISPLAY has no property" << int(ErrorClass::UnknownTarget);
        QTest::newRow("read-only") << "feed display maxBrightness FILE" << QByteArray("0,1\n")
                                   << "KO: ID_DISPLAY.maxBrightness is not writable; feed a debug command instead"
                                   << failed;
        QTest::newRow("a debug command without a value")
            << "feed battery1 jack FILE" << QByteArray("0,1\n")
            << "KO: jack takes no value; feed a debug command whose last argument takes one"
            << int(ErrorClass::BadRequest);
    }

    void badFilesChangeNothing()
    {
        QFETCH(QString, line);
        QFETCH(QByteArray, content);
        QFETCH(QString, answer);
        QFETCH(int, error);
        const QString path = QDir(m_root->path()).filePath("f.csv");
        if (content == "dir") {
            QVERIFY(QDir().mkpath(path));
        } else if (content == "fifo") {
            QCOMPARE(::mkfifo(QFile::encodeName(path).constData(), 0600), 0);
        } else if (!content.isEmpty()) {
            QVERIFY(writeFile(path, content));
        }
        QSignalSpy brightness(m_display, &IDisplay::brightnesChanged);
        QSignalSpy fuel(System::instance()->device(IDevice::ID_BATTERY_1ST).data(), SIGNAL(fuelGaugeChanged(int)));
        // A pipe nobody writes is refused without waiting for a writer: the answer comes.
        const Reply reply = run(QString(line).replace("FILE", path));
        QVERIFY2(
            reply.answer().startsWith(QString(answer).replace("ROOT", m_root->path())), qPrintable(reply.answer()));
        QCOMPARE(int(reply.error), error);
        QCOMPARE(brightness.size(), 0);
        QCOMPARE(fuel.size(), 0);
    }

    void rowsComeAtTheirTimes()
    {
        // A header, a comment, CRLF line ends, quoted values and two rows at the same time.
        const QString path = QDir(m_root->path()).filePath("levels.csv");
        QVERIFY(
            writeFile(path, "ms,brightness\r\n# from a light sensor\r\n0,10\r\n150,\"20\"\r\n150, 30 \r\n400,40\r\n"));
        QList<qint64> times;
        QList<uint> values;
        QElapsedTimer clock;
        connect(m_display, &IDisplay::brightnesChanged, this, [&](uint value) {
            times << clock.elapsed();
            values << value;
        });
        clock.start();
        QCOMPARE(run("feed display brightnes " + path).answer(), QString("OK 4 values over 400 ms"));
        QCOMPARE(values, (QList<uint>{10, 20, 30, 40}));
        // Never early: each row at its time or later, counted from the start.
        QVERIFY2(times.at(1) >= 150 && times.at(3) >= 400, qPrintable(QString::number(times.at(3))));
        QVERIFY(clock.elapsed() >= 400);

        // Into a debug command's last argument; the application sees each value once.
        const QString curve = QDir(m_root->path()).filePath("curve.csv");
        QVERIFY(writeFile(curve, "0,90\n50,60\n100,15\n"));
        QSignalSpy fuel(System::instance()->device(IDevice::ID_BATTERY_1ST).data(), SIGNAL(fuelGaugeChanged(int)));
        QCOMPARE(run("feed battery1 setbatteryfuel,1 " + curve).answer(), QString("OK 3 values over 100 ms"));
        QCOMPARE(fuel.size(), 3);
        QCOMPARE(fuel.at(1).at(0).toInt(), 60);
        QCOMPARE(fuel.last().at(0).toInt(), 15);

        // A device that goes away stops the feed where it is, naming the row.
        QVERIFY(writeFile(curve, "0,90\n50,60\n"));
        QTimer::singleShot(10, this, [] { VantixDebug::instance()->removeBattery(IDevice::ID_BATTERY_1ST); });
        const Reply gone = run("feed battery1 setbatteryfuel,1 " + curve);
        QCOMPARE(gone.answer(), QString("KO: curve.csv:2 at 50 ms: ID_BATTERY_1ST is not present; nothing changed"));
    }

    void loopsUntilCancelled()
    {
        const QString path = QDir(m_root->path()).filePath("blink.csv");
        QVERIFY(writeFile(path, "0,10\n30,20\n60,30\n"));
        QSignalSpy brightness(m_display, &IDisplay::brightnesChanged);
        bool answered = false;
        m_session->execute(
            "feed display brightnes " + path + " --loop", [&answered](const Reply &) { answered = true; });
        // The file starts again at its last row's time: 10 follows 30 at once, then the rows as before.
        QTRY_VERIFY(brightness.size() >= 7);
        QList<uint> values;
        for (const QList<QVariant> &emission : qAsConst(brightness)) {
            values << emission.at(0).toUInt();
        }
        QCOMPARE(values.mid(0, 7), (QList<uint>{10, 20, 30, 10, 20, 30, 10}));
        m_session->cancel();
        const int seen = brightness.size();
        QTest::qWait(200);
        QCOMPARE(brightness.size(), seen);
        QVERIFY(!answered);
        QCOMPARE(run("get display brightnes").ok, true);
    }

private:
    Reply run(const QString &line) { return runLine(m_session, line); }

    TestRoot *m_root = nullptr;
    Session *m_session = nullptr;
    IDisplay *m_display = nullptr;
};

QTEST_GUILESS_MAIN(TestFeed)
#include "tst_feed.moc"

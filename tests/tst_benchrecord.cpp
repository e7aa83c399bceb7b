// The benchmarks' regression check: which figures are reported as worse than
// the recorded run, with what wording, and what recording keeps.

#include "recordedrun.h"

#include <QFile>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTemporaryDir>
#include <QTest>

#include <cmath>

using VantixBench::Figure;
using VantixBench::RecordedRun;

namespace {
std::vector<std::string> warningsFor(double recorded, const Figure &now)
{
    QTemporaryDir dir;
    const std::string path = dir.filePath(QStringLiteral("recorded.json")).toStdString();
    Figure old = now;
    old.value = recorded;
    RecordedRun empty;
    std::string error;
    if (!empty.save(path, {old}, "2026-01-01T00:00:00Z", "1.0", &error)) {
        return {"save failed: " + error};
    }
    RecordedRun run;
    if (!run.load(path, &error)) {
        return {"load failed: " + error};
    }
    return run.compare({now});
}
} // namespace

class tst_BenchRecord : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void compare_data()
    {
        QTest::addColumn<double>("recorded");
        QTest::addColumn<double>("value");
        QTest::addColumn<bool>("higherIsBetter");
        QTest::addColumn<double>("noise");
        QTest::addColumn<QString>("warning");

        QTest::newRow("slower within noise") << 100.0 << 109.0 << false << 0.1 << QString();
        QTest::newRow("slower at the noise edge") << 100.0 << 110.0 << false << 0.1 << QString();
        QTest::newRow("slower beyond noise")
            << 100.0 << 125.0 << false << 0.1
            << QStringLiteral("WARNING: g/x is worse than the recorded run by 25.0% (noise 10%)");
        QTest::newRow("faster by far") << 100.0 << 10.0 << false << 0.1 << QString();
        QTest::newRow("rate dropped beyond noise")
            << 400000.0 << 300000.0 << true << 0.2
            << QStringLiteral("WARNING: g/x is worse than the recorded run by 25.0% (noise 20%)");
        QTest::newRow("rate rose") << 400000.0 << 900000.0 << true << 0.2 << QString();
        QTest::newRow("no noise, one more")
            << 55.0 << 56.0 << false << 0.0
            << QStringLiteral("WARNING: g/x is worse than the recorded run by 1.8% (noise 0%)");
        QTest::newRow("nothing recorded, some now")
            << 0.0 << 3.0 << false << 0.0
            << QStringLiteral("WARNING: g/x is worse than the recorded run by 3 (recorded 0, noise 0%)");
        QTest::newRow("nothing then, nothing now") << 0.0 << 0.0 << false << 0.0 << QString();
        QTest::newRow("not measured now") << 100.0 << double(NAN) << false << 0.1 << QString();
    }

    void compare()
    {
        QFETCH(double, recorded);
        QFETCH(double, value);
        QFETCH(bool, higherIsBetter);
        QFETCH(double, noise);
        QFETCH(QString, warning);

        const std::vector<std::string> warnings = warningsFor(recorded, {"g/x", value, "s", higherIsBetter, noise});
        QStringList got;
        for (const std::string &w : warnings) {
            got.append(QString::fromStdString(w));
        }
        QCOMPARE(got, warning.isEmpty() ? QStringList() : QStringList{warning});
    }

    // A filtered run records its own figures and keeps the others; unknown keys are not compared.
    void recordMergesAndSkipsUnknown()
    {
        QTemporaryDir dir;
        const std::string path = dir.filePath(QStringLiteral("recorded.json")).toStdString();
        std::string error;
        RecordedRun none;
        QVERIFY(!none.load(path, &error));
        QVERIFY(none.isEmpty());
        QVERIFY(
            none.save(path, {{"a/1", 1.0, "s", false, 0.1}, {"b/2", 2.0, "KiB", false, 0.1}}, "first", "0", &error));
        QVERIFY(none.save(path, {{"b/2", 4.0, "KiB", false, 0.1}}, "second", "0", &error));

        RecordedRun run;
        QVERIFY2(run.load(path, &error), error.c_str());
        QCOMPARE(run.date(), std::string("second"));
        const std::vector<Figure> now{
            {"a/1", 1.5, "s", false, 0.1}, {"b/2", 4.0, "KiB", false, 0.1}, {"c/new", 9.0, "s", false, 0.1}};
        QCOMPARE(run.comparable(now), 2);
        const std::vector<std::string> warnings = run.compare(now);
        QCOMPARE(int(warnings.size()), 1);
        QCOMPARE(warnings.front(), std::string("WARNING: a/1 is worse than the recorded run by 50.0% (noise 10%)"));

        QFile file(QString::fromStdString(path));
        QVERIFY(file.open(QIODevice::ReadOnly));
        const QJsonObject figures =
            QJsonDocument::fromJson(file.readAll()).object().value(QLatin1String("figures")).toObject();
        QCOMPARE(figures.keys(), (QStringList{QStringLiteral("a/1"), QStringLiteral("b/2")}));
        QCOMPARE(figures.value(QLatin1String("b/2")).toObject().value(QLatin1String("unit")).toString(),
            QStringLiteral("KiB"));
    }

    // A figure once recorded as a time and now judged by its ratio to the in-run baseline
    // has no record to be compared with, until the next run is recorded.
    void anotherUnitIsNotCompared()
    {
        QTemporaryDir dir;
        const std::string path = dir.filePath(QStringLiteral("recorded.json")).toStdString();
        std::string error;
        QVERIFY(RecordedRun().save(path, {{"command/fuel", 94e-9, "s", false, 0.75}}, "old", "0", &error));
        RecordedRun run;
        QVERIFY2(run.load(path, &error), error.c_str());
        const std::vector<Figure> now{{"command/fuel", 2.3, "ratio", false, 0.75}};
        QCOMPARE(run.comparable(now), 0);
        QVERIFY(run.compare(now).empty());
        QCOMPARE(run.comparable({{"command/fuel", 95e-9, "s", false, 0.75}}), 1);
    }

    void badFileIsNoRecord()
    {
        QTemporaryDir dir;
        const QString path = dir.filePath(QStringLiteral("recorded.json"));
        QFile file(path);
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write("{\"figures\": [1, 2");
        file.close();
        RecordedRun run;
        std::string error;
        QVERIFY(!run.load(path.toStdString(), &error));
        QVERIFY(run.isEmpty());
        QVERIFY(run.compare({{"a/1", 1.0, "s", false, 0.1}}).empty());
    }
};

QTEST_GUILESS_MAIN(tst_BenchRecord)
#include "tst_benchrecord.moc"

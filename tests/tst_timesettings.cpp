#include "logcapture.h"
#include "testroot.h"

#include <vantix/itimesettings.h>
#include <vantix/system.h>

#include <QPointer>
#include <QSignalSpy>
#include <QTest>

using namespace TQ_SPAPI;

class TestTimeSettings : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void settersEmitOnChangeOnly()
    {
        ITimeSettings s;
        QCOMPARE(s.timeZone(), QString("Europe/Copenhagen"));
        QVERIFY(s.ntpEnabled());
        QCOMPARE(s.urlList(), QStringList{"pool.ntp.org"});
        QVERIFY(s.getTimeZones().isEmpty());
        QSignalSpy zone(&s, &ITimeSettings::timeZoneChanged);
        QSignalSpy ntp(&s, &ITimeSettings::enabledChanged);
        QSignalSpy urls(&s, &ITimeSettings::urlListChanged);

        for (const char *z : {"Europe/Copenhagen", "", "", "Not/A_Zone"}) {
            s.setTimeZone(z);
        }
        QCOMPARE(zone.count(), 2);
        QCOMPARE(zone.at(0).at(0).toString(), QString(""));
        QCOMPARE(s.timeZone(), QString("Not/A_Zone"));

        s.setNtpEnabled(true);
        s.setNtpEnabled(false);
        QVERIFY(s.setProperty("ntpEnabled", false));
        QCOMPARE(ntp.count(), 1);
        QCOMPARE(ntp.at(0).at(0).toBool(), false);

        s.setUrlList({"pool.ntp.org"});
        s.setUrlList({"a.example", "b.example"});
        s.setUrlList({"a.example", "b.example"});
        s.setUrlList({"b.example", "a.example"});
        QCOMPARE(urls.count(), 2);
        QCOMPARE(s.urlList(), (QStringList{"b.example", "a.example"}));

        LogCapture log;
        s.setDateTime(QDateTime(QDate(2001, 2, 3), QTime(4, 5)));
        QVERIFY(log.contains("Not supported on Windows", QtWarningMsg));
        QCOMPARE(zone.count() + ntp.count() + urls.count(), 5);
        QVERIFY(s.isHwClockValid());
    }

    void ownedBySystem()
    {
        TestRoot root;
        System *system = System::instance();
        QVERIFY(!system->timeSettings());
        system->initialize("tst_timesettings");
        QPointer<ITimeSettings> settings = system->timeSettings();
        QVERIFY(settings);
        QCOMPARE(settings->parent()->parent(), system);
        System::releaseInstance();
        QVERIFY(settings.isNull());
    }
};

QTEST_GUILESS_MAIN(TestTimeSettings)
#include "tst_timesettings.moc"

// snapshot and reset: hot-plugged devices and changed values brought back,
// checked against the dump of a fresh application and of the saved state;
// the signals the application receives meanwhile; what no operation can set
// named in the answer; snapshots shared by the clients of one System.

#include "testroot.h"
#include "sessionline.h"
#include "testsystem.h"

#include <vantix/vantix.h>

#include <vantixcontrol/engine/session.h>
#include <vantixcontrol/protocol/reply.h>

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QSignalSpy>
#include <QtTest>

using namespace TQ_SPAPI;
using namespace VantixControl;

namespace {
using D = IDevice;

// What a fresh application and a restored one are compared on: devices, System and System's own objects.
QJsonObject comparable(const QJsonObject &dump)
{
    QJsonObject objects;
    for (const char *name : {"ITimeSettings", "ICanMux"}) {
        objects.insert(name, dump.value("objects").toObject().value(name));
    }
    return QJsonObject{{"devices", dump.value("devices")}, {"system", dump.value("system")}, {"objects", objects}};
}

// The marks the restoring operations leave: F_OVERRIDE and the charge counter.
QJsonObject withoutMarks(QJsonObject dump)
{
    QJsonObject devices = dump.value("devices").toObject();
    for (const QString &name : devices.keys()) {
        QJsonObject device = devices.value(name).toObject();
        QJsonObject properties = device.value("properties").toObject();
        QString status = properties.value("status").toString();
        status.replace("|F_OVERRIDE", "").replace("F_OVERRIDE|", "");
        properties.insert("status", status);
        properties.remove("chargeCounter");
        device.insert("properties", properties);
        devices.insert(name, device);
    }
    dump.insert("devices", devices);
    return dump;
}

// The first line where two dumps differ, for a failure message.
QString firstDifference(const QJsonObject &a, const QJsonObject &b)
{
    const QStringList left = QString(QJsonDocument(a).toJson()).split('\n');
    const QStringList right = QString(QJsonDocument(b).toJson()).split('\n');
    for (int i = 0; i < std::min(left.size(), right.size()); ++i) {
        if (left.at(i) != right.at(i)) {
            return QString("line %1: %2 | %3").arg(i).arg(left.at(i).trimmed(), right.at(i).trimmed());
        }
    }
    return "lengths differ";
}
} // namespace

class TestSnapshot : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        m_root = new TestRoot;
        start();
    }

    void cleanup()
    {
        delete m_other;
        m_other = nullptr;
        delete m_session;
        m_session = nullptr;
        System::releaseInstance();
        SystemPlatformType::type = System::PT_UNKNOWN;
        delete m_root;
    }

    void resetMatchesAFreshApplication()
    {
        QCOMPARE(run("reset").answer(), QString("OK the state after apiReady restored: nothing differed"));
        QVERIFY(change({"addbattery,2", "setbatteryfuel,2,30", "setbatteryfuel,1,40", "togglecharging", "addotga",
            "call otga setAbility F_ACTIVE", "expect stick present within 500", "call stick mount",
            "expect stick status has F_ACTIVE within 500", "unplug lan", "setssid,Lab", "setwifisignalstrength,55",
            "setwificountry,DK", "jack", "setbatterycurrent,1,-0.5", "set display brightnes 40",
            "set tempcpu highLimit 70", "set timesettings timeZone UTC", "flightmode off",
            "expect system flightModeStatus FLIGHT_MODE_DISABLED within 2500"}));

        const Reply reply = run("reset");
        QVERIFY2(reply.ok, qPrintable(reply.rendered()));
        QVERIFY2(reply.text.startsWith("the state after apiReady restored: 3 unplugged, 1 plugged, "),
            qPrintable(reply.text));
        QVERIFY(reply.text.endsWith(", flight mode switched"));
        // Only the marks are kept, and each is named with the reason.
        QCOMPARE(reply.lines.size(), 3);
        QVERIFY(reply.lines.contains("  kept: ID_BATTERY_1ST.chargeCounter is 1, saved 0: it counts charge starts; "
                                     "no operation sets it"));
        QVERIFY(reply.lines.filter("kept: ID_TEMP_CPU.status is F_ENABLE|F_OVERRIDE|F_ENABLEHIGH").size() == 1);
        const QJsonObject restored = comparable(m_session->dump());

        // A fresh application on the same unit.
        delete m_session;
        m_session = nullptr;
        start();
        const QJsonObject fresh = comparable(m_session->dump());
        QVERIFY2(withoutMarks(restored) == withoutMarks(fresh),
            qPrintable(firstDifference(withoutMarks(restored), withoutMarks(fresh))));
        QVERIFY(restored != fresh);
    }

    void restoreMatchesTheSavedState()
    {
        QVERIFY(change({"setbatteryfuel,1,40", "togglecharging", "addotgb", "plug usb", "setwiredip,10.1.2.3/24",
            "set display backlight false", "call ledpower setFlash red 200 300", "setwifichannel,11", "mic"}));
        // Saved as soon as the port's ability has taken effect.
        QCOMPARE(run("snapshot save busy").answer(), QString("OK saved busy"));
        const QJsonObject saved = comparable(m_session->dump());
        QCOMPARE(saved.value("devices")
                     .toObject()
                     .value("ID_USB_OTG_B")
                     .toObject()
                     .value("properties")
                     .toObject()
                     .value("status")
                     .toString(),
            QString("F_ENABLE"));

        QVERIFY(change({"unplug battery1", "unplug usb", "call otgb setAbility F_ACTIVE",
            "expect userdata status lacks F_ACTIVE within 500", "addbattery,2", "call ledpower on green",
            "set display backlight true", "setwiredip", "mic", "jack", "addotga"}));
        const Reply reply = run("snapshot restore busy");
        QVERIFY2(reply.ok, qPrintable(reply.rendered()));
        QCOMPARE(reply.lines, QStringList());
        const QJsonObject restored = comparable(m_session->dump());
        QVERIFY2(restored == saved, qPrintable(firstDifference(restored, saved)));
        // Nothing left to do a second time.
        QCOMPARE(run("snapshot restore busy").answer(), QString("OK snapshot busy restored: nothing differed"));
    }

    // Unplugging goes first, values next, flight mode last; what did not change sends nothing.
    void restoreSendsTheApplicationsSignals()
    {
        System *system = System::instance();
        QCOMPARE(run("setbatteryfuel,1,50").answer(), QString("OK"));
        const QString ip = system->device(D::ID_NETWORK_LAN)->property("ip").toString();
        QCOMPARE(run("snapshot save start").answer(), QString("OK saved start"));
        QVERIFY(change({"setbatteryfuel,1,20", "plug usb", "setwiredip,10.9.9.9/8", "flightmode off",
            "expect system flightModeStatus FLIGHT_MODE_DISABLED within 2500"}));

        QStringList log;
        connect(system, &System::deviceRemoved, this,
            [&log](D::DeviceId id) { log << QString("removed %1").arg(int(id)); });
        connect(system, &System::deviceDetected, this,
            [&log](const IDevicePtr &device) { log << QString("detected %1").arg(int(device->id())); });
        connect(qobject_cast<IBattery *>(system->device(D::ID_BATTERY_1ST).data()), &IBattery::fuelGaugeChanged, this,
            [&log](int percent) { log << QString("fuel %1").arg(percent); });
        connect(qobject_cast<INetwork *>(system->device(D::ID_NETWORK_LAN).data()), &INetwork::ipChanged, this,
            [&log](const QString &address) { log << "ip " + address; });
        connect(system, &System::flightModeStatusChanged, this,
            [&log](System::FligtModeFlags flags) { log << QString("flight %1").arg(int(flags)); });
        QSignalSpy display(system->device(D::ID_DISPLAY).data(), &IDevice::statusChanged);
        QSignalSpy wifi(system->device(D::ID_NETWORK_WIFI).data(), &IDevice::statusChanged);
        QSignalSpy signal(system->device(D::ID_NETWORK_WIFI).data(), SIGNAL(wifiSignalStrengthChanged(int)));

        const Reply reply = run("snapshot restore start");
        QCOMPARE(reply.answer(), QString("OK snapshot start restored: 1 unplugged, 4 set, flight mode switched"));
        QCOMPARE(log,
            (QStringList{QString("removed %1").arg(int(D::ID_USB)), "fuel 50", "ip " + ip, "flight 6", "flight 0"}));
        // Flight mode took the Wi-Fi device down; the next pass brought it up, as it was saved.
        QCOMPARE(statusWords(wifi), (QList<int>{int(D::F_ENABLESCANNING), int(D::F_ENABLE | D::F_ENABLESCANNING)}));
        QCOMPARE(display.size(), 0);
        QCOMPARE(signal.size(), 0);
    }

    void whatCannotBeRestoredIsNamed()
    {
        QVERIFY(change({"call ledpower on red", "call userdata format 0",
            "expect userdata status has F_FORMATTED within 1000", "setbatteryfuel,1,30", "set tempcpu threshold 2"}));
        const Reply reply = run("reset");
        QCOMPARE(reply.error, ErrorClass::Failed);
        QCOMPARE(reply.text,
            QString("the state after apiReady not restored: ID_LED_POWER.mode, ID_LED_POWER.color, "
                    "ID_DISK_USER_DATA.status"));
        QVERIFY(reply.lines.contains("  not restored: ID_LED_POWER.mode is LED_ON, saved LED_DEFAULT: an LED that has "
                                     "been switched never returns to LED_DEFAULT"));
        QVERIFY(reply.lines.contains("  not restored: ID_DISK_USER_DATA.status is F_ENABLE|F_FORMATTED, saved "
                                     "F_ENABLE: no operation clears F_FORMATTED"));
        QVERIFY(reply.lines.filter("kept: ID_BATTERY_1ST.status").size() == 1);
        // What could be set was set all the same.
        QCOMPARE(run("get battery1 fuelGauge").answer(), QString("OK 100"));
        QCOMPARE(run("get tempcpu threshold").answer(), QString("OK 0"));
    }

    void snapshotsBelongToTheSystem()
    {
        m_other = new Session(System::instance());
        QCOMPARE(run("snapshot save a").answer(), QString("OK saved a"));
        QCOMPARE(run("snapshot save a").answer(), QString("OK saved a, replacing the one of that name"));
        QCOMPARE(run("addbattery,2").answer(), QString("OK"));
        QCOMPARE(run("snapshot save two.batteries_2").answer(), QString("OK saved two.batteries_2"));
        // Another client restores what this one saved, and sees the same list.
        QCOMPARE(run("snapshot restore a", m_other).answer(), QString("OK snapshot a restored: 1 unplugged"));
        const Reply list = run("snapshot list", m_other);
        QCOMPARE(list.answer(), QString("OK 2 snapshots"));
        QCOMPARE(list.value.toArray(), (QJsonArray{"a", "two.batteries_2"}));

        // One restore at a time, whoever asked.
        bool done = false;
        m_session->execute("snapshot restore two.batteries_2", [&done](const Reply &) { done = true; });
        QCOMPARE(run("reset", m_other).answer(), QString("KO: another restore is running; try again when it ends"));
        QTRY_VERIFY(done);
        QVERIFY(System::instance()->device(D::ID_BATTERY_2ND));

        QCOMPARE(run("snapshot delete a").answer(), QString("OK deleted a"));
        QCOMPARE(run("snapshot restore a").answer(), QString("KO: no snapshot \"a\"; snapshot list shows them"));
        QCOMPARE(run("snapshot save \"a b\"").answer(),
            QString("KO: name: expected 1 to 64 letters, digits, '-', '_' or '.', got \"a b\""));
        QCOMPARE(run("snapshot save " + QString(65, 'x')).error, ErrorClass::BadValue);
        QCOMPARE(run("snapshot frobnicate a").error, ErrorClass::BadRequest);
        for (int i = 1; i < 64; ++i) {
            QVERIFY(run(QString("snapshot save s%1").arg(i)).ok);
        }
        QCOMPARE(
            run("snapshot save one-too-many").answer(), QString("KO: 64 snapshots are kept already; delete one first"));

        // A save during a flight-mode transition waits for its end, which it records.
        QCOMPARE(run("flightmode off").answer(), QString("OK"));
        QElapsedTimer clock;
        clock.start();
        QCOMPARE(run("snapshot save s1").answer(), QString("OK saved s1, replacing the one of that name"));
        QVERIFY(clock.elapsed() >= 1500);
        QCOMPARE(System::instance()->flightModeStatus(), System::FligtModeFlags(System::FLIGHT_MODE_DISABLED));
    }

private:
    void start()
    {
        QSignalSpy ready(startSystem(System::PT_TOLVEX_PLUS), &System::apiReady);
        QVERIFY(ready.wait());
        m_session = new Session(System::instance());
    }

    bool change(const QStringList &lines)
    {
        for (const QString &line : lines) {
            const Reply reply = run(line);
            if (!reply.ok) {
                qWarning("%s: %s", qPrintable(line), qPrintable(reply.answer()));
                return false;
            }
        }
        return true;
    }

    Reply run(const QString &line, Session *session = nullptr)
    {
        return runLine(session ? session : m_session, line, 15000);
    }

    TestRoot *m_root = nullptr;
    Session *m_session = nullptr;
    Session *m_other = nullptr;
};

QTEST_GUILESS_MAIN(TestSnapshot)
#include "tst_snapshot.moc"

// Lifecycle: releasing and re-creating the System, the debug controller after a
// release, devices removed with delayed work pending, and the teardown that
// the application object's destruction performs (in a child process).

#include "systemprivate_p.h"
#include "testroot.h"

#include <vantix/vantix.h>

#include <qbcom/parametercontroller.h>
#include <qbcommon/appconfig.h>

#include <QPointer>
#include <QProcess>
#include <QSignalSpy>
#include <QtTest>

using namespace TQ_SPAPI;

namespace {
using D = IDevice;

// Every command of the debug channel, with an argument where it takes one.
const QStringList AllCommands{"addbattery,2", "rmbattery", "setbatteryfuel,2,40", "togglecharging",
    "setbatterycurrent,0.5", "setwiredstate,3", "setwifistate,12", "setwiredip,1.2.3.4", "setwifiip,1.2.3.5",
    "setssid,x", "setwifichannel,6", "setwifisignalstrength,50", "enablewifi", "disablewifi", "setwificountry,NO",
    "addotgb", "activateotgb", "rmotgb", "addotga", "rmotga", "pwrpress", "pwrrelase", "jack", "mic"};
} // namespace

class TestLifecycle : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();
    void releaseAndRecreateRepeatedly();
    void removedDevicesLeaveNoWorkBehind();
    void applicationTeardown_data();
    void applicationTeardown();

private:
    void send(const QString &command) { m_controller->setValue(QStringLiteral("VantixDebug"), command); }

    TestRoot *m_root = nullptr;
    TQ_QBCom::ParameterController *m_controller = nullptr;
};

void TestLifecycle::init()
{
    m_root = new TestRoot;
    AppConfig::instance()->setArguments({"test", "--disksformatted"});
    m_controller = new TQ_QBCom::ParameterController;
    VantixDebug::instance()->setParameterController(*m_controller);
}

void TestLifecycle::cleanup()
{
    System::releaseInstance();
    delete m_controller;
    delete m_root;
    SystemPlatformType::type = System::PT_UNKNOWN;
}

void TestLifecycle::releaseAndRecreateRepeatedly()
{
    for (int round = 0; round < 14; ++round) {
        SystemPlatformType::type = System::PlatformType(round % 7);
        System *system = System::instance();
        QVERIFY(!system->isReady());
        QVERIFY(system->devices().isEmpty());
        QSignalSpy ready(system, &System::apiReady);
        const QString name = QStringLiteral("round %1").arg(round);
        system->initialize(name);
        QVERIFY(system->isReady());
        QCOMPARE(system->registeredIds(), QStringList{name});
        QTRY_COMPARE(ready.count(), 1);

        // The controller plugs into this system, and holds the ports it plugged.
        for (const char *command : {"addbattery,2", "addotga", "addotgb", "activateotgb"}) {
            send(QLatin1String(command));
        }
        VantixDebug::instance()->addUsb();
        QPointer<IDevice> otgA = system->device(D::ID_USB_OTG_A).data();
        QPointer<IDevice> otgB = system->device(D::ID_USB_OTG_B).data();
        QPointer<IDevice> usb = system->device(D::ID_USB).data();
        QPointer<IDevice> battery = system->device(D::ID_BATTERY_2ND).data();
        QVERIFY(otgA && otgB && usb && battery);

        // Nothing keeps a device of a released system alive, the controller included.
        System::releaseInstance();
        QVERIFY(otgA.isNull());
        QVERIFY(otgB.isNull());
        QVERIFY(usb.isNull());
        QVERIFY(battery.isNull());

        // Commands and shortcuts between two systems reach nothing, and the
        // next system starts with the table of its platform only.
        for (const QString &command : AllCommands) {
            send(command);
        }
        VantixDebug::instance()->addUsb();
        VantixDebug::instance()->addBattery(D::ID_BATTERY_2ND);
        QVERIFY(System::instance()->devices().isEmpty());
        System::instance()->initialize(name);
        QVERIFY(!System::instance()->device(D::ID_BATTERY_2ND));
        QVERIFY(!System::instance()->device(D::ID_USB_OTG_A));
        QVERIFY(!System::instance()->device(D::ID_USB));
        System::releaseInstance();
    }
}

void TestLifecycle::removedDevicesLeaveNoWorkBehind()
{
    SystemPlatformType::type = System::PT_TOLVEX;
    System *system = System::instance();
    system->initialize(QStringLiteral("test"));
    auto *simulation = system->findChild<SystemPrivate *>();
    // apiReady comes after the abilities every device asked for at start-up.
    QSignalSpy ready(system, &System::apiReady);
    QTRY_COMPARE(ready.count(), 1);

    // Work of every delay is pending on the devices about to go.
    qobject_cast<IDisk *>(system->device(D::ID_DISK_USER_DATA).data())->mount(); // 250 ms
    qobject_cast<IDisk *>(system->device(D::ID_DISK_SYSTEM).data())->format(0); // 500 ms
    send(QStringLiteral("addotgb"));
    send(QStringLiteral("activateotgb")); // 100 ms, then unmounts the user data
    send(QStringLiteral("addotga"));
    system->device(D::ID_USB_OTG_A)->setAbility(D::F_ACTIVE); // 100 ms, then brings the stick
    simulation->addDevice(D::ID_VIBRATOR, D::DEVICE_VIBRATOR, QString());
    system->device(D::ID_BATTERY_1ST)->setAbility(D::F_ACTIVE);

    const QList<D::DeviceId> going{
        D::ID_DISK_USER_DATA, D::ID_DISK_SYSTEM, D::ID_USB_OTG_B, D::ID_USB_OTG_A, D::ID_VIBRATOR, D::ID_BATTERY_1ST};
    QList<QPointer<IDevice>> gone;
    int signalsAfterRemoval = 0;
    for (D::DeviceId id : going) {
        IDevice *device = system->device(id).data();
        gone.append(device);
        connect(device, &IDevice::statusChanged, this, [&signalsAfterRemoval] { ++signalsAfterRemoval; });
        connect(device, qOverload<D::DeviceError>(&IDevice::error), this,
            [&signalsAfterRemoval] { ++signalsAfterRemoval; });
    }
    QSignalSpy removed(system, &System::deviceRemoved);
    send(QStringLiteral("rmotgb"));
    send(QStringLiteral("rmotga"));
    for (D::DeviceId id : {D::ID_DISK_USER_DATA, D::ID_DISK_SYSTEM, D::ID_VIBRATOR, D::ID_BATTERY_1ST}) {
        simulation->removeDevice(id);
    }
    // The stick was never brought: its port went first. Port A's removal also asks for it.
    QCOMPARE(removed.count(), going.size());
    for (const QPointer<IDevice> &device : gone) {
        QTRY_VERIFY(device.isNull());
    }

    // Past every delay: nothing fired, and the system is left with what stayed.
    QSignalSpy detected(system, &System::deviceDetected);
    bool allDue = false;
    QTimer::singleShot(600, this, [&allDue] { allDue = true; });
    QTRY_VERIFY(allDue);
    QCOMPARE(signalsAfterRemoval, 0);
    QCOMPARE(detected.count(), 0);
    QVERIFY(!system->device(D::ID_DISK_USB));
    for (D::DeviceId id : going) {
        QVERIFY(!system->device(id));
    }
}

void TestLifecycle::applicationTeardown_data()
{
    QTest::addColumn<int>("platform");
    QTest::addColumn<bool>("staticApp");
    for (int platform = System::PT_UNKNOWN; platform <= System::PT_VIRTUAL; ++platform) {
        const QByteArray name = System::PlatformTypeEnum.valueToKey(platform);
        QTest::newRow(name.constData()) << platform << false;
        QTest::newRow((name + " static").constData()) << platform << true;
    }
}

void TestLifecycle::applicationTeardown()
{
    QFETCH(int, platform);
    QFETCH(bool, staticApp);
    QProcess child;
    QStringList arguments{QString::number(platform)};
    if (staticApp) {
        arguments << QStringLiteral("static");
    }
    child.start(QStringLiteral(LIFECYCLE_CHILD), arguments);
    QVERIFY(child.waitForFinished(60000));
    const QString out = QString::fromLocal8Bit(child.readAllStandardOutput());
    const QString err = QString::fromLocal8Bit(child.readAllStandardError());
    QVERIFY2(child.exitStatus() == QProcess::NormalExit, qPrintable(err));
    QVERIFY2(child.exitCode() == 0, qPrintable(err));
    QVERIFY(out.contains(staticApp ? QLatin1String("session complete") : QLatin1String("teardown complete")));
    // Sanitizer builds report into stderr, and some reports do not change the exit code.
    for (const char *report : {"AddressSanitizer", "LeakSanitizer", "runtime error:"}) {
        QVERIFY2(!err.contains(QLatin1String(report)), qPrintable(err));
    }
}

QTEST_GUILESS_MAIN(TestLifecycle)
#include "tst_lifecycle.moc"

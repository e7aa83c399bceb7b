#include "canmuxprivate_p.h"
#include "deviceprivate_p.h"
#include "logcapture.h"
#include "testroot.h"
#include "testsystem.h"

#include <vantix/icanmux.h>
#include <vantix/system.h>

#include <QElapsedTimer>
#include <QSignalSpy>
#include <QTest>

using namespace TQ_SPAPI;
using D = IDevice;

namespace {
// Milliseconds until the next status change of @p device, -1 if none comes.
qint64 nextStatusChange(const IDevicePtr &device)
{
    QSignalSpy spy(device.data(), &D::statusChanged);
    QElapsedTimer clock;
    clock.start();
    return spy.wait(1000) ? clock.elapsed() : -1;
}
} // namespace

class TestCanMux : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void cleanup() { System::releaseInstance(); }

    void platforms()
    {
        TestRoot root;
        // platform -> which CAN devices its multiplexer holds ("" for no multiplexer)
        const QList<QPair<System::PlatformType, QString>> rows{{System::PT_UNKNOWN, ""}, {System::PT_QUARNEL, ""},
            {System::PT_QUARNEL_PLUS, "bus serial"}, {System::PT_CAN_CPU_MODULE, "bus"}};
        for (const auto &row : rows) {
            System *system = startSystem(row.first);
            const CanMuxPrivate *d = CanMuxPrivate::get(system->canMux());
            QCOMPARE(d ? QString(d->canSerial ? "bus serial" : "bus") : QString(), row.second);
            if (d) {
                QCOMPARE(system->canMux()->parent()->parent(), system);
                QCOMPARE(d->canBus, system->device(D::ID_CAN_BUS));
                QCOMPARE(d->canSerial, system->device(D::ID_CAN_SERIAL));
            }
        }
    }

    void activeDevice()
    {
        TestRoot root;
        ICanMux *mux = startSystem(System::PT_QUARNEL_PLUS)->canMux();
        const IDevicePtr serial = System::instance()->device(D::ID_CAN_SERIAL);
        const IDevicePtr bus = System::instance()->device(D::ID_CAN_BUS);
        QTRY_VERIFY(serial->status() & D::F_ENABLE && bus->status() & D::F_ENABLE);
        serial->clearAbility(D::F_ENABLE);
        QVERIFY(nextStatusChange(serial) > 0);
        QSignalSpy active(mux, &ICanMux::activeDeviceChanged);
        QSignalSpy busStatus(bus.data(), &D::statusChanged);

        LogCapture log;
        mux->setActiveDevice(D::ID_AUDIO);
        QVERIFY(log.contains("Invalid can device ID: ID_AUDIO", QtWarningMsg));
        mux->setActiveDevice(D::ID_CAN_SERIAL);
        QVERIFY(log.contains("Activate can device ID_CAN_SERIAL"));
        QVERIFY(nextStatusChange(serial) >= 95);
        QVERIFY(serial->status() & D::F_ENABLE);
        QCOMPARE(busStatus.count() + active.count(), 0);
        QCOMPARE(mux->activeDevice(), D::ID_UNKNOWN_DEV);
    }

    void termination()
    {
        TestRoot root;
        ICanMux *mux = startSystem(System::PT_CAN_CPU_MODULE)->canMux();
        const IDevicePtr bus = System::instance()->device(D::ID_CAN_BUS);
        QTRY_VERIFY(bus->status() & D::F_ENABLE);
        QSignalSpy terminated(mux, &ICanMux::terminationChanged);
        LogCapture log;

        mux->setTermination(ICanMux::CAN_TERM_ON);
        QVERIFY(!(bus->status() & D::F_TERMINATE));
        QVERIFY(nextStatusChange(bus) >= 95);
        QVERIFY(bus->status() & D::F_TERMINATE);

        // A second ON is dropped: with the bit lost meanwhile, it does not come back.
        DevicePrivate::get(bus.data())->setStatus(bus->status() & ~D::DeviceFlags(D::F_TERMINATE));
        mux->setTermination(ICanMux::CAN_TERM_ON);
        bus->setAbility(D::F_ACTIVE); // its timer runs out after the dropped one would have
        QVERIFY(nextStatusChange(bus) >= 95);
        QCOMPARE(bus->status() & (D::F_TERMINATE | D::F_ACTIVE), D::DeviceFlags(D::F_ACTIVE));
        QCOMPARE(log.count("Terminate can bus ON"), 2);

        // OFF is always carried out, and lets the next ON through.
        mux->setTermination(ICanMux::CAN_TERM_OFF);
        mux->setTermination(ICanMux::CAN_TERM_ON);
        QVERIFY(nextStatusChange(bus) >= 95);
        QVERIFY(bus->status() & D::F_TERMINATE);
        mux->setTermination(ICanMux::CAN_TERM_OFF);
        QVERIFY(nextStatusChange(bus) >= 95);
        QVERIFY(!(bus->status() & D::F_TERMINATE));
        QCOMPARE(log.count("Terminate can bus OFF"), 2);
        QCOMPARE(mux->termination(), ICanMux::CAN_TERM_OFF);
        QCOMPARE(terminated.count(), 0);
    }

    void missingDevices()
    {
        TestRoot root;
        LogCapture log;
        startSystem(System::PT_CAN_CPU_MODULE)->canMux()->setActiveDevice(D::ID_CAN_SERIAL);
        ICanMux empty;
        empty.setActiveDevice(D::ID_CAN_BUS);
        empty.setTermination(ICanMux::CAN_TERM_ON);
        empty.setActiveDevice(D::DeviceId(999));
        QCOMPARE(log.messages(),
            (QStringList{"No can serial exist in CanMux object!", "No can bus exist in CanMux object!",
                "No can bus exist in CanMux object!", "Invalid can device ID: 999"}));
    }
};

QTEST_GUILESS_MAIN(TestCanMux)
#include "tst_canmux.moc"

// The device base: status, path and error setters, the delayed ability bits
// and the value-file readers.

#include "deviceprivate_p.h"
#include "logcapture.h"

#include <vantix/idevice.h>

#include <QAbstractEventDispatcher>
#include <QElapsedTimer>
#include <QFile>
#include <QPointer>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QtTest>

#include <cmath>

using namespace TQ_SPAPI;
using D = IDevice;

namespace {
D::Flags bits(D::DeviceFlags flags)
{
    return D::Flags(int(flags));
}

DevicePrivate *priv(IDevice &device)
{
    return DevicePrivate::get(&device);
}
} // namespace

class TestDeviceModel : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void settersCompareFirst()
    {
        IDevice device(D::ID_LED_POWER, D::DEVICE_LED, "/p");
        QCOMPARE(device.type(), D::DeviceType(D::DEVICE_LED));
        QCOMPARE(device.status(), D::DeviceFlags(D::F_NOFLAGS));
        QCOMPARE(device.error(), D::E_NO_ERROR);
        // The private is a QObject child of the public object it emits on.
        QCOMPARE(priv(device)->parent(), &device);
        QCOMPARE(priv(device)->q, &device);
        QSignalSpy status(&device, &D::statusChanged);
        QSignalSpy path(&device, &D::pathChanged);
        QSignalSpy errors(&device, QOverload<D::DeviceError>::of(&D::error));

        priv(device)->setStatus(D::F_ACTIVE | D::F_CHARGE);
        priv(device)->setStatus(D::F_ACTIVE | D::F_CHARGE);
        QCOMPARE(status.count(), 1);
        QCOMPARE(status.at(0).at(0).value<D::DeviceFlags>(), D::F_ACTIVE | D::F_CHARGE);

        priv(device)->setPath("/p");
        priv(device)->setPath("/a");
        priv(device)->onPathChanged("/b");
        QCOMPARE(path.count(), 2);
        QCOMPARE(path.at(1).at(0).toString(), QString("/b"));
        QCOMPARE(device.path(), QString("/b"));

        // No automatic return to E_NO_ERROR; only another value is announced.
        priv(device)->setError(D::E_INVALID_COLOR);
        priv(device)->setError(D::E_INVALID_COLOR);
        priv(device)->setError(D::E_DISK_NOT_READY);
        priv(device)->setError(D::E_INVALID_COLOR);
        QCOMPARE(errors.count(), 3);
        QCOMPARE(errors.at(2).at(0).value<D::DeviceError>(), D::E_INVALID_COLOR);
        QCOMPARE(device.error(), D::E_INVALID_COLOR);
    }

    void abilityAppearsAfterDelayOnce()
    {
        IDevice device(D::ID_AUDIO, D::DEVICE_AUDIO, QString());
        QCOMPARE(priv(device)->abilities, D::DeviceFlags());
        QSignalSpy status(&device, &D::statusChanged);
        QElapsedTimer clock;
        clock.start();
        device.setAbility(D::F_ENABLE);
        // A request overlapping one still pending is dropped whole.
        device.setAbility(D::F_ENABLE);
        device.setAbility(bits(D::F_ENABLE | D::F_ACTIVE));
        QCOMPARE(device.status(), D::DeviceFlags());
        QTRY_COMPARE(status.count(), 1);
        QVERIFY2(clock.elapsed() >= 95, qPrintable(QString::number(clock.elapsed())));
        QCOMPARE(device.status(), D::DeviceFlags(D::F_ENABLE));
        QTest::qWait(150);
        QCOMPARE(status.count(), 1);
    }

    void abilityRequestsQueueBehindEachOther()
    {
        IDevice device(D::ID_AUDIO, D::DEVICE_AUDIO, QString());
        QSignalSpy status(&device, &D::statusChanged);
        device.setAbility(D::F_ACTIVE);
        priv(device)->setStatus(D::F_CHARGE); // set meanwhile: kept
        QTest::qWait(20);
        device.clearAbility(D::F_ACTIVE);
        QTRY_COMPARE(status.count(), 3);
        QCOMPARE(status.at(1).at(0).value<D::DeviceFlags>(), D::F_CHARGE | D::F_ACTIVE);
        QCOMPARE(status.at(2).at(0).value<D::DeviceFlags>(), D::DeviceFlags(D::F_CHARGE));

        // Requested in the same instant, they still apply in the order asked.
        status.clear();
        device.setAbility(D::F_ACTIVE);
        device.clearAbility(D::F_ACTIVE);
        QTRY_COMPARE(status.count(), 2);
        QCOMPARE(status.at(0).at(0).value<D::DeviceFlags>(), D::F_CHARGE | D::F_ACTIVE);
        QCOMPARE(status.at(1).at(0).value<D::DeviceFlags>(), D::DeviceFlags(D::F_CHARGE));
    }

    void clearAbilityIsNeverDropped()
    {
        IDevice device(D::ID_AUDIO, D::DEVICE_AUDIO, QString());
        QSignalSpy status(&device, &D::statusChanged);
        // Nothing to clear: no signal, but the request bit goes.
        priv(device)->abilities = D::F_ENABLE;
        device.clearAbility(D::F_ENABLE);
        QCOMPARE(priv(device)->abilities, D::DeviceFlags());
        QTest::qWait(150);
        QCOMPARE(status.count(), 0);
        // So a later request works again.
        device.setAbility(D::F_ENABLE);
        QTRY_COMPARE(status.count(), 1);
        QCOMPARE(device.status(), D::DeviceFlags(D::F_ENABLE));
    }

    void deviceDeletedBeforeTimer()
    {
        const QAbstractEventDispatcher *dispatcher = QAbstractEventDispatcher::instance();
        const int timerObjects = dispatcher->children().size();
        QPointer<IDevice> device = new IDevice(D::ID_AUDIO, D::DEVICE_AUDIO, QString());
        int changes = 0;
        connect(device, &D::statusChanged, this, [&changes] { ++changes; });
        device->setAbility(D::F_ENABLE);
        device->clearAbility(D::F_ACTIVE);
        delete device;
        // The pending requests went with the device: nothing waits out the
        // delay for it, however many devices come and go in that time.
        QCOMPARE(dispatcher->children().size(), timerObjects);
        QTest::qWait(200);
        QCOMPARE(changes, 0);
    }

    void resetOnlyLogs()
    {
        IDevice device(D::ID_AUDIO, D::DEVICE_AUDIO, QString());
        QSignalSpy status(&device, &D::statusChanged);
        LogCapture log;
        device.reset();
        QCOMPARE(log.records().size(), 1);
        QCOMPARE(log.records().at(0).type, QtDebugMsg);
        QVERIFY(log.records().at(0).message.isEmpty());
        QVERIFY2(log.records().at(0).function.contains("reset"), qPrintable(log.records().at(0).function));
        QTest::qWait(120);
        QCOMPARE(status.count(), 0);
    }

    void readers_data()
    {
        QTest::addColumn<QByteArray>("content"); // null: no file at all
        QTest::addColumn<double>("milli");
        QTest::addColumn<bool>("convertWarning");
        QTest::addColumn<bool>("readWarning");
        QTest::addColumn<QString>("text");

        QTest::newRow("thousandths") << QByteArray("12345\n") << 12.345 << false << false << "12345";
        QTest::newRow("negative, blanks") << QByteArray("  -2500 \n") << -2.5 << false << false << "-2500";
        QTest::newRow("up to NUL") << QByteArray("700\0garbage", 11) << 0.7 << false << false << "700";
        QTest::newRow("not a number") << QByteArray("abc") << 0.0 << true << true << "abc";
        QTest::newRow("Latin-1, first line")
            << QByteArray("  BQ27\xe9x \nsecond line\n") << 0.0 << true << true << QString::fromLatin1("BQ27\xe9x");
        QTest::newRow("empty file") << QByteArray("") << 0.0 << true << true << "";
        QTest::newRow("missing file") << QByteArray() << 0.0 << false << true << QString();
    }

    void readers()
    {
        QFETCH(QByteArray, content);
        QFETCH(double, milli);
        QFETCH(bool, convertWarning);
        QFETCH(bool, readWarning);
        QFETCH(QString, text);

        QTemporaryDir dir;
        const QString fileName = dir.path() + "/value";
        QFile file(fileName);
        QVERIFY(content.isNull() || (file.open(QIODevice::WriteOnly) && file.write(content) == content.size()));
        file.close();
        IDevice device(D::ID_TEMP_CPU, D::DEVICE_TEMPERATURE, dir.path());
        const QString convert = QString("Could not convert read value from \"%1\" to an integer").arg(fileName);
        const QString read = QString("Could not read value from %1").arg(fileName);

        LogCapture log;
        QCOMPARE(priv(device)->readqrealFromMilli("value"), milli);
        QCOMPARE(log.contains(convert, QtWarningMsg), convertWarning);
        QCOMPARE(log.contains(read, QtWarningMsg), readWarning);
        QCOMPARE(log.records().size(), int(convertWarning) + int(readWarning));
        log.clear();
        QCOMPARE(priv(device)->readqrealFromMicro("value"), milli / 1000);
        QCOMPARE(log.contains(read, QtWarningMsg), readWarning);

        // The trying readers give NaN instead, and warn only about bad content.
        log.clear();
        QCOMPARE(std::isnan(priv(device)->tryToReadqrealFromMilli("value")), readWarning);
        QCOMPARE(log.records().size(), int(convertWarning));
        QCOMPARE(std::isnan(priv(device)->tryToReadqrealFromMicro("value")), readWarning);

        // Text is the first line, trimmed; only a missing file gives a null string.
        log.clear();
        const QString firstLine = priv(device)->readString("value");
        QCOMPARE(firstLine, text);
        QCOMPARE(firstLine.isNull(), content.isNull());
        QVERIFY(log.records().isEmpty());
    }

    void enumValues()
    {
        QCOMPARE(QList<int>({D::ID_DISK_USB, D::DEVICE_FIGHT_MODE, D::F_RESETTING, D::E_NOT_SUPORTED}),
            QList<int>({256, 0x20000, 0x40000000, 13}));
        QCOMPARE(QMetaEnum::fromType<D::DeviceId>().keyCount(), 32);
        QCOMPARE(QMetaEnum::fromType<D::DeviceError>().keyCount(), 17);
    }
};

QTEST_GUILESS_MAIN(TestDeviceModel)
#include "tst_devicemodel.moc"

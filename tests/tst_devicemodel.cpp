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

namespace {
IDevice::Flags bits(IDevice::DeviceFlags flags)
{
    return IDevice::Flags(int(flags));
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
    void initialState();
    void settersCompareFirst();
    void errorStaysStored();
    void abilityAppearsAfterDelay();
    void overlappingAbilityIsDroppedWhole();
    void clearAbilityIsNeverDropped();
    void setThenClearGivesTwoChanges();
    void abilityKeepsStatusSetMeanwhile();
    void deviceDeletedBeforeTimer();
    void resetOnlyLogs();
    void readers_data();
    void readers();
    void readStringForms();
    void enumsAndMetaTypes();
};

void TestDeviceModel::initialState()
{
    IDevice device(IDevice::ID_POWER_SUPPLY, IDevice::DEVICE_POWER, QStringLiteral("/p"));
    QCOMPARE(device.id(), IDevice::ID_POWER_SUPPLY);
    QCOMPARE(device.type(), IDevice::DeviceType(IDevice::DEVICE_POWER));
    QCOMPARE(device.path(), QStringLiteral("/p"));
    QCOMPARE(device.status(), IDevice::DeviceFlags(IDevice::F_NOFLAGS));
    QCOMPARE(device.error(), IDevice::E_NO_ERROR);
    QCOMPARE(priv(device)->abilities, IDevice::DeviceFlags());
    // The private is a QObject child of the public object it emits on.
    QCOMPARE(priv(device)->parent(), &device);
    QCOMPARE(priv(device)->q, &device);
}

void TestDeviceModel::settersCompareFirst()
{
    IDevice device(IDevice::ID_LED_POWER, IDevice::DEVICE_LED, QString());
    QSignalSpy status(&device, &IDevice::statusChanged);
    QSignalSpy path(&device, &IDevice::pathChanged);

    priv(device)->setStatus(IDevice::F_ACTIVE | IDevice::F_CHARGE);
    priv(device)->setStatus(IDevice::F_ACTIVE | IDevice::F_CHARGE);
    QCOMPARE(status.count(), 1);
    QCOMPARE(status.at(0).at(0).value<IDevice::DeviceFlags>(), IDevice::F_ACTIVE | IDevice::F_CHARGE);

    priv(device)->setPath(QStringLiteral("/a"));
    priv(device)->setPath(QStringLiteral("/a"));
    priv(device)->onPathChanged(QStringLiteral("/b"));
    QCOMPARE(path.count(), 2);
    QCOMPARE(path.at(1).at(0).toString(), QStringLiteral("/b"));
    QCOMPARE(device.path(), QStringLiteral("/b"));
}

void TestDeviceModel::errorStaysStored()
{
    IDevice device(IDevice::ID_LED_POWER, IDevice::DEVICE_LED, QString());
    QSignalSpy errors(&device, QOverload<IDevice::DeviceError>::of(&IDevice::error));
    priv(device)->setError(IDevice::E_INVALID_COLOR);
    priv(device)->setError(IDevice::E_INVALID_COLOR);
    QCOMPARE(errors.count(), 1);
    QCOMPARE(device.error(), IDevice::E_INVALID_COLOR);
    // No automatic return to E_NO_ERROR; only another value is announced.
    priv(device)->setError(IDevice::E_DISK_NOT_READY);
    priv(device)->setError(IDevice::E_INVALID_COLOR);
    QCOMPARE(errors.count(), 3);
    QCOMPARE(errors.at(2).at(0).value<IDevice::DeviceError>(), IDevice::E_INVALID_COLOR);
}

void TestDeviceModel::abilityAppearsAfterDelay()
{
    IDevice device(IDevice::ID_AUDIO, IDevice::DEVICE_AUDIO, QString());
    QSignalSpy status(&device, &IDevice::statusChanged);
    QElapsedTimer clock;
    clock.start();
    device.setAbility(IDevice::F_ENABLE);
    device.setAbility(IDevice::F_ENABLE);
    QCOMPARE(device.status(), IDevice::DeviceFlags());
    QTRY_COMPARE(status.count(), 1);
    QVERIFY2(clock.elapsed() >= 95, qPrintable(QString::number(clock.elapsed())));
    QCOMPARE(device.status(), IDevice::DeviceFlags(IDevice::F_ENABLE));
    // The second request was dropped: no second change ever comes.
    QTest::qWait(150);
    QCOMPARE(status.count(), 1);
}

void TestDeviceModel::overlappingAbilityIsDroppedWhole()
{
    IDevice device(IDevice::ID_AUDIO, IDevice::DEVICE_AUDIO, QString());
    QSignalSpy status(&device, &IDevice::statusChanged);
    device.setAbility(IDevice::F_ENABLE);
    device.setAbility(bits(IDevice::F_ENABLE | IDevice::F_ACTIVE));
    QTRY_COMPARE(status.count(), 1);
    QTest::qWait(150);
    QCOMPARE(device.status(), IDevice::DeviceFlags(IDevice::F_ENABLE));
    QCOMPARE(status.count(), 1);
}

void TestDeviceModel::clearAbilityIsNeverDropped()
{
    IDevice device(IDevice::ID_AUDIO, IDevice::DEVICE_AUDIO, QString());
    QSignalSpy status(&device, &IDevice::statusChanged);
    // Nothing to clear: no signal, but the request bit goes.
    priv(device)->abilities = IDevice::F_ENABLE;
    device.clearAbility(IDevice::F_ENABLE);
    QCOMPARE(priv(device)->abilities, IDevice::DeviceFlags());
    QTest::qWait(150);
    QCOMPARE(status.count(), 0);
    // So a later request works again.
    device.setAbility(IDevice::F_ENABLE);
    QTRY_COMPARE(status.count(), 1);
    QCOMPARE(device.status(), IDevice::DeviceFlags(IDevice::F_ENABLE));
}

void TestDeviceModel::setThenClearGivesTwoChanges()
{
    IDevice device(IDevice::ID_AUDIO, IDevice::DEVICE_AUDIO, QString());
    QSignalSpy status(&device, &IDevice::statusChanged);
    device.setAbility(IDevice::F_ACTIVE);
    QTest::qWait(20);
    device.clearAbility(IDevice::F_ACTIVE);
    QTRY_COMPARE(status.count(), 2);
    QCOMPARE(status.at(0).at(0).value<IDevice::DeviceFlags>(), IDevice::DeviceFlags(IDevice::F_ACTIVE));
    QCOMPARE(status.at(1).at(0).value<IDevice::DeviceFlags>(), IDevice::DeviceFlags());

    // Requested in the same instant, they still apply in the order asked.
    status.clear();
    device.setAbility(IDevice::F_ACTIVE);
    device.clearAbility(IDevice::F_ACTIVE);
    QTRY_COMPARE(status.count(), 2);
    QCOMPARE(status.at(0).at(0).value<IDevice::DeviceFlags>(), IDevice::DeviceFlags(IDevice::F_ACTIVE));
    QCOMPARE(status.at(1).at(0).value<IDevice::DeviceFlags>(), IDevice::DeviceFlags());
}

void TestDeviceModel::abilityKeepsStatusSetMeanwhile()
{
    IDevice device(IDevice::ID_AUDIO, IDevice::DEVICE_AUDIO, QString());
    QSignalSpy status(&device, &IDevice::statusChanged);
    device.setAbility(IDevice::F_ENABLE);
    priv(device)->setStatus(IDevice::F_CHARGE);
    QTRY_COMPARE(status.count(), 2);
    QCOMPARE(device.status(), IDevice::F_ENABLE | IDevice::F_CHARGE);
}

void TestDeviceModel::deviceDeletedBeforeTimer()
{
    const QAbstractEventDispatcher *dispatcher = QAbstractEventDispatcher::instance();
    const int timerObjects = dispatcher->children().size();
    QPointer<IDevice> device = new IDevice(IDevice::ID_AUDIO, IDevice::DEVICE_AUDIO, QString());
    int changes = 0;
    connect(device, &IDevice::statusChanged, this, [&changes] { ++changes; });
    device->setAbility(IDevice::F_ENABLE);
    device->clearAbility(IDevice::F_ACTIVE);
    delete device;
    QVERIFY(device.isNull());
    // The pending requests went with the device: nothing waits out the delay
    // for it, however many devices come and go in that time.
    QCOMPARE(dispatcher->children().size(), timerObjects);
    QTest::qWait(200);
    QCOMPARE(changes, 0);
}

void TestDeviceModel::resetOnlyLogs()
{
    IDevice device(IDevice::ID_AUDIO, IDevice::DEVICE_AUDIO, QString());
    QSignalSpy status(&device, &IDevice::statusChanged);
    LogCapture log;
    device.reset();
    QCOMPARE(log.records().size(), 1);
    QCOMPARE(log.records().at(0).type, QtDebugMsg);
    QVERIFY(log.records().at(0).message.isEmpty());
    QVERIFY2(log.records().at(0).function.contains(QLatin1String("reset")), qPrintable(log.records().at(0).function));
    QCOMPARE(device.status(), IDevice::DeviceFlags());
    QTest::qWait(120);
    QCOMPARE(status.count(), 0);
}

void TestDeviceModel::readers_data()
{
    QTest::addColumn<QByteArray>("content"); // null: no file at all
    QTest::addColumn<double>("milli");
    QTest::addColumn<double>("micro");
    QTest::addColumn<bool>("convertWarning");
    QTest::addColumn<bool>("readWarning");

    QTest::newRow("thousandths") << QByteArray("12345\n") << 12.345 << 0.012345 << false << false;
    QTest::newRow("negative, blanks") << QByteArray("  -2500 \n") << -2.5 << -0.0025 << false << false;
    QTest::newRow("up to NUL") << QByteArray("700\0garbage", 11) << 0.7 << 0.0007 << false << false;
    QTest::newRow("not a number") << QByteArray("abc") << 0.0 << 0.0 << true << true;
    QTest::newRow("empty file") << QByteArray("") << 0.0 << 0.0 << true << true;
    QTest::newRow("missing file") << QByteArray() << 0.0 << 0.0 << false << true;
}

void TestDeviceModel::readers()
{
    QFETCH(QByteArray, content);
    QFETCH(double, milli);
    QFETCH(double, micro);
    QFETCH(bool, convertWarning);
    QFETCH(bool, readWarning);

    QTemporaryDir dir;
    const QString fileName = dir.path() + QStringLiteral("/value");
    if (!content.isNull()) {
        QFile file(fileName);
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write(content);
    }
    IDevice device(IDevice::ID_TEMP_CPU, IDevice::DEVICE_TEMPERATURE, dir.path());
    const QString convert = QStringLiteral("Could not convert read value from \"%1\" to an integer").arg(fileName);
    const QString read = QStringLiteral("Could not read value from %1").arg(fileName);

    LogCapture log;
    QCOMPARE(priv(device)->readqrealFromMilli(QStringLiteral("value")), milli);
    QCOMPARE(log.contains(convert, QtWarningMsg), convertWarning);
    QCOMPARE(log.contains(read, QtWarningMsg), readWarning);
    QCOMPARE(log.records().size(), int(convertWarning) + int(readWarning));

    log.clear();
    QCOMPARE(priv(device)->readqrealFromMicro(QStringLiteral("value")), micro);
    QCOMPARE(log.contains(read, QtWarningMsg), readWarning);

    // The trying readers give NaN instead, and warn only about bad content.
    log.clear();
    const qreal tried = priv(device)->tryToReadqrealFromMilli(QStringLiteral("value"));
    QCOMPARE(std::isnan(tried), readWarning);
    QCOMPARE(log.records().size(), int(convertWarning));
    QCOMPARE(std::isnan(priv(device)->tryToReadqrealFromMicro(QStringLiteral("value"))), readWarning);
}

void TestDeviceModel::readStringForms()
{
    QTemporaryDir dir;
    QFile text(dir.path() + QStringLiteral("/name"));
    QVERIFY(text.open(QIODevice::WriteOnly));
    text.write(QByteArray("  BQ27\xe9x \nsecond line\n"));
    text.close();
    QFile empty(dir.path() + QStringLiteral("/empty"));
    QVERIFY(empty.open(QIODevice::WriteOnly));
    empty.close();

    IDevice device(IDevice::ID_BATTERY_1ST, IDevice::DEVICE_BATTERY, dir.path());
    LogCapture log;
    QCOMPARE(priv(device)->readString(QStringLiteral("name")), QString::fromLatin1("BQ27\xe9x"));
    const QString emptyText = priv(device)->readString(QStringLiteral("empty"));
    QVERIFY(emptyText.isEmpty());
    QVERIFY(!emptyText.isNull());
    QVERIFY(priv(device)->readString(QStringLiteral("missing")).isNull());
    QVERIFY(log.records().isEmpty());
}

void TestDeviceModel::enumsAndMetaTypes()
{
    QCOMPARE(int(IDevice::ID_DISK_USB), 256);
    QCOMPARE(int(IDevice::DEVICE_FIGHT_MODE), 0x20000);
    QCOMPARE(int(IDevice::F_RESETTING), 0x40000000);
    QCOMPARE(int(IDevice::E_NOT_SUPORTED), 13);
    QCOMPARE(QMetaEnum::fromType<IDevice::DeviceId>().keyCount(), 32);
    QCOMPARE(QMetaEnum::fromType<IDevice::DeviceError>().keyCount(), 17);
    QVERIFY(QMetaType::type("TQ_SPAPI::IDevicePtr") != QMetaType::UnknownType);
    QVERIFY(QMetaType::type("TQ_SPAPI::IDevice::DeviceFlags") != QMetaType::UnknownType);
    QVERIFY(QMetaType::type("TQ_SPAPI::IDevice::DeviceError") != QMetaType::UnknownType);

    // A device shared through IDevicePtr is tracked as a QObject too.
    IDevicePtr shared(new IDevice(IDevice::ID_AUDIO, IDevice::DEVICE_AUDIO, QString()));
    QPointer<IDevice> guard = shared.data();
    QWeakPointer<IDevice> weak = shared;
    QVERIFY(!weak.isNull());
    shared.reset();
    QVERIFY(guard.isNull());
    QVERIFY(weak.isNull());
}

QTEST_GUILESS_MAIN(TestDeviceModel)
#include "tst_devicemodel.moc"

#include <vantix/devicelist.h>
#include <vantix/idisk.h>
#include <vantix/iusb.h>

#include <qbcommon/appconfig.h>

#include "logcapture.h"
#include "testroot.h"

#include <QDir>
#include <QFile>
#include <QPointer>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QtTest>

using namespace TQ_SPAPI;

namespace {
constexpr auto errorSignal = qOverload<IDevice::DeviceError>(&IDevice::error);

void touch(const QString &file)
{
    QDir().mkpath(QFileInfo(file).path());
    QFile f(file);
    QVERIFY(f.open(QIODevice::WriteOnly));
    f.write("x");
}

QStringList entries(const QString &dir)
{
    return QDir(dir).entryList(QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot);
}

// Lets the event loop run until @p ms have passed, so that earlier timers have fired.
bool runEventsFor(int ms)
{
    bool done = false;
    QTimer::singleShot(ms, [&done] { done = true; });
    return QTest::qWaitFor([&done] { return done; }, ms + 5000);
}
} // namespace

class TestDisk : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { m_home = qgetenv("HOME"); }
    void cleanup()
    {
        qputenv("HOME", m_home);
        QDir::setCurrent(m_cwd);
    }
    void initTestCase() { m_cwd = QDir::currentPath(); }

    void formatMountUnmountCycle()
    {
        TestRoot root;
        LogCapture log;
        IDisk disk(IDevice::ID_DISK_USER_DATA, AppConfig::instance()->varPath(QStringLiteral("data")));
        disk.initialize();
        QSignalSpy errors(&disk, errorSignal);
        QCOMPARE(disk.status(), IDevice::DeviceFlags());
        QCOMPARE(disk.size(), 536870912u);
        QCOMPARE(disk.free(), 536870912u);

        disk.mount();
        QCOMPARE(errors.count(), 1);
        QCOMPARE(errors.last().first().value<IDevice::DeviceError>(), IDevice::E_DISK_NOT_READY);

        disk.format(0);
        QVERIFY(log.contains(QStringLiteral("disk size 0")));
        QVERIFY(QFileInfo(disk.path()).isDir());
        QVERIFY(!disk.status().testFlag(IDevice::F_FORMATTED));
        QTRY_VERIFY(disk.status().testFlag(IDevice::F_FORMATTED));
        QCOMPARE(disk.size(), 536870912u);
        QCOMPARE(disk.free(), 536870912u);

        disk.mount();
        QVERIFY(!disk.status().testFlag(IDevice::F_ACTIVE));
        QTRY_VERIFY(disk.status().testFlag(IDevice::F_ACTIVE));
        disk.unmount();
        QVERIFY(disk.status().testFlag(IDevice::F_ACTIVE));
        QTRY_VERIFY(!disk.status().testFlag(IDevice::F_ACTIVE));
        QCOMPARE(errors.count(), 1);

        // Each failed unmount is announced, though the error stays the same.
        disk.unmount();
        disk.unmount();
        QCOMPARE(errors.count(), 3);
        QCOMPARE(errors.last().first().value<IDevice::DeviceError>(), IDevice::E_DISK_NOT_MOUNTED);
        QVERIFY(disk.status().testFlag(IDevice::F_FORMATTED));
    }

    void failureCountIsSharedAndReadOnce()
    {
        TestRoot root;
        AppConfig::instance()->setArguments({"app", "--diskfailures", "2", "--disksformatted"});
        DeviceList list;
        const auto disk =
            list.add(IDevice::ID_DISK_SYSTEM, IDevice::DEVICE_DISK, root.path() + "/var").objectCast<IDisk>();
        QVERIFY(disk);
        QVERIFY(disk->status().testFlag(IDevice::F_FORMATTED));
        // Later changes of the command line do not reach an existing disk.
        AppConfig::instance()->setArguments({"app"});

        QStringList errors;
        connect(disk.data(), errorSignal, this, [&](IDevice::DeviceError e) { errors << QTest::toString(e); });
        disk->mount();
        disk->mount();
        QCOMPARE(errors, (QStringList{"E_DISK_NOT_READY", "E_DISK_NOT_READY"}));
        disk->mount();
        QTRY_VERIFY(disk->status().testFlag(IDevice::F_ACTIVE));

        errors.clear();
        disk->unmount();
        disk->unmount();
        QCOMPARE(errors, (QStringList{"E_DISK_NOT_MOUNTED", "E_DISK_NOT_MOUNTED"}));
        disk->unmount();
        QTRY_VERIFY(!disk->status().testFlag(IDevice::F_ACTIVE));

        // A failed mount counts towards the next unmount.
        errors.clear();
        disk->mount();
        disk->unmount();
        disk->mount();
        QCOMPARE(errors, (QStringList{"E_DISK_NOT_READY", "E_DISK_NOT_MOUNTED"}));
        QTRY_VERIFY(disk->status().testFlag(IDevice::F_ACTIVE));
    }

    void formattedAtStart_data()
    {
        QTest::addColumn<QStringList>("arguments");
        QTest::addColumn<IDevice::DeviceId>("id");
        QTest::addColumn<bool>("formatted");
        QTest::newRow("user data") << QStringList{"app"} << IDevice::ID_DISK_USER_DATA << false;
        QTest::newRow("user data, switch")
            << QStringList{"app", "--disksformatted"} << IDevice::ID_DISK_USER_DATA << true;
        QTest::newRow("switch with value")
            << QStringList{"app", "--disksformatted=0"} << IDevice::ID_DISK_SYSTEM << true;
        QTest::newRow("usb stick") << QStringList{"app"} << IDevice::ID_DISK_USB << true;
        QTest::newRow("last below bit 8") << QStringList{"app"} << IDevice::DeviceId(255) << false;
        QTest::newRow("last with bit 8") << QStringList{"app"} << IDevice::DeviceId(511) << true;
    }

    void formattedAtStart()
    {
        QFETCH(QStringList, arguments);
        QFETCH(IDevice::DeviceId, id);
        QFETCH(bool, formatted);
        TestRoot root;
        AppConfig::instance()->setArguments(arguments);
        DeviceList list;
        const IDevicePtr disk = list.add(id, IDevice::DEVICE_DISK, root.path() + "/share/usbdisk", 1);
        QCOMPARE(list.device(quint32(id) + 1), disk);
        QCOMPARE(disk->status().testFlag(IDevice::F_FORMATTED), formatted);

        // A formatted disk mounts at the first attempt.
        QSignalSpy errors(disk.data(), errorSignal);
        disk.objectCast<IDisk>()->mount();
        if (formatted) {
            QTRY_VERIFY(disk->status().testFlag(IDevice::F_ACTIVE));
        }
        QCOMPARE(errors.count(), formatted ? 0 : 1);
    }

    void formatEmptiesTheWholeTree()
    {
        TestRoot root;
        QTemporaryDir outside;
        const QString path = root.path() + "/var/data";
        touch(path + "/.hidden");
        touch(path + "/plain.txt");
        touch(path + "/sub/deeper/.also-hidden");
        touch(outside.path() + "/keep");
        QVERIFY(QFile::link(outside.path(), path + "/link-out"));

        IDisk disk(IDevice::ID_DISK_USER_DATA, path);
        QSignalSpy errors(&disk, errorSignal);
        disk.format(4096);
        QVERIFY(QFileInfo(path).isDir());
        QCOMPARE(entries(path), QStringList());
        // A link inside the disk is removed, not followed.
        QVERIFY(QFile::exists(outside.path() + "/keep"));
        QTRY_VERIFY(disk.status().testFlag(IDevice::F_FORMATTED));
        QCOMPARE(errors.count(), 0);

        // A missing directory is created with its parents.
        IDisk fresh(IDevice::ID_DISK_USB, root.path() + "/share/a/b/usbdisk");
        fresh.format(0);
        QVERIFY(QFileInfo(fresh.path()).isDir());
        QTRY_VERIFY(fresh.status().testFlag(IDevice::F_FORMATTED));
    }

    void formatRefuses_data()
    {
        QTest::addColumn<QString>("path");
        QTest::addColumn<QString>("sentinel");
        QTest::addColumn<QString>("reason");
        QTest::addColumn<QString>("home");
        // %R is the application root, %O a folder outside it, %S the working directory.
        const QString outsideRoot = QStringLiteral("it is not inside the application root");
        const QString home = QStringLiteral("it is the home directory or one of its parents");
        QTest::newRow("empty path") << ""
                                    << "%S/keep"
                                    << "the path is empty"
                                    << "%S/home";
        QTest::newRow("file-system root") << "/"
                                          << ""
                                          << "it is the file-system root"
                                          << "%S/home";
        QTest::newRow("home") << "%R/home/user"
                              << "%R/home/user/keep" << home << "%R/home/user";
        QTest::newRow("parent of home") << "%R/home"
                                        << "%R/home/user/keep" << home << "%R/home/user";
        QTest::newRow("the root itself") << "%R"
                                         << "%R/var/keep" << outsideRoot << "%S/home";
        QTest::newRow("outside the root") << "%O/disk"
                                          << "%O/disk/keep" << outsideRoot << "%S/home";
        QTest::newRow("dot-dot escape") << "%R/var/../../%o/disk"
                                        << "%O/disk/keep" << outsideRoot << "%S/home";
        QTest::newRow("relative escape") << "../%o/disk"
                                         << "%O/disk/keep" << outsideRoot << "%S/home";
        QTest::newRow("link to outside") << "%R/var/link"
                                         << "%O/disk/keep"
                                         << "it is a symbolic link"
                                         << "%S/home";
        QTest::newRow("link to inside") << "%R/var/inner-link"
                                        << "%R/var/data/keep"
                                        << "it is a symbolic link"
                                        << "%S/home";
        QTest::newRow("through a linked folder") << "%R/var/link-dir/disk"
                                                 << "%O/disk/keep" << outsideRoot << "%S/home";
        QTest::newRow("new folder through a link") << "%R/var/link-dir/new"
                                                   << "%O/disk/keep" << outsideRoot << "%S/home";
        QTest::newRow("dangling link") << "%R/var/dangling/disk"
                                       << "%O/disk/keep"
                                       << "it leads through a dangling symbolic link"
                                       << "%S/home";
    }

    void formatRefuses()
    {
        QFETCH(QString, path);
        QFETCH(QString, sentinel);
        QFETCH(QString, reason);
        QFETCH(QString, home);
        TestRoot root;
        QTemporaryDir outside;
        QTemporaryDir workingDir;
        const auto expand = [&](QString s) {
            return s.replace("%R", root.path())
                .replace("%O", outside.path())
                .replace("%o", QFileInfo(outside.path()).fileName())
                .replace("%S", workingDir.path());
        };
        // The home directory is a fake one: nothing real is ever at stake.
        qputenv("HOME", QFile::encodeName(expand(home)));
        touch(expand(home) + "/keep");
        QVERIFY(QDir::setCurrent(workingDir.path()));
        touch(workingDir.path() + "/keep");
        touch(root.path() + "/var/keep");
        touch(root.path() + "/var/data/keep");
        touch(outside.path() + "/disk/keep");
        QVERIFY(QFile::link(outside.path() + "/disk", root.path() + "/var/link"));
        QVERIFY(QFile::link(root.path() + "/var/data", root.path() + "/var/inner-link"));
        QVERIFY(QFile::link(outside.path(), root.path() + "/var/link-dir"));
        QVERIFY(QFile::link(outside.path() + "/ghost", root.path() + "/var/dangling"));
        const QStringList before = entries(root.path() + "/var");
        const QStringList outsideBefore = entries(outside.path());

        IDisk disk(IDevice::ID_DISK_USER_DATA, expand(path));
        QSignalSpy errors(&disk, errorSignal);
        LogCapture log;
        disk.format(0);
        QCOMPARE(log.records().last().type, QtWarningMsg);
        QCOMPARE(log.messages().last(), QStringLiteral("Refusing to format \"%1\": %2").arg(disk.path(), reason));
        QCOMPARE(errors.count(), 0);
        QTRY_COMPARE(errors.count(), 1);
        QCOMPARE(errors.first().first().value<IDevice::DeviceError>(), IDevice::E_DISK_NO_SPACE);
        QVERIFY(!disk.status().testFlag(IDevice::F_FORMATTED));

        const QString kept = expand(sentinel);
        QVERIFY2(kept.isEmpty() || QFile::exists(kept), qPrintable(kept));
        QCOMPARE(entries(root.path() + "/var"), before);
        // Nothing was created outside either, not even through a link.
        QCOMPARE(entries(outside.path()), outsideBefore);

        // The stored error is not reset: a second refusal in a row is not announced again.
        disk.format(0);
        QVERIFY(runEventsFor(150));
        QCOMPARE(errors.count(), 1);
    }

    void deletedWhileTimersPending()
    {
        TestRoot root;
        AppConfig::instance()->setArguments({"app", "--disksformatted"});
        auto *mounting = new IDisk(IDevice::ID_DISK_USER_DATA, root.path() + "/var/data");
        auto *formatting = new IDisk(IDevice::ID_DISK_SYSTEM, root.path() + "/var/system");
        auto *refusing = new IDisk(IDevice::ID_DISK_USB, QString());
        mounting->initialize();
        QSignalSpy mountingStatus(mounting, &IDevice::statusChanged);
        QSignalSpy formattingStatus(formatting, &IDevice::statusChanged);
        QSignalSpy refusingErrors(refusing, errorSignal);
        QPointer<IDisk> guard(mounting);

        mounting->mount();
        formatting->format(0);
        refusing->format(0);
        delete mounting;
        delete formatting;
        delete refusing;
        QVERIFY(!guard);
        QVERIFY(runEventsFor(600));
        QCOMPARE(mountingStatus.count() + formattingStatus.count() + refusingErrors.count(), 0);
    }

    void usbIdentity()
    {
        DeviceList list;
        const IDevicePtr device = list.add(IDevice::ID_USB_OTG_B, IDevice::DEVICE_USB, QStringLiteral("/dev/x"));
        const auto usb = device.objectCast<IUsb>();
        QVERIFY(usb);
        QCOMPARE(usb->type(), IDevice::DeviceType(IDevice::DEVICE_USB));
        QVERIFY(usb->path().isEmpty());
        const QList<QPair<const char *, QString>> identity{
            {"model", "STM32_DFU"},
            {"modelRaw", "STM32 DFU"},
            {"modelDb", "STM Device in DFU Mode"},
            {"modelId", "df11"},
            {"revision", "0200"},
            {"serial", "STMicroelectronics_STM32_DFU"},
            {"serialShort", ""},
            {"vendor", "STMicroelectronics"},
            {"vendorId", "0483"},
            {"usbInterfaces", ":fe0102:"},
        };
        for (const auto &entry : identity) {
            QCOMPARE(usb->property(entry.first).toString(), entry.second);
        }
        QCOMPARE(usb->vendorId(), QStringLiteral("0483"));
        QCOMPARE(usb->serialShort(), QString(""));
        QCOMPARE(usb->modelDb(), QStringLiteral("STM Device in DFU Mode"));
    }

private:
    QByteArray m_home;
    QString m_cwd;
};

QTEST_GUILESS_MAIN(TestDisk)
#include "tst_disk.moc"

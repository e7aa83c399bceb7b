#include <vantix/idisk.h>
#include <vantix/iusb.h>

#include <qbcommon/appconfig.h>

#include "logcapture.h"
#include "testfiles.h"
#include "testroot.h"

#include <QSignalSpy>
#include <QTemporaryDir>
#include <QtTest>

using namespace TQ_SPAPI;
using D = IDevice;

namespace {
constexpr auto errorSignal = qOverload<D::DeviceError>(&D::error);

QStringList entries(const QString &dir)
{
    return QDir(dir).entryList(QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot);
}

// The errors a device reports, by name, in order.
QStringList errorsOf(QSignalSpy &spy)
{
    QStringList names;
    for (const QList<QVariant> &args : qAsConst(spy)) {
        names << QString::fromLatin1(QMetaEnum::fromType<D::DeviceError>().valueToKey(args.first().toInt()));
    }
    spy.clear();
    return names;
}
} // namespace

class TestDisk : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase()
    {
        m_home = qgetenv("HOME");
        m_cwd = QDir::currentPath();
    }

    void cleanup()
    {
        qputenv("HOME", m_home);
        QDir::setCurrent(m_cwd);
    }

    void formatMountUnmountCycle()
    {
        TestRoot root;
        LogCapture log;
        IDisk disk(D::ID_DISK_USER_DATA, AppConfig::instance()->varPath("data"));
        disk.initialize();
        QSignalSpy errors(&disk, errorSignal);
        disk.mount();
        QCOMPARE(errorsOf(errors), QStringList{"E_DISK_NOT_READY"});

        disk.format(0);
        QVERIFY(log.contains("disk size 0"));
        QVERIFY(QFileInfo(disk.path()).isDir()); // parents included
        QVERIFY(!disk.status().testFlag(D::F_FORMATTED));
        QTRY_VERIFY(disk.status().testFlag(D::F_FORMATTED));
        QCOMPARE(QList<uint>({disk.size(), disk.free()}), QList<uint>({536870912u, 536870912u}));

        disk.mount();
        QVERIFY(!disk.status().testFlag(D::F_ACTIVE));
        QTRY_VERIFY(disk.status().testFlag(D::F_ACTIVE));
        disk.unmount();
        QTRY_VERIFY(!disk.status().testFlag(D::F_ACTIVE));
        // Each failed unmount is announced, though the error stays the same.
        disk.unmount();
        disk.unmount();
        QCOMPARE(errorsOf(errors), (QStringList{"E_DISK_NOT_MOUNTED", "E_DISK_NOT_MOUNTED"}));

        // A removable stick comes formatted and mounts at the first attempt.
        IDisk stick(D::ID_DISK_USB, root.path() + "/share/usbdisk");
        stick.initialize();
        QVERIFY(stick.status().testFlag(D::F_FORMATTED));
        stick.mount();
        QTRY_VERIFY(stick.status().testFlag(D::F_ACTIVE));
    }

    void failureCountIsSharedAndReadOnce()
    {
        TestRoot root;
        AppConfig::instance()->setArguments({"app", "--diskfailures", "2", "--disksformatted=no"});
        const QScopedPointer<IDisk> disk(new IDisk(D::ID_DISK_SYSTEM, root.path()));
        disk->initialize();
        QVERIFY(disk->status().testFlag(D::F_FORMATTED));
        AppConfig::instance()->setArguments({"app"}); // an existing disk keeps its count
        QSignalSpy errors(disk.data(), errorSignal);

        disk->mount();
        disk->mount();
        QCOMPARE(errorsOf(errors), (QStringList{"E_DISK_NOT_READY", "E_DISK_NOT_READY"}));
        disk->mount();
        QTRY_VERIFY(disk->status().testFlag(D::F_ACTIVE));
        disk->unmount();
        disk->unmount();
        QCOMPARE(errorsOf(errors), (QStringList{"E_DISK_NOT_MOUNTED", "E_DISK_NOT_MOUNTED"}));
        disk->unmount();
        QTRY_VERIFY(!disk->status().testFlag(D::F_ACTIVE));

        // A failed mount counts towards the next unmount.
        disk->mount();
        disk->unmount();
        disk->mount();
        QCOMPARE(errorsOf(errors), (QStringList{"E_DISK_NOT_READY", "E_DISK_NOT_MOUNTED"}));
        QTRY_VERIFY(disk->status().testFlag(D::F_ACTIVE));
    }

    void formatEmptiesTheWholeTree()
    {
        TestRoot root;
        QTemporaryDir outside;
        const QString path = root.path() + "/var/data";
        for (const char *file : {"/.hidden", "/plain", "/sub/deeper/.hidden"}) {
            QVERIFY(writeFile(path + file));
        }
        QVERIFY(writeFile(outside.path() + "/keep"));
        QVERIFY(QFile::link(outside.path(), path + "/link-out"));

        IDisk disk(D::ID_DISK_USER_DATA, path);
        QSignalSpy errors(&disk, errorSignal);
        disk.format(4096);
        QVERIFY(QFileInfo(path).isDir());
        QCOMPARE(entries(path), QStringList());
        QVERIFY(QFile::exists(outside.path() + "/keep")); // the link was removed, not followed
        QTRY_VERIFY(disk.status().testFlag(D::F_FORMATTED));
        QCOMPARE(errors.count(), 0);
    }

    void formatRefuses_data()
    {
        QTest::addColumn<QString>("path");
        QTest::addColumn<QString>("sentinel");
        QTest::addColumn<QString>("reason");
        QTest::addColumn<QString>("home");
        // %R is the application root, %O a folder outside it (named %o), %S the working directory.
        const QString outsideRoot = "it is not inside the application root";
        const QString home = "it is the home directory or one of its parents";
        const QString link = "it is a symbolic link";
        const auto row = [](const char *name, const char *path, const char *sentinel, const QString &reason,
                             const char *home = "%S/home") {
            QTest::newRow(name) << path << sentinel << reason << home;
        };
        row("empty path", "", "%S/keep", "the path is empty");
        row("file-system root", "/", "", "it is the file-system root");
        row("home", "%R/home/user", "%R/home/user/keep", home, "%R/home/user");
        row("parent of home", "%R/home", "%R/home/user/keep", home, "%R/home/user");
        row("the root itself", "%R", "%R/var/keep", outsideRoot);
        row("outside the root", "%O/disk", "%O/disk/keep", outsideRoot);
        row("dot-dot escape", "%R/var/../../%o/disk", "%O/disk/keep", outsideRoot);
        row("link to outside", "%R/var/link", "%O/disk/keep", link);
        row("link to inside", "%R/var/inner-link", "%R/var/data/keep", link);
        row("new folder through a link", "%R/var/link-dir/new", "%O/disk/keep", outsideRoot);
        row("dangling link", "%R/var/dangling/disk", "", "it leads through a dangling symbolic link");
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
        // A fake home directory: nothing real is ever at stake.
        qputenv("HOME", QFile::encodeName(expand(home)));
        QVERIFY(QDir::setCurrent(workingDir.path()));
        for (const char *file : {"%S/keep", "%R/var/keep", "%R/var/data/keep", "%O/disk/keep"}) {
            QVERIFY(writeFile(expand(file)));
        }
        QVERIFY(writeFile(expand(home) + "/keep"));
        QVERIFY(QFile::link(outside.path() + "/disk", root.path() + "/var/link"));
        QVERIFY(QFile::link(root.path() + "/var/data", root.path() + "/var/inner-link"));
        QVERIFY(QFile::link(outside.path(), root.path() + "/var/link-dir"));
        QVERIFY(QFile::link(outside.path() + "/ghost", root.path() + "/var/dangling"));
        const QStringList before = entries(root.path() + "/var") + entries(outside.path());

        IDisk disk(D::ID_DISK_USER_DATA, expand(path));
        QSignalSpy errors(&disk, errorSignal);
        LogCapture log;
        disk.format(0);
        QCOMPARE(log.records().last().type, QtWarningMsg);
        QCOMPARE(log.messages().last(), QString("Refusing to format \"%1\": %2").arg(disk.path(), reason));
        QCOMPARE(errors.count(), 0);
        QTRY_COMPARE(errors.count(), 1);
        QCOMPARE(errorsOf(errors), QStringList{"E_DISK_NO_SPACE"});
        QVERIFY(!disk.status().testFlag(D::F_FORMATTED));
        QVERIFY2(sentinel.isEmpty() || QFile::exists(expand(sentinel)), qPrintable(sentinel));
        // Nothing removed or created, not even through a link.
        QCOMPARE(entries(root.path() + "/var") + entries(outside.path()), before);

        // The stored error is not reset: a second refusal in a row is not announced again.
        disk.format(0);
        QTest::qWait(150); // longer than the refusal delay
        QCOMPARE(errors.count(), 0);
    }

    void deletedWhileTimersPending()
    {
        TestRoot root;
        AppConfig::instance()->setArguments({"app", "--disksformatted"});
        // Mounting, formatting and refusing to format: each leaves a timer behind.
        QList<IDisk *> disks{new IDisk(D::ID_DISK_USER_DATA, root.path() + "/var/data"),
            new IDisk(D::ID_DISK_SYSTEM, root.path() + "/var/system"), new IDisk(D::ID_DISK_USB, {})};
        disks[0]->initialize();
        disks[0]->mount();
        disks[1]->format(0);
        disks[2]->format(0);
        int emitted = 0;
        for (IDisk *disk : disks) {
            connect(disk, &D::statusChanged, this, [&emitted] { ++emitted; });
            connect(disk, errorSignal, this, [&emitted] { ++emitted; });
        }
        qDeleteAll(disks);
        QTest::qWait(600); // longer than every disk delay
        QCOMPARE(emitted, 0);
    }

    void usbIdentity()
    {
        IUsb usb(D::ID_USB_OTG_B);
        const QString identity = "model=STM32_DFU;modelRaw=STM32 DFU;modelDb=STM Device in DFU Mode;modelId=df11;"
                                 "revision=0200;serial=STMicroelectronics_STM32_DFU;serialShort=;"
                                 "vendor=STMicroelectronics;vendorId=0483;usbInterfaces=:fe0102:";
        for (const QString &entry : identity.split(';')) {
            const QString name = entry.section('=', 0, 0);
            QCOMPARE(usb.property(name.toLatin1()), QVariant(entry.section('=', 1)));
        }
        QCOMPARE(usb.vendorId() + usb.serialShort(), QString("0483"));
    }

private:
    QByteArray m_home;
    QString m_cwd;
};

QTEST_GUILESS_MAIN(TestDisk)
#include "tst_disk.moc"

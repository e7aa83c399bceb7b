#include "logcapture.h"
#include "systeminfostore_p.h"
#include "testroot.h"
#include "testsystem.h"

#include <vantix/system.h>

#include <qbcommon/appconfig.h>

#include <QDate>
#include <QDir>
#include <QHostInfo>
#include <QRegularExpression>
#include <QSettings>
#include <QSignalSpy>
#include <QTest>
#include <QUuid>

using namespace TQ_SPAPI;

namespace {
QString info(const QString &key)
{
    return System::instance()->systemInfo().value(key).toString();
}

QByteArray readAll(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("(unreadable)");
}

void writeFile(const QString &path, const QByteArray &data)
{
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write(data);
}
} // namespace

class TestSystemInfo : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void cleanup()
    {
        System::releaseInstance();
        SystemInfoStore::setOsReleasePath(QString());
    }

    void firstStart_data()
    {
        QTest::addColumn<int>("platform");
        QTest::addColumn<QString>("expected"); // file, board id, revision, serial, product id
        QTest::newRow("tolvex") << int(System::PT_TOLVEX) << "nvram-tolvex 30DA C TSBF12123456 200-00000";
        QTest::newRow("quarnel plus --id") << int(System::PT_QUARNEL_PLUS) << "nvram-quarnel 40BA D TSBF12987654 1-2";
        QTest::newRow("can cpu --id") << int(System::PT_CAN_CPU_MODULE) << "nvram-quarnel NONE N TSBF00000000 9";
    }

    // The fresh root also has no folder for the file yet.
    void firstStart()
    {
        QFETCH(int, platform);
        QFETCH(QString, expected);
        TestRoot root;
        const QDate before = QDate::currentDate();
        const QString file = expected.section(' ', 0, 0), id = expected.section(' ', 4);
        startSystem(platform, id == "200-00000" ? QStringList() : QStringList{"--id", id});

        QCOMPARE(QStringList({file, info("HW_BOARD_ID"), info("HW_BOARD_REVISION"), info("TQ_PRODUCT_SERIAL"),
                     info("TQ_PRODUCT_ID")}),
            expected.split(' '));
        const QString uuid = info("TQ_PRODUCT_UUID");
        QVERIFY(uuid.size() == 36 && !QUuid(uuid).isNull() && !uuid.contains('{'));
        const QDate date = QDate::fromString(info("TQ_PRODUCT_DATE"), "yyyy-MM-dd");
        QVERIFY(date == before || date == QDate::currentDate());
        QCOMPARE(info("API_VERSION") + info("API_NAME") + info("BoardControllerVersion") + info("SYSCTRL_VERSION"),
            QString("0.01LinuxStubX.XX.X"));
        QCOMPARE(info("OS_HOSTNAME"), QHostInfo::localHostName());

        const QString path = root.path() + "/var/etc/" + file;
        QCOMPARE(SystemInfoStore::filePath(System::PlatformType(platform)), path);
        QSettings settings(path, QSettings::IniFormat);
        QStringList keys = settings.allKeys();
        keys.sort();
        QCOMPARE(keys,
            (QStringList{"API_VERSION", "HW_BOARD_ID", "HW_BOARD_REVISION", "TQ_PRODUCT_DATE", "TQ_PRODUCT_ID",
                "TQ_PRODUCT_SERIAL", "TQ_PRODUCT_UUID"}));
        for (const QString &key : keys) {
            QCOMPARE(settings.value(key).toString(), info(key));
        }
        QCOMPARE(QDir(root.path() + "/var/etc").entryList(QDir::Files), QStringList{file});
    }

    void restarts()
    {
        TestRoot root;
        System *system = startSystem(System::PT_TOLVEX, {"--id", "111-11111"});
        const QVariantMap first = system->systemInfo();
        QSettings file(SystemInfoStore::filePath(System::PT_TOLVEX), QSettings::IniFormat);
        file.setValue("API_NAME", "Old");
        file.setValue("OS_HOSTNAME", "elsewhere");
        file.sync();

        // Identity survives whatever "--id" says now; per-start entries are refreshed.
        system = startSystem(System::PT_TOLVEX, {"--id", "222-22222"});
        for (const char *key : {"TQ_PRODUCT_UUID", "TQ_PRODUCT_DATE", "TQ_PRODUCT_ID"}) {
            QCOMPARE(info(key), first.value(key).toString());
        }
        QCOMPARE(info("API_NAME") + info("OS_HOSTNAME"), "LinuxStub" + QHostInfo::localHostName());

        // Added entries persist with the whole map; deleting touches the map only.
        QSignalSpy changed(system, &System::systemInfoChanged);
        system->addSystemInfoPair("A", "1");
        file.sync();
        QCOMPARE(file.value("A").toString() + file.value("SYSCTRL_VERSION").toString(), QString("1X.X"));
        system = startSystem(System::PT_TOLVEX);
        QCOMPARE(info("A"), QString("1"));
        system->deleteSystemInfoKey("A");
        QVERIFY(!system->systemInfo().contains("A"));
        QCOMPARE(changed.count(), 0);
        startSystem(System::PT_TOLVEX);
        QCOMPARE(info("A"), QString("1"));
    }

    void osRelease()
    {
        TestRoot root;
        writeFile(root.path() + "/os-release", "NAME=\"Test OS\"\nVERSION=  \" 4.2 (calm) \"\n");
        SystemInfoStore::setOsReleasePath(root.path() + "/os-release");
        startSystem(System::PT_QUARNEL);
        QCOMPARE(info("OS_NAME") + '|' + info("OS_VERSION"), QString("Test OS|4.2 (calm)"));

        SystemInfoStore::setOsReleasePath(root.path() + "/missing");
        startSystem(System::PT_QUARNEL);
        QVERIFY(System::instance()->systemInfo().contains("OS_NAME"));
        QCOMPARE(info("OS_NAME") + info("OS_VERSION"), QString());

        // The host's own file, where there is one.
        SystemInfoStore::setOsReleasePath(QString());
        const QRegularExpression name("^NAME=\"?([^\"\n]*)", QRegularExpression::MultilineOption);
        const QRegularExpressionMatch host = name.match(QString::fromUtf8(readAll("/etc/os-release")));
        if (host.hasMatch()) {
            startSystem(System::PT_QUARNEL);
            QCOMPARE(info("OS_NAME"), host.captured(1).trimmed());
        }
    }

    void damagedFile_data()
    {
        QTest::addColumn<QByteArray>("content"); // null: a folder in the file's place
        QTest::addColumn<QString>("damage");
        QTest::addColumn<bool>("olderCopy");
        QTest::newRow("format") << QByteArray("[General\nHW_BOARD_ID=30DA\n") << "format error" << false;
        QTest::newRow("empty") << QByteArray("") << "identity incomplete" << false;
        QTest::newRow("truncated") << QByteArray("HW_BOARD_ID=30DA\nTQ_PRODUCT_UUID=x\n") << "identity incomplete"
                                   << true;
        QTest::newRow("unreadable") << QByteArray() << "unreadable" << false;
    }

    void damagedFile()
    {
        QFETCH(QByteArray, content);
        QFETCH(QString, damage);
        QFETCH(bool, olderCopy);
        TestRoot root;
        const QString path = SystemInfoStore::filePath(System::PT_TOLVEX);
        QVERIFY(QDir().mkpath(content.isNull() ? path : root.path() + "/var/etc"));
        if (!content.isNull()) {
            writeFile(path, content);
        }
        if (olderCopy) {
            writeFile(path + ".corrupt", "older");
        }
        const QString kept = path + (olderCopy ? ".corrupt.2" : ".corrupt");

        LogCapture log;
        startSystem(System::PT_TOLVEX);
        QVERIFY(log.contains(QString("Damaged nvram file \"%1\" (%2) kept as \"%3\"; a new identity is generated")
                                 .arg(path, damage, kept),
            QtWarningMsg));
        QVERIFY(content.isNull() ? QFileInfo(kept).isDir() : readAll(kept) == content);
        if (olderCopy) {
            QCOMPARE(readAll(path + ".corrupt"), QByteArray("older"));
        }
        QCOMPARE(info("TQ_PRODUCT_UUID").size(), 36);
        QCOMPARE(QSettings(path, QSettings::IniFormat).value("TQ_PRODUCT_UUID").toString(), info("TQ_PRODUCT_UUID"));
    }

    void unwritableFolder_data()
    {
        QTest::addColumn<bool>("readOnly");
        QTest::newRow("file in the folder's place") << false;
        QTest::newRow("read-only folder") << true;
    }

    void unwritableFolder()
    {
        QFETCH(bool, readOnly);
        TestRoot root;
        const QString folder = root.path() + "/var/etc";
        QVERIFY(QDir().mkpath(readOnly ? folder : root.path() + "/var"));
        if (!readOnly) {
            writeFile(folder, "not a folder");
        } else {
            QFile::setPermissions(folder, QFile::ReadOwner | QFile::ExeOwner);
            QFile probe(folder + "/probe");
            if (probe.open(QIODevice::WriteOnly)) {
                QSKIP("folder permissions do not bind this user (root); the other row covers the case");
            }
        }

        LogCapture log;
        System *system = startSystem(System::PT_QUARNEL);
        const QString warning = QString("Cannot write nvram file \"%1\"; system information is kept in memory only")
                                    .arg(SystemInfoStore::filePath(System::PT_QUARNEL));
        QCOMPARE(log.count(warning), 1);
        QCOMPARE(info("HW_BOARD_ID"), QString("40BA"));
        QCOMPARE(info("TQ_PRODUCT_UUID").size(), 36);
        system->addSystemInfoPair("A", "1");
        QCOMPARE(info("A"), QString("1"));
        QCOMPARE(log.count(warning), 2);
        QFile::setPermissions(folder, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    }
};

QTEST_GUILESS_MAIN(TestSystemInfo)
#include "tst_systeminfo.moc"

// vantix-ctl against a real engine: completion read from the schema the
// engine sends, and the one-shot path, which must carry any word to the
// application intact and name files from the folder it runs in.

#include "completion.h"
#include "programrun.h"
#include "testroot.h"
#include "testsystem.h"

#include <vantix/vantix.h>

#include <vantixcontrol/engine/session.h>
#include <vantixcontrol/protocol/argument.h>

#include <QJsonArray>
#include <QTemporaryDir>
#include <QtTest>

using namespace TQ_SPAPI;
using VantixControl::Argument;

class TestCtl : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase()
    {
        m_root = new TestRoot;
        QSignalSpy ready(startSystem(System::PT_TOLVEX_PLUS), &System::apiReady);
        QVERIFY(ready.wait());
        m_schema = VantixControl::Session(System::instance()).describe();
    }

    void cleanupTestCase()
    {
        System::releaseInstance();
        SystemPlatformType::type = System::PT_UNKNOWN;
        delete m_root;
    }

    void completion_data()
    {
        QTest::addColumn<QStringList>("words");
        QTest::addColumn<QStringList>("expected");
        QTest::addColumn<bool>("exactly");
        const auto row = [](const char *name, const QStringList &words, const QStringList &expected,
                             bool exactly = true) { QTest::newRow(name) << words << expected << exactly; };
        row("commands and debug commands", {""}, {"help", "get", "expect", "setbatteryfuel", "addotga"}, false);
        row("a command", {"fl"}, {"flightmode"});
        row("a debug command's choice", {"setbatteryfuel,"}, {"setbatteryfuel,1", "setbatteryfuel,2"});
        row("a debug command's number", {"setbatteryfuel,1,"}, {});
        row("targets", {"get", ""}, {"system", "ID_BATTERY_1ST", "battery1", "timesettings"}, false);
        row("properties", {"get", "battery1", "fuel"}, {"fuelGauge"});
        row("only writable ones", {"set", "display", "b"}, {"brightnes", "backlight"});
        row("read-only left out", {"set", "battery1", ""}, {});
        row("choices", {"flightmode", ""}, {"on", "off"});
        row("a device", {"unplug", "otg"}, {"otga", "otgb"});
        row("device type flags", {"plug", "stick", "DEVICE_DI"}, {"DEVICE_DISK", "DEVICE_DISPLAY"});
        row("keys", {"key", "keypad+"}, {"keypad+1", "keypad+2", "keypad+3", "keypad+7", "keypad+8"});
        row("help takes debug commands", {"help", "setbatteryf"}, {"setbatteryfuel"});
        row("record's words", {"record", ""}, {"stop", "--force"});
        row("a file after --force", {"record", "--force", ""}, {});
        row("dump", {"dump", ""}, {"--force"});
        row("expect's second word", {"expect", "battery1", ""}, {"present", "absent", "emitted", "fuelGauge"}, false);
        row("signals", {"expect", "battery1", "emitted", "fuel"}, {"fuelGaugeChanged"});
        row("an operator or a value", {"expect", "wifi", "networkState", ""}, {"!=", "NETWORK_STATE_DISCONNECTED"},
            false);
        row("a value", {"expect", "wifi", "networkState", "=", "NETWORK_STATE_ACT"},
            {"NETWORK_STATE_ACTIVATED", "NETWORK_STATE_ACTIVATING"});
        row("system once", {"get", "sys"}, {"system", "systemdisk"});
        row("within", {"expect", "battery1", "fuelGauge", ">", "5", ""}, {"within"});
        row("a number of ms", {"expect", "battery1", "fuelGauge", "5", "within", ""}, {});
        row("nothing after the last", {"expect", "battery1", "present", "within", "5", ""}, {});
        row("methods", {"call", "battery1", "set"}, {"setAbility"});
        row("unknown command", {"nosuch", ""}, {});
    }

    void completion()
    {
        QFETCH(QStringList, words);
        QFETCH(QStringList, expected);
        QFETCH(bool, exactly);
        const QStringList got = Completion::candidates(m_schema, words);
        if (exactly) {
            QCOMPARE(got, expected);
        } else {
            for (const QString &candidate : expected) {
                QVERIFY2(got.contains(candidate), qPrintable(candidate + " not in " + got.join(' ')));
            }
        }
    }

    // Every argument the engine declares reads back as a type completion knows.
    void everyArgumentTypeIsKnown()
    {
        int arguments = 0;
        for (const char *list : {"commands", "debugCommands"}) {
            for (const QJsonValue &command : m_schema.value(list).toArray()) {
                for (const QJsonValue &form : command.toObject().value("forms").toArray()) {
                    for (const QJsonValue &value : form.toObject().value("arguments").toArray()) {
                        Argument argument;
                        QVERIFY2(Argument::fromJson(value.toObject(), &argument),
                            qPrintable(command.toObject().value("name").toString()));
                        QCOMPARE(argument.toJson(), value.toObject());
                        ++arguments;
                    }
                }
            }
        }
        QVERIFY(arguments > 30);
    }

    // vantix-ctl COMMAND... quotes each word it is given so that the engine reads it back as it was.
    void oneShotWordsArriveIntact_data()
    {
        QTest::addColumn<QString>("word");
        QTest::newRow("newline") << "a\nb";
        QTest::newRow("no-break space") << QString("a") + QChar(0x00a0) + "b";
        QTest::newRow("line separator") << QString("a") + QChar(0x2028) + "b";
        QTest::newRow("backslash") << "a\\b\\";
        QTest::newRow("quote") << "\"quoted\"";
        QTest::newRow("empty") << "";
        QTest::newRow("leading hash") << "#x";
        QTest::newRow("blanks") << "  two  words ";
    }

    void oneShotWordsArriveIntact()
    {
        QFETCH(QString, word);
        VantixDebug::instance()->overrideSSID(word);
        QCOMPARE(ctl({"expect", "wifi", "wifiSsid", word}).exitCode, 0);
        // A debug command's arguments are text after commas; the word after its first word follows a blank.
        QCOMPARE(ctl({"setssid," + word}).exitCode, 0);
        QCOMPARE(ssid(), word);
        QCOMPARE(ctl({"setssid,x", word}).exitCode, 0);
        QCOMPARE(ssid(), "x " + word);
    }

    void filesAreNamedFromTheCallersFolder()
    {
        QTemporaryDir folder;
        const ProgramRun run = ctl({"dump", "state.json"}, folder.path());
        QVERIFY2(run.exitCode == 0, qPrintable(run.out + run.err));
        QVERIFY(QFileInfo(folder.filePath("state.json")).isFile());
        QCOMPARE(ctl({"dump", "state.json"}, folder.path()).exitCode, 1);
        QCOMPARE(ctl({"dump", "--force", "state.json"}, folder.path()).exitCode, 0);
    }

private:
    ProgramRun ctl(const QStringList &words, const QString &folder = QString())
    {
        const QStringList arguments = QStringList{"--pid", QString::number(QCoreApplication::applicationPid())} + words;
        return runProgram(VANTIX_CTL, arguments, QProcessEnvironment::systemEnvironment(), QByteArray(), folder);
    }

    static QString ssid()
    {
        return System::instance()->device(IDevice::ID_NETWORK_WIFI)->property("wifiSsid").toString();
    }

    TestRoot *m_root = nullptr;
    QJsonObject m_schema;
};

QTEST_GUILESS_MAIN(TestCtl)
#include "tst_ctl.moc"

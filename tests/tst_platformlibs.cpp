// The platform libraries the system builds on: parameters, configuration and
// connectivity.

#include <qbcom/parametercontroller.h>
#include <qbcom/qbparameter.h>
#include <qbcommon/appconfig.h>
#include <qbcommon/networkmanager.h>

#include <QNetworkConfigurationManager>
#include <QPointer>
#include <QSignalSpy>
#include <QStandardPaths>
#include <QtTest>

using namespace TQ_QBCom;

class TestPlatformLibs : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void cleanup();
    void parameterRepeatsEveryValue();
    void controllerKeepsDuplicates();
    void controllerForgetsDeletedParameters();
    void argumentForms_data();
    void argumentForms();
    void pathRoots();
    void offlineSwitch();
};

void TestPlatformLibs::cleanup()
{
    AppConfig::instance()->resetArguments();
    AppConfig::instance()->setRootPath(QString());
    qunsetenv("QBCOMMON_ROOT");
    QCoreApplication::instance()->setProperty("TestOffline", QVariant());
}

void TestPlatformLibs::parameterRepeatsEveryValue()
{
    QBParameter parameter(QStringLiteral("VantixDebug"), QString(), QVariant());
    QCOMPARE(parameter.name(), QStringLiteral("VantixDebug"));
    QCOMPARE(parameter.value(), QVariant(QString()));
    QVERIFY(!parameter.metadata().isValid());
    QSignalSpy changed(&parameter, &QBParameter::valueChanged);
    parameter.setValue(QStringLiteral("jack"));
    parameter.setValue(QStringLiteral("jack"));
    parameter.setValue(42);
    QCOMPARE(changed.count(), 3);
    QCOMPARE(changed.at(1).at(0).toString(), QStringLiteral("jack"));
    QCOMPARE(changed.at(2).at(0).toString(), QStringLiteral("42"));
    QCOMPARE(parameter.value(), QVariant(42));
}

void TestPlatformLibs::controllerKeepsDuplicates()
{
    ParameterController controller;
    auto *first = new QBParameter(QStringLiteral("p"), 1, QVariant());
    auto *second = new QBParameter(QStringLiteral("p"), 2, QVariant());
    QCOMPARE(controller.addParameter(first), first);
    QCOMPARE(controller.addParameter(second), second);
    QCOMPARE(controller.addParameter(nullptr), nullptr);
    QCOMPARE(first->parent(), &controller);
    QCOMPARE(controller.parameters().size(), 2);
    QCOMPARE(controller.parameter(QStringLiteral("p")), first);
    QVERIFY(!controller.parameter(QStringLiteral("q")));

    QSignalSpy firstChanged(first, &QBParameter::valueChanged);
    QSignalSpy secondChanged(second, &QBParameter::valueChanged);
    QVERIFY(controller.setValue(QStringLiteral("p"), QStringLiteral("x")));
    QVERIFY(!controller.setValue(QStringLiteral("q"), QStringLiteral("x")));
    QCOMPARE(firstChanged.count(), 1);
    QCOMPARE(secondChanged.count(), 1);
    QCOMPARE(second->value().toString(), QStringLiteral("x"));
}

void TestPlatformLibs::controllerForgetsDeletedParameters()
{
    ParameterController controller;
    QPointer<QBParameter> parameter = controller.addParameter(new QBParameter(QStringLiteral("p"), 1, QVariant()));
    delete parameter.data();
    QVERIFY(controller.parameters().isEmpty());
    QVERIFY(!controller.setValue(QStringLiteral("p"), 2));
}

void TestPlatformLibs::argumentForms_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<QString>("value");
    QTest::addColumn<bool>("exists");

    QTest::newRow("separate") << QStringList{QStringLiteral("app"), QStringLiteral("--id"), QStringLiteral("123")}
                              << QStringLiteral("123") << true;
    QTest::newRow("equals") << QStringList{QStringLiteral("app"), QStringLiteral("--id=4-5")} << QStringLiteral("4-5")
                            << true;
    QTest::newRow("equals empty") << QStringList{QStringLiteral("app"), QStringLiteral("--id=")} << QString() << true;
    QTest::newRow("last, no value") << QStringList{QStringLiteral("app"), QStringLiteral("--id")}
                                    << QStringLiteral("default") << true;
    QTest::newRow("absent") << QStringList{QStringLiteral("app"), QStringLiteral("--idx"), QStringLiteral("1")}
                            << QStringLiteral("default") << false;
    QTest::newRow("program name is not an argument") << QStringList{QStringLiteral("--id"), QStringLiteral("9")}
                                                     << QStringLiteral("default") << false;
}

void TestPlatformLibs::argumentForms()
{
    QFETCH(QStringList, arguments);
    QFETCH(QString, value);
    QFETCH(bool, exists);
    AppConfig *config = AppConfig::instance();
    config->setArguments(arguments);
    QCOMPARE(config->argumentValue(QStringLiteral("--id"), QStringLiteral("default")), value);
    QCOMPARE(config->argumentExits(QStringLiteral("--id")), exists);
    QCOMPARE(config->arguments(), arguments);
}

void TestPlatformLibs::pathRoots()
{
    AppConfig *config = AppConfig::instance();
    const QString fallback = QStandardPaths::writableLocation(QStandardPaths::AppDataLocation);
    QCOMPARE(config->rootPath(), fallback);

    qputenv("QBCOMMON_ROOT", "/tmp/from-env/");
    QCOMPARE(config->rootPath(), QStringLiteral("/tmp/from-env"));
    QCOMPARE(config->varPath(QStringLiteral("data")), QStringLiteral("/tmp/from-env/var/data"));

    // An explicit root wins over the environment.
    config->setRootPath(QStringLiteral("/srv/unit"));
    QCOMPARE(config->varPath(QStringLiteral("data")), QStringLiteral("/srv/unit/var/data"));
    QCOMPARE(config->varPath(QString()), QStringLiteral("/srv/unit/var"));
    QCOMPARE(config->varEtcPath(QStringLiteral("nvram-tolvex")), QStringLiteral("/srv/unit/var/etc/nvram-tolvex"));
    QCOMPARE(config->varEtcPath(QString()), QStringLiteral("/srv/unit/var/etc"));
    QCOMPARE(config->sharePath(QStringLiteral("usbdisk")), QStringLiteral("/srv/unit/share/usbdisk"));
    QCOMPARE(config->sharePath(QString()), QStringLiteral("/srv/unit/share"));

    config->setRootPath(QString());
    QCOMPARE(config->rootPath(), QStringLiteral("/tmp/from-env"));
}

void TestPlatformLibs::offlineSwitch()
{
    NetworkManager *manager = NetworkManager::instance();
    QCOMPARE(NetworkManager::instance(), manager);
    QCOMPARE(manager->parent(), QCoreApplication::instance());
    QVERIFY(manager->configurationManager());
    QCOMPARE(manager->configurationManager(), manager->configurationManager());

    QSignalSpy connectivity(manager, &NetworkManager::connectivityChanged);
    QCoreApplication::instance()->setProperty("TestOffline", true);
    manager->startCheckConnectivity();
    QCOMPARE(connectivity.count(), 1);
    QCOMPARE(connectivity.at(0).at(0).toBool(), false);
    QVERIFY(!manager->isOnline());
    manager->startCheckConnectivity();
    QCOMPARE(connectivity.count(), 1); // unchanged answer, no signal

    QCoreApplication::instance()->setProperty("TestOffline", false);
    manager->startCheckConnectivity();
    // Back to what the host says, which depends on the machine.
    QCOMPARE(connectivity.count(), manager->isOnline() ? 2 : 1);
}

QTEST_GUILESS_MAIN(TestPlatformLibs)
#include "tst_platformlibs.moc"

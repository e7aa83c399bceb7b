// The platform libraries the system builds on: parameters, configuration and
// connectivity.

#include <qbcom/parametercontroller.h>
#include <qbcom/qbparameter.h>
#include <qbcommon/appconfig.h>
#include <qbcommon/networkmanager.h>

#include <QNetworkConfigurationManager>
#include <QSignalSpy>
#include <QStandardPaths>
#include <QtTest>

using namespace TQ_QBCom;

class TestPlatformLibs : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void cleanup()
    {
        AppConfig::instance()->resetArguments();
        AppConfig::instance()->setRootPath(QString());
        qunsetenv("QBCOMMON_ROOT");
        QCoreApplication::instance()->setProperty("TestOffline", QVariant());
    }

    void parameterRepeatsEveryValue()
    {
        QBParameter parameter("VantixDebug", QString(), QVariant());
        QCOMPARE(parameter.name(), QString("VantixDebug"));
        QCOMPARE(parameter.value(), QVariant(QString()));
        QVERIFY(!parameter.metadata().isValid());
        QSignalSpy changed(&parameter, &QBParameter::valueChanged);
        parameter.setValue("jack");
        parameter.setValue("jack");
        parameter.setValue(42);
        QCOMPARE(changed, QList<QVariantList>({{"jack"}, {"jack"}, {42}}));
        QCOMPARE(parameter.value(), QVariant(42));
    }

    void controllerKeepsDuplicates()
    {
        ParameterController controller;
        auto *first = new QBParameter("p", 1, QVariant());
        auto *second = new QBParameter("p", 2, QVariant());
        QCOMPARE(controller.addParameter(first), first);
        QCOMPARE(controller.addParameter(second), second);
        QCOMPARE(controller.addParameter(nullptr), nullptr);
        QCOMPARE(first->parent(), &controller);
        QCOMPARE(controller.parameters().size(), 2);
        QCOMPARE(controller.parameter("p"), first);
        QVERIFY(!controller.parameter("q"));

        QSignalSpy firstChanged(first, &QBParameter::valueChanged);
        QSignalSpy secondChanged(second, &QBParameter::valueChanged);
        QVERIFY(controller.setValue("p", "x"));
        QVERIFY(!controller.setValue("q", "x"));
        QCOMPARE(firstChanged.count(), 1);
        QCOMPARE(secondChanged.count(), 1);
        QCOMPARE(second->value().toString(), QString("x"));

        // A deleted parameter is forgotten.
        delete first;
        delete second;
        QVERIFY(controller.parameters().isEmpty());
        QVERIFY(!controller.setValue("p", 2));
    }

    void argumentForms_data()
    {
        QTest::addColumn<QStringList>("arguments");
        QTest::addColumn<QString>("value");
        QTest::addColumn<bool>("exists");
        QTest::newRow("separate") << QStringList({"app", "--id", "123"}) << "123" << true;
        QTest::newRow("equals") << QStringList({"app", "--id=4-5"}) << "4-5" << true;
        QTest::newRow("equals empty") << QStringList({"app", "--id="}) << "" << true;
        QTest::newRow("last, no value") << QStringList({"app", "--id"}) << "default" << true;
        QTest::newRow("absent") << QStringList({"app", "--idx", "1"}) << "default" << false;
        QTest::newRow("program name is not an argument") << QStringList({"--id", "9"}) << "default" << false;
    }

    void argumentForms()
    {
        QFETCH(QStringList, arguments);
        QFETCH(QString, value);
        QFETCH(bool, exists);
        AppConfig *config = AppConfig::instance();
        config->setArguments(arguments);
        QCOMPARE(config->argumentValue("--id", "default"), value);
        QCOMPARE(config->argumentExits("--id"), exists);
        QCOMPARE(config->arguments(), arguments);
    }

    void pathRoots()
    {
        AppConfig *config = AppConfig::instance();
        const QString fallback = QStandardPaths::writableLocation(QStandardPaths::AppDataLocation);
        QCOMPARE(config->rootPath(), fallback);

        qputenv("QBCOMMON_ROOT", "/tmp/from-env/");
        QCOMPARE(config->rootPath(), QString("/tmp/from-env"));
        QCOMPARE(config->varPath("data"), QString("/tmp/from-env/var/data"));

        // An explicit root wins over the environment.
        config->setRootPath("/srv/unit");
        QCOMPARE(QStringList({config->varPath("data"), config->varPath(QString()), config->varEtcPath("nvram-tolvex"),
                     config->varEtcPath(QString()), config->sharePath("usbdisk"), config->sharePath(QString())}),
            QStringList({"/srv/unit/var/data", "/srv/unit/var", "/srv/unit/var/etc/nvram-tolvex", "/srv/unit/var/etc",
                "/srv/unit/share/usbdisk", "/srv/unit/share"}));

        config->setRootPath(QString());
        QCOMPARE(config->rootPath(), QString("/tmp/from-env"));
    }

    void offlineSwitch()
    {
        NetworkManager *manager = NetworkManager::instance();
        QCOMPARE(NetworkManager::instance(), manager);
        QCOMPARE(manager->parent(), QCoreApplication::instance());
        QVERIFY(manager->configurationManager() && manager->configurationManager() == manager->configurationManager());

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
};

QTEST_GUILESS_MAIN(TestPlatformLibs)
#include "tst_platformlibs.moc"

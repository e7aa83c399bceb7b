// vantix-panel against a real vantix-sim: the widgets change the
// application's values (checked through the protocol), follow changes made by
// vantix-ctl, show refusals and device errors beside their control, check
// values before sending, grey out when the application goes and attach to
// its new instance, fit an 800x600 window, and show in a real window under
// Xvfb.

#include "connectbar.h"
#include "devicespage.h"
#include "elidedlabel.h"
#include "feedbacklabel.h"
#include "ledview.h"
#include "logpage.h"
#include "methodrow.h"
#include "networkpage.h"
#include "panelsession.h"
#include "panelwindow.h"
#include "peripheralspage.h"
#include "powerpage.h"
#include "propertyeditor.h"
#include "resethardware.h"
#include "simlauncher.h"
#include "storagepage.h"
#include "wifidirectpage.h"

#include <vantixcontrol/client/client.h>
#include <vantixcontrol/protocol/reply.h>
#include <vantixcontrol/protocol/socketdirectory.h>

#include <QCheckBox>
#include <QComboBox>
#include <QImage>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QProcess>
#include <QPushButton>
#include <QScrollArea>
#include <QScrollBar>
#include <QSet>
#include <QSlider>
#include <QSpinBox>
#include <QStandardPaths>
#include <QTabWidget>
#include <QToolButton>
#include <QTemporaryDir>
#include <QtTest>

#include <functional>
#include <memory>

using VantixControl::Client;
using VantixControl::Reply;

namespace {
// A simulator of its own for a test; its console pipe stays open until it is stopped.
class Simulator
{
public:
    bool start(const QString &root)
    {
        m_process.setProgram(QStringLiteral(VANTIX_SIM));
        m_process.setArguments({QStringLiteral("--platform"), QStringLiteral("tolvex-plus"), QStringLiteral("--quiet"),
            QStringLiteral("--root"), root});
        m_process.setStandardOutputFile(QProcess::nullDevice());
        m_process.start();
        if (!m_process.waitForStarted(5000)) {
            return false;
        }
        const qint64 pid = m_process.processId();
        QElapsedTimer clock;
        clock.start();
        while (socket.isEmpty() && clock.elapsed() < 10000) {
            bool done = false;
            Client::findApplications([&](const QList<Client::Application> &applications) {
                for (const Client::Application &a : applications) {
                    if (a.pid == pid) {
                        socket = a.socketPath;
                    }
                }
                done = true;
            });
            if (!QTest::qWaitFor([&] { return done; }, 3000)) {
                return false;
            }
            if (socket.isEmpty()) {
                QTest::qWait(50);
            }
        }
        return !socket.isEmpty();
    }
    void kill()
    {
        m_process.kill();
        m_process.waitForFinished(3000);
    }
    ~Simulator()
    {
        if (m_process.state() != QProcess::NotRunning) {
            m_process.closeWriteChannel();
            if (!m_process.waitForFinished(3000)) {
                kill();
            }
        }
    }
    qint64 processId() const { return m_process.processId(); }
    QString socket;

private:
    QProcess m_process;
};

QPushButton *buttonFor(QWidget *page, const QString &line)
{
    for (QPushButton *button : page->findChildren<QPushButton *>()) {
        if (button->property("line").toString() == line) {
            return button;
        }
    }
    return nullptr;
}

MethodRow *methodRow(QWidget *page, const QString &name)
{
    for (MethodRow *row : page->findChildren<MethodRow *>()) {
        if (row->button()->text() == name) {
            return row;
        }
    }
    return nullptr;
}

void writeFile(const QString &path, const QByteArray &text)
{
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write(text);
}
} // namespace

class TestPanel : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void cleanupTestCase();
    void widgetsDriveTheApplication();
    void widgetsFollowOtherClients();
    void refusalsAndDeviceErrorsShowBesideTheirControl();
    void inputsCheckValuesBeforeSending();
    void powerPageBatteries();
    void networkFieldsAndFlightMode();
    void genericEditorsFromTheSchema();
    void hotPluggedDevicesAppear();
    void stickFollowsPlugActivateMountUnplug();
    void logShowsEchoThenEventsThenAnswer();
    void statusBarFollowsEveryEvent();
    void recordingShowsWhileItRuns();
    void scenarioShowsPassOrFail();
    void layoutFitsAn800x600Window();
    void resetHardwareShowsItsOutcome();
    void lostApplicationGreysOut();
    void newInstanceIsAttached();
    void startedSimulatorEndsWithThePanel();
    void screenshotsInARealWindow();

private:
    /// One console line run in the application by a client of the test's own.
    Reply ask(const QString &line);
    /// vantix-ctl run as a user would, against the test's simulator.
    int ctl(const QStringList &words);
    QString logText() const { return m_window->logPage()->log()->toPlainText(); }

    // A socket folder of the test's own: simulators that other tests start meanwhile are no new instances here.
    QTemporaryDir m_runtime;
    QTemporaryDir m_root;
    Simulator m_sim;
    Client m_probe;
    std::unique_ptr<PanelWindow> m_window;
};

Reply TestPanel::ask(const QString &line)
{
    Reply answer = Reply::failure(VantixControl::ErrorClass::Failed, QStringLiteral("no answer"));
    bool done = false;
    m_probe.execute(line, [&](const Reply &reply) {
        answer = reply;
        done = true;
    });
    if (!QTest::qWaitFor([&] { return done; }, 5000)) {
        qWarning("no answer to %s", qPrintable(line));
    }
    return answer;
}

int TestPanel::ctl(const QStringList &words)
{
    QProcess process;
    process.start(QStringLiteral(VANTIX_CTL), QStringList{QStringLiteral("--socket"), m_sim.socket} + words);
    if (!process.waitForFinished(10000)) {
        return -1;
    }
    return process.exitCode();
}

void TestPanel::initTestCase()
{
    QVERIFY(m_runtime.isValid());
    qputenv("XDG_RUNTIME_DIR", QFile::encodeName(m_runtime.path()));
    QVERIFY(m_root.isValid());
    QVERIFY(m_sim.start(m_root.path()));
    QSignalSpy probeUp(&m_probe, &Client::connected);
    m_probe.connectToServer(m_sim.socket);
    QVERIFY(probeUp.wait(5000));

    m_window.reset(new PanelWindow);
    m_window->resize(1100, 700);
    m_window->show();
    QSignalSpy attached(m_window->session(), &PanelSession::attached);
    m_window->start(AppSelector{-1, QString(), m_sim.socket});
    QVERIFY(attached.wait(5000));
    QVERIFY(m_window->tabs()->isEnabled());
    // The values arrive after the schema: the first battery's fuel shows once they have.
    QTRY_VERIFY(m_window->session()->value(QStringLiteral("ID_BATTERY_1ST"), QStringLiteral("fuelGauge")).known);
}

void TestPanel::cleanupTestCase()
{
    m_window.reset();
}

void TestPanel::widgetsDriveTheApplication()
{
    // Fuel: the slider as a keyboard moves it (not dragged, so it goes at once).
    QSlider *fuel = m_window->powerPage()->fuelSlider(1);
    QVERIFY(fuel->isEnabled());
    fuel->setValue(10);
    QTRY_COMPARE(ask(QStringLiteral("get ID_BATTERY_1ST fuelGauge")).value.toInt(), 10);
    QCOMPARE(m_window->powerPage()->fuelText(1), QStringLiteral("10 %"));

    // The wired state in words, sent as the application's number for it.
    QComboBox *wired = m_window->networkPage()->wiredState();
    QCOMPARE(wired->count(), 13);
    const int unavailable = wired->findData(QStringLiteral("NETWORK_STATE_UNAVAILABLE"));
    QVERIFY(unavailable >= 0);
    QCOMPARE(wired->itemText(unavailable), QStringLiteral("Unavailable"));
    wired->setCurrentIndex(unavailable);
    Q_EMIT wired->activated(unavailable);
    QTRY_COMPARE(ask(QStringLiteral("get ID_NETWORK_LAN networkState")).value.toString(),
        QStringLiteral("NETWORK_STATE_UNAVAILABLE"));

    // The headphone jack: one bit toggles, the microphone's stays.
    QCheckBox *headphone = m_window->peripheralsPage()->headphone();
    const bool before = headphone->isChecked();
    headphone->click();
    const QString expected = before ? QStringLiteral("JACK_NOT_CONNECTED") : QStringLiteral("JACK_HEADPHONE");
    QTRY_COMPARE(ask(QStringLiteral("get ID_AUDIO jackFlags")).value.toString(), expected);
    QTRY_COMPARE(headphone->isChecked(), !before);
    QVERIFY(!m_window->peripheralsPage()->microphone()->isChecked());

    // OTG port A: what cannot apply is disabled and says why; plugged from its button, unplugged again.
    StoragePage *storage = m_window->storagePage();
    const QString otgA = QStringLiteral("ID_USB_OTG_A");
    QPushButton *plug = storage->button(otgA, QStringLiteral("addotga"));
    QPushButton *unplug = storage->button(otgA, QStringLiteral("rmotga"));
    QVERIFY(plug && unplug);
    QVERIFY(!unplug->isEnabled());
    QVERIFY2(unplug->toolTip().contains(QLatin1String("not plugged")), qPrintable(unplug->toolTip()));
    plug->click();
    QTRY_VERIFY(ask(QStringLiteral("get ID_USB_OTG_A status")).ok);
    QTRY_VERIFY(storage->stateText(otgA).startsWith(QLatin1String("Plugged")));
    QTRY_VERIFY(unplug->isEnabled());
    QVERIFY(!plug->isEnabled());
    unplug->click();
    QTRY_COMPARE(ask(QStringLiteral("get ID_USB_OTG_A status")).error, VantixControl::ErrorClass::UnknownTarget);
    QTRY_COMPARE(storage->stateText(otgA), QStringLiteral("Not plugged"));
    QCOMPARE(storage->problems(), QStringList());

    // A shortcut key from its button, named by what it does: keypad 1 is the low-power preset.
    QPushButton *low = m_window->findChild<QPushButton *>(QStringLiteral("keypad+1"));
    QVERIFY(low);
    QVERIFY2(!low->text().contains(QLatin1String("keypad")), qPrintable(low->text()));
    QVERIFY(low->toolTip().startsWith(QLatin1String("keypad+1")));
    low->click();
    QTRY_COMPARE(ask(QStringLiteral("get ID_BATTERY_1ST fuelGauge")).value.toInt(), 15);
    QTRY_COMPARE(fuel->value(), 15);
}

void TestPanel::widgetsFollowOtherClients()
{
    QSlider *fuel = m_window->powerPage()->fuelSlider(1);
    QCOMPARE(ctl({QStringLiteral("setbatteryfuel,1,42")}), 0);
    QTRY_COMPARE(fuel->value(), 42);
    // Following a change sends nothing back: the application saw one change only.
    QCOMPARE(ask(QStringLiteral("get ID_BATTERY_1ST fuelGauge")).value.toInt(), 42);

    QComboBox *wired = m_window->networkPage()->wiredState();
    QCOMPARE(ctl({QStringLiteral("setwiredstate,6")}), 0);
    QTRY_COMPARE(wired->currentData().toString(), QStringLiteral("NETWORK_STATE_DISCONNECTED"));
    QCOMPARE(wired->currentText(), QStringLiteral("Disconnected"));
    QCOMPARE(ctl({QStringLiteral("setwifistate,12")}), 0);
    QTRY_COMPARE(m_window->networkPage()->wifiState()->currentText(), QStringLiteral("Activated"));

    QCheckBox *mic = m_window->peripheralsPage()->microphone();
    const bool micBefore = mic->isChecked();
    QCOMPARE(ctl({QStringLiteral("mic")}), 0);
    QTRY_COMPARE(mic->isChecked(), !micBefore);

    StoragePage *storage = m_window->storagePage();
    QCOMPARE(ctl({QStringLiteral("addotgb")}), 0);
    QTRY_VERIFY(storage->stateText(QStringLiteral("ID_USB_OTG_B")).startsWith(QLatin1String("Plugged")));
    QCOMPARE(ctl({QStringLiteral("rmotgb")}), 0);
    QTRY_COMPARE(storage->stateText(QStringLiteral("ID_USB_OTG_B")), QStringLiteral("Not plugged"));

    // A LED set from outside is drawn in its colour, flashing at its times, and said in words.
    QCOMPARE(ctl({QStringLiteral("call"), QStringLiteral("ID_LED_POWER"), QStringLiteral("setFlash"),
                 QStringLiteral("red"), QStringLiteral("100"), QStringLiteral("100")}),
        0);
    LedView *led = m_window->peripheralsPage()->led(QStringLiteral("ID_LED_POWER"));
    QVERIFY(led);
    QTRY_COMPARE(led->colour(), QColor(Qt::red));
    const bool lit = led->isLit();
    QTRY_COMPARE(led->isLit(), !lit);
    QCOMPARE(m_window->peripheralsPage()->ledText(QStringLiteral("ID_LED_POWER")),
        QStringLiteral("Flashing red, 100 ms on / 100 ms off"));

    // The log page saw the events as they came.
    QTRY_VERIFY(logText().contains(QLatin1String("ID_USB_OTG_B")));
}

void TestPanel::refusalsAndDeviceErrorsShowBesideTheirControl()
{
    // A refused value: the application's error beside the editor until the editor's next success.
    PropertyEditor editor(m_window->session(), QStringLiteral("ID_TEMP_CPU"), QStringLiteral("threshold"));
    QVERIFY(editor.lineEdit());
    editor.submit(QStringLiteral("warm"));
    QTRY_VERIFY(!editor.errorText().isEmpty());
    QVERIFY2(editor.errorText().contains(QLatin1String("threshold")), qPrintable(editor.errorText()));
    // The field goes back to what the application holds.
    const QString held = ask(QStringLiteral("get ID_TEMP_CPU threshold")).text;
    QTRY_COMPARE(editor.lineEdit()->text(), held);
    // Another control's success leaves it where it is.
    bool done = false;
    m_window->session()->run(QStringLiteral("setbatteryfuel,1,44"), [&](const Reply &) { done = true; });
    QTRY_VERIFY(done);
    QVERIFY(!editor.errorText().isEmpty());
    editor.submit(QStringLiteral("55.5"));
    QTRY_COMPARE(editor.errorText(), QString());
    QTRY_COMPARE(ask(QStringLiteral("get ID_TEMP_CPU threshold")).value.toDouble(), 55.5);

    // A device error: the power LED has no blue, which it says with its error signal after an OK answer.
    m_window->setCurrentPage(QStringLiteral("devices"));
    DevicesPage *devices = m_window->devicesPage();
    devices->select(QStringLiteral("ID_LED_POWER"));
    MethodRow *flash = methodRow(devices, QStringLiteral("setFlash"));
    QVERIFY(flash);
    QCOMPARE(flash->argumentCount(), 3);
    QVERIFY(flash->setArgument(0, QStringLiteral("blue")));
    QVERIFY(flash->setArgument(1, QStringLiteral("200")));
    QVERIFY(flash->setArgument(2, QStringLiteral("300")));
    QCoreApplication::sendPostedEvents(nullptr, QEvent::LayoutRequest);
    const QRect rowBefore = flash->geometry();
    const QRect buttonBefore = flash->button()->geometry();
    flash->call();
    QTRY_VERIFY2(
        flash->feedback()->problem().contains(QLatin1String("Invalid colour")), qPrintable(flash->answerText()));
    QVERIFY(flash->feedback()->toolTip().contains(QLatin1String("E_INVALID_COLOR")));
    // Showing it moved nothing.
    QCoreApplication::sendPostedEvents(nullptr, QEvent::LayoutRequest);
    QCOMPARE(flash->geometry(), rowBefore);
    QCOMPARE(flash->button()->geometry(), buttonBefore);
    // It stays until the row's own next success.
    QVERIFY(flash->setArgument(0, QStringLiteral("green")));
    flash->call();
    QTRY_COMPARE(flash->feedback()->problem(), QString());
    QCOMPARE(ask(QStringLiteral("get ID_LED_POWER color")).value.toString(), QStringLiteral("green"));

    // A mistyped console line is refused in the log; the application goes on.
    LogPage *log = m_window->logPage();
    log->commandLine()->setText(QStringLiteral("setbatteryfuel"));
    QTest::keyClick(log->commandLine(), Qt::Key_Return);
    QTRY_VERIFY(logText().contains(QLatin1String("KO: ")));
    QVERIFY(ask(QStringLiteral("get ID_BATTERY_1ST fuelGauge")).ok);
}

void TestPanel::inputsCheckValuesBeforeSending()
{
    // The debug command reads "abc" as 0 A: the page never sends it.
    PowerPage *power = m_window->powerPage();
    QVERIFY(ask(QStringLiteral("setbatterycurrent,1,0.25")).ok);
    const int sent = logText().count(QLatin1String("> setbatterycurrent"));
    power->currentField(1)->setText(QStringLiteral("abc"));
    power->setCurrentButton(1)->click();
    QVERIFY2(power->problems().join(QLatin1Char(' ')).contains(QLatin1String("\"abc\" is not a number")),
        qPrintable(power->problems().join(QLatin1Char(' '))));
    QCOMPARE(logText().count(QLatin1String("> setbatterycurrent")), sent);
    QCOMPARE(ask(QStringLiteral("get ID_BATTERY_1ST current")).value.toDouble(), 0.25);
    power->currentField(1)->setText(QStringLiteral("-0.5"));
    QTest::keyClick(power->currentField(1), Qt::Key_Return);
    QTRY_COMPARE(ask(QStringLiteral("get ID_BATTERY_1ST current")).value.toDouble(), -0.5);
    QTRY_COMPARE(power->problems(), QStringList());

    // A method's whole-number argument.
    DevicesPage *devices = m_window->devicesPage();
    devices->select(QStringLiteral("ID_LED_POWER"));
    MethodRow *flash = methodRow(devices, QStringLiteral("setFlash"));
    QVERIFY(flash);
    QVERIFY(flash->setArgument(1, QStringLiteral("soon")));
    const int calls = logText().count(QLatin1String("setFlash"));
    flash->call();
    QVERIFY2(flash->feedback()->problem().contains(QLatin1String("soon")), qPrintable(flash->answerText()));
    QCOMPARE(logText().count(QLatin1String("setFlash")), calls);

    // Brightness goes no higher than the display's own maximum.
    PeripheralsPage *peripherals = m_window->peripheralsPage();
    const int maximum = ask(QStringLiteral("get ID_DISPLAY maxBrightness")).value.toInt();
    QVERIFY(maximum > 0);
    QSpinBox *brightness = peripherals->brightnessBox();
    QTRY_COMPARE(brightness->maximum(), maximum);
    QCOMPARE(peripherals->brightnessSlider()->maximum(), maximum);
    brightness->selectAll();
    QTest::keyClicks(brightness, QString::number(maximum * 5));
    QTest::keyClick(brightness, Qt::Key_Return);
    QTRY_VERIFY(ask(QStringLiteral("get ID_DISPLAY brightnes")).value.toInt() <= maximum);
    QVERIFY(!logText().contains(QStringLiteral("brightnes %1").arg(maximum * 5)));
    // An expert on the Devices page may still write any number; the library keeps its own behaviour.
    devices->select(QStringLiteral("ID_DISPLAY"));
    auto *editor = devices->findChild<PropertyEditor *>(QStringLiteral("brightnes"));
    QVERIFY(editor);
    editor->submit(QString::number(maximum * 5));
    QTRY_COMPARE(ask(QStringLiteral("get ID_DISPLAY brightnes")).value.toInt(), maximum * 5);
    QVERIFY(ask(QStringLiteral("set ID_DISPLAY brightnes 40")).ok);
    QTRY_COMPARE(brightness->value(), 40);
}

void TestPanel::powerPageBatteries()
{
    PowerPage *power = m_window->powerPage();
    QSlider *second = power->fuelSlider(2);
    QVERIFY(!second->isEnabled());
    QCOMPARE(power->fuelText(2), QStringLiteral("–"));
    buttonFor(power, QStringLiteral("addbattery,2"))->click();
    QTRY_VERIFY(second->isEnabled());
    QVERIFY(ask(QStringLiteral("get ID_BATTERY_2ND status")).ok);
    second->setValue(40);
    QTRY_COMPARE(ask(QStringLiteral("get ID_BATTERY_2ND fuelGauge")).value.toInt(), 40);
    QTRY_COMPARE(power->fuelText(2), QStringLiteral("40 %"));
    // The first battery kept its own value.
    QVERIFY(ask(QStringLiteral("get ID_BATTERY_1ST fuelGauge")).value.toInt() != 40);

    // Charging as a box whose state is the application's flag.
    QCheckBox *charging = power->chargingBox(1);
    const bool wasCharging = charging->isChecked();
    QCOMPARE(wasCharging, ask(QStringLiteral("get ID_BATTERY_1ST status")).text.contains(QLatin1String("F_CHARGE")));
    charging->click();
    QTRY_COMPARE(
        ask(QStringLiteral("get ID_BATTERY_1ST status")).text.contains(QLatin1String("F_CHARGE")), !wasCharging);
    QTRY_COMPARE(charging->isChecked(), !wasCharging);

    // An unplugged battery shows no value left from when it was plugged.
    buttonFor(power, QStringLiteral("rmbattery,2"))->click();
    QTRY_VERIFY(!second->isEnabled());
    QCOMPARE(power->fuelText(2), QStringLiteral("–"));
    QCOMPARE(ask(QStringLiteral("get ID_BATTERY_2ND status")).error, VantixControl::ErrorClass::UnknownTarget);
}

void TestPanel::networkFieldsAndFlightMode()
{
    NetworkPage *network = m_window->networkPage();
    auto *ssid = network->findChild<QLineEdit *>(QStringLiteral("ID_NETWORK_WIFI.wifiSsid"));
    QVERIFY(ssid);
    // Blanks and all: the debug command splits at commas only.
    ssid->setText(QStringLiteral("lab net 5"));
    QTest::keyClick(ssid, Qt::Key_Return);
    QTRY_COMPARE(ask(QStringLiteral("get ID_NETWORK_WIFI wifiSsid")).value.toString(), QStringLiteral("lab net 5"));
    QCOMPARE(ctl({QStringLiteral("setwificountry,DK")}), 0);
    auto *country = network->findChild<QLineEdit *>(QStringLiteral("ID_NETWORK_WIFI.wifiCountry"));
    QTRY_COMPARE(country->text(), QStringLiteral("DK"));
    // A channel is a whole number: "six" stays in the field.
    auto *channel = network->findChild<QLineEdit *>(QStringLiteral("ID_NETWORK_WIFI.wifiChannel"));
    channel->setText(QStringLiteral("six"));
    QTest::keyClick(channel, Qt::Key_Return);
    QVERIFY(network->problems().join(QLatin1Char(' ')).contains(QLatin1String("six")));
    QVERIFY(!logText().contains(QLatin1String("setwifichannel,six")));

    // Flight mode shows its transition while it lasts, then the state it reached, in words.
    buttonFor(network, QStringLiteral("flightmode on"))->click();
    QTRY_VERIFY(network->flightText().contains(QLatin1String("switching")));
    QTRY_VERIFY_WITH_TIMEOUT(!network->flightText().contains(QLatin1String("switching")), 6000);
    const QString reached = ask(QStringLiteral("get System flightModeStatus")).text;
    QCOMPARE(network->flightText(),
        QStringLiteral("Flight mode: ") + m_window->session()->enumText(QStringLiteral("FligtModeFlags"), reached));
    QVERIFY(!network->flightText().contains(QLatin1String("FLIGHT_MODE")));
    buttonFor(network, QStringLiteral("flightmode off"))->click();
    QTRY_VERIFY_WITH_TIMEOUT(
        !ask(QStringLiteral("get System flightModeStatus")).text.contains(QLatin1String("TRANSITION")), 6000);
}

void TestPanel::genericEditorsFromTheSchema()
{
    DevicesPage *devices = m_window->devicesPage();
    devices->select(QStringLiteral("ID_DISPLAY"));
    QCOMPARE(devices->selected(), QStringLiteral("ID_DISPLAY"));
    auto *brightness = devices->findChild<PropertyEditor *>(QStringLiteral("brightnes"));
    QVERIFY(brightness && brightness->lineEdit());
    // Read-only properties get no editor; the Devices page keeps the raw names.
    auto *steps = devices->findChild<PropertyEditor *>(QStringLiteral("steps"));
    QVERIFY(steps && !steps->lineEdit() && !steps->checkBox() && !steps->comboBox());
    auto *status = devices->findChild<PropertyEditor *>(QStringLiteral("status"));
    QVERIFY(status && status->label());
    QTRY_VERIFY(status->label()->text().contains(QLatin1String("F_ENABLE")));

    brightness->lineEdit()->setText(QStringLiteral("40"));
    QTest::keyClick(brightness->lineEdit(), Qt::Key_Return);
    QTRY_COMPARE(ask(QStringLiteral("get ID_DISPLAY brightnes")).value.toInt(), 40);
    QCOMPARE(brightness->errorText(), QString());
    brightness->submit(QStringLiteral("bright"));
    QTRY_VERIFY(!brightness->errorText().isEmpty());
    QCOMPARE(ask(QStringLiteral("get ID_DISPLAY brightnes")).value.toInt(), 40);

    // A method from its row: an enum argument is a list of the enum's values.
    devices->select(QStringLiteral("ID_LED_POWER"));
    MethodRow *on = methodRow(devices, QStringLiteral("on"));
    QVERIFY(on);
    QCOMPARE(on->argumentCount(), 1);
    QVERIFY(!on->setArgument(0, QStringLiteral("plaid")));
    QVERIFY(on->setArgument(0, QStringLiteral("red")));
    on->call();
    QTRY_COMPARE(ask(QStringLiteral("get ID_LED_POWER color")).value.toString(), QStringLiteral("red"));
    QTRY_COMPARE(on->answerText(), QString());
}

void TestPanel::hotPluggedDevicesAppear()
{
    WifiDirectPage *direct = m_window->wifiDirectPage();
    QVERIFY(ask(QStringLiteral("plug p2p")).ok);
    QTRY_VERIFY(direct->findChild<MethodRow *>() != nullptr);
    m_window->devicesPage()->select(QStringLiteral("ID_NETWORK_WIFI_P2P"));
    QCOMPARE(m_window->devicesPage()->selected(), QStringLiteral("ID_NETWORK_WIFI_P2P"));

    // Find peers from the page: the peers the application then knows show with their state.
    MethodRow *find = methodRow(direct, QStringLiteral("findPeers"));
    QVERIFY(find);
    find->call();
    QTRY_VERIFY(!direct->peers().isEmpty());
    const QString peer = direct->peers().first();
    QTRY_VERIFY(m_window->session()->value(peer, QStringLiteral("state")).known);
    QCOMPARE(m_window->session()->value(peer, QStringLiteral("state")).text,
        ask(QStringLiteral("get \"%1\" state").arg(peer)).text);

    QVERIFY(ask(QStringLiteral("unplug p2p")).ok);
    QTRY_VERIFY(direct->findChild<MethodRow *>() == nullptr);
    QVERIFY(direct->peers().isEmpty());
}

void TestPanel::stickFollowsPlugActivateMountUnplug()
{
    StoragePage *storage = m_window->storagePage();
    const QString otgA = QStringLiteral("ID_USB_OTG_A");
    QVERIFY(storage->stickText().startsWith(QLatin1String("Not plugged")));
    storage->button(otgA, QStringLiteral("addotga"))->click();
    QTRY_VERIFY(storage->stateText(otgA).startsWith(QLatin1String("Plugged")));
    // A plugged port brings no stick until it is active.
    QVERIFY(storage->stickText().startsWith(QLatin1String("Not plugged")));
    QPushButton *activate = storage->button(otgA, QStringLiteral("call ID_USB_OTG_A setAbility F_ACTIVE"));
    QVERIFY(activate);
    QTRY_VERIFY(activate->isEnabled());
    activate->click();
    QTRY_VERIFY_WITH_TIMEOUT(storage->stickText().startsWith(QLatin1String("Plugged: ")), 5000);
    const QString path = ask(QStringLiteral("get ID_DISK_USB path")).value.toString();
    QVERIFY(!path.isEmpty());
    QTRY_COMPARE(storage->stickText().split(QLatin1Char('\n')),
        QStringList({QStringLiteral("Plugged: enabled, formatted"), QStringLiteral("Not mounted"),
            QStringLiteral("Folder: ") + path}));
    QVERIFY(!activate->isEnabled());

    storage->button(QStringLiteral("ID_DISK_USB"), QStringLiteral("call ID_DISK_USB mount"))->click();
    QTRY_COMPARE(storage->stickText().section(QLatin1Char('\n'), 1, 1), QStringLiteral("Mounted"));
    QVERIFY(ask(QStringLiteral("get ID_DISK_USB status")).text.contains(QLatin1String("F_ACTIVE")));

    storage->button(otgA, QStringLiteral("rmotga"))->click();
    QTRY_VERIFY(storage->stickText().startsWith(QLatin1String("Not plugged")));
    QCOMPARE(storage->stateText(otgA), QStringLiteral("Not plugged"));
    QCOMPARE(storage->problems(), QStringList());
}

void TestPanel::logShowsEchoThenEventsThenAnswer()
{
    LogPage *log = m_window->logPage();
    QVERIFY(ask(QStringLiteral("setbatteryfuel,1,21")).ok);
    log->commandLine()->setText(QStringLiteral("setbatteryfuel,1,33"));
    QTest::keyClick(log->commandLine(), Qt::Key_Return);
    const QString echo = QStringLiteral("> setbatteryfuel,1,33");
    const auto after = [this, &echo](const QString &wanted) {
        const QStringList lines = logText().split(QLatin1Char('\n'));
        const int from = lines.lastIndexOf(echo);
        for (int i = from + 1; from >= 0 && i < lines.size(); ++i) {
            if (lines.at(i).contains(wanted)) {
                return i - from;
            }
        }
        return -1;
    };
    QTRY_VERIFY(after(QStringLiteral("  OK")) > 0);
    const int event = after(QStringLiteral("ID_BATTERY_1ST fuelGaugeChanged newValue=33"));
    QVERIFY2(event > 0, qPrintable(logText().right(400)));
    QVERIFY2(event < after(QStringLiteral("  OK")), qPrintable(logText().right(400)));
}

void TestPanel::statusBarFollowsEveryEvent()
{
    QVERIFY(ask(QStringLiteral("setbatteryfuel,1,60")).ok);
    QTRY_VERIFY(m_window->summaryText().contains(QLatin1String("battery 1 60 %")));
    // Through a ramp the fuel never drops out of the status bar, and it ends at the last value.
    bool done = false;
    m_probe.execute(QStringLiteral("ramp battery1 setbatteryfuel,1 60 50 400"), [&](const Reply &) { done = true; });
    int missing = 0;
    QSet<QString> seen;
    while (!done) {
        QTest::qWait(5);
        const QString summary = m_window->summaryText();
        if (!summary.contains(QLatin1String("battery 1 "))) {
            ++missing;
        }
        seen.insert(summary.section(QStringLiteral("  ·  "), 0, 0));
    }
    QCOMPARE(missing, 0);
    QVERIFY2(seen.size() >= 3, qPrintable(QStringList(seen.values()).join(QLatin1String(" | "))));
    QTRY_VERIFY(m_window->summaryText().startsWith(QLatin1String("battery 1 50 %")));

    // A Wi-Fi switched off is off, whatever its network state.
    QVERIFY(ask(QStringLiteral("disablewifi")).ok);
    QTRY_VERIFY(m_window->summaryText().contains(QLatin1String("Wi-Fi off")));
    QCOMPARE(m_window->networkPage()->wifiStatusText(), QStringLiteral("Off"));
    QVERIFY(ask(QStringLiteral("enablewifi")).ok);
    QTRY_VERIFY(!m_window->summaryText().contains(QLatin1String("Wi-Fi off")));
}

void TestPanel::recordingShowsWhileItRuns()
{
    QTemporaryDir dir;
    const QString file = dir.filePath(QStringLiteral("recorded session.vsim"));
    LogPage *log = m_window->logPage();
    QCOMPARE(m_window->recordingText(), QString());
    QVERIFY(!log->stopRecordingButton()->isEnabled());
    log->recordFile()->setText(file);
    log->recordButton()->click();
    QTRY_VERIFY(m_window->recordingText().contains(file));
    QVERIFY(log->recordingText().contains(file));
    QVERIFY(log->stopRecordingButton()->isEnabled());
    QVERIFY(!log->recordButton()->isEnabled());
    log->stopRecordingButton()->click();
    QTRY_COMPARE(m_window->recordingText(), QString());
    QCOMPARE(log->recordingText(), QString());
    QVERIFY(QFile::exists(file));
}

void TestPanel::scenarioShowsPassOrFail()
{
    QTemporaryDir dir;
    const QString passing = dir.filePath(QStringLiteral("pass.vsim"));
    const QString failing = dir.filePath(QStringLiteral("fail.vsim"));
    writeFile(passing, "# drain a little\nsetbatteryfuel,1,30\nexpect battery1 fuelGauge = 30\n");
    writeFile(failing, "setbatteryfuel,1,31\nexpect battery1 fuelGauge = 99\nsetbatteryfuel,1,77\n");

    LogPage *log = m_window->logPage();
    m_window->setCurrentPage(QStringLiteral("log"));
    log->runScenario(passing);
    QTRY_COMPARE(log->scenarioResult()->text(), QStringLiteral("pass.vsim: PASS"));
    log->runScenario(failing);
    QTRY_VERIFY(log->scenarioResult()->text().startsWith(QLatin1String("fail.vsim: FAIL")));
    // The failure names the line, and the script stopped there.
    QVERIFY2(log->scenarioResult()->text().contains(QLatin1String(":2:")), qPrintable(log->scenarioResult()->text()));
    QCOMPARE(ask(QStringLiteral("get ID_BATTERY_1ST fuelGauge")).value.toInt(), 31);
    log->runScenario(dir.filePath(QStringLiteral("missing.vsim")));
    QVERIFY(log->scenarioResult()->text().startsWith(QLatin1String("cannot read")));

    // A failure far longer than the window keeps to its line: the window keeps its width, and the
    // whole text is in the result's tooltip and in the log.
    QCoreApplication::sendPostedEvents(nullptr, QEvent::LayoutRequest);
    const int width = m_window->width();
    const QString longFailing = dir.filePath(QStringLiteral("long.vsim"));
    writeFile(longFailing, "expect wifi wifiSsid = " + QByteArray(600, 'x') + "\n");
    log->runScenario(longFailing);
    QTRY_VERIFY(log->scenarioResult()->text().startsWith(QLatin1String("long.vsim: FAIL")));
    const QString result = log->scenarioResult()->text();
    QVERIFY(result.contains(QString(600, QLatin1Char('x'))));
    QCoreApplication::sendPostedEvents(nullptr, QEvent::LayoutRequest);
    QCOMPARE(m_window->width(), width);
    QVERIFY(m_window->minimumSizeHint().width() <= width);
    QVERIFY(log->scenarioResult()->isElided());
    QCOMPARE(log->scenarioResult()->toolTip(), result);
    QVERIFY(logText().contains(result));
}

void TestPanel::layoutFitsAn800x600Window()
{
    // The tabs are the pages' one table: --tab names them in the same order.
    QCOMPARE(PanelWindow::pageNames().size(), m_window->tabs()->count());
    QVERIFY(m_window->setCurrentPage(QStringLiteral("log")));
    QCOMPARE(m_window->pages().at(m_window->tabs()->currentIndex()), m_window->logPage());
    QVERIFY(!m_window->setCurrentPage(QStringLiteral("kitchen")));

    const QSize before = m_window->size();
    m_window->resize(800, 600);
    QCoreApplication::sendPostedEvents(nullptr, QEvent::LayoutRequest);
    QCOMPARE(m_window->size(), QSize(800, 600));
    const QSize minimum = m_window->minimumSizeHint();
    QVERIFY2(minimum.width() <= 800 && minimum.height() <= 600,
        qPrintable(QStringLiteral("%1x%2").arg(minimum.width()).arg(minimum.height())));
    for (int i = 0; i < m_window->tabs()->count(); ++i) {
        m_window->tabs()->setCurrentIndex(i);
        QCoreApplication::sendPostedEvents(nullptr, QEvent::LayoutRequest);
        Page *page = m_window->pages().at(i);
        auto *area = qobject_cast<QScrollArea *>(m_window->tabs()->widget(i));
        const int available = area ? area->viewport()->width() : m_window->tabs()->widget(i)->width();
        QVERIFY2(page->minimumSizeHint().width() <= available,
            qPrintable(QStringLiteral("%1: %2 > %3")
                           .arg(m_window->tabs()->tabText(i))
                           .arg(page->minimumSizeHint().width())
                           .arg(available)));
        if (area) {
            // Once the page has settled at this width.
            QTRY_VERIFY2(!area->horizontalScrollBar()->isVisible(), qPrintable(m_window->tabs()->tabText(i)));
        }
    }
    QCOMPARE(m_window->size(), QSize(800, 600));
    m_window->resize(before);
    m_window->setCurrentPage(QStringLiteral("power"));
}

void TestPanel::resetHardwareShowsItsOutcome()
{
    // A simulator of its own: the shared one has had its LED switched.
    QTemporaryDir root;
    Simulator sim;
    QVERIFY(sim.start(root.path()));
    PanelWindow window;
    window.resize(800, 600);
    window.show();
    QSignalSpy attached(window.session(), &PanelSession::attached);
    window.attach(sim.socket);
    QVERIFY(attached.wait(5000));
    auto *reset = window.findChild<ResetHardware *>();
    QVERIFY(reset && reset->button()->isEnabled());
    const auto run = [&window](const QString &line) {
        bool ok = false;
        bool done = false;
        window.session()->run(line, [&](const Reply &reply) {
            ok = reply.ok;
            done = true;
        });
        return QTest::qWaitFor([&] { return done; }, 5000) && ok;
    };

    QVERIFY(run(QStringLiteral("addbattery,2")) && run(QStringLiteral("setbatteryfuel,1,30")));
    reset->button()->click();
    QVERIFY(!reset->button()->isEnabled());
    QTRY_VERIFY(reset->button()->isEnabled());
    QCOMPARE(reset->outcome(), QStringLiteral("Done: the state after apiReady restored: 1 unplugged, 1 set"));
    QVERIFY(!reset->failed());
    QVERIFY(!run(QStringLiteral("get battery2 fuelGauge")));

    // What no operation can set, named beside the button; the window keeps its width.
    QVERIFY(run(QStringLiteral("call ledpower setFlash red 100 100")));
    const int width = window.width();
    reset->button()->click();
    QTRY_VERIFY(reset->button()->isEnabled());
    QVERIFY(reset->failed());
    QVERIFY2(reset->outcome().startsWith(
                 QLatin1String("Failed: the state after apiReady not restored: ID_LED_POWER.mode, ID_LED_POWER.color")),
        qPrintable(reset->outcome()));
    QCOMPARE(window.width(), width);

    sim.kill();
    QTRY_VERIFY(!reset->button()->isEnabled());
}

void TestPanel::lostApplicationGreysOut()
{
    QTemporaryDir root;
    Simulator doomed;
    QVERIFY(doomed.start(root.path()));
    PanelWindow window;
    QSignalSpy attached(window.session(), &PanelSession::attached);
    window.attach(doomed.socket);
    QVERIFY(attached.wait(5000));
    QVERIFY(window.tabs()->isEnabled());

    QSignalSpy detached(window.session(), &PanelSession::detached);
    doomed.kill();
    QVERIFY(detached.wait(5000));
    QCOMPARE(detached.count(), 1);
    QVERIFY(!window.tabs()->isEnabled());
    QVERIFY(window.bannerText().contains(QLatin1String("has gone")));
    // A request on the lost connection fails at once instead of hanging.
    bool answered = false;
    window.session()->run(QStringLiteral("devices"), [&](const Reply &reply) { answered = !reply.ok; });
    QTRY_VERIFY(answered);

    // Reattaching finds the other simulator among several or alone; it never picks the dead one.
    window.reattach();
    QTRY_VERIFY(window.session()->isAttached() || window.bannerText().contains(QLatin1String("choose")));
    if (window.session()->isAttached()) {
        QCOMPARE(window.session()->socketPath(), m_sim.socket);
    }

    // A socket nobody serves: told at once, the pages stay grey.
    QSignalSpy refused(window.session(), &PanelSession::detached);
    window.attach(QDir(root.path()).filePath(QStringLiteral("nobody")));
    QTRY_VERIFY(!refused.isEmpty());
    const QString reason = refused.last().at(0).toString();
    QVERIFY(!reason.isEmpty());
    QVERIFY2(window.bannerText().contains(reason), qPrintable(window.bannerText()));
    QVERIFY(!window.tabs()->isEnabled());
    QVERIFY(!window.session()->isAttached());
}

void TestPanel::newInstanceIsAttached()
{
    QTemporaryDir firstRoot;
    Simulator first;
    QVERIFY(first.start(firstRoot.path()));
    PanelWindow window;
    window.setFollow(PanelWindow::Follow::Any);
    QSignalSpy attached(window.session(), &PanelSession::attached);
    window.attach(first.socket);
    QVERIFY(attached.wait(5000));

    // The application powers the unit off: the status bar says so.
    window.session()->run(QStringLiteral("call System powerOff"));
    QTRY_VERIFY(window.summaryText().startsWith(QLatin1String("powered off")));
    // What the user typed belongs to this application.
    window.powerPage()->currentField(1)->setText(QStringLiteral("0.7"));

    QSignalSpy detached(window.session(), &PanelSession::detached);
    first.kill();
    QVERIFY(detached.wait(5000));
    QTemporaryDir secondRoot;
    Simulator second;
    QVERIFY(second.start(secondRoot.path()));
    // Told by the socket folder, not found by polling: attached within moments of its start.
    QTRY_COMPARE_WITH_TIMEOUT(window.session()->socketPath(), second.socket, 3000);
    QTRY_VERIFY(window.tabs()->isEnabled());
    QCOMPARE(window.bannerText(), QString());
    QCOMPARE(window.powerPage()->currentField(1)->text(), QString());
    QTRY_VERIFY(window.summaryText().startsWith(QLatin1String("battery 1")));

    // Told not to follow, the panel offers the new instance and waits.
    window.setFollow(PanelWindow::Follow::None);
    second.kill();
    QTRY_VERIFY(!window.tabs()->isEnabled());
    QTemporaryDir thirdRoot;
    Simulator third;
    QVERIFY(third.start(thirdRoot.path()));
    QTRY_VERIFY(window.bannerText().contains(QStringLiteral("pid %1").arg(third.processId())));
    QVERIFY(!window.session()->isAttached());
}

void TestPanel::startedSimulatorEndsWithThePanel()
{
    qint64 pid = 0;
    {
        PanelWindow window;
        QSignalSpy attached(window.session(), &PanelSession::attached);
        window.connectBar()->launcher()->setProgram(QStringLiteral(VANTIX_SIM));
        window.connectBar()->startSimulator();
        QVERIFY2(attached.wait(15000), qPrintable(window.connectBar()->statusText()));
        const Client::Application application = window.session()->application();
        pid = application.pid;
        QCOMPARE(application.name, QStringLiteral("vantix-sim"));
        QCOMPARE(application.platformName, QStringLiteral("tolvex-plus"));
        QVERIFY(window.session()->socketPath() != m_sim.socket);
        QVERIFY(window.tabs()->isEnabled());
    }
    // Its console closed with the panel: the simulator has ended and left no socket behind.
    QTRY_VERIFY(!VantixControl::SocketDirectory::isAlive(pid));
    QVERIFY(VantixControl::SocketDirectory::isAlive(m_sim.processId()));
}

void TestPanel::screenshotsInARealWindow()
{
    const QString xvfbRun = QStandardPaths::findExecutable(QStringLiteral("xvfb-run"));
    if (xvfbRun.isEmpty()) {
        QSKIP("xvfb-run is not installed (scripts/install-deps.sh installs it): no real window to show");
    }
    // A state worth showing: a drained battery, a pulled cable, headphones in.
    QVERIFY(ask(QStringLiteral("setbatteryfuel,1,10")).ok);
    QVERIFY(ask(QStringLiteral("setwiredstate,0")).ok);
    if (!ask(QStringLiteral("get ID_AUDIO jackFlags")).text.contains(QLatin1String("JACK_HEADPHONE"))) {
        QVERIFY(ask(QStringLiteral("jack")).ok);
    }

    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.remove(QStringLiteral("QT_QPA_PLATFORM"));
    // In a sanitizer build, a real window brings X's and D-Bus's libraries, whose own leaks at exit and
    // strndup() of keymap names (not NUL-terminated within their bound) are theirs, not ours: this one
    // process is checked for memory errors only. The widget tests above check the panel for leaks.
    const QString sanitizer = environment.value(QStringLiteral("ASAN_OPTIONS"));
    if (!sanitizer.isEmpty()) {
        environment.insert(QStringLiteral("ASAN_OPTIONS"),
            QString(sanitizer)
                .replace(QLatin1String("strict_string_checks=1"), QLatin1String("strict_string_checks=0"))
                .replace(QLatin1String("detect_leaks=1"), QLatin1String("detect_leaks=0")));
    }
    // The README's two pictures: a roomy screen, and the smallest the panel is made for.
    const QList<QPair<QSize, QString>> shots{{QSize(1400, 1000), QStringLiteral("vantix-panel.png")},
        {QSize(800, 600), QStringLiteral("vantix-panel-800x600.png")}};
    for (const auto &shot : shots) {
        const QString size = QStringLiteral("%1x%2").arg(shot.first.width()).arg(shot.first.height());
        const QString file = QDir(QStringLiteral(SCREENSHOT_DIR)).filePath(shot.second);
        QFile::remove(file);
        QProcess panel;
        panel.setProcessEnvironment(environment);
        panel.start(xvfbRun,
            {QStringLiteral("-a"), QStringLiteral("-s"), QStringLiteral("-screen 0 %1x24").arg(size),
                QStringLiteral(VANTIX_PANEL), QStringLiteral("--socket"), m_sim.socket, QStringLiteral("--size"), size,
                QStringLiteral("--screenshot"), file});
        QVERIFY(panel.waitForFinished(30000));
        QVERIFY2(panel.exitCode() == 0, panel.readAllStandardError().constData());

        const QImage picture(file);
        QVERIFY(!picture.isNull());
        QCOMPARE(picture.size(), shot.first);
        // A blank or black picture has one or two colours; the panel has many.
        QSet<QRgb> colours;
        for (int y = 0; y < picture.height(); y += 4) {
            for (int x = 0; x < picture.width(); x += 4) {
                colours.insert(picture.pixel(x, y));
            }
        }
        QVERIFY2(colours.size() >= 16, qPrintable(QStringLiteral("%1 colours").arg(colours.size())));
    }
}

QTEST_MAIN(TestPanel)
#include "tst_panel.moc"

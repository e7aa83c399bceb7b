// vantix-panel against a real vantix-sim: the widgets change the
// application's values (checked through the protocol), follow changes made by
// vantix-ctl, refuse bad values with the application's error, grey out when
// the application goes, and show in a real window under Xvfb.

#include "connectbar.h"
#include "simlauncher.h"
#include "ledview.h"
#include "devicespage.h"
#include "logpage.h"
#include "methodrow.h"
#include "networkpage.h"
#include "panelsession.h"
#include "panelwindow.h"
#include "peripheralspage.h"
#include "powerpage.h"
#include "propertyeditor.h"
#include "resethardware.h"
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
#include <QSet>
#include <QSlider>
#include <QStandardPaths>
#include <QTabWidget>
#include <QTemporaryDir>
#include <QtTest>

#include <functional>
#include <memory>

using VantixControl::Client;
using VantixControl::Reply;

namespace {
// Waits inside helpers that return a value, where QTRY_* cannot be used.
bool waitFor(const std::function<bool()> &condition, int ms)
{
    QElapsedTimer clock;
    clock.start();
    while (!condition() && clock.elapsed() < ms) {
        QTest::qWait(10);
    }
    return condition();
}

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
            waitFor([&] { return done; }, 3000);
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
        if (button->toolTip() == line) {
            return button;
        }
    }
    return nullptr;
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
    void badValuesShowTheApplicationsError();
    void powerPageBatteries();
    void networkFieldsAndFlightMode();
    void genericEditorsFromTheSchema();
    void hotPluggedDevicesAppear();
    void scenarioShowsPassOrFail();
    void resetHardwareShowsItsOutcome();
    void lostApplicationGreysOut();
    void startedSimulatorEndsWithThePanel();
    void screenshotInARealWindow();

private:
    /// One console line run in the application by a client of the test's own.
    Reply ask(const QString &line);
    /// vantix-ctl run as a user would, against the test's simulator.
    int ctl(const QStringList &words);

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
    waitFor([&] { return done; }, 5000);
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
    QVERIFY(m_root.isValid());
    QVERIFY(m_sim.start(m_root.path()));
    QSignalSpy probeUp(&m_probe, &Client::connected);
    m_probe.connectToServer(m_sim.socket);
    QVERIFY(probeUp.wait(5000));

    m_window.reset(new PanelWindow);
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

    // The wired state by name, as the list offers it.
    QComboBox *wired = m_window->networkPage()->wiredState();
    QCOMPARE(wired->count(), 13);
    const int unavailable = wired->findText(QStringLiteral("NETWORK_STATE_UNAVAILABLE"));
    QVERIFY(unavailable >= 0);
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

    // OTG port A: plugged from its button, the page shows it, unplugged again.
    StoragePage *storage = m_window->storagePage();
    QPushButton *plug = buttonFor(storage, QStringLiteral("addotga"));
    QPushButton *unplug = buttonFor(storage, QStringLiteral("rmotga"));
    QVERIFY(plug && unplug);
    plug->click();
    QTRY_VERIFY(ask(QStringLiteral("get ID_USB_OTG_A status")).ok);
    QTRY_VERIFY(storage->stateText(QStringLiteral("ID_USB_OTG_A")).startsWith(QLatin1String("plugged")));
    unplug->click();
    QTRY_COMPARE(ask(QStringLiteral("get ID_USB_OTG_A status")).error, VantixControl::ErrorClass::UnknownTarget);
    QTRY_COMPARE(storage->stateText(QStringLiteral("ID_USB_OTG_A")), QStringLiteral("unplugged"));
    QCOMPARE(storage->errorText(), QString());

    // A shortcut key from its button: keypad 1 is the low-power preset.
    QPushButton *low = m_window->findChild<QPushButton *>(QStringLiteral("keypad+1"));
    QVERIFY(low);
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

    QCOMPARE(ctl({QStringLiteral("setwiredstate,6")}), 0);
    QTRY_COMPARE(m_window->networkPage()->wiredState()->currentText(), QStringLiteral("NETWORK_STATE_DISCONNECTED"));
    QCOMPARE(ctl({QStringLiteral("setwifistate,12")}), 0);
    QTRY_COMPARE(m_window->networkPage()->wifiState()->currentText(), QStringLiteral("NETWORK_STATE_ACTIVATED"));

    QCheckBox *mic = m_window->peripheralsPage()->microphone();
    const bool micBefore = mic->isChecked();
    QCOMPARE(ctl({QStringLiteral("mic")}), 0);
    QTRY_COMPARE(mic->isChecked(), !micBefore);

    StoragePage *storage = m_window->storagePage();
    QCOMPARE(ctl({QStringLiteral("addotgb")}), 0);
    QTRY_VERIFY(storage->stateText(QStringLiteral("ID_USB_OTG_B")).startsWith(QLatin1String("plugged")));
    QCOMPARE(ctl({QStringLiteral("rmotgb")}), 0);
    QTRY_COMPARE(storage->stateText(QStringLiteral("ID_USB_OTG_B")), QStringLiteral("unplugged"));

    // A LED set from outside is drawn in its colour, flashing at its times.
    QCOMPARE(ctl({QStringLiteral("call"), QStringLiteral("ID_LED_POWER"), QStringLiteral("setFlash"),
                 QStringLiteral("red"), QStringLiteral("100"), QStringLiteral("100")}),
        0);
    LedView *led = m_window->peripheralsPage()->led(QStringLiteral("ID_LED_POWER"));
    QVERIFY(led);
    QTRY_COMPARE(led->colour(), QColor(Qt::red));
    const bool lit = led->isLit();
    QTRY_COMPARE(led->isLit(), !lit);

    // The log page saw the events as they came.
    QTRY_VERIFY(m_window->logPage()->log()->toPlainText().contains(QLatin1String("ID_USB_OTG_B")));
}

void TestPanel::badValuesShowTheApplicationsError()
{
    PropertyEditor editor(m_window->session(), QStringLiteral("ID_TEMP_CPU"), QStringLiteral("threshold"));
    QVERIFY(editor.lineEdit());
    editor.submit(QStringLiteral("warm"));
    QTRY_VERIFY(!editor.errorText().isEmpty());
    QVERIFY2(editor.errorText().contains(QLatin1String("threshold")), qPrintable(editor.errorText()));
    // The field goes back to what the application holds.
    const QString held = ask(QStringLiteral("get ID_TEMP_CPU threshold")).text;
    QTRY_COMPARE(editor.lineEdit()->text(), held);

    editor.submit(QStringLiteral("55.5"));
    QTRY_COMPARE(editor.errorText(), QString());
    QTRY_COMPARE(ask(QStringLiteral("get ID_TEMP_CPU threshold")).value.toDouble(), 55.5);

    // A mistyped console line is refused on the page; the application goes on.
    LogPage *log = m_window->logPage();
    log->commandLine()->setText(QStringLiteral("setbatteryfuel"));
    QTest::keyClick(log->commandLine(), Qt::Key_Return);
    QTRY_VERIFY(log->log()->toPlainText().contains(QLatin1String("KO: ")));
    QVERIFY(ask(QStringLiteral("get ID_BATTERY_1ST fuelGauge")).ok);
}

void TestPanel::powerPageBatteries()
{
    PowerPage *power = m_window->powerPage();
    QSlider *second = power->fuelSlider(2);
    QVERIFY(!second->isEnabled());
    buttonFor(power, QStringLiteral("addbattery,2"))->click();
    QTRY_VERIFY(second->isEnabled());
    QVERIFY(ask(QStringLiteral("get ID_BATTERY_2ND status")).ok);
    second->setValue(40);
    QTRY_COMPARE(ask(QStringLiteral("get ID_BATTERY_2ND fuelGauge")).value.toInt(), 40);
    // The first battery kept its own value.
    QVERIFY(ask(QStringLiteral("get ID_BATTERY_1ST fuelGauge")).value.toInt() != 40);

    QPushButton *charging = power->chargingButton(1);
    const bool wasCharging = charging->isChecked();
    QCOMPARE(wasCharging, ask(QStringLiteral("get ID_BATTERY_1ST status")).text.contains(QLatin1String("F_CHARGE")));
    charging->click();
    QTRY_COMPARE(
        ask(QStringLiteral("get ID_BATTERY_1ST status")).text.contains(QLatin1String("F_CHARGE")), !wasCharging);
    QTRY_COMPARE(charging->isChecked(), !wasCharging);

    buttonFor(power, QStringLiteral("rmbattery,2"))->click();
    QTRY_VERIFY(!second->isEnabled());
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

    // Flight mode shows its transition while it lasts, then the state it reached.
    buttonFor(network, QStringLiteral("flightmode on"))->click();
    QTRY_VERIFY(network->flightText().contains(QLatin1String("transition")));
    QTRY_VERIFY_WITH_TIMEOUT(!network->flightText().contains(QLatin1String("transition")), 6000);
    QCOMPARE(network->flightText(), ask(QStringLiteral("get System flightModeStatus")).text);
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
    // Read-only properties get no editor.
    auto *steps = devices->findChild<PropertyEditor *>(QStringLiteral("steps"));
    QVERIFY(steps && !steps->lineEdit() && !steps->checkBox() && !steps->comboBox());

    brightness->lineEdit()->setText(QStringLiteral("40"));
    QTest::keyClick(brightness->lineEdit(), Qt::Key_Return);
    QTRY_COMPARE(ask(QStringLiteral("get ID_DISPLAY brightnes")).value.toInt(), 40);
    QCOMPARE(brightness->errorText(), QString());
    brightness->submit(QStringLiteral("bright"));
    QTRY_VERIFY(!brightness->errorText().isEmpty());
    QCOMPARE(ask(QStringLiteral("get ID_DISPLAY brightnes")).value.toInt(), 40);

    // A method from its row, with its answer beside it.
    devices->select(QStringLiteral("ID_LED_POWER"));
    MethodRow *on = nullptr;
    for (MethodRow *row : devices->findChildren<MethodRow *>()) {
        if (row->button()->text() == QLatin1String("on")) {
            on = row;
        }
    }
    QVERIFY(on && on->arguments());
    on->arguments()->setText(QStringLiteral("green"));
    on->call();
    QTRY_COMPARE(ask(QStringLiteral("get ID_LED_POWER color")).value.toString(), QStringLiteral("green"));
    QTRY_COMPARE(on->answerText(), QString());
    on->arguments()->setText(QStringLiteral("plaid"));
    on->call();
    QTRY_VERIFY(!on->answerText().isEmpty());
    QVERIFY2(on->answerText().contains(QLatin1String("plaid")), qPrintable(on->answerText()));
    QCOMPARE(ask(QStringLiteral("get ID_LED_POWER color")).value.toString(), QStringLiteral("green"));
}

void TestPanel::hotPluggedDevicesAppear()
{
    WifiDirectPage *direct = m_window->wifiDirectPage();
    QVERIFY(ask(QStringLiteral("plug p2p")).ok);
    QTRY_VERIFY(direct->findChild<MethodRow *>() != nullptr);
    m_window->devicesPage()->select(QStringLiteral("ID_NETWORK_WIFI_P2P"));
    QCOMPARE(m_window->devicesPage()->selected(), QStringLiteral("ID_NETWORK_WIFI_P2P"));

    // Find peers from the page: the peers the application then knows show with their state.
    MethodRow *find = nullptr;
    for (MethodRow *row : direct->findChildren<MethodRow *>()) {
        if (row->button()->text() == QLatin1String("findPeers")) {
            find = row;
        }
    }
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

void TestPanel::scenarioShowsPassOrFail()
{
    QTemporaryDir dir;
    const QString passing = dir.filePath(QStringLiteral("pass.vsim"));
    const QString failing = dir.filePath(QStringLiteral("fail.vsim"));
    QFile pass(passing);
    QVERIFY(pass.open(QIODevice::WriteOnly));
    pass.write("# drain a little\nsetbatteryfuel,1,30\nexpect battery1 fuelGauge = 30\n");
    pass.close();
    QFile fail(failing);
    QVERIFY(fail.open(QIODevice::WriteOnly));
    fail.write("setbatteryfuel,1,31\nexpect battery1 fuelGauge = 99\nsetbatteryfuel,1,77\n");
    fail.close();

    LogPage *log = m_window->logPage();
    log->runScenario(passing);
    QTRY_COMPARE(log->scenarioResult()->text(), QStringLiteral("pass.vsim: PASS"));
    log->runScenario(failing);
    QTRY_VERIFY(log->scenarioResult()->text().startsWith(QLatin1String("fail.vsim: FAIL")));
    // The failure names the line, and the script stopped there.
    QVERIFY2(log->scenarioResult()->text().contains(QLatin1String(":2:")), qPrintable(log->scenarioResult()->text()));
    QCOMPARE(ask(QStringLiteral("get ID_BATTERY_1ST fuelGauge")).value.toInt(), 31);
    log->runScenario(dir.filePath(QStringLiteral("missing.vsim")));
    QVERIFY(log->scenarioResult()->text().startsWith(QLatin1String("cannot read")));
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
        waitFor([&] { return done; }, 5000);
        return ok;
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

void TestPanel::screenshotInARealWindow()
{
    const QString xvfbRun = QStandardPaths::findExecutable(QStringLiteral("xvfb-run"));
    if (xvfbRun.isEmpty()) {
        QSKIP("xvfb-run is not installed (scripts/install-deps.sh installs it): no real window to show");
    }
    const QString file = QDir(QStringLiteral(SCREENSHOT_DIR)).filePath(QStringLiteral("vantix-panel.png"));
    QFile::remove(file);
    // A state worth showing: a drained battery, a pulled cable, headphones in.
    QVERIFY(ask(QStringLiteral("setbatteryfuel,1,10")).ok);
    QVERIFY(ask(QStringLiteral("setwiredstate,0")).ok);

    QProcess panel;
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
    panel.setProcessEnvironment(environment);
    panel.start(xvfbRun,
        {QStringLiteral("-a"), QStringLiteral("-s"), QStringLiteral("-screen 0 1280x800x24"),
            QStringLiteral(VANTIX_PANEL), QStringLiteral("--socket"), m_sim.socket, QStringLiteral("--screenshot"),
            file});
    QVERIFY(panel.waitForFinished(30000));
    QVERIFY2(panel.exitCode() == 0, panel.readAllStandardError().constData());

    const QImage picture(file);
    QVERIFY(!picture.isNull());
    QVERIFY(picture.width() >= 800 && picture.height() >= 500);
    // A blank or black picture has one or two colours; the panel has many.
    QSet<QRgb> colours;
    for (int y = 0; y < picture.height(); y += 4) {
        for (int x = 0; x < picture.width(); x += 4) {
            colours.insert(picture.pixel(x, y));
        }
    }
    QVERIFY2(colours.size() >= 16, qPrintable(QStringLiteral("%1 colours").arg(colours.size())));
}

QTEST_MAIN(TestPanel)
#include "tst_panel.moc"

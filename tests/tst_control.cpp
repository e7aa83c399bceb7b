// The control channel as users meet it: a real application (examples/app)
// driven over its socket by a raw client and by vantix-ctl. The greeting,
// answers with ids, events, bad lines, two clients, a client gone in the
// middle of a ramp, a client that stops reading, the scenarios, the
// environment switches, folder checks and other users.

#include "programrun.h"
#include "testfiles.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QLocalServer>
#include <QLocalSocket>
#include <QProcess>
#include <QTemporaryDir>
#include <QtTest>

#include <memory>
#include <poll.h>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

namespace {
using Run = ProgramRun;

QString scenario(const char *name)
{
    return QFileInfo(__FILE__).dir().filePath(QString("../examples/scenarios/%1.vsim").arg(name));
}

// A client that speaks the protocol by hand, line by line.
class RawClient
{
public:
    /// Connects and reads the greeting: false without one.
    bool open(const QString &path)
    {
        m_socket.connectToServer(path);
        greeting = m_socket.waitForConnected(3000) ? next().value("vantix").toObject() : QJsonObject();
        return !greeting.isEmpty();
    }
    void send(const QByteArray &line)
    {
        m_socket.write(line + '\n');
        m_socket.flush();
    }
    void request(const QJsonObject &request) { send(QJsonDocument(request).toJson(QJsonDocument::Compact)); }
    /// The next line, or an empty object after @p ms.
    QJsonObject next(int ms = 5000)
    {
        // The event loop runs meanwhile: the applications' output pipes must keep draining, or a
        // chatty application blocks on its stdout and stops answering.
        const bool settled = QTest::qWaitFor(
            [this] { return m_socket.canReadLine() || m_socket.state() != QLocalSocket::ConnectedState; }, ms);
        if (!settled || !m_socket.canReadLine()) {
            return QJsonObject();
        }
        return QJsonDocument::fromJson(m_socket.readLine()).object();
    }
    /// The answer to request @p id, skipping event lines (collected).
    QJsonObject answer(const QJsonValue &id, int ms = 5000)
    {
        for (QJsonObject line = next(ms); !line.isEmpty(); line = next(ms)) {
            if (line.contains("event")) {
                events.append(line);
            } else if (line.value("id") == id) {
                return line;
            }
        }
        return QJsonObject();
    }
    QJsonObject ask(int id, const QString &line)
    {
        request({{"id", id}, {"line", line}});
        return answer(id);
    }
    void close() { m_socket.abort(); }
    QLocalSocket &socket() { return m_socket; }

    QJsonObject greeting;
    QList<QJsonObject> events;

private:
    QLocalSocket m_socket;
};

// A client on a bare descriptor, for what QLocalSocket cannot do: half-close,
// exact write boundaries, the bytes the server has not read yet.
class FdClient
{
public:
    ~FdClient() { close(); }
    /// Connects and, with @p greeted, reads the greeting: false without one.
    bool open(const QString &path, bool greeted = true)
    {
        m_fd = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
        sockaddr_un address = {};
        address.sun_family = AF_UNIX;
        qstrncpy(address.sun_path, QFile::encodeName(path).constData(), sizeof address.sun_path);
        if (::connect(m_fd, reinterpret_cast<sockaddr *>(&address), sizeof address) != 0) {
            return false;
        }
        return !greeted || line().startsWith("{\"vantix\"");
    }
    bool write(const QByteArray &bytes)
    {
        for (qint64 done = 0; done < bytes.size();) {
            const ssize_t n = ::send(m_fd, bytes.constData() + done, size_t(bytes.size() - done), MSG_NOSIGNAL);
            if (n <= 0) {
                return false;
            }
            done += n;
        }
        return true;
    }
    /// Whether the server has read everything sent so far.
    bool allRead() const
    {
        int queued = 0;
        return ::ioctl(m_fd, TIOCOUTQ, &queued) == 0 && queued == 0;
    }
    /// Whether the server has closed its end (what it wrote may still wait here).
    bool peerClosed() const
    {
        pollfd p = {m_fd, POLLRDHUP, 0};
        return ::poll(&p, 1, 0) == 1 && (p.revents & (POLLRDHUP | POLLHUP));
    }
    void shutdownWrite() { ::shutdown(m_fd, SHUT_WR); }
    /// The next line without its newline; empty at the end of the input or after @p ms.
    QByteArray line(int ms = 5000)
    {
        int newline = -1;
        (void)QTest::qWaitFor(
            [&] {
                while ((newline = m_buffer.indexOf('\n')) < 0 && !m_atEnd && readable()) {
                    fill();
                }
                return newline >= 0 || m_atEnd;
            },
            ms);
        if (newline < 0) {
            return QByteArray();
        }
        const QByteArray result = m_buffer.left(newline);
        m_buffer.remove(0, newline + 1);
        return result;
    }
    /// Every line up to the end of the input, waiting at most @p ms for it.
    QList<QByteArray> linesToEnd(int ms = 10000)
    {
        QList<QByteArray> lines;
        QElapsedTimer clock;
        clock.start();
        while (clock.elapsed() < ms) {
            const QByteArray next = line(int(ms - clock.elapsed()));
            if (next.isEmpty() && m_atEnd && m_buffer.isEmpty()) {
                break;
            }
            lines.append(next);
        }
        return lines;
    }
    bool atEnd() const { return m_atEnd && m_buffer.isEmpty(); }
    int descriptor() const { return m_fd; }
    void close()
    {
        if (m_fd >= 0) {
            ::close(m_fd);
            m_fd = -1;
        }
    }

private:
    bool readable() const
    {
        pollfd p = {m_fd, POLLIN, 0};
        return ::poll(&p, 1, 0) == 1;
    }
    void fill()
    {
        char chunk[65536];
        const ssize_t n = ::recv(m_fd, chunk, sizeof chunk, 0);
        if (n <= 0) {
            m_atEnd = true;
        } else {
            m_buffer.append(chunk, int(n));
        }
    }

    int m_fd = -1;
    QByteArray m_buffer;
    bool m_atEnd = false;
};

// A request for @p line padded with blanks inside the object to exactly @p size bytes.
QByteArray paddedRequest(int id, const QByteArray &line, int size)
{
    const QByteArray head = "{\"id\":" + QByteArray::number(id) + ",";
    const QByteArray tail = "\"line\":\"" + line + "\"}";
    return head + QByteArray(size - head.size() - tail.size(), ' ') + tail;
}

// The value of "ms" in a protocol line.
qint64 msOf(const QByteArray &line)
{
    return qint64(QJsonDocument::fromJson(line).object().value("ms").toDouble());
}
} // namespace

class TestControl : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        m_runtime.reset(new QTemporaryDir);
        m_root.reset(new QTemporaryDir);
        QVERIFY(m_runtime->isValid() && m_root->isValid());
        QFile::setPermissions(m_runtime->path(), QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
        m_output.clear();
        m_errors.clear();
    }

    void cleanup()
    {
        for (QProcess *app : qAsConst(m_apps)) {
            app->kill();
            app->waitForFinished();
        }
        qDeleteAll(m_apps);
        m_apps.clear();
    }

    void greetingAnswersAndEvents()
    {
        const QString socket = startApp();
        QVERIFY(!socket.isEmpty());
        RawClient client;
        QVERIFY(client.open(socket));
        const QJsonObject &hello = client.greeting;
        QCOMPARE(hello.value("protocol").toInt(), 1);
        QCOMPARE(qint64(hello.value("pid").toDouble()), m_apps.last()->processId());
        QCOMPARE(hello.value("application").toString(), QString("example-app"));
        QCOMPARE(hello.value("platform").toString(), QString("PT_TOLVEX"));
        QVERIFY(!hello.value("version").toString().isEmpty());
        QCOMPARE(hello.value("capabilities").toArray(), QJsonArray({"line", "describe", "events", "log", "cancel"}));
        // Nothing else comes before the client speaks, though the application is busy starting.
        QVERIFY(client.next(300).isEmpty());

        // Ids come back as they were sent; values are typed; errors have a class.
        client.request({{"id", "a"}, {"line", "get battery1 fuelGauge"}});
        client.request({{"id", 2}, {"line", "get battery2 fuelGauge"}});
        const QJsonObject fuel = client.answer("a");
        QCOMPARE(fuel.value("ok").toBool(), true);
        QCOMPARE(fuel.value("type").toString(), QString("int"));
        QCOMPARE(fuel.value("value").toInt(), 100);
        QCOMPARE(fuel.value("text").toString(), QString("OK 100"));
        const QJsonObject missing = client.answer(2);
        QCOMPARE(missing.value("ok").toBool(), false);
        QCOMPARE(missing.value("error").toObject().value("class").toString(), QString("UnknownTarget"));
        QCOMPARE(missing.value("text").toString(), QString("KO: ID_BATTERY_2ND is not present"));

        // Events once asked for: arguments by name, flags by name, stamped.
        QCOMPARE(client.ask(3, "setbatteryfuel,1,40").value("ok").toBool(), true);
        QVERIFY(client.events.isEmpty());
        client.request({{"id", 4}, {"events", true}});
        QCOMPARE(client.answer(4).value("ok").toBool(), true);
        QCOMPARE(client.ask(5, "setbatteryfuel,1,30").value("ok").toBool(), true);
        QCOMPARE(client.events.size(), 1);
        const QJsonObject event = client.events.first();
        QCOMPARE(event.value("event").toString(), QString("fuelGaugeChanged"));
        QCOMPARE(event.value("object").toString(), QString("ID_BATTERY_1ST"));
        QCOMPARE(event.value("args").toObject().value("newValue").toInt(), 30);
        QVERIFY(event.value("ms").toDouble() > 0);
        client.events.clear();
        QCOMPARE(client.ask(6, "key F9").value("text").toString(), QString("OK consumed"));
        QCOMPARE(client.events.first().value("args").toObject().value("newStatus").toString(),
            QString("F_ENABLE|F_POWER_CONNECTED"));
        // The application saw what the client did, in its own code.
        QTRY_VERIFY(m_output.contains("example-app: battery at 30 %"));

        const QJsonObject schema = [&] {
            client.request({{"id", 7}, {"describe", true}});
            return client.answer(7).value("value").toObject();
        }();
        QCOMPARE(schema.value("platform").toString(), QString("PT_TOLVEX"));
        QVERIFY(schema.value("targets").toArray().size() >= 10);
    }

    void badRequests_data()
    {
        QTest::addColumn<QByteArray>("line");
        QTest::addColumn<QString>("message");
        QTest::newRow("too long") << QByteArray(70000, 'x') << "a request line may hold at most 65536 bytes";
        QTest::newRow("not UTF-8") << QByteArray("{\"id\":1,\"line\":\"get \xff\xfe\"}")
                                   << "a request line must be UTF-8";
        QTest::newRow("not JSON") << QByteArray("{\"id\":1,") << "not JSON: ";
        QTest::newRow("not an object") << QByteArray("[1,2]") << "a request is a JSON object";
        QTest::newRow("no id") << QByteArray("{\"line\":\"setbatteryfuel,1,0\"}") << "a request needs an id";
        QTest::newRow("no kind") << QByteArray("{\"id\":1}") << "a request carries exactly one of line, describe";
        QTest::newRow("two kinds") << QByteArray("{\"id\":1,\"line\":\"setbatteryfuel,1,0\",\"describe\":true}")
                                   << "a request carries exactly one of";
        QTest::newRow("line not text") << QByteArray("{\"id\":1,\"line\":7}") << "line is the text of one";
        // Qt's reader would keep the replaced array for good: refused before it reads the line.
        QTest::newRow("repeated key")
            << QByteArray("{\"id\":1,\"cwd\":{\"a\":[1],\"\\u0061\":2},\"line\":\"get battery1 fuelGauge\"}")
            << "an object of the request names \"a\" twice";
        QTest::newRow("events not a bool")
            << QByteArray("{\"id\":1,\"events\":\"yes\"}") << "events takes true or false";
    }

    void badRequests()
    {
        QFETCH(QByteArray, line);
        QFETCH(QString, message);
        const QString socket = startApp();
        RawClient client;
        QVERIFY(client.open(socket));
        client.send(line);
        const QJsonObject answer = client.next();
        QCOMPARE(answer.value("ok").toBool(), false);
        QCOMPARE(answer.value("error").toObject().value("class").toString(), QString("BadRequest"));
        QVERIFY2(answer.value("error").toObject().value("message").toString().startsWith(message),
            qPrintable(answer.value("error").toObject().value("message").toString()));
        // The connection stays usable and nothing in the application changed.
        QCOMPARE(client.ask(9, "get battery1 fuelGauge").value("text").toString(), QString("OK 100"));
    }

    void clientsAreIndependent()
    {
        const QString socket = startApp();
        RawClient slow;
        RawClient quick;
        QVERIFY(slow.open(socket) && quick.open(socket));
        // A wait of one client holds up nothing: the other is answered at once.
        slow.request({{"id", 1}, {"line", "wait 3000"}});
        QElapsedTimer clock;
        clock.start();
        QCOMPARE(quick.ask(1, "get battery1 fuelGauge").value("text").toString(), QString("OK 100"));
        QVERIFY(clock.elapsed() < 1000);
        // A ramp stops where it is when its client goes.
        slow.close();
        RawClient ramper;
        QVERIFY(ramper.open(socket));
        ramper.request({{"id", 1}, {"line", "ramp battery1 setbatteryfuel,1 100 0 4000"}});
        QTRY_VERIFY(quick.ask(2, "get battery1 fuelGauge").value("value").toInt() < 95);
        ramper.close();
        QTRY_COMPARE(m_apps.last()->state(), QProcess::Running);
        const int stopped = quick.ask(3, "get battery1 fuelGauge").value("value").toInt();
        QTest::qWait(400);
        QCOMPARE(quick.ask(4, "get battery1 fuelGauge").value("value").toInt(), stopped);
        QVERIFY(stopped > 0);
        // Cancelling answers what was running.
        quick.request({{"id", 5}, {"line", "wait 5000"}});
        quick.request({{"id", 6}, {"cancel", true}});
        QCOMPARE(quick.next().value("text").toString(), QString("KO: cancelled"));
        QCOMPARE(quick.next().value("id").toInt(), 6);
    }

    void aClientThatDoesNotReadIsDropped()
    {
        const QString socket = startApp();
        RawClient deaf;
        RawClient driver;
        QVERIFY(deaf.open(socket) && driver.open(socket));
        // Qt reads no further than this on its own, so the rest stays with the server.
        deaf.socket().setReadBufferSize(16 * 1024);
        deaf.request({{"id", 0}, {"events", true}});
        // Each schema is some 40 KiB: far beyond what the client may owe in all.
        QByteArray lines;
        for (int i = 1; i <= 150; ++i) {
            lines += "{\"id\":" + QByteArray::number(i) + ",\"describe\":true}\n";
        }
        deaf.socket().write(lines);
        QTRY_VERIFY_WITH_TIMEOUT(m_errors.contains("more than 4194304 bytes waited for this client"), 20000);
        // The application goes on answering others and changing its devices.
        QCOMPARE(driver.ask(1, "setbatteryfuel,1,42").value("text").toString(), QString("OK"));
        QCOMPARE(driver.ask(2, "get battery1 fuelGauge").value("text").toString(), QString("OK 42"));
        // What was queued still arrives, then the last word, then the end of the line.
        QByteArray received;
        deaf.socket().setReadBufferSize(0);
        QTRY_VERIFY_WITH_TIMEOUT(
            (received += deaf.socket().readAll(), deaf.socket().state() == QLocalSocket::UnconnectedState), 10000);
        received += deaf.socket().readAll();
        const QList<QByteArray> all = received.trimmed().split('\n');
        QVERIFY(all.size() < 150);
        QVERIFY(received.size() > 4 * 1024 * 1024);
        QVERIFY2(all.last().contains("it is dropped"), all.last().left(200).constData());
        QCOMPARE(QJsonDocument::fromJson(all.last()).object().value("error").toObject().value("class").toString(),
            QString("Failed"));
    }

    void aClientIsGreetedOnceTheApplicationIsReady()
    {
        // Connected the moment the socket is there, long before the application's apiReady.
        const QString socket = startApp({}, {}, false);
        QVERIFY(QTest::qWaitFor([&socket] { return QFileInfo::exists(socket); }, 10000));
        RawClient early;
        QVERIFY(early.open(socket));
        // By the greeting the application watches its battery, so it reacts to the first change.
        QCOMPARE(early.ask(1, "setbatteryfuel,1,10").value("text").toString(), QString("OK"));
        QTRY_VERIFY(m_output.contains("example-app: battery critical"));
        QVERIFY(m_output.indexOf("example-app: ready") < m_output.indexOf("example-app: battery at 10 %"));
    }

    void anotherProtocolVersionIsRefused()
    {
        // A server from a later release, as far as its greeting goes.
        QLocalServer future;
        const QString path = QDir(m_root->path()).filePath("future.sock");
        QVERIFY(future.listen(path));
        connect(&future, &QLocalServer::newConnection, &future, [&future] {
            QLocalSocket *peer = future.nextPendingConnection();
            peer->write("{\"vantix\":{\"protocol\":2,\"pid\":1,\"application\":\"future\"}}\n");
        });
        const Run run = ctl({"--socket", path, "get", "battery1", "fuelGauge"});
        QCOMPARE(run.exitCode, 2);
        QVERIFY2(run.err.contains("the application speaks control protocol 2, this client 1"), qPrintable(run.err));
        QVERIFY(run.out.isEmpty());
    }

    void scenariosRunAgainstTheApplication_data()
    {
        QTest::addColumn<QString>("file");
        QTest::addColumn<QString>("platform");
        QTest::newRow("low battery") << scenario("low-battery-shutdown") << "tolvex";
        QTest::newRow("network") << scenario("network-loss-recovery") << "tolvex-plus";
        QTest::newRow("usb stick") << scenario("usb-stick-hotplug") << "tolvex-plus";
        QTest::newRow("battery discharge") << scenario("battery-discharge") << "tolvex";
        QTest::newRow("wifi fade") << scenario("wifi-fade") << "tolvex";
    }

    void scenariosRunAgainstTheApplication()
    {
        QFETCH(QString, file);
        QFETCH(QString, platform);
        const QString socket = startApp({"--platform", platform});
        const Run run = ctl({"--socket", socket, "--script", file});
        QVERIFY2(run.exitCode == 0, qPrintable(run.out + run.err));
        QVERIFY(run.out.contains("\n> expect "));
        QVERIFY(!run.out.contains("KO:"));
        if (file.contains("low-battery")) {
            QVERIFY(m_output.contains("example-app: battery empty, powering off"));
        }
        if (file.contains("battery-discharge")) {
            // The application followed the curve and shut down at its own threshold, before the story's call.
            const int knee = m_output.indexOf("example-app: battery at 12 %");
            const int critical = m_output.indexOf("example-app: battery critical, saving work");
            const int empty = m_output.indexOf("example-app: battery empty, powering off");
            QVERIFY2(knee > 0 && knee < critical && critical < empty, qPrintable(m_output));
            QCOMPARE(m_output.count("example-app: battery empty"), 1);
        }
    }

    void ctlCommandsAndExitCodes()
    {
        // No application at all.
        Run none = ctl({"get", "battery1", "fuelGauge"});
        QCOMPARE(none.exitCode, 2);
        QVERIFY(none.err.contains("no application that uses Vantix is running"));
        QCOMPARE(ctl({"list"}).out, QString());

        const QString first = startApp();
        // The only one needs no selector; a KO exits with 1, a script failure names file and line.
        QCOMPARE(ctl({"get", "battery1", "fuelGauge"}).out, QString("OK 100\n"));
        const Run ko = ctl({"set", "wifi", "wifiCountry", "DE"});
        QCOMPARE(ko.exitCode, 1);
        QVERIFY(ko.out.startsWith("KO: ID_NETWORK_WIFI.wifiCountry: its setter has no effect"));
        QCOMPARE(ctl({"setbatteryfuel,1,10"}).exitCode, 0);
        QTRY_VERIFY(m_output.contains("example-app: battery critical"));
        const QString script = QDir(m_root->path()).filePath("failing.vsim");
        QVERIFY(writeFile(script, "get battery1 id\nexpect battery1 fuelGauge 99\nget battery1 id\n"));
        const Run failing = ctl({"--quiet", "--script", script});
        QCOMPARE(failing.exitCode, 1);
        QCOMPARE(failing.err,
            QString("vantix-ctl: %1:2: expect battery1 fuelGauge 99: ID_BATTERY_1ST.fuelGauge is 10, expected 99\n")
                .arg(script));
        // A value a shell would split is sent as one word.
        QCOMPARE(ctl({"set", "timesettings", "timeZone", "Europe/Two Words"}).exitCode, 0);
        QCOMPARE(ctl({"--json", "get", "timesettings", "timeZone"}).out,
            QString("{\"id\":1,\"ok\":true,\"text\":\"OK \\\"Europe/Two Words\\\"\",\"type\":\"QString\","
                    "\"value\":\"Europe/Two Words\"}\n"));

        // With two running, a selector is needed; list shows both.
        const QString second = startApp({"--platform", "quarnel"});
        const Run ambiguous = ctl({"get", "battery1", "fuelGauge"});
        QCOMPARE(ambiguous.exitCode, 2);
        QVERIFY(ambiguous.err.contains("2 applications match; choose one with --pid or --app"));
        const QStringList listed = ctl({"list"}).out.split('\n', Qt::SkipEmptyParts);
        QCOMPARE(listed.size(), 3);
        QVERIFY(listed.at(1).contains(QString::number(m_apps.at(0)->processId())));
        QVERIFY(listed.at(1).contains("PT_TOLVEX") && listed.at(1).endsWith(first));
        QVERIFY(listed.at(2).contains("PT_QUARNEL") && listed.at(2).endsWith(second));
        const Run byPid = ctl({"--pid", QString::number(m_apps.at(1)->processId()), "get", "system", "platform"});
        QCOMPARE(byPid.out, QString("OK PT_QUARNEL\n"));
        QCOMPARE(ctl({"--pid", "1", "get", "system", "platform"}).exitCode, 2);

        // A socket left by a process that is gone is cleared away by list.
        QProcess gone;
        gone.start("sh", {"-c", "echo $$"});
        QVERIFY(gone.waitForFinished());
        const qint64 ghost = gone.readAllStandardOutput().trimmed().toLongLong();
        QVERIFY(ghost > 0);
        const QString stale = QDir(socketFolder()).filePath(QString("ghost-%1").arg(ghost));
        QVERIFY(bindSocket(stale));
        QVERIFY(QFileInfo::exists(stale));
        QCOMPARE(ctl({"list"}).out.split('\n', Qt::SkipEmptyParts).size(), 3);
        QVERIFY(!QFileInfo::exists(stale));
    }

    void recordingReplays()
    {
        const QString socket = startApp();
        const QString story = QDir(m_root->path()).filePath("story.vsim");
        const QByteArray typed = "record story.vsim\nsetbatteryfuel,1,50\nwait 100\nkey F9\nrecord stop\nquit\n";
        const Run recording = ctl({"--socket", socket}, typed, m_root->path());
        QCOMPARE(recording.exitCode, 0);
        QVERIFY2(recording.out.contains("OK recorded to " + story), qPrintable(recording.out));
        // A fresh application replays it to the same state.
        const QString fresh = startApp();
        const Run replay = ctl({"--socket", fresh, "--script", story});
        QVERIFY2(replay.exitCode == 0, qPrintable(replay.out + replay.err));
        QCOMPARE(ctl({"--socket", fresh, "get", "battery1", "fuelGauge"}).out, QString("OK 50\n"));
        QCOMPARE(ctl({"--socket", fresh, "get", "power", "status"}).out, QString("OK F_ENABLE|F_POWER_CONNECTED\n"));
    }

    void environmentAndFolder_data()
    {
        QTest::addColumn<QString>("control");
        QTest::addColumn<QString>("folderMode"); // "", "0755", "link"
        QTest::addColumn<QString>("warning");
        QTest::addColumn<bool>("serving");
        QTest::newRow("default") << ""
                                 << ""
                                 << "" << true;
        QTest::newRow("off") << "off"
                             << ""
                             << "" << false;
        QTest::newRow("explicit path") << "PATH"
                                       << ""
                                       << "" << true;
        QTest::newRow("relative path") << "relative/sock"
                                       << ""
                                       << "Control server off: VANTIX_CONTROL must be \"off\" or an absolute path"
                                       << false;
        QTest::newRow("path too long") << "LONG"
                                       << ""
                                       << "bytes long; a socket address holds at most 107" << false;
        QTest::newRow("folder open to others") << ""
                                               << "0755"
                                               << "has mode 0755, not 0700" << false;
        QTest::newRow("folder is a link") << ""
                                          << "link"
                                          << "is a symbolic link" << false;
    }

    void environmentAndFolder()
    {
        QFETCH(QString, control);
        QFETCH(QString, folderMode);
        QFETCH(QString, warning);
        QFETCH(bool, serving);
        const QString folder = socketFolder();
        if (folderMode == "0755") {
            QVERIFY(QDir().mkpath(folder));
            QVERIFY(::chmod(QFile::encodeName(folder).constData(), 0755) == 0);
        } else if (folderMode == "link") {
            QVERIFY(QDir().mkpath(m_root->path() + "/elsewhere"));
            ::chmod(QFile::encodeName(m_root->path() + "/elsewhere").constData(), 0700);
            QVERIFY(QFile::link(m_root->path() + "/elsewhere", folder));
        }
        const QString explicitPath = QDir(m_root->path()).filePath("app.sock");
        if (control == "PATH") {
            control = explicitPath;
        } else if (control == "LONG") {
            control = QDir(m_root->path()).filePath(QString(110, 'x'));
        }
        startApp({}, {{"VANTIX_CONTROL", control}}, false);
        QTRY_VERIFY(m_output.contains("example-app: ready"));
        // The application runs either way; only its reachability differs.
        const QString expected = control == explicitPath ? explicitPath : defaultSocket(m_apps.last()->processId());
        if (serving) {
            QTRY_VERIFY(QFileInfo::exists(expected));
            QCOMPARE(ctl({"--socket", expected, "get", "battery1", "fuelGauge"}).out, QString("OK 100\n"));
        } else {
            QVERIFY(!QFileInfo::exists(expected));
            QCOMPARE(ctl({"list"}).out, QString());
        }
        if (!warning.isEmpty()) {
            QVERIFY2(m_errors.contains(warning), qPrintable(m_errors));
        }
    }

    void otherUsersAreRefused()
    {
        if (::geteuid() != 0 || QStandardPaths::findExecutable("setpriv").isEmpty()) {
            QSKIP("needs root and setpriv to run the application as another user");
        }
        // The build tree may sit in a folder only its owner can enter (a clone in
        // a 0700 folder or in /root): the other user runs a copy of the program
        // and its libraries, staged where everyone can read them.
        QTemporaryDir shared("/tmp/vantix-control-XXXXXX");
        ::chmod(QFile::encodeName(shared.path()).constData(), 0777);
        ::chmod(QFile::encodeName(m_root->path()).constData(), 0777);
        const QString program = shared.path() + "/example-app";
        QVERIFY(QFile::copy(EXAMPLE_APP, program));
        for (const QString &library : QString(VANTIX_RUNTIME_LIBRARIES).split(':')) {
            QVERIFY2(QFile::copy(library, shared.path() + '/' + QFileInfo(library).fileName()), qPrintable(library));
        }
        const QString path = shared.path() + "/app.sock";
        QProcess *app = launch("setpriv", {"--reuid=nobody", "--regid=nogroup", "--clear-groups", program},
            {{"VANTIX_CONTROL", path}, {"LD_LIBRARY_PATH", shared.path()}});
        QVERIFY(app);
        QTRY_VERIFY2_WITH_TIMEOUT(
            QFileInfo::exists(path) || app->state() == QProcess::NotRunning, qPrintable(m_errors), 10000);
        QVERIFY2(app->state() == QProcess::Running, qPrintable("the application did not run as nobody: " + m_errors));
        RawClient root;
        // The connection is taken and closed without a greeting.
        QVERIFY(!root.open(path));
        QTRY_COMPARE(root.socket().state(), QLocalSocket::UnconnectedState);
        QTRY_VERIFY2(m_errors.contains("refused a connection of uid 0"), qPrintable(m_errors));
    }

    void keysNeedNoGui()
    {
        startApp();
        QCOMPARE(ctl({"key", "keypad+1"}).out, QString("OK consumed\n"));
        QCOMPARE(ctl({"get", "battery1", "fuelGauge"}).out, QString("OK 15\n"));
        // The application loads no part of the GUI stack for it.
        const QByteArray maps = readFile(QString("/proc/%1/maps").arg(m_apps.last()->processId()));
        QVERIFY(maps.contains("libVantix"));
#ifndef VANTIX_LIBRARY_LOADS_QTGUI
        QVERIFY(!maps.contains("libQt5Gui"));
#endif
    }

    void idsComeBackAsWritten()
    {
        const QString socket = startApp();
        FdClient client;
        QVERIFY(client.open(socket));
        const QList<QPair<QByteArray, QByteArray>> cases{
            {R"({"id":9007199254740993,"line":"wait 0"})", "9007199254740993"},
            {R"({"id":12345678901234567,"line":"wait 0"})", "12345678901234567"},
            {R"({"id":1.0,"line":"wait 0"})", "1.0"},
            {R"({"id":-0,"describe":7,"line":"x"})", "-0"},
            {"{\"id\":\"a\\u00e9\\\"b\",\"line\":\"wait 0\"}", "\"a\\u00e9\\\"b\""},
            {R"({ "id" : [1, "two", 3.50] , "line":"wait 0"})", R"([1, "two", 3.50])"},
            {R"({"id":{"n":1},"events":"yes"})", R"({"n":1})"},
            // The id still comes back when the rest of the line is no UTF-8.
            {"{\"id\":41,\"line\":\"get \xff\"}", "41"},
        };
        for (const auto &c : cases) {
            QVERIFY(client.write(c.first + '\n'));
            const QByteArray answer = client.line();
            QVERIFY2(answer.contains("\"id\":" + c.second + ",\"ok\":"), answer.constData());
        }
    }

    void lineLimitIgnoresPacketBoundaries()
    {
        const QString socket = startApp();
        FdClient client;
        QVERIFY(client.open(socket));
        const auto answerOf = [&client] { return QJsonDocument::fromJson(client.line()).object(); };
        // A line of exactly 65536 bytes, its \r and \n in one read or in two.
        QVERIFY(client.write(paddedRequest(1, "get battery1 fuelGauge", 65536) + "\r\n"));
        QCOMPARE(answerOf().value("text").toString(), QString("OK 100"));
        QVERIFY(client.write(paddedRequest(2, "get battery1 fuelGauge", 65536) + "\r"));
        QTRY_VERIFY(client.allRead());
        QVERIFY(client.write("\n"));
        const QJsonObject second = answerOf();
        QCOMPARE(second.value("id").toInt(), 2);
        QCOMPARE(second.value("text").toString(), QString("OK 100"));
        // One byte more is refused once, and so is a longer line of blanks only.
        const QString limit = "a request line may hold at most 65536 bytes";
        QVERIFY(client.write(paddedRequest(3, "get battery1 fuelGauge", 65537) + "\n"));
        QCOMPARE(answerOf().value("error").toObject().value("message").toString(), limit);
        QVERIFY(client.write(QByteArray(70000, ' ') + "\n"));
        const QJsonObject blanks = answerOf();
        QCOMPARE(blanks.value("error").toObject().value("message").toString(), limit);
        QVERIFY(blanks.value("id").isNull());
        QVERIFY(client.write(paddedRequest(4, "get battery1 fuelGauge", 100) + "\n"));
        QCOMPARE(answerOf().value("id").toInt(), 4);
    }

    void halfClosedClientsAreAnswered()
    {
        const QString socket = startApp();
        FdClient client;
        QVERIFY(client.open(socket));
        QByteArray batch;
        for (int i = 1; i <= 20; ++i) {
            const QString line = i == 10 ? QString("wait 200") : QString("setbatteryfuel,1,%1").arg(50 + i);
            batch += QString("{\"id\":%1,\"line\":\"%2\"}\n").arg(i).arg(line).toUtf8();
        }
        QVERIFY(client.write(batch));
        client.shutdownWrite();
        // Every line is answered, in order, then the server closes.
        const QList<QByteArray> lines = client.linesToEnd();
        QCOMPARE(lines.size(), 20);
        for (int i = 0; i < lines.size(); ++i) {
            const QJsonObject answer = QJsonDocument::fromJson(lines.at(i)).object();
            QCOMPARE(answer.value("id").toInt(), i + 1);
            QCOMPARE(answer.value("ok").toBool(), true);
        }
        QVERIFY(client.atEnd());
        QTRY_VERIFY(m_output.contains("example-app: battery at 70 %"));
    }

    void clientsOverTheCapAreRefused()
    {
        const QString socket = startApp({}, {{"VANTIX_CONTROL_MAX_CLIENTS", "2"}});
        FdClient first;
        FdClient second;
        FdClient third;
        QVERIFY(first.open(socket) && second.open(socket));
        QVERIFY(third.open(socket, false));
        const QJsonObject refusal = QJsonDocument::fromJson(third.line()).object();
        QCOMPARE(refusal.value("error").toObject().value("class").toString(), QString("BadRequest"));
        QVERIFY2(refusal.value("error").toObject().value("message").toString().contains("at most 2 clients"),
            qPrintable(refusal.value("error").toObject().value("message").toString()));
        QVERIFY(third.line().isEmpty() && third.atEnd());
        // A place that frees up is taken again (tried until then; each try that is turned away closes).
        first.close();
        std::unique_ptr<FdClient> again;
        QVERIFY(QTest::qWaitFor([&] { return (again = std::make_unique<FdClient>())->open(socket); }, 5000));
        QVERIFY(QFileInfo::exists(socket));
    }

    void runningOutOfDescriptors()
    {
        // The application may open 64 files in all: far fewer clients than the cap.
        QProcess *app = launch("prlimit", {"--nofile=64", EXAMPLE_APP}, {});
        QVERIFY(app);
        const QString socket = defaultSocket(app->processId());
        QTRY_VERIFY_WITH_TIMEOUT(QFileInfo::exists(socket) && m_output.contains("example-app: ready"), 10000);
        std::vector<std::unique_ptr<FdClient>> clients;
        int refused = 0;
        for (int i = 0; i < 100 && refused < 3; ++i) {
            auto client = std::make_unique<FdClient>();
            QVERIFY(client->open(socket, false));
            const QByteArray first = client->line();
            if (first.startsWith("{\"vantix\"")) {
                clients.push_back(std::move(client));
                continue;
            }
            // The newest is told and closed; the server goes on listening.
            ++refused;
            QVERIFY2(first.contains("no file descriptor to spare"), first.constData());
            QVERIFY(client->line().isEmpty() && client->atEnd());
        }
        QCOMPARE(refused, 3);
        QVERIFY(clients.size() > 10);
        QVERIFY(QFileInfo::exists(socket));
        QTRY_COMPARE(m_errors.count("no file descriptor to spare"), 1);
        // Once some go, new clients are served again.
        clients.resize(clients.size() - 5);
        QVERIFY(QTest::qWaitFor([&] { return FdClient().open(socket); }, 5000));
        RawClient again;
        QVERIFY(again.open(socket));
        QCOMPARE(again.ask(1, "get battery1 fuelGauge").value("text").toString(), QString("OK 100"));
        // Three turned away, one warning.
        QCOMPARE(m_errors.count("no file descriptor to spare"), 1);
    }

    void aClientsQueueIsBoundedByBytes()
    {
        const QString socket = startApp();
        FdClient client;
        QVERIFY(client.open(socket));
        // 100 lines of 60 KB behind a long wait: some 6 MB, more than a client may have waiting.
        QByteArray batch = "{\"id\":0,\"line\":\"wait 60000\"}\n";
        const QByteArray comment = "#" + QByteArray(60000, 'x');
        for (int i = 1; i <= 100; ++i) {
            batch += "{\"id\":" + QByteArray::number(i) + ",\"line\":\"" + comment + "\"}\n";
        }
        QVERIFY(client.write(batch));
        int refused = 0;
        for (QByteArray line = client.line(); !line.isEmpty(); line = client.line()) {
            const QJsonObject answer = QJsonDocument::fromJson(line).object();
            QCOMPARE(answer.value("error").toObject().value("class").toString(), QString("BadRequest"));
            QVERIFY2(answer.value("text").toString().contains("4194304 bytes"), line.constData());
            ++refused;
            if (answer.value("id").toInt() == 100) {
                break;
            }
        }
        QVERIFY2(refused > 10 && refused < 60, qPrintable(QString::number(refused)));
        // What waits is still there to be cancelled.
        QVERIFY(client.write("{\"id\":\"c\",\"cancel\":true}\n"));
        int cancelled = 0;
        for (QByteArray line = client.line(); !line.startsWith("{\"id\":\"c\""); line = client.line()) {
            QVERIFY2(line.contains("\"text\":\"KO: cancelled\""), line.left(200).constData());
            ++cancelled;
        }
        QCOMPARE(cancelled + refused, 101);
    }

    void aDroppedClientReadsTheNoticeLast()
    {
        const QString socket = startApp();
        FdClient deaf;
        QVERIFY(deaf.open(socket));
        QByteArray lines;
        for (int i = 1; i <= 150; ++i) {
            lines += "{\"id\":" + QByteArray::number(i) + ",\"describe\":true}\n";
        }
        QVERIFY(deaf.write(lines));
        QTRY_VERIFY_WITH_TIMEOUT(m_errors.contains("it is dropped"), 20000);
        // It reads only long after the server gave up on it.
        QTRY_VERIFY_WITH_TIMEOUT(deaf.peerClosed(), 10000);
        const QList<QByteArray> all = deaf.linesToEnd();
        QVERIFY(all.size() > 1 && deaf.atEnd());
        for (const QByteArray &line : all) {
            QVERIFY2(QJsonDocument::fromJson(line).isObject(), line.left(200).constData());
        }
        QVERIFY2(all.last().contains("it is dropped"), all.last().left(200).constData());
    }

    void eventsAndLogShareOneClock()
    {
        const QString socket = startApp();
        FdClient client;
        QVERIFY(client.open(socket));
        QVERIFY(client.write("{\"id\":\"e\",\"events\":true}\n{\"id\":\"l\",\"log\":true}\n"));
        QByteArray batch;
        int id = 0;
        for (int i = 0; i < 200; ++i) {
            for (const char *line : {"setbatteryfuel,1,50", "call system reboot", "setbatteryfuel,1,60"}) {
                batch += "{\"id\":" + QByteArray::number(++id) + ",\"line\":\"" + line + "\"}\n";
            }
        }
        QVERIFY(client.write(batch));
        QList<QByteArray> fuel;
        QList<QByteArray> traces;
        int answers = 0;
        while (answers < id + 2 || traces.size() < 200) {
            const QByteArray line = client.line();
            QVERIFY2(!line.isEmpty(), qPrintable(QString("%1 answers, %2 traces").arg(answers).arg(traces.size())));
            if (line.startsWith("{\"event\":\"fuelGaugeChanged\"")) {
                fuel.append(line);
            } else if (line.startsWith("{\"log\"") && line.contains("\"message\":\"stub called\"")) {
                traces.append(line);
            } else if (line.contains("\"id\":")) {
                ++answers;
            }
        }
        QCOMPARE(fuel.size(), 400);
        // Merged by their stamps, the two streams keep the order in which things happened.
        int disordered = 0;
        for (int i = 0; i < 200; ++i) {
            disordered +=
                msOf(fuel.at(2 * i)) <= msOf(traces.at(i)) && msOf(traces.at(i)) <= msOf(fuel.at(2 * i + 1)) ? 0 : 1;
        }
        QCOMPARE(disordered, 0);
    }

    void pidGoesStraightToItsSocket()
    {
        const QString socket = startApp();
        // A socket of another running application that counts who knocks and never greets.
        QLocalServer other;
        QVERIFY(
            other.listen(QDir(socketFolder()).filePath(QString("other-%1").arg(QCoreApplication::applicationPid()))));
        int knocks = 0;
        connect(&other, &QLocalServer::newConnection, &other, [&] {
            while (QLocalSocket *peer = other.nextPendingConnection()) {
                ++knocks;
                peer->setParent(&other);
            }
        });
        const QString pid = QString::number(m_apps.last()->processId());
        QCOMPARE(ctl({"--pid", pid, "get", "battery1", "fuelGauge"}).out, QString("OK 100\n"));
        QCOMPARE(knocks, 0);
        QCOMPARE(ctl({"--app", "example-app", "get", "battery1", "fuelGauge"}).out, QString("OK 100\n"));
        QCOMPARE(knocks, 0);
        // A pid with no socket is told with what runs.
        const Run missing = ctl({"--pid", "1", "get", "system", "platform"});
        QCOMPARE(missing.exitCode, 2);
        QVERIFY2(missing.err.contains("no running application matches") && missing.err.contains(socket),
            qPrintable(missing.err));
        // list asks every socket.
        QVERIFY(ctl({"list"}).out.contains(socket));
        QVERIFY(knocks >= 1);
    }

    void clientsTrustNoOtherUsersServer()
    {
        if (::geteuid() != 0 || QStandardPaths::findExecutable("setpriv").isEmpty() ||
            QStandardPaths::findExecutable("socat").isEmpty()) {
            QSKIP("needs root, setpriv and socat to serve a socket as another user");
        }
        QTemporaryDir shared("/tmp/vantix-control-XXXXXX");
        ::chmod(QFile::encodeName(shared.path()).constData(), 0777);
        const QString path = shared.path() + "/app.sock";
        const QString received = shared.path() + "/received";
        // Another user's listener in the socket's place, greeting as an application would.
        const QString greet =
            "echo '{\"vantix\":{\"protocol\":1,\"pid\":1,\"application\":\"impostor\"}}'; cat > " + received;
        QVERIFY(launch("setpriv",
            {"--reuid=nobody", "--regid=nogroup", "--clear-groups", "socat", "UNIX-LISTEN:" + path + ",fork",
                "SYSTEM:" + greet},
            {}));
        QTRY_VERIFY_WITH_TIMEOUT(QFileInfo::exists(path), 10000);
        const Run run = ctl({"--socket", path, "setbatteryfuel,1,5"});
        QCOMPARE(run.exitCode, 2);
        QVERIFY2(run.err.contains(QString("uid %1").arg(QFileInfo(path).ownerId())), qPrintable(run.err));
        QVERIFY(!readFile(received).contains("setbatteryfuel"));
    }

private:
    QString socketFolder() const
    {
        return QDir(m_runtime->path()).filePath("vantix");
    }
    QString defaultSocket(qint64 pid) const
    {
        return QDir(socketFolder()).filePath(QString("example-app-%1").arg(pid));
    }

    QProcessEnvironment appEnvironment() const
    {
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert("XDG_RUNTIME_DIR", m_runtime->path());
        environment.insert("QBCOMMON_ROOT", m_root->path());
        environment.insert("QT_QPA_PLATFORM", "offscreen");
        environment.insert("NO_COLOR", "1");
        environment.remove("VANTIX_CONTROL");
        return environment;
    }

    /// Starts examples/app and, with @p wait, returns its socket once it serves.
    QString startApp(
        const QStringList &arguments = {}, const QList<QPair<QString, QString>> &extra = {}, bool wait = true)
    {
        QProcess *app = launch(EXAMPLE_APP, arguments, extra);
        if (!app) {
            return QString();
        }
        const QString socket = defaultSocket(app->processId());
        // The application watches its devices from apiReady on, which may come after the socket.
        const int readyBefore = m_output.count("example-app: ready");
        if (wait &&
            !QTest::qWaitFor(
                [&] { return QFileInfo::exists(socket) && m_output.count("example-app: ready") > readyBefore; },
                10000)) {
            return QString();
        }
        return socket;
    }

    /// Starts @p program with the applications' environment, collecting its output.
    QProcess *launch(const QString &program, const QStringList &arguments, const QList<QPair<QString, QString>> &extra)
    {
        auto *app = new QProcess;
        m_apps.append(app);
        QProcessEnvironment environment = appEnvironment();
        for (const auto &variable : extra) {
            environment.insert(variable.first, variable.second);
        }
        // The applications are killed, never leak-checked at exit, so they need no exact stacks
        // for the leak suppressions; the slow unwinder made each schema cost a quarter second.
        const QString sanitizer = environment.value("ASAN_OPTIONS");
        if (!sanitizer.isEmpty()) {
            environment.insert(
                "ASAN_OPTIONS", QString(sanitizer).replace("fast_unwind_on_malloc=0", "fast_unwind_on_malloc=1"));
        }
        app->setProcessEnvironment(environment);
        connect(app, &QProcess::readyReadStandardOutput, this,
            [this, app] { m_output += QString::fromUtf8(app->readAllStandardOutput()); });
        connect(app, &QProcess::readyReadStandardError, this,
            [this, app] { m_errors += QString::fromUtf8(app->readAllStandardError()); });
        app->start(program, arguments);
        return app->waitForStarted() ? app : nullptr;
    }

    Run ctl(const QStringList &arguments, const QByteArray &input = QByteArray(), const QString &folder = QString())
    {
        return runProgram(VANTIX_CTL, arguments, appEnvironment(), input, folder);
    }

    // A socket file that nobody serves, as a crashed process leaves it.
    static bool bindSocket(const QString &path)
    {
        const int fd = ::socket(AF_UNIX, SOCK_STREAM, 0);
        sockaddr_un address = {};
        address.sun_family = AF_UNIX;
        qstrncpy(address.sun_path, QFile::encodeName(path).constData(), sizeof address.sun_path);
        const bool bound = ::bind(fd, reinterpret_cast<sockaddr *>(&address), sizeof address) == 0;
        ::close(fd);
        return bound;
    }

    std::unique_ptr<QTemporaryDir> m_runtime;
    std::unique_ptr<QTemporaryDir> m_root;
    QList<QProcess *> m_apps;
    QString m_output;
    QString m_errors;
};

QTEST_GUILESS_MAIN(TestControl)
#include "tst_control.moc"

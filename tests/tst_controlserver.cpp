// The control server in-process: what each connection costs the
// application, and what its sessions share and keep apart.

#include "logcapture.h"
#include "repeatedkey_p.h"
#include "socketlistener_p.h"
#include "testroot.h"
#include "testsystem.h"

#include <vantix/vantix.h>

#include <vantixcontrol/engine/session.h>
#include <vantixcontrol/protocol/reply.h>

#include <QTemporaryDir>
#include <QtTest>

#include <algorithm>
#include <fcntl.h>
#include <memory>
#include <poll.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>
#include <vector>

// Qt's hook table for tools that follow object lifetimes; exported by QtCore,
// declared in a private header that Debian does not ship with qtbase5-dev.
extern Q_DECL_IMPORT quintptr qtHookData[];

using namespace TQ_SPAPI;
using namespace VantixControl;

namespace {
// Slots of qtHookData, as QtCore numbers them.
constexpr int HookAddQObject = 3;
constexpr int HookRemoveQObject = 4;
using ObjectHook = void (*)(QObject *);

long s_alive = 0;
ObjectHook s_previousAdd = nullptr;
ObjectHook s_previousRemove = nullptr;

void objectAdded(QObject *object)
{
    ++s_alive;
    if (s_previousAdd) {
        s_previousAdd(object);
    }
}

void objectRemoved(QObject *object)
{
    --s_alive;
    if (s_previousRemove) {
        s_previousRemove(object);
    }
}

// A client with no QObject of its own, so that counted objects are the server's.
class BareClient
{
public:
    ~BareClient() { ::close(m_fd); }
    bool open(const QString &path)
    {
        m_fd = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
        sockaddr_un address = {};
        address.sun_family = AF_UNIX;
        qstrncpy(address.sun_path, QFile::encodeName(path).constData(), sizeof address.sun_path);
        return ::connect(m_fd, reinterpret_cast<sockaddr *>(&address), sizeof address) == 0 && lines(1).size() == 1;
    }
    /// Sends @p request and waits for its answer line.
    QByteArray ask(const QByteArray &request)
    {
        if (::send(m_fd, request.constData(), size_t(request.size()), MSG_NOSIGNAL) != request.size()) {
            return QByteArray();
        }
        const QList<QByteArray> answer = lines(1);
        return answer.isEmpty() ? QByteArray() : answer.first();
    }
    /// Reads lines until one holds @p text; false when none comes.
    bool waitFor(const QByteArray &text)
    {
        for (QList<QByteArray> next = lines(1); !next.isEmpty(); next = lines(1)) {
            if (next.first().contains(text)) {
                return true;
            }
        }
        return false;
    }

private:
    QList<QByteArray> lines(int count)
    {
        QList<QByteArray> result;
        (void)QTest::qWaitFor(
            [&] {
                pollfd p = {m_fd, POLLIN, 0};
                char chunk[4096];
                while (::poll(&p, 1, 0) == 1) {
                    const ssize_t n = ::recv(m_fd, chunk, sizeof chunk, 0);
                    if (n <= 0) {
                        return true;
                    }
                    m_buffer.append(chunk, int(n));
                }
                int newline;
                while (result.size() < count && (newline = m_buffer.indexOf('\n')) >= 0) {
                    result.append(m_buffer.left(newline));
                    m_buffer.remove(0, newline + 1);
                }
                return result.size() == count;
            },
            5000);
        return result;
    }

    int m_fd = -1;
    QByteArray m_buffer;
};
} // namespace

class TestControlServer : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase()
    {
        s_previousAdd = reinterpret_cast<ObjectHook>(qtHookData[HookAddQObject]);
        s_previousRemove = reinterpret_cast<ObjectHook>(qtHookData[HookRemoveQObject]);
        qtHookData[HookAddQObject] = reinterpret_cast<quintptr>(&objectAdded);
        qtHookData[HookRemoveQObject] = reinterpret_cast<quintptr>(&objectRemoved);
    }

    void init()
    {
        m_root = std::make_unique<TestRoot>();
        QVERIFY(m_folder.isValid());
        m_socket = m_folder.filePath("control");
        qputenv("VANTIX_CONTROL", QFile::encodeName(m_socket));
        QSignalSpy ready(startSystem(System::PT_TOLVEX_PLUS), &System::apiReady);
        QVERIFY(ready.wait());
    }

    void cleanup()
    {
        System::releaseInstance();
        qunsetenv("VANTIX_CONTROL");
        m_root.reset();
    }

    void aConnectionCostsTheSameHoweverManyThereAre()
    {
        System *system = System::instance();
        const QByteArray get = R"({"id":1,"line":"get battery1 fuelGauge"})"
                               "\n";
        std::vector<std::unique_ptr<BareClient>> clients;
        const auto connectOne = [&] {
            auto client = std::make_unique<BareClient>();
            const bool answered = client->open(m_socket) && client->ask(get).contains("\"text\":\"OK 100\"");
            clients.push_back(std::move(client));
            return answered;
        };
        QVERIFY(connectOne());
        const long withOne = s_alive;
        // Taken once the first client runs lines: the System's engine is made on first use.
        const int tree = system->findChildren<QObject *>().size();
        for (int i = 0; i < 20; ++i) {
            QVERIFY(connectOne());
        }
        // Each further client adds a handful of objects, not a copy of what the others watch.
        const long perClient = (s_alive - withOne) / 20;
        QVERIFY2(perClient <= 12, qPrintable(QString::number(perClient)));
        // And nothing of theirs lives in the tree that sessions search.
        QCOMPARE(system->findChildren<QObject *>().size(), tree);
        // A hot-plug and its changes reach every client that asked for events.
        for (auto &client : clients) {
            QVERIFY(client
                        ->ask(R"({"id":2,"events":true})"
                              "\n")
                        .contains("\"ok\":true"));
        }
        Session driver(system);
        driver.execute("addbattery,2", [](const Reply &) {});
        for (auto &client : clients) {
            QVERIFY(client->waitFor("\"event\":\"deviceDetected\""));
        }
    }

    void repeatedKeys_data()
    {
        QTest::addColumn<QByteArray>("json");
        QTest::addColumn<QString>("key");
        QTest::newRow("none") << QByteArray(R"({"id":1,"line":"x","cwd":"/"})") << QString();
        QTest::newRow("top level") << QByteArray(R"({"id":1,"line":"x","id":2})") << "id";
        QTest::newRow("escaped") << QByteArray(R"({"id":1,"\u0069d":2})") << "id";
        QTest::newRow("nested") << QByteArray(R"({"id":{"a":{"b":1},"a":1}})") << "a";
        QTest::newRow("in an array") << QByteArray(R"([1,{"k":[],"k":[2]}])") << "k";
        QTest::newRow("other objects") << QByteArray(R"({"a":{"a":1},"b":[{"a":1},{"a":2}]})") << QString();
        QTest::newRow("a value is no key") << QByteArray(R"({"a":"a","b":"a"})") << QString();
        QTest::newRow("quotes and braces in text") << QByteArray(R"({"a":""},{"a":","b":1})") << QString();
        QTest::newRow("cut short") << QByteArray(R"({"a":1,"b":"x)") << QString();
        QTest::newRow("cut after a repeat") << QByteArray(R"({"a":[1],"a":)") << "a";
        QTest::newRow("empty key twice") << QByteArray(R"({"":1,"":2})") << "";
    }

    void repeatedKeys()
    {
        QFETCH(QByteArray, json);
        QFETCH(QString, key);
        const QString found = VantixControl::repeatedKey(json);
        QCOMPARE(found, key);
        QCOMPARE(found.isNull(), key.isNull());
    }

    void emittedCountsStartWithTheSession()
    {
        const auto run = [](Session &session, const QString &line) {
            Reply reply;
            session.execute(line, [&reply](const Reply &r) { reply = r; });
            return reply.answer();
        };
        Session first(System::instance());
        QCOMPARE(run(first, "setbatteryfuel,1,40"), QString("OK"));
        // A session started later has seen nothing emitted yet; the first has.
        Session second(System::instance());
        QVERIFY(run(second, "expect battery1 emitted fuelGaugeChanged").startsWith("KO: "));
        QCOMPARE(run(first, "expect battery1 emitted fuelGaugeChanged"), QString("OK"));
        QCOMPARE(run(second, "setbatteryfuel,1,41"), QString("OK"));
        QCOMPARE(run(second, "expect battery1 emitted fuelGaugeChanged"), QString("OK"));
        QCOMPARE(run(first, "expect battery1 emitted fuelGaugeChanged"), QString("OK"));
        QVERIFY(run(first, "expect battery1 emitted fuelGaugeChanged").startsWith("KO: "));
    }

    void noDescriptorLeftAtAll()
    {
#ifdef VANTIX_SANITIZED
        QSKIP("UBSan's type checks open a pipe to look at memory, which fails with no descriptor left");
#endif
        // The application has used up its descriptors by itself: the server still answers and listens.
        rlimit saved = {};
        QVERIFY(::getrlimit(RLIMIT_NOFILE, &saved) == 0);
        rlimit lowered = saved;
        lowered.rlim_cur = std::min<rlim_t>(saved.rlim_cur, 512);
        QVERIFY(::setrlimit(RLIMIT_NOFILE, &lowered) == 0);
        std::vector<int> taken;
        for (int fd = ::open("/dev/null", O_RDONLY | O_CLOEXEC); fd >= 0;
             fd = ::open("/dev/null", O_RDONLY | O_CLOEXEC)) {
            taken.push_back(fd);
        }
        ::close(taken.back());
        taken.pop_back();
        LogCapture log;
        const int client = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
        sockaddr_un address = {};
        address.sun_family = AF_UNIX;
        qstrncpy(address.sun_path, QFile::encodeName(m_socket).constData(), sizeof address.sun_path);
        const bool connected = ::connect(client, reinterpret_cast<sockaddr *>(&address), sizeof address) == 0;
        QByteArray told;
        (void)QTest::qWaitFor(
            [&] {
                char chunk[512];
                pollfd p = {client, POLLIN, 0};
                const ssize_t n = ::poll(&p, 1, 0) == 1 ? ::recv(client, chunk, sizeof chunk, 0) : -1;
                told.append(chunk, int(qMax<ssize_t>(n, 0)));
                return n == 0;
            },
            5000);
        ::close(client);
        for (const int fd : taken) {
            ::close(fd);
        }
        QVERIFY(::setrlimit(RLIMIT_NOFILE, &saved) == 0);
        QVERIFY(connected);
        QVERIFY2(told.contains("\"message\":\"the application has no file descriptor to spare"), told.constData());
        QVERIFY(told.endsWith("}\n"));
        QCOMPARE(log.count("Control server: no file descriptor to spare for a new client; clients are turned away "
                           "until one is free"),
            1);
        // With descriptors free again, clients are served.
        BareClient served;
        QVERIFY(served.open(m_socket));
    }

    void theSocketFolderIsUsedAsOpened()
    {
        QTemporaryDir runtime;
        const QString path = runtime.filePath("vantix");
        SocketDirectory::Folder folder;
        QString error;
        QVERIFY2(folder.open(path, SocketDirectory::Folder::Mode::Create, &error), qPrintable(error));
        // Someone moves the checked folder away and puts one of theirs in its place: the socket still
        // goes where the checks looked.
        QVERIFY(QDir().rename(path, runtime.filePath("moved")));
        QVERIFY(QDir().mkdir(path));
        SocketListener listener;
        QVERIFY2(listener.listen(&folder, "app-1", &error), qPrintable(error));
        QVERIFY(QFileInfo(runtime.filePath("moved/app-1")).exists());
        QVERIFY(!QFileInfo(path + "/app-1").exists());
        QCOMPARE(folder.sockets(), QStringList{path + "/app-1"});
        // The checks look at what is opened: a link in the folder's place is refused by what it is.
        QVERIFY(QDir(path).removeRecursively());
        QVERIFY(QFile::link(runtime.filePath("moved"), path));
        SocketDirectory::Folder linked;
        QVERIFY(!linked.open(path, SocketDirectory::Folder::Mode::Create, &error));
        QCOMPARE(error, path + " is a symbolic link");
    }

private:
    std::unique_ptr<TestRoot> m_root;
    QTemporaryDir m_folder;
    QString m_socket;
};

QTEST_GUILESS_MAIN(TestControlServer)
#include "tst_controlserver.moc"

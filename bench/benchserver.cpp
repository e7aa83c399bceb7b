// The application the control-channel figures talk to: an initialised
// PT_TOLVEX_PLUS system serving the control protocol at the socket path it is
// given, plus one host command for the event figure:
//
//   burst <count>   sets the first battery's fuel <count> times through the
//                   debug controller, to i % 101 for the i-th change, then ends.
//
// The burst runs in slices on the event loop, as changes arrive in a running
// application, so the control server can send between them. It prints "ready"
// at apiReady and runs until it is terminated.

#include <vantix/vantix.h>

#include <vantixcontrol/protocol/reply.h>
#include <vantixcontrol/engine/engine.h>
#include <vantixcontrol/engine/session.h>

#include <qbcommon/appconfig.h>

#include <QCoreApplication>
#include <QTimer>

#include <algorithm>
#include <cstdio>

using namespace TQ_SPAPI;
using namespace VantixControl;

namespace {
// Changes per turn of the event loop.
constexpr int SliceSize = 64;

class Burst : public QObject
{
public:
    Burst(int count, QObject *parent)
        : QObject(parent)
        , m_count(count)
    {
        QTimer::singleShot(0, this, [this] { slice(); });
    }

private:
    void slice()
    {
        VantixDebug *debug = VantixDebug::instance();
        const int end = std::min(m_count, m_done + SliceSize);
        for (; m_done < end; ++m_done) {
            debug->execute(QStringLiteral("setbatteryfuel,%1").arg(m_done % 101));
        }
        if (m_done < m_count) {
            QTimer::singleShot(0, this, [this] { slice(); });
        } else {
            deleteLater();
        }
    }

    int m_count;
    int m_done = 0;
};
} // namespace

int main(int argc, char *argv[])
{
    QCoreApplication app(argc, argv);
    QCoreApplication::setApplicationName(QStringLiteral("vantix-bench-server"));
    if (argc != 3) {
        std::fprintf(stderr, "usage: %s SOCKET_PATH ROOT\n", argv[0]);
        return 2;
    }
    qputenv("VANTIX_CONTROL", argv[1]);
    AppConfig::instance()->setRootPath(QString::fromLocal8Bit(argv[2]));

    SystemPlatformType::type = System::PT_TOLVEX_PLUS;
    System *system = System::instance();
    Engine::HostCommand burst;
    burst.name = QStringLiteral("burst");
    Argument count;
    count.name = QStringLiteral("count");
    count.type = Argument::Integer;
    burst.arguments = {count};
    burst.help = QStringLiteral("set the first battery's fuel <count> times, to 0, 1, ... 100, 0, ...");
    burst.run = [&app](Session &, const QStringList &args) {
        const int count = args.first().toInt();
        if (count <= 0) {
            return Reply::failure(ErrorClass::BadValue, QStringLiteral("burst needs a count above 0"));
        }
        new Burst(count, &app);
        return Reply::success();
    };
    Engine::of(system)->addHostCommand(burst);
    // Past apiReady the start's own signals are over; the figures see only what clients cause.
    QObject::connect(system, &System::apiReady, &app, [] {
        std::printf("ready\n");
        std::fflush(stdout);
    });
    system->initialize(QStringLiteral("vantix-bench-server"));
    return QCoreApplication::exec();
}

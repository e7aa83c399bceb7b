// Fuzzes the control server's handling of what a client sends: the input,
// split at newlines, is fed line by line to a connection without a socket,
// which parses each line as a JSON request and runs its console line in a
// session of its own, as for a client of vantix-ctl.
//
// Each input is one client: a fresh connection, closed at the end with a
// cancel of its own, which answers whatever still waits (wait, ramp, expect
// ... within), so nothing hangs and no input waits for a timer. One System
// and its watcher serve input after input (a session held for the run keeps
// the watcher, which every connection's session shares); the System is
// released and built again every InputsPerSystem inputs, so that state
// stays bounded. An execution thus costs what its lines do and little more.
//
// A describe is fed once per System, to the first input that asks: a schema
// costs twenty times what any other request does, and another one walks the
// same code again.
//
// Checks: everything written is one JSON object per line, the greeting is not
// repeated, and every request is answered exactly once, with its id exactly
// as the request wrote it (a line with no readable id with a null one).
// Commands that write a file (record, dump) only run when every argument
// names a place inside the input's own folder, which is the working folder;
// other such lines are left out of the input.

#include "controlconnection_p.h"
#include "fuzzsupport.h"
#include "protocol.h"
#include "requestid_p.h"
#include "session_p.h"
#include "words.h"

#include <vantix/system.h>

#include <qbcommon/appconfig.h>

#include <QCoreApplication>
#include <QDir>
#include <QHash>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTemporaryDir>
#include <QTimer>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <utility>

using namespace TQ_SPAPI;
using VantixControl::ControlConnection;

namespace {
constexpr int InputsPerSystem = 256;
// Lines fed per input; the rest is ignored, so that no input takes long.
constexpr int MaxLines = 64;
const QByteArray FinalCancel = R"({"id":"fuzz:end","cancel":true})";

struct Harness
{
    QTemporaryDir root;
    // libFuzzer reads and writes its corpus relative to it between inputs.
    QString startFolder = QDir::currentPath();
    // Holds the System's watcher for the run, so that no input pays for watching the tree.
    std::unique_ptr<VantixControl::Session> keeper;
    int inputs = 0;
    // Whether this System's schema was asked for.
    bool described = false;
};
Harness *harness = nullptr;

void startSystem()
{
    harness->keeper.reset();
    System::releaseInstance();
    SystemPlatformType::type = System::PT_TOLVEX_PLUS;
    System::instance()->initialize(QStringLiteral("fuzz"));
    harness->keeper = std::make_unique<VantixControl::Session>(System::instance());
    harness->described = false;
}

// Whether the console @p line would write a file outside @p folder: a
// command with a file argument and any argument that leaves the folder.
bool writesOutside(const QString &line, const QDir &folder)
{
    // The built-in commands; they are the same in every engine.
    static const VantixControl::CommandTable commands;
    const QString text = line.trimmed();
    QStringList args;
    QString error;
    if (text.isEmpty() || text.startsWith(QLatin1Char('#')) || !VantixControl::Words::split(text, &args, &error) ||
        args.isEmpty() || VantixControl::isDebugCommand(args, &commands)) {
        return false;
    }
    const VantixControl::CommandEntry *command = commands.find(args.first().toLower());
    bool writes = false;
    for (const VantixControl::Form &form : command ? command->forms : QVector<VantixControl::Form>()) {
        for (const VantixControl::Argument &argument : form) {
            writes = writes || argument.type == VantixControl::Argument::File;
        }
    }
    if (!writes) {
        return false;
    }
    const QString inside = folder.absolutePath() + QLatin1Char('/');
    for (int i = 1; i < args.size(); ++i) {
        if (!QDir::cleanPath(folder.absoluteFilePath(args.at(i))).startsWith(inside)) {
            return true;
        }
    }
    return false;
}

// Whether @p request gets the schema; with another request's key besides, it is refused, which costs little.
bool asksForSchema(const QJsonObject &request)
{
    using namespace VantixControl;
    int kinds = 0;
    for (Protocol::RequestKind kind : Protocol::requestKinds()) {
        kinds += request.contains(Protocol::requestKey(kind)) ? 1 : 0;
    }
    return kinds == 1 && request.contains(Protocol::requestKey(Protocol::RequestKind::Describe));
}

struct Conversation
{
    QList<QByteArray> written;
    // Answers owed, by id as the request wrote it.
    QHash<QByteArray, int> expected;
    int owed = 0;
    int answered = 0;

    void take(const QByteArray &line)
    {
        written.append(line);
        answered += line.startsWith("{\"event\"") || line.startsWith("{\"log\"") ? 0 : 1;
    }

    // Feeds one line, unless it would write outside @p folder; counts the answer it is owed.
    void send(ControlConnection &connection, const QByteArray &line, const QDir &folder)
    {
        const ControlConnection::ParsedLine parsed = ControlConnection::parseLine(line);
        // Any line over the limit is refused, even one of blanks only.
        FuzzSupport::check(line.size() - (line.endsWith('\r') ? 1 : 0) <= VantixControl::Protocol::MaxLineBytes ||
                parsed.kind == ControlConnection::ParsedLine::Refused,
            "a line over the limit was not refused");
        if (parsed.kind == ControlConnection::ParsedLine::Request) {
            const QJsonValue console = parsed.request.value(QLatin1String("line"));
            if (console.isString() && writesOutside(console.toString(), folder)) {
                return;
            }
            if (asksForSchema(parsed.request) && std::exchange(harness->described, true)) {
                return;
            }
        }
        if (parsed.kind != ControlConnection::ParsedLine::Blank) {
            ++expected[parsed.id];
            ++owed;
        }
        connection.handleParsed(parsed, line.size());
    }

    // Answers written, by their id's text.
    QHash<QByteArray, int> answers() const
    {
        QHash<QByteArray, int> counts;
        for (const QByteArray &line : written) {
            if (!line.startsWith("{\"event\"") && !line.startsWith("{\"log\"")) {
                ++counts[VantixControl::requestIdText(line, VantixControl::IdOccurrence::First)];
            }
        }
        return counts;
    }
};

QString describe(const QHash<QByteArray, int> &counts)
{
    QStringList parts;
    for (auto it = counts.cbegin(); it != counts.cend(); ++it) {
        parts << QStringLiteral("%1 x%2").arg(QString::fromUtf8(it.key())).arg(it.value());
    }
    parts.sort();
    return parts.join(QLatin1String(", "));
}
} // namespace

extern "C" int LLVMFuzzerInitialize(int *argc, char ***argv)
{
    FuzzSupport::startApplication(argc, argv);
    // No socket: the connections are fed directly.
    qputenv("VANTIX_CONTROL", "off");
    harness = new Harness;
    FuzzSupport::removeAtExit(harness->root.path());
    AppConfig::instance()->setRootPath(harness->root.filePath(QStringLiteral("unit")));
    AppConfig::instance()->setArguments(QStringList{QStringLiteral("fuzz")});
    QDir(harness->root.path()).mkpath(QStringLiteral("client"));
    startSystem();
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    if (++harness->inputs % InputsPerSystem == 0) {
        startSystem();
    }
    // Files the commands write land in a folder of the input's own, emptied after it.
    const QDir folder(harness->root.filePath(QStringLiteral("client")));
    FuzzSupport::check(QDir::setCurrent(folder.path()), "no working folder");

    Conversation conversation;
    {
        ControlConnection connection(nullptr, System::instance(), nullptr);
        QObject::connect(&connection, &ControlConnection::lineWritten,
            [&conversation](const QByteArray &line) { conversation.take(line); });

        const QByteArray input(reinterpret_cast<const char *>(data), int(size));
        const QList<QByteArray> lines = input.split('\n');
        for (int i = 0; i < qMin(lines.size(), MaxLines); ++i) {
            conversation.send(connection, lines.at(i), folder);
            // A line that waits (wait 0, expect ... within) gets its turn of the event loop.
            if (conversation.answered < conversation.owed) {
                QCoreApplication::processEvents();
            }
        }
        // What is posted goes out; the cancel answers what still waits, as a client that goes would leave it.
        QCoreApplication::processEvents();
        conversation.send(connection, FinalCancel, folder);
    }
    // Whatever the input left for later (log copies, jobs deleted later) goes now: an input that leaves
    // memory behind makes libFuzzer run it again and search the whole heap for leaks.
    QCoreApplication::sendPostedEvents();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    QDir::setCurrent(harness->startFolder);
    // Most inputs write nothing; looking costs less than removing and making the folder again.
    if (!folder.isEmpty(QDir::AllEntries | QDir::NoDotAndDotDot | QDir::Hidden | QDir::System)) {
        QDir(folder).removeRecursively();
        FuzzSupport::check(folder.mkpath(QStringLiteral(".")), "no working folder");
    }

    for (const QByteArray &line : qAsConst(conversation.written)) {
        QJsonParseError error;
        const QJsonDocument document = QJsonDocument::fromJson(line, &error);
        FuzzSupport::check(error.error == QJsonParseError::NoError && document.isObject() && !line.contains('\n'),
            "written line is not one JSON object:", QString::fromUtf8(line.left(200)));
        // The greeting went out before the connection could be listened to; it comes once.
        FuzzSupport::check(!document.object().contains(QLatin1String("vantix")), "greeting repeated");
    }
    const QHash<QByteArray, int> answers = conversation.answers();
    FuzzSupport::check(answers == conversation.expected, "answers by id text differ from the requests:",
        QStringLiteral("answered %1; asked %2").arg(describe(answers), describe(conversation.expected)));
    return 0;
}

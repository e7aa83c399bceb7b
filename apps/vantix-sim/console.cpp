#include "console.h"

#include "devicenames.h"
#include "eventwatcher.h"
#include "keynames.h"
#include "statedump.h"
#include "valuetext.h"

#include <vantix/system.h>
#include <vantixdebug.h>

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QJsonDocument>
#include <QKeyEvent>
#include <QLocale>
#include <QMetaMethod>
#include <QMetaProperty>
#include <QPointer>
#include <QtTest/qtestspontaneevent.h>

#include <cmath>

using namespace TQ_SPAPI;

namespace {

// The debug controller reports an unknown command only in the message log.
QtMessageHandler s_previousHandler = nullptr;
int s_consoles = 0;
bool s_capturing = false;
bool s_illegal = false;
bool s_quietLog = false;

void messageHandler(QtMsgType type, const QMessageLogContext &context, const QString &message)
{
    if (s_capturing && type == QtDebugMsg && message == QLatin1String("Illegal command")) {
        s_illegal = true;
    }
    if (s_quietLog && (type == QtDebugMsg || type == QtInfoMsg)) {
        return;
    }
    if (s_previousHandler) {
        s_previousHandler(type, context, message);
    }
}

// A key event as if it came from the keyboard: the debug controller ignores synthesised ones.
class SpontaneousKeyEvent : public QKeyEvent
{
public:
    SpontaneousKeyEvent(Type type, int key, Qt::KeyboardModifiers modifiers)
        : QKeyEvent(type, key, modifiers)
    {
        QSpontaneKeyEvent::setSpontaneous(this);
    }
};

struct CommandHelp
{
    const char *name;
    const char *usage;
    const char *text;
};

const CommandHelp commandHelp[] = {
    {"help", "help [command]", "the commands, or one command in detail"},
    {"devices", "devices", "the device table: id name, number, alias, class, status, type"},
    {"show", "show <target>", "every property with its value, what can be called and what is signalled"},
    {"get", "get <target> <property>", "one property's value"},
    {"set", "set <target> <property> <value>", "write a writable property (brightnes, timeZone, ...)"},
    {"call", "call <target> <method> [args...]",
        "run a slot or invokable method (mount, format 0, on red); the overload is picked by argument count"},
    {"plug", "plug <device> [type flags]", "hot-plug a device; the type defaults to the one the platform gives it"},
    {"unplug", "unplug <device>", "remove a device"},
    {"flightmode", "flightmode on|off", "enter or leave flight mode (a 2 s transition)"},
    {"sysinfo", "sysinfo", "the system-information map"},
    {"key", "key <name>", "press and release a key for the debug controller: keypad+1, shift+F4, ctrl+F4, F2, F9"},
    {"wait", "wait <ms>", "let the simulation run"},
    {"ramp", "ramp <target> <property|debug command> <from> <to> <ms>",
        "change a value step by step; a debug command gets the value as its last argument"},
    {"expect", "expect <target> <property> [= != < <= > >= has lacks] <value> [within <ms>]",
        "check a value, waiting up to <ms> for it; a script stops when it fails"},
    {"expect", "expect <target> present|absent [within <ms>]", "check that a device is there or gone"},
    {"expect", "expect <target> emitted <signal> [within <ms>]", "check that a signal came since the last such check"},
    {"dump", "dump [file]", "every device's properties as JSON"},
    {"quit", "quit", "leave the simulator"},
};

bool isConsoleCommand(const QString &word)
{
    for (const CommandHelp &c : commandHelp) {
        if (word == QLatin1String(c.name)) {
            return true;
        }
    }
    return false;
}

// Words split at blanks; "double quotes" keep blanks and may be empty, \ escapes inside them.
bool tokenize(const QString &text, QStringList *tokens, QString *error)
{
    QString token;
    bool inToken = false;
    bool quoted = false;
    for (int i = 0; i < text.size(); ++i) {
        const QChar c = text.at(i);
        if (quoted) {
            if (c == QLatin1Char('\\') && i + 1 < text.size()) {
                token.append(text.at(++i));
            } else if (c == QLatin1Char('"')) {
                quoted = false;
            } else {
                token.append(c);
            }
        } else if (c == QLatin1Char('"')) {
            quoted = true;
            inToken = true;
        } else if (c.isSpace()) {
            if (inToken) {
                tokens->append(token);
                token.clear();
                inToken = false;
            }
        } else {
            token.append(c);
            inToken = true;
        }
    }
    if (quoted) {
        *error = QStringLiteral("a quote is not closed");
        return false;
    }
    if (inToken) {
        tokens->append(token);
    }
    return true;
}

QString shortType(QByteArray type)
{
    if (type.startsWith("const ")) {
        type = type.mid(6);
    }
    if (type.endsWith('&')) {
        type.chop(1);
    }
    return QString::fromLatin1(type).remove(QStringLiteral("TQ_SPAPI::"));
}

QString methodText(const QMetaMethod &method)
{
    QStringList parameters;
    const QList<QByteArray> types = method.parameterTypes();
    const QList<QByteArray> names = method.parameterNames();
    for (int i = 0; i < types.size(); ++i) {
        parameters.append(names.at(i).isEmpty()
                ? shortType(types.at(i))
                : shortType(types.at(i)) + QLatin1Char(' ') + QString::fromLatin1(names.at(i)));
    }
    return QStringLiteral("%1(%2)").arg(QString::fromLatin1(method.name()), parameters.join(QLatin1String(", ")));
}

QString shortClassName(const QObject *object)
{
    const QString name = QString::fromLatin1(object->metaObject()->className());
    return name.mid(name.lastIndexOf(QLatin1Char(':')) + 1);
}

// The methods a user may call: public slots and invokables, QObject's own left out.
QList<QMetaMethod> callableMethods(const QObject *object)
{
    QList<QMetaMethod> result;
    const QMetaObject *metaObject = object->metaObject();
    for (int i = QObject::staticMetaObject.methodCount(); i < metaObject->methodCount(); ++i) {
        const QMetaMethod m = metaObject->method(i);
        if (m.access() == QMetaMethod::Public &&
            (m.methodType() == QMetaMethod::Slot || m.methodType() == QMetaMethod::Method)) {
            result.append(m);
        }
    }
    return result;
}

QMetaEnum enumOf(const QObject *object, const QMetaProperty &property)
{
    return property.isEnumType() ? property.enumerator()
                                 : ValueText::findEnum(QByteArray(property.typeName()), object->metaObject());
}

QString propertyText(const QObject *object, const QMetaProperty &property)
{
    return ValueText::format(property.read(object), enumOf(object, property));
}

bool isNumeric(int typeId)
{
    return ValueText::isIntegral(typeId) || typeId == QMetaType::Double || typeId == QMetaType::Float;
}

const QStringList &comparisons()
{
    static const QStringList ops{QStringLiteral("="), QStringLiteral("=="), QStringLiteral("!="), QStringLiteral("<"),
        QStringLiteral("<="), QStringLiteral(">"), QStringLiteral(">="), QStringLiteral("has"),
        QStringLiteral("lacks")};
    return ops;
}

// False with @p why when @p op cannot compare such values.
bool compareValues(
    const QVariant &current, const QVariant &expected, const QMetaEnum &e, const QString &op, bool *met, QString *why)
{
    if (op == QLatin1String("has") || op == QLatin1String("lacks")) {
        if (!e.isValid() || !e.isFlag()) {
            *why = QStringLiteral("%1 needs a flags property such as status").arg(op);
            return false;
        }
        const int a = ValueText::enumValue(current);
        const int x = ValueText::enumValue(expected);
        *met = op == QLatin1String("has") ? (a & x) == x : (a & x) == 0;
        return true;
    }
    const bool equal = op == QLatin1String("=") || op == QLatin1String("==");
    if (e.isValid()) {
        if (!equal && op != QLatin1String("!=")) {
            *why = QStringLiteral("names are compared with =, !=, has or lacks, not %1").arg(op);
            return false;
        }
        *met = (ValueText::enumValue(current) == ValueText::enumValue(expected)) == equal;
        return true;
    }
    if (isNumeric(current.userType())) {
        const double a = current.toDouble();
        const double x = expected.toDouble();
        const bool same = std::abs(a - x) <= 1e-9 * std::max({1.0, std::abs(a), std::abs(x)});
        if (equal) {
            *met = same;
        } else if (op == QLatin1String("!=")) {
            *met = !same;
        } else if (op == QLatin1String("<")) {
            *met = a < x && !same;
        } else if (op == QLatin1String("<=")) {
            *met = a < x || same;
        } else if (op == QLatin1String(">")) {
            *met = a > x && !same;
        } else {
            *met = a > x || same;
        }
        return true;
    }
    if (!equal && op != QLatin1String("!=")) {
        *why = QStringLiteral("%1 values are compared with = or !=, not %2")
                   .arg(QString::fromLatin1(current.typeName()), op);
        return false;
    }
    const bool same = current == expected || ValueText::format(current) == ValueText::format(expected);
    *met = same == equal;
    return true;
}

bool parseMs(const QString &text, int *ms)
{
    bool ok = false;
    *ms = text.toInt(&ok);
    return ok && *ms >= 0;
}

const char *const Bold = "1";
const char *const Dim = "2";
const char *const Red = "31";
const char *const Green = "32";
const char *const Yellow = "33";
const char *const Cyan = "36";

} // namespace

Console::Console(QTextStream &out, QObject *parent)
    : QObject(parent)
    , m_out(out)
    , m_watcher(new EventWatcher(System::instance(), this))
{
    if (s_consoles++ == 0) {
        s_previousHandler = qInstallMessageHandler(messageHandler);
    }
    m_clock.start();
    m_timer.setSingleShot(true);
    // Waits and ramps must not end early, as coarse timers may.
    m_timer.setTimerType(Qt::PreciseTimer);
    connect(&m_timer, &QTimer::timeout, this, [this] {
        const std::function<void()> step = std::move(m_step);
        m_step = nullptr;
        if (step) {
            step();
        }
    });
    VantixDebug::instance()->setParameterController(m_controller);
    m_keyTarget.installEventFilter(VantixDebug::instance());
    connect(m_watcher, &EventWatcher::signalled, this,
        [this](QObject *, const QString &name, const QString &signal, const QStringList &arguments) {
            printEvent(name, signal, arguments);
        });
}

Console::~Console()
{
    if (--s_consoles == 0) {
        qInstallMessageHandler(s_previousHandler);
        s_previousHandler = nullptr;
        s_quietLog = false;
    }
}

void Console::setQuiet(bool quiet)
{
    m_quiet = quiet;
    s_quietLog = quiet;
}

const QList<QPair<QString, QString>> &Console::debugCommands()
{
    static const QList<QPair<QString, QString>> commands{
        {QStringLiteral("addbattery"), QStringLiteral("[,1|2]")},
        {QStringLiteral("rmbattery"), QStringLiteral("[,1|2]")},
        {QStringLiteral("setbatteryfuel"), QStringLiteral("[,1|2],<percent>")},
        {QStringLiteral("togglecharging"), QStringLiteral("[,1|2]")},
        {QStringLiteral("setbatterycurrent"), QStringLiteral("[,1|2],<ampere>")},
        {QStringLiteral("setwiredstate"), QStringLiteral(",<network state 0-12>")},
        {QStringLiteral("setwifistate"), QStringLiteral(",<network state 0-12>")},
        {QStringLiteral("setwiredip"), QStringLiteral("[,<address>]")},
        {QStringLiteral("setwifiip"), QStringLiteral("[,<address>]")},
        {QStringLiteral("setssid"), QStringLiteral("[,<ssid>]")},
        {QStringLiteral("setwifichannel"), QStringLiteral(",<channel>")},
        {QStringLiteral("setwifisignalstrength"), QStringLiteral(",<percent>")},
        {QStringLiteral("enablewifi"), QString()},
        {QStringLiteral("disablewifi"), QString()},
        {QStringLiteral("setwificountry"), QStringLiteral(",<country code>")},
        {QStringLiteral("addotgb"), QString()},
        {QStringLiteral("activateotgb"), QString()},
        {QStringLiteral("rmotgb"), QString()},
        {QStringLiteral("addotga"), QString()},
        {QStringLiteral("rmotga"), QString()},
        {QStringLiteral("pwrpress"), QString()},
        {QStringLiteral("pwrrelase"), QString()},
        {QStringLiteral("jack"), QString()},
        {QStringLiteral("mic"), QString()},
    };
    return commands;
}

void Console::start()
{
    if (m_started) {
        return;
    }
    m_started = true;
    if (!m_quiet) {
        printOverview();
    }
    m_watcher->start();
    processQueue();
}

void Console::feed(const QStringList &lines, const QString &source, bool script)
{
    int &number = m_lineNumbers[source];
    for (const QString &text : lines) {
        m_queue.append(Line{text, source, ++number, script});
    }
    processQueue();
}

void Console::endOfInput()
{
    m_inputEnded = true;
    processQueue();
}

void Console::processQueue()
{
    if (!m_started || m_finished || m_processing) {
        return;
    }
    m_processing = true;
    while (!m_busy && !m_finished && !m_queue.isEmpty()) {
        m_current = m_queue.takeFirst();
        const QString text = m_current.text.trimmed();
        if (text.isEmpty() || text.startsWith(QLatin1Char('#'))) {
            continue;
        }
        if (m_current.script && !m_quiet) {
            print(paint(QStringLiteral("> ") + text, Bold));
        }
        m_busy = true;
        execute(text);
    }
    m_processing = false;
    if (!m_busy && m_queue.isEmpty() && m_inputEnded) {
        finish(0, QString());
    }
}

void Console::complete(const Reply &reply)
{
    if (m_finished) {
        return;
    }
    for (const QString &line : reply.lines) {
        print(line);
    }
    const QString answer = reply.ok ? (reply.text.isEmpty() ? QStringLiteral("OK") : QStringLiteral("OK ") + reply.text)
                                    : QStringLiteral("KO: ") + reply.text;
    print(paint(answer, reply.ok ? Green : Red));
    m_busy = false;
    Q_EMIT answered(m_current.text.trimmed(), reply.ok, answer);
    if (!reply.ok && m_current.script) {
        finish(1,
            QStringLiteral("%1:%2: %3: %4")
                .arg(m_current.source, QString::number(m_current.number), m_current.text.trimmed(), reply.text));
        return;
    }
    if (m_quitting) {
        finish(0, QString());
        return;
    }
    if (!m_processing) {
        QMetaObject::invokeMethod(this, &Console::processQueue, Qt::QueuedConnection);
    }
}

void Console::finish(int exitCode, const QString &message)
{
    if (m_finished) {
        return;
    }
    m_finished = true;
    m_timer.stop();
    m_step = nullptr;
    m_queue.clear();
    Q_EMIT finished(exitCode, message);
}

void Console::print(const QString &text)
{
    m_out << text << '\n';
    m_out.flush();
}

QString Console::paint(const QString &text, const char *code) const
{
    return m_colour ? QStringLiteral("\x1b[%1m%2\x1b[0m").arg(QLatin1String(code), text) : text;
}

void Console::printEvent(const QString &objectName, const QString &signal, const QStringList &arguments)
{
    if (m_quiet) {
        return;
    }
    QString line = paint(QStringLiteral("[%1 ms]").arg(m_clock.elapsed(), 7), Dim) + QLatin1Char(' ') +
        paint(objectName, Cyan) + QLatin1Char(' ') + paint(signal, Yellow);
    if (!arguments.isEmpty()) {
        line += QLatin1Char(' ') + arguments.join(QLatin1Char(' '));
    }
    print(line);
}

void Console::printOverview()
{
    System *system = System::instance();
    print(QStringLiteral("Platform %1 ready")
              .arg(QString::fromLatin1(System::PlatformTypeEnum.valueToKey(system->platform()))));
    for (const QString &line : deviceTable()) {
        print(line);
    }
    print(QStringLiteral("System information:"));
    const QVariantMap info = system->systemInfo();
    for (auto it = info.constBegin(); it != info.constEnd(); ++it) {
        print(QStringLiteral("  %1 = %2").arg(it.key(), ValueText::format(it.value())));
    }
}

QStringList Console::deviceTable() const
{
    const auto row = [](const QString &name, const QString &number, const QString &alias, const QString &className,
                         const QString &status, const QString &type) {
        return QStringLiteral("%1 %2 %3 %4 %5 %6")
            .arg(name, -22)
            .arg(number, -4)
            .arg(alias, -13)
            .arg(className, -16)
            .arg(status, -28)
            .arg(type)
            .trimmed();
    };
    QStringList lines{row(QStringLiteral("DEVICE"), QStringLiteral("NR"), QStringLiteral("ALIAS"),
        QStringLiteral("CLASS"), QStringLiteral("STATUS"), QStringLiteral("TYPE"))};
    const QMetaEnum flags = QMetaEnum::fromType<IDevice::DeviceFlags>();
    const QMetaEnum types = QMetaEnum::fromType<IDevice::DeviceType>();
    for (const IDevicePtr &device : System::instance()->devices()) {
        lines.append(row(DeviceNames::name(device->id()), QString::number(int(device->id())),
            DeviceNames::alias(device->id()), shortClassName(device.data()),
            ValueText::enumText(flags, int(device->status())), ValueText::enumText(types, int(device->type()))));
    }
    return lines;
}

bool Console::isDebugCommand(const QString &text) const
{
    const QString first = text.section(QLatin1Char(','), 0, 0).trimmed().toLower();
    for (const auto &command : debugCommands()) {
        if (command.first == first) {
            return true;
        }
    }
    // Any other comma command is the debug controller's to judge.
    return text.contains(QLatin1Char(',')) &&
        !isConsoleCommand(text.section(QLatin1Char(' '), 0, 0, QString::SectionSkipEmpty).toLower());
}

Console::Reply Console::runDebugCommand(const QString &text)
{
    s_illegal = false;
    s_capturing = true;
    const bool delivered = m_controller.setValue(QStringLiteral("VantixDebug"), text);
    s_capturing = false;
    if (!delivered) {
        return ko(QStringLiteral("the debug controller has no \"VantixDebug\" parameter"));
    }
    return s_illegal ? ko(QStringLiteral("illegal command")) : ok();
}

void Console::execute(const QString &text)
{
    if (isDebugCommand(text)) {
        complete(runDebugCommand(text));
        return;
    }
    QStringList args;
    QString error;
    if (!tokenize(text, &args, &error)) {
        complete(ko(error));
        return;
    }
    const QString word = args.takeFirst().toLower();
    const Done done = [this](const Reply &reply) { complete(reply); };
    if (word == QLatin1String("wait")) {
        wait(args, done);
        return;
    }
    if (word == QLatin1String("ramp")) {
        ramp(args, done);
        return;
    }
    if (word == QLatin1String("expect")) {
        expect(args, done);
        return;
    }
    using Handler = Reply (Console::*)(const QStringList &);
    static const QHash<QString, Handler> handlers{
        {QStringLiteral("help"), &Console::help},
        {QStringLiteral("devices"), &Console::devices},
        {QStringLiteral("show"), &Console::show},
        {QStringLiteral("get"), &Console::get},
        {QStringLiteral("set"), &Console::set},
        {QStringLiteral("call"), &Console::call},
        {QStringLiteral("plug"), &Console::plug},
        {QStringLiteral("unplug"), &Console::unplug},
        {QStringLiteral("flightmode"), &Console::flightMode},
        {QStringLiteral("sysinfo"), &Console::sysinfo},
        {QStringLiteral("key"), &Console::key},
        {QStringLiteral("dump"), &Console::dumpCommand},
        {QStringLiteral("quit"), &Console::quit},
    };
    const Handler handler = handlers.value(word);
    if (!handler) {
        complete(ko(QStringLiteral("unknown command \"%1\"; help lists the commands").arg(word)));
        return;
    }
    complete((this->*handler)(args));
}

bool Console::resolve(const QString &name, Target *target, QString *error) const
{
    System *system = System::instance();
    if (name.compare(QLatin1String("system"), Qt::CaseInsensitive) == 0) {
        target->object = system;
        target->name = QStringLiteral("System");
        return true;
    }
    IDevice::DeviceId id = IDevice::ID_UNKNOWN_DEV;
    if (DeviceNames::parse(name, &id)) {
        target->device = system->device(id);
        if (!target->device) {
            *error = QStringLiteral("%1 is not present").arg(DeviceNames::name(id));
            return false;
        }
        target->object = target->device.data();
        target->name = DeviceNames::name(id);
        return true;
    }
    if (QObject *object = m_watcher->find(name)) {
        target->object = object;
        target->name = m_watcher->nameOf(object);
        return true;
    }
    // The interface objects System owns, also before they are watched.
    const QList<QObject *> children = system->findChildren<QObject *>();
    for (QObject *child : children) {
        if (EventWatcher::isInterfaceObject(child) &&
            (EventWatcher::aliasOf(child) == name.toLower() ||
                shortClassName(child).compare(name, Qt::CaseInsensitive) == 0)) {
            target->object = child;
            target->name = shortClassName(child);
            return true;
        }
    }
    *error = QStringLiteral("unknown device or object \"%1\"; devices lists the devices").arg(name);
    return false;
}

bool Console::findProperty(const Target &target, const QString &name, QMetaProperty *property, QString *error) const
{
    const QMetaObject *metaObject = target.object->metaObject();
    QStringList names;
    for (int i = QObject::staticMetaObject.propertyCount(); i < metaObject->propertyCount(); ++i) {
        names.append(QString::fromLatin1(metaObject->property(i).name()));
    }
    int index = names.indexOf(name);
    for (int i = 0; index < 0 && i < names.size(); ++i) {
        if (names.at(i).compare(name, Qt::CaseInsensitive) == 0) {
            index = i;
        }
    }
    if (index < 0) {
        *error = QStringLiteral("%1 has no property \"%2\"; it has %3")
                     .arg(target.name, name, names.join(QLatin1String(", ")));
        return false;
    }
    *property = metaObject->property(QObject::staticMetaObject.propertyCount() + index);
    return true;
}

Console::Reply Console::help(const QStringList &args)
{
    Reply reply;
    const QString wanted = args.value(0).toLower();
    for (const CommandHelp &c : commandHelp) {
        if (wanted.isEmpty() || wanted == QLatin1String(c.name)) {
            reply.lines.append(QStringLiteral("  %1\n      %2").arg(QLatin1String(c.usage), QLatin1String(c.text)));
        }
    }
    QStringList debugLines;
    for (const auto &command : debugCommands()) {
        if (wanted.isEmpty() || wanted == command.first) {
            debugLines.append(QStringLiteral("  %1%2").arg(command.first, command.second));
        }
    }
    if (reply.lines.isEmpty() && debugLines.isEmpty()) {
        return ko(QStringLiteral("no command \"%1\"; help lists the commands").arg(wanted));
    }
    if (!debugLines.isEmpty()) {
        reply.lines.append(QStringLiteral("Debug commands, sent to the \"VantixDebug\" parameter as typed:"));
        reply.lines += debugLines;
    }
    if (wanted.isEmpty()) {
        reply.lines.prepend(QStringLiteral("Commands, one per line, each answered with OK or KO: <reason>:"));
        reply.lines.append(QStringLiteral("Targets: a device by id name (ID_BATTERY_1ST), number (7) or alias; system; "
                                          "System's objects (timesettings, canmux, ...); objects named in events."));
        reply.lines.append(QStringLiteral("Aliases: ") + DeviceNames::aliasTable().join(QLatin1String(", ")));
        reply.lines.append(
            QStringLiteral("Values: numbers, true/false, text (in double quotes when it has blanks), "
                           "enum and flag names (F_ENABLE|F_CHARGE, IDevice::F_ACTIVE), colours (red)."));
        reply.lines.append(
            QStringLiteral("Scripts: one command per line, # starts a comment; the first KO ends the run."));
    }
    return reply;
}

Console::Reply Console::devices(const QStringList &args)
{
    if (!args.isEmpty()) {
        return ko(QStringLiteral("usage: devices"));
    }
    Reply reply;
    reply.lines = deviceTable();
    return reply;
}

Console::Reply Console::show(const QStringList &args)
{
    if (args.size() != 1) {
        return ko(QStringLiteral("usage: show <target>"));
    }
    Target target;
    QString error;
    if (!resolve(args.at(0), &target, &error)) {
        return ko(error);
    }
    Reply reply;
    const QObject *object = target.object;
    const QMetaObject *metaObject = object->metaObject();
    if (target.device) {
        const IDevice::DeviceId id = target.device->id();
        reply.lines.append(
            QStringLiteral("%1 (%2%3) %4")
                .arg(target.name)
                .arg(int(id))
                .arg(DeviceNames::alias(id).isEmpty() ? QString() : QStringLiteral(", ") + DeviceNames::alias(id),
                    QString::fromLatin1(metaObject->className())));
    } else {
        reply.lines.append(QStringLiteral("%1 %2").arg(target.name, QString::fromLatin1(metaObject->className())));
    }
    int width = 0;
    for (int i = QObject::staticMetaObject.propertyCount(); i < metaObject->propertyCount(); ++i) {
        width = std::max(width, int(qstrlen(metaObject->property(i).name())));
    }
    for (int i = QObject::staticMetaObject.propertyCount(); i < metaObject->propertyCount(); ++i) {
        const QMetaProperty p = metaObject->property(i);
        reply.lines.append(
            QStringLiteral("  %1 %2%3")
                .arg(QString::fromLatin1(p.name()), -width)
                .arg(propertyText(object, p), p.isWritable() ? QStringLiteral("  (writable)") : QString()));
    }
    QStringList callable;
    for (const QMetaMethod &m : callableMethods(object)) {
        callable.append(methodText(m));
    }
    QStringList signalNames;
    for (int i = QObject::staticMetaObject.methodCount(); i < metaObject->methodCount(); ++i) {
        if (metaObject->method(i).methodType() == QMetaMethod::Signal) {
            signalNames.append(methodText(metaObject->method(i)));
        }
    }
    reply.lines.append(QStringLiteral("  callable: ") + callable.join(QLatin1String(", ")));
    reply.lines.append(QStringLiteral("  signals: ") + signalNames.join(QLatin1String(", ")));
    return reply;
}

Console::Reply Console::get(const QStringList &args)
{
    if (args.size() != 2) {
        return ko(QStringLiteral("usage: get <target> <property>"));
    }
    Target target;
    QMetaProperty property;
    QString error;
    if (!resolve(args.at(0), &target, &error) || !findProperty(target, args.at(1), &property, &error)) {
        return ko(error);
    }
    return ok(propertyText(target.object, property));
}

Console::Reply Console::set(const QStringList &args)
{
    if (args.size() != 3) {
        return ko(QStringLiteral("usage: set <target> <property> <value> (quote a value with blanks)"));
    }
    Target target;
    QMetaProperty property;
    QString error;
    if (!resolve(args.at(0), &target, &error) || !findProperty(target, args.at(1), &property, &error)) {
        return ko(error);
    }
    if (!property.isWritable()) {
        return ko(QStringLiteral("%1.%2 is read-only").arg(target.name, QString::fromLatin1(property.name())));
    }
    QVariant value;
    if (!ValueText::parse(args.at(2), property.userType(), QByteArray(property.typeName()),
            enumOf(target.object, property), &value, &error)) {
        return ko(QStringLiteral("%1: %2").arg(QString::fromLatin1(property.name()), error));
    }
    if (!property.write(target.object, value)) {
        return ko(
            QStringLiteral("%1.%2 did not take %3").arg(target.name, QString::fromLatin1(property.name()), args.at(2)));
    }
    return ok();
}

Console::Reply Console::call(const QStringList &args)
{
    if (args.size() < 2) {
        return ko(QStringLiteral("usage: call <target> <method> [args...]"));
    }
    Target target;
    QString error;
    if (!resolve(args.at(0), &target, &error)) {
        return ko(error);
    }
    const QList<QMetaMethod> methods = callableMethods(target.object);
    QList<QMetaMethod> named;
    for (const Qt::CaseSensitivity cs : {Qt::CaseSensitive, Qt::CaseInsensitive}) {
        for (const QMetaMethod &m : methods) {
            if (QString::fromLatin1(m.name()).compare(args.at(1), cs) == 0) {
                named.append(m);
            }
        }
        if (!named.isEmpty()) {
            break;
        }
    }
    if (named.isEmpty()) {
        QStringList names;
        for (const QMetaMethod &m : methods) {
            names.append(methodText(m));
        }
        return ko(QStringLiteral("%1 has no method \"%2\"; it has %3")
                      .arg(target.name, args.at(1),
                          names.isEmpty() ? QStringLiteral("none") : names.join(QLatin1String(", "))));
    }
    const QStringList values = args.mid(2);
    if (values.size() > 10) {
        return ko(QStringLiteral("a method takes at most 10 arguments"));
    }
    QStringList overloads;
    QString conversionError;
    for (const QMetaMethod &m : named) {
        overloads.append(methodText(m));
        if (m.parameterCount() != values.size()) {
            continue;
        }
        const QList<QByteArray> types = m.parameterTypes();
        QVariantList converted;
        bool convertible = true;
        for (int i = 0; i < values.size() && convertible; ++i) {
            QVariant v;
            QString why;
            const QMetaEnum e = ValueText::findEnum(types.at(i), target.object->metaObject());
            convertible = ValueText::parse(values.at(i), m.parameterType(i), types.at(i), e, &v, &why);
            if (convertible) {
                converted.append(v);
            } else if (conversionError.isEmpty()) {
                conversionError = QStringLiteral("argument %1 of %2: %3").arg(i + 1).arg(methodText(m), why);
            }
        }
        if (!convertible) {
            continue;
        }
        QGenericArgument arguments[10];
        for (int i = 0; i < converted.size(); ++i) {
            arguments[i] = QGenericArgument(types.at(i).constData(), converted[i].data());
        }
        // A result is shown when its type can be built here.
        const int returnType = m.returnType();
        QVariant result;
        QGenericReturnArgument returnArgument;
        if (returnType != QMetaType::Void && returnType != QMetaType::UnknownType) {
            result = QVariant(returnType, nullptr);
            returnArgument = QGenericReturnArgument(m.typeName(), result.data());
        }
        if (!m.invoke(target.object, Qt::DirectConnection, returnArgument, arguments[0], arguments[1], arguments[2],
                arguments[3], arguments[4], arguments[5], arguments[6], arguments[7], arguments[8], arguments[9])) {
            return ko(QStringLiteral("%1 could not be called").arg(methodText(m)));
        }
        return result.isValid()
            ? ok(ValueText::format(result, ValueText::findEnum(QByteArray(m.typeName()), target.object->metaObject())))
            : ok();
    }
    if (!conversionError.isEmpty()) {
        return ko(conversionError);
    }
    return ko(QStringLiteral("%1 takes other arguments: %2").arg(args.at(1), overloads.join(QLatin1String("; "))));
}

Console::Reply Console::plug(const QStringList &args)
{
    if (args.isEmpty() || args.size() > 2) {
        return ko(QStringLiteral("usage: plug <device> [type flags]"));
    }
    IDevice::DeviceId id = IDevice::ID_UNKNOWN_DEV;
    if (!DeviceNames::parse(args.at(0), &id)) {
        return ko(QStringLiteral("unknown device \"%1\"; expected an id name, number or alias").arg(args.at(0)));
    }
    if (System::instance()->device(id)) {
        return ko(QStringLiteral("%1 is already plugged").arg(DeviceNames::name(id)));
    }
    IDevice::DeviceType type = DeviceNames::defaultType(id);
    if (args.size() == 2) {
        int bits = 0;
        QString error;
        if (!ValueText::parseEnum(QMetaEnum::fromType<IDevice::DeviceType>(), args.at(1), &bits, &error)) {
            return ko(QStringLiteral("type: ") + error);
        }
        type = IDevice::DeviceType(bits);
    }
    const QString path = type.testFlag(IDevice::DEVICE_DISK) ? DeviceNames::defaultPath(id) : QString();
    if (!path.isEmpty() && int(id) >= int(IDevice::ID_DISK_USB)) {
        // A stick comes with its contents; the folder stands for them.
        QDir().mkpath(path);
    }
    const IDevicePtr device = VantixDebug::instance()->addDevice(id, type, path);
    if (!device) {
        return ko(QStringLiteral("the simulation has not started"));
    }
    if (m_watcher->isStarted()) {
        m_watcher->watch(device.data());
    }
    return ok();
}

Console::Reply Console::unplug(const QStringList &args)
{
    if (args.size() != 1) {
        return ko(QStringLiteral("usage: unplug <device>"));
    }
    IDevice::DeviceId id = IDevice::ID_UNKNOWN_DEV;
    if (!DeviceNames::parse(args.at(0), &id)) {
        return ko(QStringLiteral("unknown device \"%1\"; expected an id name, number or alias").arg(args.at(0)));
    }
    if (!System::instance()->device(id)) {
        return ko(QStringLiteral("%1 is not plugged").arg(DeviceNames::name(id)));
    }
    VantixDebug::instance()->removeDevice(id);
    if (System::instance()->device(id)) {
        return ko(QStringLiteral("%1 could not be removed").arg(DeviceNames::name(id)));
    }
    return ok();
}

Console::Reply Console::flightMode(const QStringList &args)
{
    bool enable = false;
    QVariant value;
    QString error;
    if (args.size() != 1 || !ValueText::parse(args.at(0), QMetaType::Bool, QByteArray(), QMetaEnum(), &value, &error)) {
        return ko(QStringLiteral("usage: flightmode on|off"));
    }
    enable = value.toBool();
    System *system = System::instance();
    if (system->flightModeStatus().testFlag(System::FLIGHT_MODE_TRANSITION)) {
        return ko(QStringLiteral("a flight-mode transition is running; try again when it ends"));
    }
    system->setFlightMode(enable);
    return ok();
}

Console::Reply Console::sysinfo(const QStringList &args)
{
    if (!args.isEmpty()) {
        return ko(QStringLiteral("usage: sysinfo"));
    }
    Reply reply;
    const QVariantMap info = System::instance()->systemInfo();
    for (auto it = info.constBegin(); it != info.constEnd(); ++it) {
        reply.lines.append(QStringLiteral("  %1 = %2").arg(it.key(), ValueText::format(it.value())));
    }
    return reply;
}

Console::Reply Console::key(const QStringList &args)
{
    if (args.size() != 1) {
        return ko(QStringLiteral("usage: key <name>, such as keypad+1, shift+F4, ctrl+F4, F2 or F9"));
    }
    int code = 0;
    Qt::KeyboardModifiers modifiers;
    QString error;
    if (!KeyNames::parse(args.at(0), &code, &modifiers, &error)) {
        return ko(error);
    }
    // Delivered through the application, so that event filters see them as from the keyboard.
    SpontaneousKeyEvent press(QEvent::KeyPress, code, modifiers);
    QCoreApplication::instance()->notify(&m_keyTarget, &press);
    SpontaneousKeyEvent release(QEvent::KeyRelease, code, modifiers);
    const bool consumed = QCoreApplication::instance()->notify(&m_keyTarget, &release);
    return ok(consumed ? QStringLiteral("consumed") : QStringLiteral("not consumed"));
}

Console::Reply Console::dumpCommand(const QStringList &args)
{
    if (args.size() > 1) {
        return ko(QStringLiteral("usage: dump [file]"));
    }
    if (args.size() == 1) {
        QString error;
        if (!writeDump(args.at(0), &error)) {
            return ko(error);
        }
        return ok(QStringLiteral("written to ") + QFileInfo(args.at(0)).absoluteFilePath());
    }
    Reply reply;
    reply.lines = QString::fromUtf8(QJsonDocument(dump()).toJson(QJsonDocument::Indented))
                      .split(QLatin1Char('\n'), Qt::SkipEmptyParts);
    return reply;
}

Console::Reply Console::quit(const QStringList &args)
{
    if (!args.isEmpty()) {
        return ko(QStringLiteral("usage: quit"));
    }
    m_quitting = true;
    return ok();
}

QJsonObject Console::dump() const
{
    return StateDump::build(System::instance(), m_watcher);
}

bool Console::writeDump(const QString &path, QString *error) const
{
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly | QIODevice::Truncate)) {
        *error = QStringLiteral("cannot write %1: %2").arg(path, file.errorString());
        return false;
    }
    file.write(QJsonDocument(dump()).toJson(QJsonDocument::Indented));
    return true;
}

void Console::finishAsync(const Reply &reply)
{
    // The callback ends this command; it must not be destroyed while it runs.
    const Done done = std::move(m_done);
    m_done = nullptr;
    m_check = nullptr;
    m_checkFailure = nullptr;
    done(reply);
}

void Console::after(int ms, std::function<void()> step)
{
    m_step = std::move(step);
    m_timer.start(ms);
}

void Console::wait(const QStringList &args, const Done &done)
{
    int ms = 0;
    if (args.size() != 1 || !parseMs(args.at(0), &ms)) {
        done(ko(QStringLiteral("usage: wait <ms>, with ms a whole number")));
        return;
    }
    after(ms, [done] { done(ok()); });
}

void Console::ramp(const QStringList &args, const Done &done)
{
    if (args.size() != 5) {
        done(ko(QStringLiteral("usage: ramp <target> <property|debug command> <from> <to> <ms>")));
        return;
    }
    Target target;
    QString error;
    if (!resolve(args.at(0), &target, &error)) {
        done(ko(error));
        return;
    }
    bool fromOk = false;
    bool toOk = false;
    const double from = QLocale::c().toDouble(args.at(2), &fromOk);
    const double to = QLocale::c().toDouble(args.at(3), &toOk);
    int ms = 0;
    if (!fromOk || !toOk || !parseMs(args.at(4), &ms)) {
        done(ko(QStringLiteral("ramp needs numbers for <from> and <to> and a whole number of ms")));
        return;
    }
    const QString what = args.at(1);
    bool integral = true;
    if (isDebugCommand(what) || what.contains(QLatin1Char(','))) {
        const auto isWhole = [](const QString &t) {
            bool ok = false;
            t.toLongLong(&ok);
            return ok;
        };
        integral = isWhole(args.at(2)) && isWhole(args.at(3));
        m_rampApply = [this, what, integral](double value) {
            const QString text = integral ? QString::number(qRound64(value)) : QString::number(value, 'g', 10);
            return runDebugCommand(what + QLatin1Char(',') + text);
        };
    } else {
        QMetaProperty property;
        if (!findProperty(target, what, &property, &error)) {
            done(ko(error));
            return;
        }
        if (!property.isWritable() || !isNumeric(property.userType())) {
            done(ko(
                QStringLiteral("%1.%2 is not a writable number; ramp a debug command instead").arg(target.name, what)));
            return;
        }
        integral = ValueText::isIntegral(property.userType());
        QPointer<QObject> object = target.object;
        const IDevicePtr keep = target.device;
        const QString name = target.name;
        m_rampApply = [object, keep, property, integral, name](double value) {
            if (!object) {
                return ko(QStringLiteral("%1 went away").arg(name));
            }
            const QString text = integral ? QString::number(qRound64(value)) : QString::number(value, 'g', 10);
            QVariant v;
            QString why;
            if (!ValueText::parse(text, property.userType(), QByteArray(property.typeName()), QMetaEnum(), &v, &why)) {
                return ko(QStringLiteral("%1: %2").arg(QString::fromLatin1(property.name()), why));
            }
            if (!property.write(object, v)) {
                return ko(
                    QStringLiteral("%1.%2 did not take %3").arg(name, QString::fromLatin1(property.name()), text));
            }
            return ok();
        };
    }
    // One step per 100 ms; whole numbers never repeat a value.
    int steps = std::max(1, ms / 100);
    if (integral) {
        steps = std::max(1, std::min(steps, int(std::abs(std::llround(to) - std::llround(from)))));
    }
    m_rampValues.clear();
    m_rampTimes.clear();
    for (int i = 0; i <= steps; ++i) {
        m_rampValues.append(from + (to - from) * i / steps);
        m_rampTimes.append(qint64(ms) * i / steps);
    }
    m_rampIndex = 0;
    m_rampStart = m_clock.nsecsElapsed();
    m_done = done;
    rampStep();
}

void Console::rampStep()
{
    const Reply reply = m_rampApply(m_rampValues.at(m_rampIndex));
    if (!reply.ok || ++m_rampIndex == m_rampValues.size()) {
        m_rampApply = nullptr;
        finishAsync(reply);
        return;
    }
    // Rounded up, so that no step comes before its time.
    const qint64 dueNs = m_rampStart + m_rampTimes.at(m_rampIndex) * 1000000 - m_clock.nsecsElapsed();
    after(int(std::max<qint64>(0, (dueNs + 999999) / 1000000)), [this] { rampStep(); });
}

void Console::expect(const QStringList &argsIn, const Done &done)
{
    QStringList args = argsIn;
    int within = -1;
    if (args.size() >= 2 && args.at(args.size() - 2).compare(QLatin1String("within"), Qt::CaseInsensitive) == 0) {
        if (!parseMs(args.last(), &within)) {
            done(ko(QStringLiteral("within needs a whole number of ms, got \"%1\"").arg(args.last())));
            return;
        }
        args.removeLast();
        args.removeLast();
    }
    const QString usage = QStringLiteral(
        "usage: expect <target> <property> [op] <value> | present | absent | emitted <signal> [within <ms>]");
    if (args.size() < 2) {
        done(ko(usage));
        return;
    }
    const QString targetName = args.at(0);
    const QString what = args.at(1).toLower();
    const QString timing = within >= 0 ? QStringLiteral(" within %1 ms").arg(within) : QString();
    QString error;
    Target target;
    const bool known = resolve(targetName, &target, &error);
    IDevice::DeviceId id = IDevice::ID_UNKNOWN_DEV;
    const bool isDeviceName = DeviceNames::parse(targetName, &id);
    if (!known && !isDeviceName) {
        done(ko(error));
        return;
    }
    const QString subject = known ? target.name : DeviceNames::name(id);

    if (args.size() == 2 && (what == QLatin1String("present") || what == QLatin1String("absent"))) {
        const bool wanted = what == QLatin1String("present");
        m_check = [this, targetName, wanted](QString *actual, Reply *) {
            Target t;
            QString e;
            const bool present = resolve(targetName, &t, &e);
            *actual = present ? QStringLiteral("present") : QStringLiteral("absent");
            return present == wanted;
        };
        m_checkFailure = [subject, what, timing](const QString &actual) {
            return QStringLiteral("%1 is %2, expected %3%4").arg(subject, actual, what, timing);
        };
    } else if (what == QLatin1String("emitted")) {
        if (args.size() != 3) {
            done(ko(usage));
            return;
        }
        const QByteArray signal = args.at(2).toLatin1();
        m_check = [this, targetName, signal](QString *actual, Reply *fatal) {
            Target t;
            QString e;
            *actual = QStringLiteral("not emitted");
            if (!resolve(targetName, &t, &e)) {
                return false;
            }
            const QMetaObject *metaObject = t.object->metaObject();
            bool exists = false;
            for (int i = 0; i < metaObject->methodCount() && !exists; ++i) {
                exists =
                    metaObject->method(i).methodType() == QMetaMethod::Signal && metaObject->method(i).name() == signal;
            }
            if (!exists) {
                *fatal = ko(QStringLiteral("%1 has no signal \"%2\"").arg(t.name, QString::fromLatin1(signal)));
                return false;
            }
            const QString key = t.name + QLatin1Char('.') + QString::fromLatin1(signal);
            const int count = m_watcher->emissions(t.name, signal);
            if (count > m_emittedSeen.value(key)) {
                m_emittedSeen[key] = count;
                return true;
            }
            return false;
        };
        m_checkFailure = [subject, signal, timing](const QString &) {
            return QStringLiteral("%1 did not emit %2%3").arg(subject, QString::fromLatin1(signal), timing);
        };
    } else {
        const QString propertyName = args.at(1);
        QStringList rest = args.mid(2);
        QString op = QStringLiteral("=");
        if (rest.size() == 2 && comparisons().contains(rest.at(0).toLower())) {
            op = rest.takeFirst().toLower();
        }
        if (rest.size() != 1) {
            done(ko(usage));
            return;
        }
        const QString expectedText = rest.at(0);
        m_check = [this, targetName, propertyName, op, expectedText](QString *actual, Reply *fatal) {
            Target t;
            QString e;
            if (!resolve(targetName, &t, &e)) {
                *actual = QStringLiteral("(device not present)");
                return false;
            }
            QMetaProperty p;
            if (!findProperty(t, propertyName, &p, &e)) {
                *fatal = ko(e);
                return false;
            }
            const QMetaEnum enumerator = enumOf(t.object, p);
            QVariant expected;
            if (!ValueText::parse(expectedText, p.userType(), QByteArray(p.typeName()), enumerator, &expected, &e)) {
                *fatal = ko(QStringLiteral("%1: %2").arg(QString::fromLatin1(p.name()), e));
                return false;
            }
            m_expectedShown = ValueText::format(expected, enumerator);
            const QVariant current = p.read(t.object);
            *actual = ValueText::format(current, enumerator);
            bool met = false;
            if (!compareValues(current, expected, enumerator, op, &met, &e)) {
                *fatal = ko(e);
                return false;
            }
            return met;
        };
        const QString shownOp =
            op == QLatin1String("=") || op == QLatin1String("==") ? QString() : op + QLatin1Char(' ');
        m_expectedShown = expectedText;
        m_checkFailure = [this, subject, propertyName, shownOp, timing](const QString &actual) {
            return QStringLiteral("%1.%2 is %3, expected %4%5%6")
                .arg(subject, propertyName, actual, shownOp, m_expectedShown, timing);
        };
    }
    m_deadline = m_clock.nsecsElapsed() + qint64(std::max(0, within)) * 1000000;
    m_done = done;
    pollCheck();
}

void Console::pollCheck()
{
    QString actual;
    Reply fatal;
    const bool met = m_check(&actual, &fatal);
    if (!fatal.ok) {
        finishAsync(fatal);
    } else if (met) {
        finishAsync(ok());
    } else if (m_clock.nsecsElapsed() >= m_deadline) {
        finishAsync(ko(m_checkFailure(actual)));
    } else {
        // Polled: a property need not announce its changes to be checked.
        after(10, [this] { pollCheck(); });
    }
}

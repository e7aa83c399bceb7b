#include "ctl.h"

#include "completion.h"
#include <vantixcontrol/protocol/words.h>
#include "interruptnotifier.h"
#include "linereader.h"

#include <vantixcontrol/protocol/event.h>
#include <vantixcontrol/protocol/reply.h>
#include <vantixcontrol/client/scriptrunner.h>

#include <QCoreApplication>
#include <QFile>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>

#include <cstdio>
#include <unistd.h>

using namespace VantixControl;

namespace {
void printError(const QString &message)
{
    std::fprintf(stderr, "vantix-ctl: %s\n", qPrintable(message));
}
} // namespace

Ctl::Ctl(const Options &options, QObject *parent)
    : QObject(parent)
    , m_options(options)
    , m_out(stdout)
    , m_printer(m_out)
{
    m_printer.setColour(!options.json && ConsolePrinter::wantsColour(STDOUT_FILENO));
    m_printer.setQuiet(options.quiet);
    connect(&m_client, &Client::event, this, [this](const Event &event) {
        if (!m_options.json) {
            m_printer.event(event);
        }
    });
    connect(&m_client, &Client::logged, this, [this](const LogEntry &entry) {
        if (!m_options.json) {
            m_printer.log(entry);
        }
    });
    connect(&m_client, &Client::lineReceived, this, [this](const QByteArray &line) {
        // Answers are printed by whoever asked; events and log lines as they come.
        if (m_options.json && !line.startsWith("{\"vantix\"") && m_options.mode != Mode::Complete) {
            m_out << line << '\n';
            m_out.flush();
        }
    });
    connect(&m_client, &Client::disconnected, this, [this](const QString &reason) {
        if (m_options.mode == Mode::Watch) {
            finish(0, QStringLiteral("the application has gone (%1)").arg(reason));
        } else {
            finish(2, QStringLiteral("the connection to the application was lost: %1").arg(reason));
        }
    });
}

void Ctl::list(bool json, const std::function<void(int)> &done)
{
    Client::findApplications([json, done](const QList<Client::Application> &applications) {
        QTextStream out(stdout);
        if (json) {
            for (const Client::Application &a : applications) {
                const QJsonObject object{{QStringLiteral("pid"), a.pid}, {QStringLiteral("application"), a.name},
                    {QStringLiteral("platform"), a.platform}, {QStringLiteral("version"), a.version},
                    {QStringLiteral("socket"), a.socketPath}};
                out << QJsonDocument(object).toJson(QJsonDocument::Compact) << '\n';
            }
        } else if (!applications.isEmpty()) {
            for (const QString &line : AppSelector::table(applications)) {
                out << line << '\n';
            }
        }
        out.flush();
        done(0);
    });
}

void Ctl::start()
{
    m_options.selector.resolve([this](const QString &socketPath, const QString &error) {
        if (socketPath.isEmpty()) {
            if (m_options.mode == Mode::Complete) {
                finish(0);
            } else {
                finish(2, error);
            }
            return;
        }
        connect(&m_client, &Client::connected, this, &Ctl::connected);
        m_client.connectToServer(socketPath);
    });
}

void Ctl::connected()
{
    switch (m_options.mode) {
    case Mode::Command:
        runCommand();
        break;
    case Mode::Script: {
        const bool fromStdin = m_options.script == QLatin1String("-");
        QStringList lines;
        if (!fromStdin) {
            QFile file(m_options.script);
            if (!file.open(QIODevice::ReadOnly | QIODevice::Text)) {
                finish(2, QStringLiteral("cannot read %1: %2").arg(m_options.script, file.errorString()));
                return;
            }
            lines = QString::fromUtf8(file.readAll()).split(QLatin1Char('\n'));
            // A scenario's files (a feed's CSV) lie beside it, wherever it is run from.
            m_client.setWorkingFolder(QFileInfo(file).absolutePath());
        }
        runScript(lines, m_options.script, fromStdin);
        break;
    }
    case Mode::Watch:
        watch();
        break;
    case Mode::Interactive:
        interactive();
        break;
    case Mode::Describe:
        describe();
        break;
    case Mode::Complete:
        complete();
        break;
    }
}

void Ctl::execute(const QString &line, const Client::Done &done)
{
    m_client.execute(line, done);
}

void Ctl::showReply(const Reply &reply)
{
    if (!m_options.json) {
        m_printer.reply(reply);
    }
}

void Ctl::runCommand()
{
    execute(Words::join(m_options.words), [this](const Reply &reply) {
        showReply(reply);
        finish(reply.ok ? 0 : 1);
    });
}

void Ctl::runScript(const QStringList &lines, const QString &source, bool fromStdin)
{
    m_runner = new ScriptRunner(
        [this](const QString &line, const std::function<void(const Reply &)> &done) { execute(line, done); }, this);
    connect(m_runner, &ScriptRunner::lineStarted, this, [this](const QString &line, bool script) {
        if (script && !m_options.json) {
            m_printer.echo(line);
        }
    });
    connect(m_runner, &ScriptRunner::answered, this, [this](const QString &, const Reply &reply) { showReply(reply); });
    connect(m_runner, &ScriptRunner::finished, this,
        [this](int exitCode, const QString &message) { finish(exitCode, message); });
    const auto go = [this, lines, source, fromStdin] {
        m_runner->start();
        if (fromStdin) {
            auto *reader = new LineReader(STDIN_FILENO, this);
            connect(reader, &LineReader::linesRead, m_runner,
                [this](const QStringList &read) { m_runner->feed(read, QStringLiteral("-"), true); });
            connect(reader, &LineReader::ended, m_runner, &ScriptRunner::endOfInput);
        } else {
            m_runner->feed(lines, source, true);
            m_runner->endOfInput();
        }
    };
    // Events are shown as vantix-sim shows them, unless only the answers are wanted.
    if (m_options.quiet) {
        go();
    } else {
        m_client.setEventsEnabled(true, [go](const Reply &) { go(); });
    }
}

void Ctl::watch()
{
    m_client.setEventsEnabled(true);
    if (m_options.log) {
        m_client.setLogEnabled(true);
    }
    auto *interrupt = new InterruptNotifier(this);
    connect(interrupt, &InterruptNotifier::interrupted, this, [this] { finish(0); });
}

void Ctl::interactive()
{
    m_runner = new ScriptRunner(
        [this](const QString &line, const std::function<void(const Reply &)> &done) { execute(line, done); }, this);
    connect(m_runner, &ScriptRunner::answered, this, [this](const QString &, const Reply &reply) { showReply(reply); });
    connect(m_runner, &ScriptRunner::finished, this,
        [this](int exitCode, const QString &message) { finish(exitCode, message); });
    auto *reader = new LineReader(STDIN_FILENO, this);
    connect(reader, &LineReader::linesRead, this, [this](const QStringList &lines) {
        QStringList sent;
        for (const QString &line : lines) {
            // quit leaves this console; it is not sent (in vantix-sim it would end the simulator).
            const QString word = line.trimmed().toLower();
            if (word == QLatin1String("quit") || word == QLatin1String("exit")) {
                m_runner->feed(sent, QStringLiteral("stdin"), false);
                sent.clear();
                m_runner->endOfInput();
                return;
            }
            sent.append(line);
        }
        m_runner->feed(sent, QStringLiteral("stdin"), false);
    });
    connect(reader, &LineReader::ended, m_runner, &ScriptRunner::endOfInput);
    // Ctrl+C stops what runs (a long wait or ramp); with nothing running it leaves.
    auto *interrupt = new InterruptNotifier(this);
    connect(interrupt, &InterruptNotifier::interrupted, this, [this] {
        if (m_runner->isBusy()) {
            m_client.cancel();
        } else {
            finish(0);
        }
    });
    m_client.setEventsEnabled(true, [this](const Reply &) {
        if (!m_options.quiet && !m_options.json && ::isatty(STDIN_FILENO)) {
            const QJsonObject greeting = m_client.greeting();
            m_printer.print(QStringLiteral("Connected to %1 (pid %2, %3); help lists the commands, quit leaves.")
                                .arg(greeting.value(QLatin1String("application")).toString())
                                .arg(qint64(greeting.value(QLatin1String("pid")).toDouble()))
                                .arg(greeting.value(QLatin1String("platform")).toString()));
        }
        m_runner->start();
    });
}

void Ctl::describe()
{
    m_client.describe([this](const Reply &reply) {
        if (!m_options.json) {
            m_out << QJsonDocument(reply.value.toObject()).toJson(QJsonDocument::Indented);
            m_out.flush();
        }
        finish(reply.ok ? 0 : 1);
    });
}

void Ctl::complete()
{
    m_client.describe([this](const Reply &reply) {
        for (const QString &candidate : Completion::candidates(reply.value.toObject(), m_options.words)) {
            m_out << candidate << '\n';
        }
        m_out.flush();
        finish(0);
    });
}

void Ctl::finish(int exitCode, const QString &message)
{
    if (m_finished) {
        return;
    }
    m_finished = true;
    if (!message.isEmpty()) {
        printError(message);
    }
    Q_EMIT finished(exitCode);
}

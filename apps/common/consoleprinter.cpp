#include "consoleprinter.h"

#include <vantixcontrol/protocol/event.h>
#include <vantixcontrol/protocol/reply.h>

#include <QTextStream>

#include <unistd.h>

namespace {
const char *const Bold = "1";
const char *const Dim = "2";
const char *const Red = "31";
const char *const Green = "32";
const char *const Yellow = "33";
const char *const Magenta = "35";
const char *const Cyan = "36";
} // namespace

ConsolePrinter::ConsolePrinter(QTextStream &out)
    : m_out(out)
{
}

bool ConsolePrinter::wantsColour(int fd)
{
    return ::isatty(fd) && qEnvironmentVariableIsEmpty("NO_COLOR");
}

QString ConsolePrinter::paint(const QString &text, const char *code) const
{
    return m_colour ? QStringLiteral("\x1b[%1m%2\x1b[0m").arg(QLatin1String(code), text) : text;
}

void ConsolePrinter::print(const QString &text)
{
    m_out << text << '\n';
    m_out.flush();
}

void ConsolePrinter::echo(const QString &line)
{
    if (!m_quiet) {
        print(paint(QStringLiteral("> ") + line, Bold));
    }
}

void ConsolePrinter::event(const VantixControl::Event &event)
{
    if (m_quiet) {
        return;
    }
    QString line = paint(QStringLiteral("[%1 ms]").arg(event.ms, 7), Dim) + QLatin1Char(' ') +
        paint(event.object, Cyan) + QLatin1Char(' ') + paint(event.signal, Yellow);
    const QString arguments = event.argumentsText();
    if (!arguments.isEmpty()) {
        line += QLatin1Char(' ') + arguments;
    }
    print(line);
}

void ConsolePrinter::log(const VantixControl::LogEntry &entry)
{
    if (!m_quiet) {
        print(paint(entry.text(), Magenta));
    }
}

void ConsolePrinter::reply(const VantixControl::Reply &reply)
{
    for (const QString &line : reply.lines) {
        print(line);
    }
    print(paint(reply.answer(), reply.ok ? Green : Red));
}

void ConsolePrinter::lines(const QStringList &lines)
{
    if (!m_quiet) {
        for (const QString &line : lines) {
            print(line);
        }
    }
}

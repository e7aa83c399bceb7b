#ifndef VANTIXAPPS_CONSOLEPRINTER_H
#define VANTIXAPPS_CONSOLEPRINTER_H

#include <QString>
#include <QStringList>

class QTextStream;

namespace VantixControl {
struct Event;
struct LogEntry;
struct Reply;
} // namespace VantixControl

/**
 * How the console programs print: events stamped with their time, answers in
 * green or red, script lines echoed. With quiet, only answers are printed.
 */
class ConsolePrinter
{
public:
    explicit ConsolePrinter(QTextStream &out);

    void setColour(bool colour) { m_colour = colour; }
    void setQuiet(bool quiet) { m_quiet = quiet; }
    bool isQuiet() const { return m_quiet; }
    /// Colour when the stream is a terminal and NO_COLOR is not set.
    static bool wantsColour(int fd);

    void echo(const QString &line);
    void event(const VantixControl::Event &event);
    void log(const VantixControl::LogEntry &entry);
    void reply(const VantixControl::Reply &reply);
    void lines(const QStringList &lines);
    void print(const QString &text);

private:
    QString paint(const QString &text, const char *code) const;

    QTextStream &m_out;
    bool m_colour = false;
    bool m_quiet = false;
};

#endif

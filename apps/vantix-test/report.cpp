#include "report.h"

#include "outcome.h"
#include "suite.h"

#include <sys/ioctl.h>
#include <unistd.h>

namespace {
// Lines of the application's standard error shown below an error.
constexpr int ErrorLines = 10;
const char *const Red = "31";
const char *const Green = "32";
const char *const Yellow = "33";

QString number(double value, int decimals)
{
    return QString::number(value, 'f', decimals);
}
} // namespace

Report::Report(std::FILE *out, bool terminal, bool colour)
    : m_out(out)
    , m_terminal(terminal)
    , m_colour(colour)
{
    m_clock.start();
}

QString Report::paint(const QString &text, const char *code) const
{
    return m_colour ? QStringLiteral("\x1b[%1m%2\x1b[0m").arg(QLatin1String(code), text) : text;
}

void Report::write(const QString &text)
{
    const QByteArray bytes = text.toLocal8Bit();
    std::fwrite(bytes.constData(), 1, size_t(bytes.size()), m_out);
    std::fflush(m_out);
}

void Report::clearProgress()
{
    if (m_progressShown) {
        write(QStringLiteral("\r\x1b[K"));
        m_progressShown = false;
    }
}

void Report::drawProgress()
{
    if (!m_terminal || m_running.isEmpty()) {
        return;
    }
    QString line = QStringLiteral("[%1/%2 %3 s] running: %4")
                       .arg(m_done)
                       .arg(m_total)
                       .arg(m_clock.elapsed() / 1000)
                       .arg(m_running.join(QStringLiteral(", ")));
    struct winsize size = {};
    const int width = ::ioctl(::fileno(m_out), TIOCGWINSZ, &size) == 0 && size.ws_col > 0 ? size.ws_col : 80;
    if (line.size() >= width) {
        line = line.left(qMax(0, width - 4)) + QStringLiteral("...");
    }
    write(QStringLiteral("\r\x1b[K") + line);
    m_progressShown = true;
}

void Report::started(const Scenario &scenario)
{
    m_running.append(scenario.name);
    clearProgress();
    drawProgress();
}

void Report::refresh()
{
    clearProgress();
    drawProgress();
}

void Report::print(const QString &line)
{
    clearProgress();
    write(line + QLatin1Char('\n'));
    drawProgress();
}

QStringList Report::details(const Outcome &outcome)
{
    QStringList lines;
    if (!outcome.message.isEmpty()) {
        lines.append(outcome.message);
    }
    if (outcome.kind == Outcome::Kind::Error) {
        QStringList err = QString::fromLocal8Bit(outcome.standardError).split(QLatin1Char('\n'));
        while (!err.isEmpty() && err.last().trimmed().isEmpty()) {
            err.removeLast();
        }
        if (err.isEmpty()) {
            lines.append(QStringLiteral("its standard error is empty"));
        } else {
            lines.append(QStringLiteral("the last lines of its standard error:"));
            for (const QString &line : err.mid(qMax(0, err.size() - ErrorLines))) {
                lines.append(QStringLiteral("  | ") + line);
            }
        }
    }
    return lines;
}

void Report::finished(const Scenario &scenario, const Outcome &outcome, const QString &artifacts)
{
    m_running.removeOne(scenario.name);
    if (outcome.kind == Outcome::Kind::Interrupted) {
        return;
    }
    ++m_done;
    QString text;
    switch (outcome.kind) {
    case Outcome::Kind::Passed:
        text = paint(QStringLiteral("PASS"), Green);
        break;
    case Outcome::Kind::Failed:
        text = paint(QStringLiteral("FAIL"), Red);
        break;
    default:
        text = paint(QStringLiteral("ERROR"), Yellow);
        break;
    }
    // An application that never got to the scenario is timed until it gave up.
    const bool ran = outcome.seconds > 0 || outcome.kind != Outcome::Kind::Error;
    text += QStringLiteral(" %1 %2 s").arg(scenario.name, number(ran ? outcome.seconds : outcome.totalSeconds, 2));
    if (outcome.simulatedSeconds >= 0) {
        text += QStringLiteral(" (simulated %1 s)").arg(number(outcome.simulatedSeconds, 1));
    }
    text += QLatin1Char('\n');
    QStringList below = details(outcome);
    if (!artifacts.isEmpty()) {
        below.append(QStringLiteral("output, logs and state kept in %1").arg(artifacts));
    }
    for (const QString &line : qAsConst(below)) {
        text += QStringLiteral("    ") + line + QLatin1Char('\n');
    }
    clearProgress();
    write(text);
    drawProgress();
}

QString Report::summaryLine(int passed, int failed, int errors)
{
    return QStringLiteral("%1 passed, %2 failed, %3 %4")
        .arg(passed)
        .arg(failed)
        .arg(errors)
        .arg(errors == 1 ? QStringLiteral("error") : QStringLiteral("errors"));
}

void Report::summary(int passed, int failed, int errors)
{
    m_running.clear();
    clearProgress();
    write(summaryLine(passed, failed, errors) + QLatin1Char('\n'));
}

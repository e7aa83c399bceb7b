#ifndef VANTIXTEST_REPORT_H
#define VANTIXTEST_REPORT_H

#include <QElapsedTimer>
#include <QString>
#include <QStringList>

#include <cstdio>

struct Outcome;
struct Scenario;

/**
 * What the user reads while the suite runs: a line per finished scenario,
 * the details of a failure or an error below it, and the closing count. On
 * a terminal a progress line shows what runs; it is taken away before any
 * other line is printed, so nothing is ever interleaved.
 */
class Report
{
public:
    Report(std::FILE *out, bool terminal, bool colour);

    void setTotal(int total) { m_total = total; }
    void started(const Scenario &scenario);
    /// @p artifacts: where the run's files were kept, empty when nowhere.
    void finished(const Scenario &scenario, const Outcome &outcome, const QString &artifacts);
    void print(const QString &line);
    /// Redraws the progress line (its clock moves).
    void refresh();
    /// "N passed, N failed, N errors".
    void summary(int passed, int failed, int errors);

    /// The outcome's details as the report and the JUnit file show them.
    static QStringList details(const Outcome &outcome);
    /// "N passed, N failed, N errors".
    static QString summaryLine(int passed, int failed, int errors);

private:
    void write(const QString &text);
    void clearProgress();
    void drawProgress();
    QString paint(const QString &text, const char *code) const;

    std::FILE *m_out;
    bool m_terminal;
    bool m_colour;
    int m_total = 0;
    int m_done = 0;
    QStringList m_running;
    QElapsedTimer m_clock;
    bool m_progressShown = false;
};

#endif

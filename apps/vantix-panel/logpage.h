#ifndef VANTIXPANEL_LOGPAGE_H
#define VANTIXPANEL_LOGPAGE_H

#include "page.h"

#include <QStringList>

class QLabel;
class QLineEdit;
class QPlainTextEdit;

namespace VantixControl {
class ScriptRunner;
}

/// The live event log with a filter, a console line, scenarios with their result, and recording.
class LogPage : public Page
{
    Q_OBJECT

public:
    explicit LogPage(PanelSession *session, QWidget *parent = nullptr);

    QLineEdit *commandLine() const { return m_command; }
    QLineEdit *filter() const { return m_filter; }
    QPlainTextEdit *log() const { return m_log; }
    QLabel *scenarioResult() const { return m_result; }
    /// Runs the scenario in @p file against the application.
    void runScenario(const QString &file);

private:
    void append(const QString &line);
    void refilter();
    bool matches(const QString &line) const;

    QPlainTextEdit *m_log;
    QLineEdit *m_filter;
    QLineEdit *m_command;
    QLineEdit *m_scenario;
    QLabel *m_result;
    QLineEdit *m_recordFile;
    QStringList m_lines;
    VantixControl::ScriptRunner *m_runner = nullptr;
};

#endif

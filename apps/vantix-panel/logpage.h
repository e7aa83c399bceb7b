#ifndef VANTIXPANEL_LOGPAGE_H
#define VANTIXPANEL_LOGPAGE_H

#include "page.h"

#include <QStringList>

class ElidedLabel;
class FeedbackLabel;
class QLineEdit;
class QPushButton;
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
    ElidedLabel *scenarioResult() const { return m_result; }
    QLineEdit *recordFile() const { return m_recordFile; }
    QPushButton *recordButton() const { return m_record; }
    QPushButton *stopRecordingButton() const { return m_stopRecording; }
    /// What the page says of the recording: "Recording to <file>", or empty.
    QString recordingText() const;
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
    ElidedLabel *m_result;
    QLineEdit *m_recordFile;
    QPushButton *m_record;
    QPushButton *m_stopRecording;
    ElidedLabel *m_recording;
    FeedbackLabel *m_recordFeedback;
    QStringList m_lines;
    VantixControl::ScriptRunner *m_runner = nullptr;
};

#endif

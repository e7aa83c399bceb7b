#include "logpage.h"

#include "elidedlabel.h"
#include "feedbacklabel.h"
#include "panelsession.h"

#include <vantixcontrol/client/scriptrunner.h>
#include <vantixcontrol/protocol/event.h>
#include <vantixcontrol/protocol/reply.h>
#include <vantixcontrol/protocol/words.h>

#include <QFile>
#include <QFileDialog>
#include <QFileInfo>
#include <QFontDatabase>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QVBoxLayout>

using namespace VantixControl;

namespace {
// The log keeps this many lines; older ones go.
constexpr int maxLines = 5000;
const QColor failColour(0xc6, 0x28, 0x28);
const QColor passColour(0x2e, 0x7d, 0x32);
} // namespace

LogPage::LogPage(PanelSession *session, QWidget *parent)
    : Page(session, parent)
    , m_log(new QPlainTextEdit(this))
    , m_filter(new QLineEdit(this))
    , m_command(new QLineEdit(this))
    , m_scenario(new QLineEdit(this))
    , m_result(new ElidedLabel(this))
    , m_recordFile(new QLineEdit(this))
    , m_record(new QPushButton(tr("Record"), this))
    , m_stopRecording(new QPushButton(tr("Stop recording"), this))
    , m_recording(new ElidedLabel(this))
    , m_recordFeedback(feedback())
{
    m_log->setReadOnly(true);
    m_log->setMaximumBlockCount(maxLines);
    m_log->setFont(QFontDatabase::systemFont(QFontDatabase::FixedFont));
    m_log->setLineWrapMode(QPlainTextEdit::WidgetWidth);
    m_filter->setPlaceholderText(tr("filter: words the line must hold"));
    m_filter->setClearButtonEnabled(true);
    m_command->setPlaceholderText(tr("any console command: help, get battery1 fuelGauge, setwifistate,12 …"));
    m_scenario->setPlaceholderText(tr("scenario file (.vsim)"));
    m_recordFile->setPlaceholderText(tr("file to record into"));
    m_result->setBold(true);
    m_recording->setColour(failColour);
    m_recording->setBold(true);
    m_stopRecording->setEnabled(false);

    auto *grid = new QGridLayout;
    grid->setColumnStretch(1, 1);
    grid->addWidget(new QLabel(tr("Filter"), this), 0, 0);
    grid->addWidget(m_filter, 0, 1, 1, 3);
    grid->addWidget(new QLabel(tr("Command"), this), 1, 0);
    grid->addWidget(m_command, 1, 1, 1, 3);
    auto *browse = new QPushButton(tr("Choose…"), this);
    auto *runScenarioButton = new QPushButton(tr("Run scenario"), this);
    grid->addWidget(new QLabel(tr("Scenario"), this), 2, 0);
    grid->addWidget(m_scenario, 2, 1);
    grid->addWidget(browse, 2, 2);
    grid->addWidget(runScenarioButton, 2, 3);
    // The result takes one line whatever its length: the whole of it is in its tooltip and in the log.
    grid->addWidget(m_result, 3, 1, 1, 3);
    grid->addWidget(new QLabel(tr("Record"), this), 4, 0);
    grid->addWidget(m_recordFile, 4, 1);
    grid->addWidget(m_record, 4, 2);
    grid->addWidget(m_stopRecording, 4, 3);
    auto *recordState = new QHBoxLayout;
    recordState->addWidget(m_recording, 1);
    recordState->addWidget(m_recordFeedback, 1);
    grid->addLayout(recordState, 5, 1, 1, 3);

    auto *layout = new QVBoxLayout(this);
    layout->addWidget(m_log, 1);
    layout->addLayout(grid);

    connect(m_filter, &QLineEdit::textChanged, this, &LogPage::refilter);
    connect(m_command, &QLineEdit::returnPressed, this, [this] {
        const QString line = m_command->text().trimmed();
        if (!line.isEmpty()) {
            m_session->run(line);
            m_command->clear();
        }
    });
    connect(browse, &QPushButton::clicked, this, [this] {
        const QString file =
            QFileDialog::getOpenFileName(this, tr("Scenario"), QString(), tr("Scenarios (*.vsim);;All files (*)"));
        if (!file.isEmpty()) {
            m_scenario->setText(file);
        }
    });
    connect(runScenarioButton, &QPushButton::clicked, this, [this] { runScenario(m_scenario->text().trimmed()); });
    connect(m_record, &QPushButton::clicked, this, [this] {
        // The application writes the file: it needs a path that does not depend on its folder.
        const QString file = m_recordFile->text().trimmed();
        if (file.isEmpty()) {
            m_recordFeedback->showProblem(tr("Name the file to record into first"));
            return;
        }
        run(Words::join({QStringLiteral("record"), QFileInfo(file).absoluteFilePath()}), m_recordFeedback);
    });
    connect(
        m_stopRecording, &QPushButton::clicked, this, [this] { run(QStringLiteral("record stop"), m_recordFeedback); });
    connect(session, &PanelSession::recordingChanged, this, [this](const QString &file) {
        m_recording->setText(file.isEmpty() ? QString() : tr("● Recording to %1").arg(file));
        m_stopRecording->setEnabled(!file.isEmpty());
        m_record->setEnabled(file.isEmpty());
    });

    connect(session, &PanelSession::attached, this, [this] {
        const Client::Application a = m_session->application();
        append(tr("-- attached to %1 (pid %2, %3); events follow as they happen")
                   .arg(a.name)
                   .arg(a.pid)
                   .arg(a.platformName));
    });
    connect(session, &PanelSession::detached, this,
        [this](const QString &reason) { append(tr("-- detached: %1").arg(reason)); });
    // As in vantix-sim: the line first, then the events it caused, then its answer.
    connect(session, &PanelSession::sent, this, [this](const QString &line) { append(QStringLiteral("> ") + line); });
    connect(session, &PanelSession::eventReceived, this, [this](const Event &event) { append(event.text()); });
    connect(session, &PanelSession::logReceived, this, [this](const LogEntry &entry) { append(entry.text()); });
    connect(session, &PanelSession::answered, this, [this](const QString &, const Reply &reply) {
        for (const QString &l : reply.rendered().split(QLatin1Char('\n'))) {
            append(QStringLiteral("  ") + l);
        }
    });
}

QString LogPage::recordingText() const
{
    return m_recording->text();
}

void LogPage::runScenario(const QString &file)
{
    QFile in(file);
    if (!in.open(QIODevice::ReadOnly | QIODevice::Text)) {
        m_result->setText(tr("cannot read %1: %2").arg(file, in.errorString()));
        m_result->setColour(failColour);
        return;
    }
    if (m_runner && !m_runner->isFinished()) {
        m_result->setText(tr("a scenario is running"));
        return;
    }
    delete m_runner;
    m_runner = new ScriptRunner(
        [this](const QString &line, const std::function<void(const Reply &)> &done) { m_session->run(line, done); },
        this);
    const QString name = QFileInfo(file).fileName();
    m_result->setText(tr("%1: running…").arg(name));
    m_result->setColour(QColor());
    connect(m_runner, &ScriptRunner::finished, this, [this, name](int exitCode, const QString &message) {
        const QString result = exitCode == 0 ? tr("%1: PASS").arg(name) : tr("%1: FAIL — %2").arg(name, message);
        m_result->setText(result);
        m_result->setColour(exitCode == 0 ? passColour : failColour);
        append(QStringLiteral("-- ") + result);
    });
    m_runner->start();
    m_runner->feed(QString::fromUtf8(in.readAll()).split(QLatin1Char('\n')), file, true);
    m_runner->endOfInput();
}

bool LogPage::matches(const QString &line) const
{
    const QStringList words = m_filter->text().split(QLatin1Char(' '), Qt::SkipEmptyParts);
    for (const QString &word : words) {
        if (!line.contains(word, Qt::CaseInsensitive)) {
            return false;
        }
    }
    return true;
}

void LogPage::append(const QString &line)
{
    m_lines.append(line);
    if (m_lines.size() > maxLines) {
        m_lines.removeFirst();
    }
    if (matches(line)) {
        m_log->appendPlainText(line);
    }
}

void LogPage::refilter()
{
    QStringList shown;
    for (const QString &line : qAsConst(m_lines)) {
        if (matches(line)) {
            shown.append(line);
        }
    }
    m_log->setPlainText(shown.join(QLatin1Char('\n')));
    m_log->moveCursor(QTextCursor::End);
}

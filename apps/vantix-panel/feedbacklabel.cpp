#include "feedbacklabel.h"

#include "panelsession.h"

#include <vantixcontrol/protocol/event.h>
#include <vantixcontrol/protocol/reply.h>

namespace {
// A device reports some failures a little after the answer (a disk's mount after 100 ms, a format after 500 ms).
constexpr int errorGraceMs = 2000;
const QColor problemColour(0xc6, 0x28, 0x28);
} // namespace

FeedbackLabel::FeedbackLabel(PanelSession *session, const QStringList &targets, QWidget *parent)
    : ElidedLabel(parent)
    , m_session(session)
    , m_targets(targets)
{
    setObjectName(QStringLiteral("feedback"));
    setColour(problemColour);
    connect(session, &PanelSession::eventReceived, this, &FeedbackLabel::onEvent);
    // A new application owes nothing to the old one's answers.
    connect(session, &PanelSession::attaching, this, [this] {
        m_waiting = false;
        clearProblem();
    });
}

void FeedbackLabel::begin()
{
    m_waiting = true;
    m_answered = false;
    m_deviceError = false;
}

void FeedbackLabel::showReply(const VantixControl::Reply &reply, bool showOkText)
{
    // The grace period for late device errors runs from the answer on.
    m_answered = true;
    m_since.start();
    if (!reply.ok) {
        showProblem(reply.text);
    } else if (!m_deviceError) {
        clearProblem();
        if (showOkText && !reply.text.isEmpty()) {
            setColour(QColor());
            setText(reply.text);
        }
    }
}

void FeedbackLabel::showProblem(const QString &text, const QString &detail)
{
    m_problem = text;
    setColour(problemColour);
    setText(text);
    if (!detail.isEmpty()) {
        setToolTip(text + QLatin1Char('\n') + detail);
    }
}

void FeedbackLabel::clearProblem()
{
    m_problem.clear();
    setText(QString());
}

QSize FeedbackLabel::sizeHint() const
{
    return QSize(fontMetrics().averageCharWidth() * 24, fontMetrics().height());
}

void FeedbackLabel::onEvent(const VantixControl::Event &event)
{
    if (!m_waiting || event.signal != QLatin1String("error") || !m_targets.contains(event.object)) {
        return;
    }
    if (m_answered && m_since.elapsed() > errorGraceMs) {
        m_waiting = false;
        return;
    }
    const QString key = event.arguments.isEmpty() ? QString() : event.arguments.first().value.toString();
    if (key.isEmpty() || key == QLatin1String("E_NO_ERROR")) {
        return;
    }
    m_deviceError = true;
    // Beside a control of one device its name goes without saying.
    const QString words = m_session->enumLabel(QStringLiteral("DeviceError"), key);
    showProblem(m_targets.size() == 1 ? tr("Error: %1").arg(words) : tr("%1: %2").arg(event.object, words),
        tr("%1 error %2").arg(event.object, key));
}

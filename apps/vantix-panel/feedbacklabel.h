#ifndef VANTIXPANEL_FEEDBACKLABEL_H
#define VANTIXPANEL_FEEDBACKLABEL_H

#include "elidedlabel.h"

#include <QElapsedTimer>
#include <QStringList>

class PanelSession;

namespace VantixControl {
struct Event;
struct Reply;
} // namespace VantixControl

/**
 * What became of a control's last action, shown beside the control: the
 * application's refusal, a device's error signal that followed the action,
 * or a value that was not sent because it is not one the control takes.
 * It stays until the control's next success. It keeps its line when empty,
 * so that showing a problem never moves its row.
 */
class FeedbackLabel : public ElidedLabel
{
    Q_OBJECT

public:
    /// @p targets are the devices whose error signals after an action are this control's.
    FeedbackLabel(PanelSession *session, const QStringList &targets, QWidget *parent = nullptr);

    void setTargets(const QStringList &targets) { m_targets = targets; }
    /// The problem shown; empty after a success.
    QString problem() const { return m_problem; }

    /// An action starts: the devices' error signals count from now until shortly after its answer.
    void begin();
    /// The answer: KO shows its error; OK clears, unless a device error came with it, and shows the answer's text
    /// with @p showOkText.
    void showReply(const VantixControl::Reply &reply, bool showOkText = false);
    /// A problem found before anything was sent.
    void showProblem(const QString &text, const QString &detail = QString());
    void clearProblem();

    /// The same whatever the text: an outcome never changes the room its row is given.
    QSize sizeHint() const override;

private:
    void onEvent(const VantixControl::Event &event);

    PanelSession *m_session;
    QStringList m_targets;
    QString m_problem;
    QElapsedTimer m_since;
    bool m_waiting = false;
    bool m_answered = false;
    bool m_deviceError = false;
};

#endif

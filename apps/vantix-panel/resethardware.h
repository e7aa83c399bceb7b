#ifndef VANTIXPANEL_RESETHARDWARE_H
#define VANTIXPANEL_RESETHARDWARE_H

#include <QWidget>

class PanelSession;
class QLabel;
class QPushButton;

/**
 * "Reset hardware": runs reset, which brings the application's simulated
 * hardware back to its state right after apiReady, and shows the outcome
 * beside the button until the next reset: what was done, or what could not
 * be restored, the whole answer in the tooltip.
 */
class ResetHardware : public QWidget
{
    Q_OBJECT

public:
    explicit ResetHardware(PanelSession *session, QWidget *parent = nullptr);

    QPushButton *button() const { return m_button; }
    QString outcome() const;
    bool failed() const { return m_failed; }

private:
    void reset();

    PanelSession *m_session;
    QPushButton *m_button;
    QLabel *m_outcome;
    bool m_failed = false;
};

#endif

#ifndef VANTIXPANEL_CONNECTBAR_H
#define VANTIXPANEL_CONNECTBAR_H

#include <QWidget>

class ElidedLabel;
class QComboBox;
class QPushButton;
class SimLauncher;

/**
 * Chooses the application to drive: the running ones as `vantix-ctl list`
 * shows them, or a new simulator for a chosen platform.
 */
class ConnectBar : public QWidget
{
    Q_OBJECT

public:
    explicit ConnectBar(QWidget *parent = nullptr);

    /// Lists the running applications again; @p prefer is chosen when it is among them.
    void refresh(const QString &prefer = QString());
    void setStatus(const QString &text, bool problem = false);
    QString statusText() const;
    SimLauncher *launcher() const { return m_launcher; }
    /// Starts a simulator of the platform chosen in the bar.
    void startSimulator();

Q_SIGNALS:
    void attachRequested(const QString &socketPath);
    /// The list was read; @p count applications run.
    void refreshed(int count);

private:
    QComboBox *m_applications;
    QPushButton *m_attach;
    QComboBox *m_platforms;
    QPushButton *m_start;
    ElidedLabel *m_status;
    SimLauncher *m_launcher;
};

#endif

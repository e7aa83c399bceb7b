#ifndef VANTIXPANEL_PAGE_H
#define VANTIXPANEL_PAGE_H

#include <QWidget>

#include <functional>

class PanelSession;
class PropertyEditor;
class QLabel;
class QPushButton;

/**
 * What every page of the panel shares: running console lines with the
 * application's refusal shown on the page, and buttons and editors bound
 * to the session.
 */
class Page : public QWidget
{
    Q_OBJECT

public:
    explicit Page(PanelSession *session, QWidget *parent = nullptr);

    /// The last refusal shown on this page; empty after a line is accepted.
    QString errorText() const;

protected:
    /// Runs @p line; a KO answer shows on the page.
    void run(const QString &line);
    QPushButton *commandButton(const QString &text, const QString &line);
    /// A button whose line is built when it is clicked (from fields of the page).
    QPushButton *commandButton(const QString &text, const std::function<QString()> &line);
    PropertyEditor *editor(const QString &target, const QString &property);
    /// Shows the application's answer below the page's content; call once the layout is set.
    QLabel *statusLabel() const { return m_status; }

    PanelSession *m_session;

private:
    QLabel *m_status;
};

#endif

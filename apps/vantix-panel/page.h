#ifndef VANTIXPANEL_PAGE_H
#define VANTIXPANEL_PAGE_H

#include <QStringList>
#include <QWidget>

#include <functional>

class FeedbackLabel;
class PanelSession;
class PropertyEditor;
class QPushButton;

/**
 * What every page of the panel shares: console lines run for a control with
 * their outcome shown beside it, and buttons and editors bound to the
 * session.
 */
class Page : public QWidget
{
    Q_OBJECT

public:
    explicit Page(PanelSession *session, QWidget *parent = nullptr);

    /// The problems shown beside the page's controls now (refusals, device errors, values not sent).
    QStringList problems() const;

protected:
    /// A place beside a control for its outcome; the error signals of @p targets after an action count as its.
    FeedbackLabel *feedback(const QStringList &targets = QStringList());
    /// Runs @p line; its outcome shows on @p feedback.
    void run(const QString &line, FeedbackLabel *feedback);
    /// A button that runs @p line; the line is also its "line" property and in its tooltip.
    QPushButton *commandButton(const QString &text, const QString &line, FeedbackLabel *feedback);
    /// A button whose line is built when it is clicked; an empty line is not sent (the builder shows why).
    QPushButton *commandButton(const QString &text, const std::function<QString()> &line, FeedbackLabel *feedback);
    PropertyEditor *editor(const QString &target, const QString &property);
    /// @p controls side by side, wrapping on a narrow page, and @p feedback on their right.
    QWidget *controlRow(const QList<QWidget *> &controls, FeedbackLabel *feedback);
    /// @p field taking the width it is given, and @p feedback on its right.
    QWidget *fieldRow(QWidget *field, FeedbackLabel *feedback);

    PanelSession *m_session;
};

#endif

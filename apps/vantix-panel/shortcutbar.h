#ifndef VANTIXPANEL_SHORTCUTBAR_H
#define VANTIXPANEL_SHORTCUTBAR_H

#include "page.h"

class FeedbackLabel;
class FlowLayout;
class QMenu;
class QToolButton;

/**
 * A button per keyboard shortcut of the debug controller, named by what it
 * does and sent as the key command; listed by the application. The row
 * wraps on a narrow window, over two lines at most: the keys that do not
 * fit are in the "More keys" menu.
 */
class ShortcutBar : public Page
{
    Q_OBJECT

public:
    explicit ShortcutBar(PanelSession *session, QWidget *parent = nullptr);

    /// The keys' buttons, shown or not, in the application's order.
    QList<QPushButton *> keyButtons() const { return m_keys; }
    QToolButton *moreButton() const { return m_more; }

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    void rebuild();
    /// Shows the buttons that fit in the lines allowed at the row's width; the menu holds the others.
    void fit();

    QWidget *m_holder;
    FlowLayout *m_buttons;
    QList<QPushButton *> m_keys;
    QToolButton *m_more;
    QMenu *m_menu;
    FeedbackLabel *m_feedback;
    bool m_built = false;
    int m_fittedWidth = -1;
};

#endif

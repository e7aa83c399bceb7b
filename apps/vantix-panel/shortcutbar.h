#ifndef VANTIXPANEL_SHORTCUTBAR_H
#define VANTIXPANEL_SHORTCUTBAR_H

#include "page.h"

class QHBoxLayout;

/// A button per keyboard shortcut of the debug controller, sent as the key command; listed by the application.
class ShortcutBar : public Page
{
    Q_OBJECT

public:
    explicit ShortcutBar(PanelSession *session, QWidget *parent = nullptr);

private:
    void rebuild();

    QHBoxLayout *m_buttons;
};

#endif

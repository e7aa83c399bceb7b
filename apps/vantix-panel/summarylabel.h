#ifndef VANTIXPANEL_SUMMARYLABEL_H
#define VANTIXPANEL_SUMMARYLABEL_H

#include "elidedlabel.h"

class PanelSession;

/**
 * The values a user watches most, in one line whatever page is open: fuel,
 * networks, jack, flight mode, and whether the application has powered off.
 */
class SummaryLabel : public ElidedLabel
{
    Q_OBJECT

public:
    explicit SummaryLabel(PanelSession *session, QWidget *parent = nullptr);

private:
    void refresh();

    PanelSession *m_session;
    bool m_poweredOff = false;
};

#endif

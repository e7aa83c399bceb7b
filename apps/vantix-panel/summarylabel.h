#ifndef VANTIXPANEL_SUMMARYLABEL_H
#define VANTIXPANEL_SUMMARYLABEL_H

#include <QLabel>

class PanelSession;

/// The values a user watches most, in one line whatever page is open: fuel, networks, jack, flight mode.
class SummaryLabel : public QLabel
{
    Q_OBJECT

public:
    explicit SummaryLabel(PanelSession *session, QWidget *parent = nullptr);

private:
    void refresh();

    PanelSession *m_session;
};

#endif

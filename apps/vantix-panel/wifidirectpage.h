#ifndef VANTIXPANEL_WIFIDIRECTPAGE_H
#define VANTIXPANEL_WIFIDIRECTPAGE_H

#include "page.h"

class QVBoxLayout;

/**
 * The Wi-Fi P2P manager (find peers, create and remove the group) and each
 * peer it knows with its state, connect and disconnect; from the schema, as
 * the application names them.
 */
class WifiDirectPage : public Page
{
    Q_OBJECT

public:
    explicit WifiDirectPage(PanelSession *session, QWidget *parent = nullptr);

    /// The peers shown, by target name.
    QStringList peers() const { return m_peers; }

private:
    void rebuild();

    QVBoxLayout *m_content;
    QStringList m_peers;
    bool m_present = false;
    bool m_built = false;
};

#endif

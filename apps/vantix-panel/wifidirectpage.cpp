#include "wifidirectpage.h"

#include "feedbacklabel.h"
#include "panelsession.h"
#include "targetform.h"

#include <QGroupBox>
#include <QJsonObject>
#include <QLabel>
#include <QPushButton>
#include <QScrollArea>
#include <QVBoxLayout>

namespace {
const QString p2p = QStringLiteral("ID_NETWORK_WIFI_P2P");
} // namespace

WifiDirectPage::WifiDirectPage(PanelSession *session, QWidget *parent)
    : Page(session, parent)
    , m_content(new QVBoxLayout)
{
    auto *scroll = new QScrollArea(this);
    scroll->setWidgetResizable(true);
    auto *inner = new QWidget(scroll);
    inner->setLayout(m_content);
    scroll->setWidget(inner);
    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(scroll, 1);
    connect(session, &PanelSession::schemaChanged, this, &WifiDirectPage::rebuild);
}

void WifiDirectPage::rebuild()
{
    QStringList peers;
    for (const QString &name : m_session->targetNames()) {
        if (m_session->target(name).value(QLatin1String("class")).toString().contains(QLatin1String("Peer"))) {
            peers.append(name);
        }
    }
    const bool present = !m_session->target(p2p).isEmpty();
    if (m_built && peers == m_peers && present == m_present) {
        return; // nothing came or went: the forms stay, and so does what is typed in them
    }
    m_built = true;
    m_present = present;
    m_peers = peers;
    while (QLayoutItem *item = m_content->takeAt(0)) {
        delete item->widget();
        delete item;
    }
    auto *parent = m_content->parentWidget();
    if (!present) {
        auto *none = new QLabel(tr("The application has no Wi-Fi P2P device (%1).").arg(p2p), parent);
        none->setWordWrap(true);
        m_content->addWidget(none);
        FeedbackLabel *plugFeedback = feedback({p2p});
        m_content->addWidget(controlRow(
            {commandButton(tr("Plug %1").arg(p2p), QStringLiteral("plug ") + p2p, plugFeedback)}, plugFeedback));
        m_content->addStretch(1);
        return;
    }
    auto *manager = new QGroupBox(tr("Wi-Fi P2P manager (%1)").arg(p2p), parent);
    auto *managerLayout = new QVBoxLayout(manager);
    managerLayout->addWidget(new TargetForm(m_session, p2p, true, PropertyEditor::Words, manager));
    m_content->addWidget(manager);
    for (const QString &peer : qAsConst(peers)) {
        auto *box = new QGroupBox(tr("Peer %1").arg(peer), parent);
        auto *boxLayout = new QVBoxLayout(box);
        boxLayout->addWidget(new TargetForm(m_session, peer, true, PropertyEditor::Words, box));
        m_content->addWidget(box);
    }
    if (peers.isEmpty()) {
        m_content->addWidget(new QLabel(tr("No peer yet: find peers with the manager's methods."), parent));
    }
    m_content->addStretch(1);
}

#include "shortcutbar.h"

#include "panelsession.h"

#include <QHBoxLayout>
#include <QJsonArray>
#include <QJsonObject>
#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>

ShortcutBar::ShortcutBar(PanelSession *session, QWidget *parent)
    : Page(session, parent)
    , m_buttons(new QHBoxLayout)
{
    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addLayout(m_buttons);
    layout->addWidget(statusLabel());
    connect(session, &PanelSession::schemaChanged, this, &ShortcutBar::rebuild);
}

void ShortcutBar::rebuild()
{
    if (m_buttons->count() > 0) {
        return; // the shortcuts do not change while the application runs
    }
    m_buttons->addWidget(new QLabel(tr("Keys:"), this));
    for (const QJsonValue &s : m_session->schema().value(QLatin1String("shortcuts")).toArray()) {
        const QString key = s.toObject().value(QLatin1String("key")).toString();
        QPushButton *button = commandButton(key, QStringLiteral("key ") + key);
        button->setObjectName(key);
        button->setToolTip(s.toObject().value(QLatin1String("help")).toString());
        m_buttons->addWidget(button);
    }
    m_buttons->addStretch(1);
}

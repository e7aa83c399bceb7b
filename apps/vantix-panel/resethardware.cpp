#include "resethardware.h"

#include "panelsession.h"

#include <vantixcontrol/protocol/reply.h>

#include <QHBoxLayout>
#include <QLabel>
#include <QPointer>
#include <QPushButton>

using VantixControl::Reply;

ResetHardware::ResetHardware(PanelSession *session, QWidget *parent)
    : QWidget(parent)
    , m_session(session)
    , m_button(new QPushButton(tr("Reset hardware"), this))
    , m_outcome(new QLabel(this))
{
    m_button->setToolTip(tr("reset: unplug, plug and set everything back to the state right after apiReady"));
    m_button->setEnabled(session->isAttached());
    // A long answer wraps within the row; it never widens the window.
    m_outcome->setWordWrap(true);
    m_outcome->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);
    m_outcome->setTextInteractionFlags(Qt::TextSelectableByMouse);
    auto *layout = new QHBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(m_button);
    layout->addWidget(m_outcome, 1);

    connect(m_button, &QPushButton::clicked, this, &ResetHardware::reset);
    connect(session, &PanelSession::attached, this, [this] {
        m_button->setEnabled(true);
        m_outcome->clear();
        m_outcome->setToolTip(QString());
    });
    connect(session, &PanelSession::detached, this, [this] { m_button->setEnabled(false); });
}

QString ResetHardware::outcome() const
{
    return m_outcome->text();
}

void ResetHardware::reset()
{
    m_button->setEnabled(false);
    m_outcome->setStyleSheet(QString());
    m_outcome->setText(tr("resetting… (a flight-mode switch takes 2 s)"));
    const QPointer<ResetHardware> self(this);
    m_session->run(QStringLiteral("reset"), [self](const Reply &reply) {
        if (!self) {
            return;
        }
        self->m_failed = !reply.ok;
        self->m_button->setEnabled(self->m_session->isAttached());
        self->m_outcome->setText(reply.ok ? tr("Done: %1").arg(reply.text) : tr("Failed: %1").arg(reply.text));
        self->m_outcome->setStyleSheet(
            reply.ok ? QStringLiteral("color: #2e7d32;") : QStringLiteral("color: #c62828;"));
        self->m_outcome->setToolTip(reply.rendered());
    });
}

#include "page.h"

#include "panelsession.h"
#include "propertyeditor.h"

#include <vantixcontrol/protocol/reply.h>

#include <QLabel>
#include <QPointer>
#include <QPushButton>

using VantixControl::Reply;

Page::Page(PanelSession *session, QWidget *parent)
    : QWidget(parent)
    , m_session(session)
    , m_status(new QLabel(this))
{
    m_status->setObjectName(QStringLiteral("pageError"));
    m_status->setStyleSheet(QStringLiteral("color: #c62828;"));
    m_status->setWordWrap(true);
    m_status->hide();
}

QString Page::errorText() const
{
    return m_status->isHidden() ? QString() : m_status->text();
}

void Page::run(const QString &line)
{
    QPointer<QLabel> status(m_status);
    m_session->run(line, [status, line](const Reply &reply) {
        if (!status) {
            return;
        }
        if (reply.ok) {
            status->clear();
            status->hide();
        } else {
            status->setText(QStringLiteral("%1: %2").arg(line, reply.text));
            status->show();
        }
    });
}

QPushButton *Page::commandButton(const QString &text, const QString &line)
{
    auto *button = new QPushButton(text, this);
    button->setToolTip(line);
    connect(button, &QPushButton::clicked, this, [this, line] { run(line); });
    return button;
}

QPushButton *Page::commandButton(const QString &text, const std::function<QString()> &line)
{
    auto *button = new QPushButton(text, this);
    connect(button, &QPushButton::clicked, this, [this, line] { run(line()); });
    return button;
}

PropertyEditor *Page::editor(const QString &target, const QString &property)
{
    return new PropertyEditor(m_session, target, property, this);
}

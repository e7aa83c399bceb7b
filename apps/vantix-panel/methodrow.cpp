#include "methodrow.h"

#include <vantixcontrol/protocol/words.h>
#include "panelsession.h"

#include <vantixcontrol/protocol/reply.h>

#include <QHBoxLayout>
#include <QJsonArray>
#include <QLabel>
#include <QLineEdit>
#include <QPointer>
#include <QPushButton>

using VantixControl::Reply;

MethodRow::MethodRow(PanelSession *session, const QString &target, const QJsonObject &method, QWidget *parent)
    : QWidget(parent)
    , m_session(session)
    , m_target(target)
    , m_method(method.value(QLatin1String("name")).toString())
    , m_button(new QPushButton(m_method, this))
    , m_answer(new QLabel(this))
{
    auto *layout = new QHBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    m_button->setToolTip((method.value(QLatin1String("signature")).toString() + QLatin1Char('\n') +
        method.value(QLatin1String("hint")).toString())
                             .trimmed());
    layout->addWidget(m_button);
    QStringList help;
    for (const QJsonValue &a : method.value(QLatin1String("arguments")).toArray()) {
        const QJsonObject argument = a.toObject();
        help.append(QStringLiteral("%1 %2").arg(
            argument.value(QLatin1String("type")).toString(), argument.value(QLatin1String("name")).toString()));
    }
    if (!help.isEmpty()) {
        m_arguments = new QLineEdit(this);
        m_arguments->setPlaceholderText(help.join(QLatin1String(", ")));
        connect(m_arguments, &QLineEdit::returnPressed, this, &MethodRow::call);
        layout->addWidget(m_arguments, 1);
    }
    m_answer->setWordWrap(true);
    layout->addWidget(m_answer, 1);
    connect(m_button, &QPushButton::clicked, this, &MethodRow::call);
}

QString MethodRow::answerText() const
{
    return m_answer->text();
}

void MethodRow::call()
{
    // Arguments are typed as on the console: blank-separated, quoted where they hold blanks.
    QString line = VantixControl::Words::join({QStringLiteral("call"), m_target, m_method});
    if (m_arguments && !m_arguments->text().trimmed().isEmpty()) {
        line += QLatin1Char(' ') + m_arguments->text().trimmed();
    }
    QPointer<QLabel> answer(m_answer);
    m_session->run(line, [answer](const Reply &reply) {
        if (answer) {
            answer->setText(reply.ok ? reply.text : reply.text);
            answer->setStyleSheet(reply.ok ? QStringLiteral("color: #2e7d32;") : QStringLiteral("color: #c62828;"));
        }
    });
}

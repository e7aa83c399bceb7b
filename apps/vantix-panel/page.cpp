#include "page.h"

#include "feedbacklabel.h"
#include "flowlayout.h"
#include "panelsession.h"
#include "propertyeditor.h"

#include <vantixcontrol/protocol/reply.h>

#include <QHBoxLayout>
#include <QPointer>
#include <QPushButton>

using VantixControl::Reply;

Page::Page(PanelSession *session, QWidget *parent)
    : QWidget(parent)
    , m_session(session)
{
}

QStringList Page::problems() const
{
    QStringList result;
    for (const FeedbackLabel *label : findChildren<FeedbackLabel *>()) {
        if (!label->problem().isEmpty()) {
            result.append(label->problem());
        }
    }
    return result;
}

FeedbackLabel *Page::feedback(const QStringList &targets)
{
    return new FeedbackLabel(m_session, targets, this);
}

void Page::run(const QString &line, FeedbackLabel *feedback)
{
    QPointer<FeedbackLabel> label(feedback);
    if (label) {
        label->begin();
    }
    m_session->run(line, [label](const Reply &reply) {
        if (label) {
            label->showReply(reply);
        }
    });
}

QPushButton *Page::commandButton(const QString &text, const QString &line, FeedbackLabel *feedback)
{
    auto *button = new QPushButton(text, this);
    button->setProperty("line", line);
    button->setToolTip(line);
    connect(button, &QPushButton::clicked, this, [this, line, feedback] { run(line, feedback); });
    return button;
}

QPushButton *Page::commandButton(const QString &text, const std::function<QString()> &line, FeedbackLabel *feedback)
{
    auto *button = new QPushButton(text, this);
    connect(button, &QPushButton::clicked, this, [this, line, feedback] {
        const QString built = line();
        if (!built.isEmpty()) {
            run(built, feedback);
        }
    });
    return button;
}

PropertyEditor *Page::editor(const QString &target, const QString &property)
{
    return new PropertyEditor(m_session, target, property, PropertyEditor::Words, this);
}

QWidget *Page::controlRow(const QList<QWidget *> &controls, FeedbackLabel *feedback)
{
    auto *row = new QWidget(this);
    auto *layout = new QHBoxLayout(row);
    layout->setContentsMargins(0, 0, 0, 0);
    auto *flowHolder = new QWidget(row);
    auto *flow = new FlowLayout(flowHolder);
    for (QWidget *control : controls) {
        control->setParent(flowHolder);
        flow->addWidget(control);
    }
    layout->addWidget(flowHolder, 3);
    if (feedback) {
        feedback->setParent(row);
        layout->addWidget(feedback, 2);
    }
    return row;
}

QWidget *Page::fieldRow(QWidget *field, FeedbackLabel *feedback)
{
    auto *row = new QWidget(this);
    auto *layout = new QHBoxLayout(row);
    layout->setContentsMargins(0, 0, 0, 0);
    field->setParent(row);
    feedback->setParent(row);
    layout->addWidget(field, 3);
    layout->addWidget(feedback, 2);
    return row;
}

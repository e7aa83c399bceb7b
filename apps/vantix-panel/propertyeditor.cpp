#include "propertyeditor.h"

#include "panelsession.h"

#include <vantixcontrol/protocol/reply.h>

#include <QCheckBox>
#include <QComboBox>
#include <QHBoxLayout>
#include <QJsonObject>
#include <QLabel>
#include <QLineEdit>
#include <QPointer>
#include <QSignalBlocker>

using VantixControl::Reply;

PropertyEditor::PropertyEditor(PanelSession *session, const QString &target, const QString &property, QWidget *parent)
    : QWidget(parent)
    , m_session(session)
    , m_target(target)
    , m_property(property)
{
    auto *layout = new QHBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    const QJsonObject schema = session->property(target, property);
    const QString type = schema.value(QLatin1String("type")).toString();
    const bool writable = schema.value(QLatin1String("writable")).toBool();
    const QStringList keys = session->enumKeys(type);

    if (!writable) {
        m_label = new QLabel(this);
        m_label->setTextInteractionFlags(Qt::TextSelectableByMouse);
        m_label->setWordWrap(true);
        layout->addWidget(m_label, 1);
    } else if (type == QLatin1String("bool")) {
        m_check = new QCheckBox(this);
        connect(m_check, &QCheckBox::clicked, this,
            [this](bool on) { submit(on ? QStringLiteral("true") : QStringLiteral("false")); });
        layout->addWidget(m_check, 1);
    } else if (!keys.isEmpty() && !session->isFlagEnum(type)) {
        m_combo = new QComboBox(this);
        m_combo->addItems(keys);
        connect(m_combo, QOverload<int>::of(&QComboBox::activated), this,
            [this](int index) { submit(m_combo->itemText(index)); });
        layout->addWidget(m_combo, 1);
    } else {
        m_line = new QLineEdit(this);
        m_line->setPlaceholderText(type);
        connect(m_line, &QLineEdit::returnPressed, this, [this] { submit(m_line->text()); });
        layout->addWidget(m_line, 1);
    }
    const QString hint = schema.value(QLatin1String("hint")).toString();
    if (!hint.isEmpty()) {
        setToolTip(hint);
    }
    m_error = new QLabel(this);
    m_error->setObjectName(QStringLiteral("error"));
    m_error->setStyleSheet(QStringLiteral("color: #c62828;"));
    m_error->setWordWrap(true);
    m_error->hide();
    layout->addWidget(m_error, 1);

    connect(session, &PanelSession::valueChanged, this, [this](const QString &t, const QString &p) {
        if (t == m_target && p == m_property) {
            showValue();
        }
    });
    showValue();
}

QString PropertyEditor::errorText() const
{
    return m_error->isHidden() ? QString() : m_error->text();
}

void PropertyEditor::submit(const QString &text)
{
    QPointer<PropertyEditor> self(this);
    m_session->setProperty(m_target, m_property, text, [self](const Reply &reply) {
        if (!self) {
            return;
        }
        if (reply.ok) {
            self->m_error->clear();
            self->m_error->hide();
            if (self->m_line) {
                self->m_line->setModified(false);
            }
        } else {
            self->showError(reply.text);
        }
    });
}

void PropertyEditor::showValue()
{
    const PropertyValue v = m_session->value(m_target, m_property);
    if (m_label) {
        m_label->setText(!v.known ? QStringLiteral("…") : v.value.isString() ? v.value.toString() : v.text);
    } else if (m_check) {
        const QSignalBlocker blocker(m_check);
        m_check->setChecked(v.value.toBool());
    } else if (m_combo) {
        const QSignalBlocker blocker(m_combo);
        const int index = m_combo->findText(v.value.isString() ? v.value.toString() : v.text);
        m_combo->setCurrentIndex(index);
    } else if (m_line && !(m_line->hasFocus() && m_line->isModified())) {
        // What the user is typing is not overwritten; the value shows once they leave the field.
        m_line->setText(v.value.isString() ? v.value.toString() : v.text);
        m_line->setModified(false);
    }
}

void PropertyEditor::showError(const QString &message)
{
    m_error->setText(message);
    m_error->show();
}

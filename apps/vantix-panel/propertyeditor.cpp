#include "propertyeditor.h"

#include "feedbacklabel.h"
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

PropertyEditor::PropertyEditor(
    PanelSession *session, const QString &target, const QString &property, Naming naming, QWidget *parent)
    : QWidget(parent)
    , m_session(session)
    , m_target(target)
    , m_property(property)
    , m_naming(naming)
{
    auto *layout = new QHBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    const QJsonObject schema = session->property(target, property);
    m_type = schema.value(QLatin1String("type")).toString();
    const bool writable = schema.value(QLatin1String("writable")).toBool();
    const QStringList keys = session->enumKeys(m_type);

    if (!writable) {
        m_label = new QLabel(this);
        m_label->setTextInteractionFlags(Qt::TextSelectableByMouse);
        m_label->setWordWrap(true);
        // Long values (paths, maps) wrap at any character rather than widen the page.
        m_label->setMinimumWidth(fontMetrics().averageCharWidth() * 8);
        m_label->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);
        layout->addWidget(m_label, 1);
    } else if (m_type == QLatin1String("bool")) {
        m_check = new QCheckBox(this);
        connect(m_check, &QCheckBox::clicked, this,
            [this](bool on) { submit(on ? QStringLiteral("true") : QStringLiteral("false")); });
        layout->addWidget(m_check);
    } else if (!keys.isEmpty() && !session->isFlagEnum(m_type)) {
        m_combo = new QComboBox(this);
        m_combo->setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
        m_combo->setMinimumContentsLength(8);
        for (const QString &key : keys) {
            m_combo->addItem(m_naming == Words ? session->enumLabel(m_type, key) : key, key);
            m_combo->setItemData(m_combo->count() - 1, key, Qt::ToolTipRole);
        }
        connect(m_combo, QOverload<int>::of(&QComboBox::activated), this,
            [this](int index) { submit(m_combo->itemData(index).toString()); });
        layout->addWidget(m_combo, 1);
    } else {
        m_line = new QLineEdit(this);
        m_line->setPlaceholderText(m_type);
        m_line->setMinimumWidth(fontMetrics().averageCharWidth() * 8);
        connect(m_line, &QLineEdit::returnPressed, this, [this] { submit(m_line->text()); });
        layout->addWidget(m_line, 1);
    }
    const QString hint = schema.value(QLatin1String("hint")).toString();
    if (!hint.isEmpty()) {
        setToolTip(hint);
    }
    m_error = new FeedbackLabel(session, {target}, this);
    m_error->setObjectName(QStringLiteral("error"));
    // Room for the error beside a check box or a short field; a read-only value needs none.
    m_error->setVisible(writable);
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
    return m_error->problem();
}

void PropertyEditor::submit(const QString &text)
{
    QPointer<PropertyEditor> self(this);
    m_error->begin();
    m_session->setProperty(m_target, m_property, text, [self](const Reply &reply) {
        if (!self) {
            return;
        }
        self->m_error->showReply(reply);
        if (reply.ok && self->m_line) {
            self->m_line->setModified(false);
        }
    });
}

void PropertyEditor::showValue()
{
    const PropertyValue v = m_session->value(m_target, m_property);
    const QString raw = v.value.isString() ? v.value.toString() : v.text;
    const QString shown = m_naming == Words ? m_session->valueText(m_target, m_property) : raw;
    if (m_label) {
        m_label->setText(!v.known ? QStringLiteral("…") : shown);
        m_label->setToolTip(m_naming == Words && shown != raw ? raw : QString());
    } else if (m_check) {
        const QSignalBlocker blocker(m_check);
        m_check->setChecked(v.value.toBool());
    } else if (m_combo) {
        const QSignalBlocker blocker(m_combo);
        m_combo->setCurrentIndex(m_combo->findData(raw));
    } else if (m_line && !(m_line->hasFocus() && m_line->isModified())) {
        // What the user is typing is not overwritten; the value shows once they leave the field.
        m_line->setText(raw);
        m_line->setModified(false);
    }
}

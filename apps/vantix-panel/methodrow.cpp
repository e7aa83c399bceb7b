#include "methodrow.h"

#include "feedbacklabel.h"
#include "panelsession.h"

#include <vantixcontrol/protocol/reply.h>
#include <vantixcontrol/protocol/words.h>

#include <QCheckBox>
#include <QComboBox>
#include <QHBoxLayout>
#include <QJsonArray>
#include <QLineEdit>
#include <QPointer>
#include <QPushButton>

using VantixControl::Reply;

namespace {
bool isInteger(const QString &type)
{
    return type == QLatin1String("int") || type == QLatin1String("uint") || type == QLatin1String("qlonglong") ||
        type == QLatin1String("qulonglong") || type == QLatin1String("short") || type == QLatin1String("ushort");
}

bool isUnsigned(const QString &type)
{
    return type.startsWith(QLatin1Char('u')) || type == QLatin1String("qulonglong");
}
} // namespace

MethodRow::MethodRow(PanelSession *session, const QString &target, const QJsonObject &method,
    PropertyEditor::Naming naming, QWidget *parent)
    : QWidget(parent)
    , m_session(session)
    , m_naming(naming)
    , m_target(target)
    , m_method(method.value(QLatin1String("name")).toString())
    , m_button(new QPushButton(m_method, this))
    , m_feedback(new FeedbackLabel(session, {target}, this))
{
    auto *layout = new QHBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    m_button->setToolTip((method.value(QLatin1String("signature")).toString() + QLatin1Char('\n') +
        method.value(QLatin1String("hint")).toString())
                             .trimmed());
    layout->addWidget(m_button);
    for (const QJsonValue &a : method.value(QLatin1String("arguments")).toArray()) {
        const QJsonObject argument = a.toObject();
        Input input;
        input.name = argument.value(QLatin1String("name")).toString();
        input.type = argument.value(QLatin1String("type")).toString();
        input.widget = inputFor(input.type, input.name);
        const QStringList keys = session->enumKeys(input.type);
        input.widget->setToolTip(QStringLiteral("%1 %2").arg(input.type, input.name) +
            (keys.isEmpty() ? QString() : QLatin1Char('\n') + keys.join(QLatin1String(", "))));
        layout->addWidget(input.widget, 1);
        m_inputs.append(input);
    }
    layout->addWidget(m_feedback, 2);
    connect(m_button, &QPushButton::clicked, this, &MethodRow::call);
}

QWidget *MethodRow::inputFor(const QString &type, const QString &name)
{
    const QStringList keys = m_session->enumKeys(type);
    if (!keys.isEmpty() && !m_session->isFlagEnum(type)) {
        auto *combo = new QComboBox(this);
        for (const QString &key : keys) {
            combo->addItem(m_naming == PropertyEditor::Words ? m_session->enumLabel(type, key) : key, key);
            combo->setItemData(combo->count() - 1, key, Qt::ToolTipRole);
        }
        return combo;
    }
    if (type == QLatin1String("bool")) {
        return new QCheckBox(name, this);
    }
    auto *field = new QLineEdit(this);
    // Flags are typed as on the console, joined by "|" (F_ACTIVE|F_LOG).
    field->setPlaceholderText(keys.isEmpty() ? name : tr("%1, joined by |").arg(name));
    field->setMinimumWidth(fontMetrics().averageCharWidth() * 8);
    connect(field, &QLineEdit::returnPressed, this, &MethodRow::call);
    return field;
}

bool MethodRow::setArgument(int index, const QString &text)
{
    QWidget *widget = m_inputs.value(index).widget;
    if (auto *combo = qobject_cast<QComboBox *>(widget)) {
        const int item = combo->findData(text);
        combo->setCurrentIndex(item >= 0 ? item : combo->currentIndex());
        return item >= 0;
    }
    if (auto *check = qobject_cast<QCheckBox *>(widget)) {
        check->setChecked(text == QLatin1String("true"));
        return text == QLatin1String("true") || text == QLatin1String("false");
    }
    if (auto *field = qobject_cast<QLineEdit *>(widget)) {
        field->setText(text);
        return true;
    }
    return false;
}

QString MethodRow::answerText() const
{
    return m_feedback->text();
}

bool MethodRow::word(const Input &input, QString *word, QString *problem) const
{
    if (auto *combo = qobject_cast<QComboBox *>(input.widget)) {
        *word = combo->currentData().toString();
        return true;
    }
    if (auto *check = qobject_cast<QCheckBox *>(input.widget)) {
        *word = check->isChecked() ? QStringLiteral("true") : QStringLiteral("false");
        return true;
    }
    *word = static_cast<QLineEdit *>(input.widget)->text().trimmed();
    bool ok = true;
    if (isInteger(input.type)) {
        const qlonglong n = word->toLongLong(&ok);
        ok = ok && !(isUnsigned(input.type) && n < 0);
    } else if (input.type == QLatin1String("double") || input.type == QLatin1String("float")) {
        word->toDouble(&ok);
    }
    if (!ok) {
        *problem = tr("%1: \"%2\" is not %3")
                       .arg(input.name, *word,
                           isUnsigned(input.type)      ? tr("a whole number of 0 or more")
                               : isInteger(input.type) ? tr("a whole number")
                                                       : tr("a number"));
    }
    return ok;
}

void MethodRow::call()
{
    QStringList words{QStringLiteral("call"), m_target, m_method};
    for (const Input &input : qAsConst(m_inputs)) {
        QString w;
        QString problem;
        if (!word(input, &w, &problem)) {
            m_feedback->showProblem(problem);
            return;
        }
        words.append(w);
    }
    QPointer<FeedbackLabel> feedback(m_feedback);
    feedback->begin();
    m_session->run(VantixControl::Words::join(words), [feedback](const Reply &reply) {
        if (feedback) {
            feedback->showReply(reply, true);
        }
    });
}

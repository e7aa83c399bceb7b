#include "shortcutbar.h"

#include "feedbacklabel.h"
#include "flowlayout.h"
#include "panelsession.h"

#include <vantixcontrol/protocol/words.h>

#include <QEvent>
#include <QHBoxLayout>
#include <QJsonArray>
#include <QJsonObject>
#include <QLabel>
#include <QMenu>
#include <QPushButton>
#include <QToolButton>

namespace {
// The keys take two lines at most: the pages keep the height.
constexpr int maxLines = 2;

// Without a label in the schema, the help text up to its first ":" or ",": "low power: the first ..." -> "Low power".
QString shortLabel(const QJsonObject &shortcut)
{
    QString label = shortcut.value(QLatin1String("label")).toString();
    if (label.isEmpty()) {
        label = shortcut.value(QLatin1String("help")).toString().section(QLatin1Char(':'), 0, 0);
        label = label.section(QLatin1Char(','), 0, 0).trimmed();
    }
    if (label.isEmpty()) {
        return shortcut.value(QLatin1String("key")).toString();
    }
    label[0] = label.at(0).toUpper();
    return label;
}
} // namespace

ShortcutBar::ShortcutBar(PanelSession *session, QWidget *parent)
    : Page(session, parent)
    , m_holder(new QWidget(this))
    , m_buttons(new FlowLayout(m_holder))
    , m_more(new QToolButton(m_holder))
    , m_menu(new QMenu(this))
    , m_feedback(feedback())
{
    auto *layout = new QHBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    auto *title = new QLabel(tr("Keys:"), this);
    title->setContentsMargins(0, 4, 0, 0);
    m_more->setText(tr("More keys"));
    m_more->setPopupMode(QToolButton::InstantPopup);
    m_more->setMenu(m_menu);
    m_more->hide();
    // The row's width comes from the window alone, never from the buttons it shows.
    m_holder->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);
    layout->addWidget(title, 0, Qt::AlignTop);
    layout->addWidget(m_holder, 4);
    layout->addWidget(m_feedback, 1, Qt::AlignTop);
    m_holder->installEventFilter(this);
    connect(session, &PanelSession::schemaChanged, this, &ShortcutBar::rebuild);
}

bool ShortcutBar::eventFilter(QObject *watched, QEvent *event)
{
    if (watched == m_holder && event->type() == QEvent::Resize && m_holder->width() != m_fittedWidth) {
        fit();
    }
    return Page::eventFilter(watched, event);
}

void ShortcutBar::rebuild()
{
    if (m_built) {
        return; // the shortcuts do not change while the application runs
    }
    m_built = true;
    // The menu button stays last.
    m_buttons->removeWidget(m_more);
    for (const QJsonValue &s : m_session->schema().value(QLatin1String("shortcuts")).toArray()) {
        const QJsonObject shortcut = s.toObject();
        const QString key = shortcut.value(QLatin1String("key")).toString();
        const QString line = VantixControl::Words::join({QStringLiteral("key"), key});
        QPushButton *button = commandButton(shortLabel(shortcut), line, m_feedback);
        button->setParent(m_holder);
        button->setObjectName(key);
        const QString tip = QStringLiteral("%1 — %2").arg(key, shortcut.value(QLatin1String("help")).toString());
        button->setToolTip(tip);
        m_buttons->addWidget(button);
        m_keys.append(button);
        QAction *action = m_menu->addAction(QStringLiteral("%1\t%2").arg(button->text(), key));
        action->setToolTip(tip);
        connect(action, &QAction::triggered, button, &QPushButton::click);
    }
    m_buttons->addWidget(m_more);
    fit();
}

void ShortcutBar::fit()
{
    m_fittedWidth = m_holder->width();
    const int width = m_holder->width();
    const int gap = qMax(0, m_buttons->spacing());
    // Places the first @p count keys, then the menu button when keys are left over; whether that takes maxLines.
    const auto fits = [&](int count) {
        int x = 0;
        int line = 1;
        const auto place = [&](int w) {
            if (x > 0 && x + w > width) {
                ++line;
                x = 0;
            }
            x += w + gap;
        };
        for (int i = 0; i < count; ++i) {
            place(m_keys.at(i)->sizeHint().width());
        }
        if (count < m_keys.size()) {
            place(m_more->sizeHint().width());
        }
        return line <= maxLines;
    };
    int shown = m_keys.size();
    while (shown > 0 && !fits(shown)) {
        --shown;
    }
    for (int i = 0; i < m_keys.size(); ++i) {
        m_keys.at(i)->setVisible(i < shown);
    }
    m_more->setVisible(shown < m_keys.size());
}

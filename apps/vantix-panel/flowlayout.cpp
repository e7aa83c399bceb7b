#include "flowlayout.h"

#include <QWidget>

FlowLayout::FlowLayout(QWidget *parent)
    : QLayout(parent)
{
    setContentsMargins(0, 0, 0, 0);
    setSpacing(6);
}

FlowLayout::~FlowLayout()
{
    while (QLayoutItem *item = takeAt(0)) {
        delete item;
    }
}

void FlowLayout::addItem(QLayoutItem *item)
{
    m_items.append(item);
}

QLayoutItem *FlowLayout::takeAt(int index)
{
    return index >= 0 && index < m_items.size() ? m_items.takeAt(index) : nullptr;
}

int FlowLayout::heightForWidth(int width) const
{
    return arrange(QRect(0, 0, width, 0), false);
}

QSize FlowLayout::minimumSize() const
{
    QSize size;
    for (const QLayoutItem *item : m_items) {
        size = size.expandedTo(item->minimumSize());
    }
    const QMargins m = contentsMargins();
    return size + QSize(m.left() + m.right(), m.top() + m.bottom());
}

QSize FlowLayout::sizeHint() const
{
    // All on one line.
    int width = 0;
    int height = 0;
    for (const QLayoutItem *item : m_items) {
        if (item->isEmpty()) {
            continue;
        }
        width += (width > 0 ? spacing() : 0) + item->sizeHint().width();
        height = qMax(height, item->sizeHint().height());
    }
    const QMargins m = contentsMargins();
    return QSize(width + m.left() + m.right(), height + m.top() + m.bottom());
}

void FlowLayout::setGeometry(const QRect &rect)
{
    QLayout::setGeometry(rect);
    arrange(rect, true);
}

int FlowLayout::arrange(const QRect &rect, bool apply) const
{
    const QRect area = rect.marginsRemoved(contentsMargins());
    const int gap = qMax(0, spacing());
    int y = area.y();
    // One line at a time, so that the items of a line are centred on it.
    QList<QPair<QLayoutItem *, QSize>> line;
    int x = area.x();
    int lineHeight = 0;
    const auto finishLine = [&] {
        if (apply) {
            int left = area.x();
            for (const auto &placed : qAsConst(line)) {
                const int top = y + (lineHeight - placed.second.height()) / 2;
                placed.first->setGeometry(QRect(QPoint(left, top), placed.second));
                left += placed.second.width() + gap;
            }
        }
        y += lineHeight + gap;
        line.clear();
        x = area.x();
        lineHeight = 0;
    };
    for (QLayoutItem *item : m_items) {
        if (item->isEmpty()) {
            continue;
        }
        QSize hint = item->sizeHint().boundedTo(QSize(area.width(), QWIDGETSIZE_MAX));
        const int left = area.right() + 1 - x;
        if (m_lastFills && item == m_items.last() && left >= item->minimumSize().width()) {
            hint.setWidth(left);
        }
        if (!line.isEmpty() && x + hint.width() > area.right() + 1) {
            finishLine();
        }
        line.append({item, hint});
        x += hint.width() + gap;
        lineHeight = qMax(lineHeight, hint.height());
    }
    if (!line.isEmpty()) {
        finishLine();
    }
    // The last line's gap is not part of the height.
    return qMax(0, y - gap - rect.y()) + contentsMargins().bottom();
}

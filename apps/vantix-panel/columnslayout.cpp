#include "columnslayout.h"

#include <QWidget>

ColumnsLayout::ColumnsLayout(int maxColumns, QWidget *parent)
    : QLayout(parent)
    , m_maxColumns(qMax(1, maxColumns))
{
    setContentsMargins(0, 0, 0, 0);
    setSpacing(6);
}

ColumnsLayout::~ColumnsLayout()
{
    while (QLayoutItem *item = takeAt(0)) {
        delete item;
    }
}

void ColumnsLayout::addItem(QLayoutItem *item)
{
    m_items.append(item);
}

QLayoutItem *ColumnsLayout::takeAt(int index)
{
    return index >= 0 && index < m_items.size() ? m_items.takeAt(index) : nullptr;
}

QList<QLayoutItem *> ColumnsLayout::visibleItems() const
{
    QList<QLayoutItem *> result;
    for (QLayoutItem *item : m_items) {
        if (!item->isEmpty()) {
            result.append(item);
        }
    }
    return result;
}

int ColumnsLayout::columnsAt(int width) const
{
    const QList<QLayoutItem *> items = visibleItems();
    int widest = 0;
    for (const QLayoutItem *item : items) {
        widest = qMax(widest, item->sizeHint().width());
    }
    const int gap = qMax(0, spacing());
    int columns = qMin(m_maxColumns, qMax(1, int(items.size())));
    while (columns > 1 && columns * widest + (columns - 1) * gap > width) {
        --columns;
    }
    return columns;
}

int ColumnsLayout::heightForWidth(int width) const
{
    return arrange(QRect(0, 0, width, 0), false);
}

QSize ColumnsLayout::minimumSize() const
{
    // One column: as narrow as the narrowest the widest box allows.
    QSize size;
    for (const QLayoutItem *item : visibleItems()) {
        size = size.expandedTo(item->minimumSize());
    }
    const QMargins m = contentsMargins();
    return size + QSize(m.left() + m.right(), m.top() + m.bottom());
}

QSize ColumnsLayout::sizeHint() const
{
    const QList<QLayoutItem *> items = visibleItems();
    const int columns = qMin(m_maxColumns, qMax(1, int(items.size())));
    int widest = 0;
    for (const QLayoutItem *item : items) {
        widest = qMax(widest, item->sizeHint().width());
    }
    const int width = columns * widest + (columns - 1) * qMax(0, spacing());
    const QMargins m = contentsMargins();
    return QSize(width + m.left() + m.right(), heightForWidth(width + m.left() + m.right()));
}

void ColumnsLayout::setGeometry(const QRect &rect)
{
    QLayout::setGeometry(rect);
    arrange(rect, true);
}

int ColumnsLayout::arrange(const QRect &rect, bool apply) const
{
    const QRect area = rect.marginsRemoved(contentsMargins());
    const QList<QLayoutItem *> items = visibleItems();
    const int gap = qMax(0, spacing());
    const int columns = columnsAt(area.width());
    const int cell = qMax(0, (area.width() - (columns - 1) * gap) / columns);
    int y = area.y();
    for (int first = 0; first < items.size(); first += columns) {
        int rowHeight = 0;
        for (int i = first; i < qMin(first + columns, int(items.size())); ++i) {
            const QLayoutItem *item = items.at(i);
            const int h = item->hasHeightForWidth() ? item->heightForWidth(cell) : item->sizeHint().height();
            rowHeight = qMax(rowHeight, qMax(h, item->minimumSize().height()));
        }
        if (apply) {
            for (int i = first; i < qMin(first + columns, int(items.size())); ++i) {
                items.at(i)->setGeometry(QRect(area.x() + (i - first) * (cell + gap), y, cell, rowHeight));
            }
        }
        y += rowHeight + gap;
    }
    if (!items.isEmpty()) {
        y -= gap;
    }
    return y - rect.y() + contentsMargins().bottom();
}

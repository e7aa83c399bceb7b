#ifndef VANTIX_LISTMODEL_H
#define VANTIX_LISTMODEL_H

#include <vantix/abstractlistmodel.h>

#include <QList>

namespace TQ_SPAPI {

/**
 * A list of items with row-level change signals, one row per change.
 * An owner that changes an item in place emits dataChanged(row) itself.
 */
template<typename T>
class ListModel : public AbstractListModel
{
public:
    explicit ListModel(QObject *parent = nullptr)
        : AbstractListModel(parent)
    {
    }

    int count() const { return items.count(); }
    const T &at(int row) const { return items.at(row); }

    void append(const T &item) { insert(items.count(), item); }

    void insert(int row, const T &item)
    {
        row = qBound(0, row, items.count());
        first = last = row;
        Q_EMIT rowsAboutToBeInserted(row, row);
        items.insert(row, item);
        Q_EMIT rowsInserted(first, last);
    }

    /// Announces the removal even for a row out of range, and then removes nothing.
    void removeAt(int row)
    {
        first = last = row;
        Q_EMIT rowsAboutToBeRemoved(row, row);
        if (row >= 0 && row < items.count()) {
            items.removeAt(row);
        }
        Q_EMIT rowsRemoved(first, last);
    }

    void setItems(const QList<T> &list)
    {
        Q_EMIT modelAboutToBeReset();
        items.clear();
        for (const T &item : list) {
            items.append(item);
        }
        Q_EMIT modelReset();
    }

    int first = 0;
    int last = 0;
    QList<T> items;
};

} // namespace TQ_SPAPI

#endif

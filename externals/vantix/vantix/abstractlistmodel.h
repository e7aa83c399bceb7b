#ifndef VANTIX_ABSTRACTLISTMODEL_H
#define VANTIX_ABSTRACTLISTMODEL_H

#include <vantix/vantix_export.h>

#include <QObject>

namespace TQ_SPAPI {

/**
 * The row signals of a list that a device publishes (access points, peers,
 * services). ListModel<T> holds the rows; this base lets code connect to any
 * such list without knowing its item type.
 */
class VANTIX_EXPORT AbstractListModel : public QObject
{
    Q_OBJECT

public:
    explicit AbstractListModel(QObject *parent = nullptr);
    ~AbstractListModel() override;

Q_SIGNALS:
    void modelAboutToBeReset();
    void modelReset();
    void rowsAboutToBeInserted(int first, int last);
    void rowsInserted(int first, int last);
    void rowsAboutToBeRemoved(int first, int last);
    void rowsRemoved(int first, int last);
    void dataChanged(int row);
};

} // namespace TQ_SPAPI

#endif

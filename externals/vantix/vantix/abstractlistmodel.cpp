#include "abstractlistmodel.h"

namespace TQ_SPAPI {

AbstractListModel::AbstractListModel(QObject *parent)
    : QObject(parent)
{
}

AbstractListModel::~AbstractListModel() = default;

} // namespace TQ_SPAPI

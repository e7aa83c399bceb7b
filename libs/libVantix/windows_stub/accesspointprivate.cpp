#include "accesspointprivate_p.h"

namespace TQ_SPAPI {

AccessPointPrivate::AccessPointPrivate(IAccessPoint *owner)
    : QObject(owner)
    , owner(owner)
{
}

AccessPointPrivate::~AccessPointPrivate() = default;

} // namespace TQ_SPAPI

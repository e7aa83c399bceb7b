#include "apimessageprivate_p.h"

namespace TQ_SPAPI {

ApiMessagePrivate::ApiMessagePrivate(IApiMessage *q)
    : QObject(q)
    , q(q)
{
}

ApiMessagePrivate::~ApiMessagePrivate() = default;

} // namespace TQ_SPAPI

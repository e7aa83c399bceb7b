#include "iapimessage.h"

#include "apimessageprivate_p.h"

namespace TQ_SPAPI {

IApiMessage::IApiMessage(QObject *parent)
    : QObject(parent)
    , d(new ApiMessagePrivate(this))
{
}

IApiMessage::IApiMessage(ApiMessagePrivate &adopted)
    : QObject(nullptr)
    , d(&adopted)
{
    adopted.setParent(this);
    adopted.q = this;
}

IApiMessage::~IApiMessage()
{
    // The private goes first, so it never outlives the object it belongs to.
    delete d;
    d = nullptr;
}

void IApiMessage::checkSystemLog() { }

} // namespace TQ_SPAPI

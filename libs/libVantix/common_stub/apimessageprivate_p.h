#ifndef VANTIX_APIMESSAGEPRIVATE_P_H
#define VANTIX_APIMESSAGEPRIVATE_P_H

#include <vantix/iapimessage.h>
#include <vantix/vantix_private_export.h>

#include <QObject>

namespace TQ_SPAPI {

/// The message channel of the desktop build: nothing feeds it, so it holds no state.
class VANTIX_PRIVATE_EXPORT ApiMessagePrivate : public QObject
{
    Q_OBJECT

public:
    explicit ApiMessagePrivate(IApiMessage *q = nullptr);
    ~ApiMessagePrivate() override;

    IApiMessage *q;

private:
    Q_DISABLE_COPY(ApiMessagePrivate)
};

} // namespace TQ_SPAPI

#endif

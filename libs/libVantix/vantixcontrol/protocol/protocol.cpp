#include "protocol.h"

namespace VantixControl {

const QList<Protocol::RequestKind> &Protocol::requestKinds()
{
    static const QList<RequestKind> kinds{
        RequestKind::Line, RequestKind::Describe, RequestKind::Events, RequestKind::Log, RequestKind::Cancel};
    return kinds;
}

QString Protocol::requestKey(RequestKind kind)
{
    switch (kind) {
    case RequestKind::Line:
        return QStringLiteral("line");
    case RequestKind::Describe:
        return QStringLiteral("describe");
    case RequestKind::Events:
        return QStringLiteral("events");
    case RequestKind::Log:
        return QStringLiteral("log");
    case RequestKind::Cancel:
        return QStringLiteral("cancel");
    }
    return QString();
}

QStringList Protocol::capabilities()
{
    QStringList keys;
    for (RequestKind kind : requestKinds()) {
        keys.append(requestKey(kind));
    }
    return keys;
}

} // namespace VantixControl

#ifndef VANTIXCONTROL_PROTOCOL_H
#define VANTIXCONTROL_PROTOCOL_H

#include <QStringList>

namespace VantixControl {

/// The control protocol's fixed figures, shared by the server and its clients.
namespace Protocol {

/// Raised when a change would break an existing client.
constexpr int Version = 1;
/// A longer request line is refused.
constexpr int MaxLineBytes = 64 * 1024;
/// What may wait unread for a client before it is dropped.
constexpr qint64 MaxPendingBytes = 4 * 1024 * 1024;

/// What a server offers, as its greeting lists it.
inline QStringList capabilities()
{
    return {QStringLiteral("line"), QStringLiteral("describe"), QStringLiteral("events"), QStringLiteral("log"),
        QStringLiteral("cancel")};
}

} // namespace Protocol
} // namespace VantixControl

#endif

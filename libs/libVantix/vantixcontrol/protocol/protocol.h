#ifndef VANTIXCONTROL_PROTOCOL_H
#define VANTIXCONTROL_PROTOCOL_H

#include <vantix/vantix_export.h>

#include <QStringList>

namespace VantixControl {

/// The control protocol's fixed figures and vocabulary, shared by the server and its clients.
namespace Protocol {

/// Raised when a change would break an existing client.
constexpr int Version = 1;
/// A longer request line is refused.
constexpr int MaxLineBytes = 64 * 1024;
/// What may wait unread for a client before it is dropped.
constexpr qint64 MaxPendingBytes = 4 * 1024 * 1024;
/// What the lines waiting to run for one client may hold in all, counted as the client sent them.
constexpr qint64 MaxWaitingBytes = 4 * 1024 * 1024;

/// The kinds of request; a request carries exactly one of their keys.
enum class RequestKind {
    Line, ///< "line": one console line, answered with its reply
    Describe, ///< "describe": the schema
    Events, ///< "events": true or false, this connection's events
    Log, ///< "log": true or false, copies of the message log
    Cancel, ///< "cancel": true stops what runs and drops what waits
};

/// Every kind, in the order the greeting lists them.
VANTIX_EXPORT const QList<RequestKind> &requestKinds();
/// The request key of @p kind: "line", "describe", ...
VANTIX_EXPORT QString requestKey(RequestKind kind);
/// What a server offers, as its greeting lists it: the request keys.
VANTIX_EXPORT QStringList capabilities();

} // namespace Protocol
} // namespace VantixControl

#endif

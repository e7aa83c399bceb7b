#ifndef VANTIXCONTROL_LOGTAP_P_H
#define VANTIXCONTROL_LOGTAP_P_H

#include <vantix/vantix_private_export.h>

#include <functional>

class QElapsedTimer;
class QObject;

namespace VantixControl {

struct LogEntry;

/**
 * Copies the application's message log to the sessions that asked for it.
 * It never silences, reorders or reroutes anything: every message goes on to
 * the handler that was installed before, in the caller's thread, and copies
 * reach sessions through their event loop. The handler is installed for the
 * first subscriber and removed after the last one, unless someone installed
 * another handler on top since, which may still call it: then it stays and
 * only passes messages on.
 */
namespace LogTap {
/// The sink gets each entry with the moment it was logged, for the session to stamp it as it stamps events.
using Sink = std::function<void(const LogEntry &entry, const QElapsedTimer &loggedAt)>;
VANTIX_PRIVATE_EXPORT void subscribe(QObject *receiver, Sink sink);
VANTIX_PRIVATE_EXPORT void unsubscribe(QObject *receiver);
} // namespace LogTap

} // namespace VantixControl

#endif

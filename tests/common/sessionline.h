#ifndef VANTIX_TEST_SESSIONLINE_H
#define VANTIX_TEST_SESSIONLINE_H

#include <vantixcontrol/protocol/reply.h>

namespace VantixControl {
class Session;
}

/**
 * Runs @p line in @p session and waits, with the event loop running, for its
 * answer; a line still unanswered after @p timeoutMs gives a Failed reply
 * "(no answer)" and a warning naming it.
 */
VantixControl::Reply runLine(VantixControl::Session *session, const QString &line, int timeoutMs = 10000);

#endif

#include "sessionline.h"

#include <vantixcontrol/engine/session.h>

#include <QTest>

using namespace VantixControl;

Reply runLine(Session *session, const QString &line, int timeoutMs)
{
    Reply result = Reply::failure(ErrorClass::Failed, QStringLiteral("(no answer)"));
    bool answered = false;
    session->execute(line, [&](const Reply &reply) {
        result = reply;
        answered = true;
    });
    if (!QTest::qWaitFor([&answered] { return answered; }, timeoutMs)) {
        qWarning("no answer to %s", qPrintable(line));
    }
    return result;
}

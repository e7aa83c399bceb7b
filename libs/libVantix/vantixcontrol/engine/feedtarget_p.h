#ifndef VANTIXCONTROL_FEEDTARGET_P_H
#define VANTIXCONTROL_FEEDTARGET_P_H

#include "reply.h"

#include <QString>

#include <functional>

namespace VantixControl {

class SessionPrivate;

/**
 * Where a feed's values go, found as ramp finds it: a writable property,
 * written through its setter, or a debug command whose last argument each
 * value fills ("setbatteryfuel,1"). Each value is checked against what the
 * property's or the argument's type takes before any is applied.
 */
class FeedTarget
{
public:
    /// Looks up @p what on @p target; false with the answer to give instead.
    bool resolve(SessionPrivate &session, const QString &target, const QString &what, Reply *refusal);

    /// Whether the target takes @p text; why not in @p why.
    bool check(const QString &text, QString *why) const { return m_check(text, why); }
    /// Applies @p text, already checked.
    Reply apply(const QString &text) const { return m_apply(text); }

private:
    bool resolveDebugCommand(const QString &what, Reply *refusal);

    std::function<bool(const QString &, QString *)> m_check;
    std::function<Reply(const QString &)> m_apply;
};

} // namespace VantixControl

#endif

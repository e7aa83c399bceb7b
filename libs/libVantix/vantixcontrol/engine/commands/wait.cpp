// wait <ms>: lets the simulation run, without blocking anything.

#include "commandtable_p.h"
#include "timedjob_p.h"
#include "valuetext_p.h"

namespace VantixControl {

namespace {
class WaitJob : public TimedJob
{
public:
    WaitJob(SessionPrivate &session, const Done &done, qint64 ms)
        : TimedJob(session, done)
    {
        after(ms, [this] { finish(Reply::success()); });
    }
};

void wait(Invocation &invocation, const Done &done)
{
    qlonglong ms = 0;
    if (invocation.args.size() != 1 || !ValueText::parseInteger(invocation.args.at(0), &ms) || ms < 0 ||
        ms > std::numeric_limits<int>::max()) {
        done(Reply::failure(ErrorClass::BadRequest, QStringLiteral("usage: wait <ms>, with ms a whole number")));
        return;
    }
    new WaitJob(invocation.session, done, ms);
}
} // namespace

void addWait(CommandTable &table)
{
    CommandEntry entry;
    entry.name = QStringLiteral("wait");
    entry.arguments = {{QStringLiteral("ms"), QStringLiteral("ms")}};
    entry.help = QStringLiteral("let the simulation run");
    entry.start = wait;
    table.add(entry);
}

} // namespace VantixControl

// wait <ms>: lets the simulation run, without blocking anything.

#include "commandtable_p.h"
#include "timedjob_p.h"

namespace VantixControl {

namespace {
class WaitJob : public TimedJob
{
public:
    WaitJob(SessionPrivate &session, qint64 ms)
        : TimedJob(session)
        , m_ms(ms)
    {
    }

private:
    void begin() override
    {
        after(m_ms, [this] { finish(Reply::success()); });
    }

    qint64 m_ms;
};
} // namespace

void addWait(CommandTable &table)
{
    CommandEntry entry;
    entry.name = QStringLiteral("wait");
    entry.forms = {{required(QStringLiteral("ms"), Argument::Milliseconds)}};
    entry.help = QStringLiteral("let the simulation run");
    entry.label = QStringLiteral("Wait");
    entry.job = [](Invocation &invocation, Reply *) {
        return new WaitJob(invocation.session, invocation.integer(QStringLiteral("ms")));
    };
    table.add(entry);
}

} // namespace VantixControl

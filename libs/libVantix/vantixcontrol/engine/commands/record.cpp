// record <file> | record stop: the session's commands as a script that replays them.

#include "commandtable_p.h"
#include "session_p.h"

#include <vantix/platformnames.h>
#include <vantix/system.h>

#include <QDateTime>

namespace VantixControl {

namespace {
enum RecordForm { StopForm, StartForm };

Reply record(Invocation &invocation)
{
    SessionPrivate &session = invocation.session;
    if (invocation.form == StopForm) {
        const QString path = session.recorder.stop();
        if (path.isEmpty()) {
            return Reply::failure(ErrorClass::Failed, QStringLiteral("nothing is being recorded"));
        }
        return Reply::success(QStringLiteral("recorded to ") + path).withValue(QStringLiteral("QString"), path);
    }
    const QString header = QStringLiteral(
        "# Recorded %1 on %2.\n# Replay: vantix-sim --platform %2 --script FILE, or vantix-ctl --script FILE.\n")
                               .arg(QDateTime::currentDateTime().toString(Qt::ISODate),
                                   TQ_SPAPI::PlatformNames::name(session.system->platform()));
    QString error;
    if (!session.recorder.start(invocation.text(QStringLiteral("file")), header, session.elapsedMs(), &error)) {
        return Reply::failure(ErrorClass::Failed, error);
    }
    return Reply::success(QStringLiteral("recording to ") + session.recorder.path())
        .withValue(QStringLiteral("QString"), session.recorder.path());
}
} // namespace

void addRecord(CommandTable &table)
{
    CommandEntry entry;
    entry.name = QStringLiteral("record");
    entry.forms.resize(2);
    entry.forms[StopForm] = {keyword(QStringLiteral("stop"), {QStringLiteral("stop")})};
    entry.forms[StartForm] = {required(QStringLiteral("file"), Argument::File)};
    entry.help = QStringLiteral("write the following commands, with the time between them as waits, to a script");
    entry.label = QStringLiteral("Record");
    entry.run = record;
    table.add(entry);
}

} // namespace VantixControl

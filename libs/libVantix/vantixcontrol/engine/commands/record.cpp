// record [--force] <file> | record stop: the session's commands as a script that replays them.

#include "commandtable_p.h"
#include "session_p.h"

#include <vantix/platformnames.h>
#include <vantix/system.h>

#include <QDateTime>

namespace VantixControl {

namespace {
const QString Force = QStringLiteral("--force");
enum RecordForm { StopForm, StartForm };

Reply record(Invocation &invocation)
{
    SessionPrivate &session = invocation.session;
    QString path;
    QString error;
    if (invocation.form == StopForm) {
        if (!session.recorder.stop(&path, &error)) {
            return Reply::failure(ErrorClass::Failed, error);
        }
        return Reply::success(QStringLiteral("recorded to ") + path).withValue(QStringLiteral("QString"), path);
    }
    const QString header = QStringLiteral(
        "# Recorded %1 on %2.\n# Replay: vantix-sim --platform %2 --script FILE, or vantix-ctl --script FILE.\n")
                               .arg(QDateTime::currentDateTime().toString(Qt::ISODate),
                                   TQ_SPAPI::PlatformNames::name(session.system->platform()));
    path = invocation.text(QStringLiteral("file"));
    if (!session.recorder.start(path, invocation.has(Force), header, session.elapsedMs(), &error)) {
        return Reply::failure(ErrorClass::Failed, error);
    }
    return Reply::success(QStringLiteral("recording to ") + path).withValue(QStringLiteral("QString"), path);
}
} // namespace

void addRecord(CommandTable &table)
{
    CommandEntry entry;
    entry.name = QStringLiteral("record");
    entry.forms.resize(2);
    entry.forms[StopForm] = {keyword(QStringLiteral("stop"), {QStringLiteral("stop")})};
    entry.forms[StartForm] = {keyword(Force, {Force}, true), required(QStringLiteral("file"), Argument::File)};
    entry.help = QStringLiteral("write the following commands, with the time between them as waits, to a new script "
                                "(--force replaces an existing one); reads are left out");
    entry.label = QStringLiteral("Record");
    entry.run = record;
    table.add(entry);
}

} // namespace VantixControl

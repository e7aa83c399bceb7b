// version: the Vantix library the application runs on.

#include "commandtable_p.h"

#include <vantix/vantix_version.h>

namespace VantixControl {

void addVersion(CommandTable &table)
{
    CommandEntry entry;
    entry.name = QStringLiteral("version");
    entry.help = QStringLiteral("the version of the Vantix library the application runs on");
    entry.label = QStringLiteral("Version");
    entry.readOnly = true;
    entry.run = [](Invocation &) {
        const QString version = QStringLiteral(VANTIX_VERSION_STRING);
        return Reply::success(version).withValue(QStringLiteral("QString"), version);
    };
    table.add(entry);
}

} // namespace VantixControl

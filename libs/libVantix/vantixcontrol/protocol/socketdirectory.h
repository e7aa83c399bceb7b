#ifndef VANTIXCONTROL_SOCKETDIRECTORY_H
#define VANTIXCONTROL_SOCKETDIRECTORY_H

#include <vantix/vantix_export.h>

#include <QString>
#include <QStringList>

namespace VantixControl {

/**
 * Where applications put their control sockets: one folder per user,
 * "$XDG_RUNTIME_DIR/vantix", else "/tmp/vantix-<uid>", holding one socket per
 * running application, named "<application name>-<pid>". Only a folder that
 * is the user's own, mode 0700 and not a symbolic link is used: anyone who
 * could write into it could stand in for an application.
 */
namespace SocketDirectory {

/// The folder for this user.
VANTIX_EXPORT QString path();
/// Creates @p folder with mode 0700, or checks an existing one; false with the reason.
VANTIX_EXPORT bool prepare(const QString &folder, QString *error);
/// Whether @p folder exists and passes the checks of prepare(); false with the reason.
VANTIX_EXPORT bool isTrusted(const QString &folder, QString *error);
/// "<name>-<pid>", the name made safe for a file name and short enough for a socket address.
VANTIX_EXPORT QString socketName(const QString &applicationName, qint64 pid);
/// The process a socket named by socketName() belongs to; -1 when the name has none.
VANTIX_EXPORT qint64 pidOf(const QString &socketPath);
/// Whether process @p pid is running.
VANTIX_EXPORT bool isAlive(qint64 pid);
/// The sockets in @p folder, sorted; those of processes that are gone are removed on the way.
VANTIX_EXPORT QStringList sockets(const QString &folder);

} // namespace SocketDirectory
} // namespace VantixControl

#endif

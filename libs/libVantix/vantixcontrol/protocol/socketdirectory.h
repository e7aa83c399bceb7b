#ifndef VANTIXCONTROL_SOCKETDIRECTORY_H
#define VANTIXCONTROL_SOCKETDIRECTORY_H

#include <vantix/vantix_export.h>

#include <QByteArray>
#include <QString>
#include <QStringList>

struct stat;

namespace VantixControl {

/**
 * Where applications put their control sockets: one folder per user,
 * "$XDG_RUNTIME_DIR/vantix", else "/tmp/vantix-<uid>", holding one socket per
 * running application, named "<application name>-<pid>". Only a folder that
 * is the user's own, mode 0700 and not a symbolic link is used: anyone who
 * could write into it could stand in for an application.
 */
namespace SocketDirectory {

class FolderPrivate;

/**
 * A folder opened once and then used only through its descriptor: the
 * checks look at what was opened, not at whatever the path names a moment
 * later, and names resolve inside it even if someone renames or replaces
 * the path meanwhile.
 */
class VANTIX_EXPORT Folder
{
public:
    enum class Mode {
        Existing, ///< the folder must exist and pass the checks
        Create, ///< created with mode 0700 when missing (its parent must exist), then checked
        Unchecked, ///< any folder: the parent of a socket path given explicitly
    };

    Folder();
    ~Folder();

    /// Opens @p path; false with the reason. A folder opened before is closed first.
    bool open(const QString &path, Mode mode, QString *error);
    bool isOpen() const;
    QString path() const;
    /// "<folder>/<name>".
    QString filePath(const QString &name) const;

    /// The sockets in it that belong to this user, by full path, sorted; those of processes gone are removed.
    QStringList sockets() const;
    /// The file status of @p name in it, without following a link; false when there is none.
    bool stat(const QString &name, struct ::stat *info) const;
    bool remove(const QString &name) const;
    /// Renames @p from to @p to within the folder, replacing what @p to names; one step for any reader.
    bool rename(const QString &from, const QString &to) const;
    /**
     * A socket address (sun_path) that reaches @p name in this very folder:
     * through the descriptor where /proc allows it and it fits, else by
     * path; empty when neither fits.
     */
    QByteArray address(const QString &name) const;

private:
    FolderPrivate *d;
    Q_DISABLE_COPY(Folder)
};

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
/// The longest socket path, in bytes, that an address holds.
VANTIX_EXPORT int maxPathBytes();

} // namespace SocketDirectory
} // namespace VantixControl

#endif

#include "socketdirectory.h"

#include <QDir>
#include <QFile>
#include <QRegularExpression>

#include <cerrno>
#include <csignal>
#include <cstring>
#include <sys/stat.h>
#include <sys/types.h>
#include <unistd.h>

namespace VantixControl {

namespace {
// sun_path holds 108 bytes; the folder takes its share.
constexpr int MaxNameLength = 48;
} // namespace

QString SocketDirectory::path()
{
    const QString runtime = qEnvironmentVariable("XDG_RUNTIME_DIR");
    if (!runtime.isEmpty()) {
        return QDir(runtime).filePath(QStringLiteral("vantix"));
    }
    return QStringLiteral("/tmp/vantix-%1").arg(::getuid());
}

bool SocketDirectory::isTrusted(const QString &folder, QString *error)
{
    struct stat info = {};
    const QByteArray native = QFile::encodeName(folder);
    if (::lstat(native.constData(), &info) != 0) {
        *error = QStringLiteral("%1 does not exist").arg(folder);
        return false;
    }
    if (S_ISLNK(info.st_mode)) {
        *error = QStringLiteral("%1 is a symbolic link").arg(folder);
        return false;
    }
    if (!S_ISDIR(info.st_mode)) {
        *error = QStringLiteral("%1 is not a folder").arg(folder);
        return false;
    }
    if (info.st_uid != ::geteuid()) {
        *error = QStringLiteral("%1 belongs to another user (uid %2)").arg(folder).arg(info.st_uid);
        return false;
    }
    if ((info.st_mode & 07777) != 0700) {
        *error =
            QStringLiteral("%1 has mode %2, not 0700").arg(folder).arg(info.st_mode & 07777, 4, 8, QLatin1Char('0'));
        return false;
    }
    return true;
}

bool SocketDirectory::prepare(const QString &folder, QString *error)
{
    const QByteArray native = QFile::encodeName(folder);
    if (::mkdir(native.constData(), 0700) != 0 && errno != EEXIST) {
        *error = QStringLiteral("cannot create %1: %2").arg(folder, QString::fromLocal8Bit(::strerror(errno)));
        return false;
    }
    return isTrusted(folder, error);
}

QString SocketDirectory::socketName(const QString &applicationName, qint64 pid)
{
    QString name = applicationName.left(MaxNameLength);
    static const QRegularExpression unsafe(QStringLiteral("[^A-Za-z0-9._-]"));
    name.replace(unsafe, QStringLiteral("_"));
    if (name.isEmpty() || name.startsWith(QLatin1Char('.'))) {
        name.prepend(QLatin1String("app"));
    }
    return QStringLiteral("%1-%2").arg(name).arg(pid);
}

qint64 SocketDirectory::pidOf(const QString &socketPath)
{
    const QString name = socketPath.section(QLatin1Char('/'), -1);
    bool ok = false;
    const qint64 pid = name.section(QLatin1Char('-'), -1).toLongLong(&ok);
    return ok && pid > 0 ? pid : -1;
}

bool SocketDirectory::isAlive(qint64 pid)
{
    // EPERM means it lives under another user.
    return pid > 0 && (::kill(pid_t(pid), 0) == 0 || errno == EPERM);
}

QStringList SocketDirectory::sockets(const QString &folder)
{
    QStringList result;
    const QStringList names = QDir(folder).entryList(QDir::System | QDir::NoDotAndDotDot, QDir::Name);
    for (const QString &name : names) {
        const QString socketPath = QDir(folder).filePath(name);
        struct stat info = {};
        if (::lstat(QFile::encodeName(socketPath).constData(), &info) != 0 || !S_ISSOCK(info.st_mode) ||
            info.st_uid != ::geteuid()) {
            continue;
        }
        const qint64 pid = pidOf(socketPath);
        if (pid > 0 && !isAlive(pid)) {
            // Left behind by a process that did not end cleanly.
            QFile::remove(socketPath);
            continue;
        }
        result.append(socketPath);
    }
    return result;
}

} // namespace VantixControl

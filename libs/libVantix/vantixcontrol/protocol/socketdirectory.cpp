#include "socketdirectory.h"

#include <QDir>
#include <QFile>
#include <QRegularExpression>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <sys/types.h>
#include <sys/un.h>
#include <unistd.h>

namespace VantixControl {

namespace {
// sun_path holds 108 bytes; the folder takes its share.
constexpr int MaxNameLength = 48;

QString errnoText()
{
    return QString::fromLocal8Bit(::strerror(errno));
}

// Why the entry @p name of @p parent cannot be opened as a folder.
QString whyNotAFolder(int parent, const QByteArray &name, const QString &path)
{
    struct stat info = {};
    if (::fstatat(parent, name.constData(), &info, AT_SYMLINK_NOFOLLOW) != 0) {
        return QStringLiteral("%1 does not exist").arg(path);
    }
    if (S_ISLNK(info.st_mode)) {
        return QStringLiteral("%1 is a symbolic link").arg(path);
    }
    return QStringLiteral("%1 is not a folder").arg(path);
}
} // namespace

class SocketDirectory::FolderPrivate
{
public:
    int fd = -1;
    QString path;

    void close()
    {
        if (fd >= 0) {
            ::close(fd);
            fd = -1;
        }
    }
};

SocketDirectory::Folder::Folder()
    : d(new FolderPrivate)
{
}

SocketDirectory::Folder::~Folder()
{
    d->close();
    delete d;
}

bool SocketDirectory::Folder::open(const QString &folder, Mode mode, QString *error)
{
    d->close();
    const QString clean = QDir::cleanPath(folder);
    const QString parentPath = clean.section(QLatin1Char('/'), 0, -2, QString::SectionIncludeLeadingSep);
    const QByteArray name = QFile::encodeName(clean.section(QLatin1Char('/'), -1));
    const int parent = ::open(QFile::encodeName(parentPath.isEmpty() ? QStringLiteral("/") : parentPath).constData(),
        O_PATH | O_DIRECTORY | O_CLOEXEC);
    if (parent < 0) {
        *error = QStringLiteral("cannot open %1: %2").arg(parentPath, errnoText());
        return false;
    }
    bool created = false;
    if (mode == Mode::Create) {
        created = ::mkdirat(parent, name.constData(), 0700) == 0;
        if (!created && errno != EEXIST) {
            *error = QStringLiteral("cannot create %1: %2").arg(clean, errnoText());
            ::close(parent);
            return false;
        }
    }
    // From here on only the descriptor counts: whatever the path names later is not looked at.
    const int fd = name.isEmpty() ? ::open("/", O_RDONLY | O_DIRECTORY | O_CLOEXEC)
                                  : ::openat(parent, name.constData(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC);
    if (fd < 0) {
        *error = errno == ENOENT ? QStringLiteral("%1 does not exist").arg(clean) : whyNotAFolder(parent, name, clean);
        ::close(parent);
        return false;
    }
    ::close(parent);
    struct stat info = {};
    if (::fstat(fd, &info) != 0) {
        *error = QStringLiteral("cannot read %1: %2").arg(clean, errnoText());
        ::close(fd);
        return false;
    }
    if (mode != Mode::Unchecked) {
        if (info.st_uid != ::geteuid()) {
            *error = QStringLiteral("%1 belongs to another user (uid %2)").arg(clean).arg(info.st_uid);
            ::close(fd);
            return false;
        }
        // One this process made has its mode whatever the umask did to it.
        if (created && (info.st_mode & 07777) != 0700 && ::fchmod(fd, 0700) == 0) {
            info.st_mode = (info.st_mode & ~07777) | 0700;
        }
        if ((info.st_mode & 07777) != 0700) {
            *error =
                QStringLiteral("%1 has mode %2, not 0700").arg(clean).arg(info.st_mode & 07777, 4, 8, QLatin1Char('0'));
            ::close(fd);
            return false;
        }
    }
    d->fd = fd;
    d->path = clean;
    return true;
}

bool SocketDirectory::Folder::isOpen() const
{
    return d->fd >= 0;
}

QString SocketDirectory::Folder::path() const
{
    return d->path;
}

QString SocketDirectory::Folder::filePath(const QString &name) const
{
    return d->path == QLatin1String("/") ? d->path + name : d->path + QLatin1Char('/') + name;
}

bool SocketDirectory::Folder::stat(const QString &name, struct ::stat *info) const
{
    return d->fd >= 0 && ::fstatat(d->fd, QFile::encodeName(name).constData(), info, AT_SYMLINK_NOFOLLOW) == 0;
}

bool SocketDirectory::Folder::remove(const QString &name) const
{
    return d->fd >= 0 && ::unlinkat(d->fd, QFile::encodeName(name).constData(), 0) == 0;
}

bool SocketDirectory::Folder::rename(const QString &from, const QString &to) const
{
    return d->fd >= 0 &&
        ::renameat(d->fd, QFile::encodeName(from).constData(), d->fd, QFile::encodeName(to).constData()) == 0;
}

QByteArray SocketDirectory::Folder::address(const QString &name) const
{
    if (d->fd < 0) {
        return QByteArray();
    }
    static const bool procAvailable = ::access("/proc/self/fd", X_OK) == 0;
    const QByteArray throughDescriptor = "/proc/self/fd/" + QByteArray::number(d->fd) + '/' + QFile::encodeName(name);
    if (procAvailable && throughDescriptor.size() <= maxPathBytes()) {
        return throughDescriptor;
    }
    // By its path, where /proc is missing or its way is the longer one.
    const QByteArray byPath = QFile::encodeName(filePath(name));
    return byPath.size() <= maxPathBytes() ? byPath : QByteArray();
}

QStringList SocketDirectory::Folder::sockets() const
{
    QStringList names;
    const int listing = d->fd >= 0 ? ::dup(d->fd) : -1;
    DIR *dir = listing >= 0 ? ::fdopendir(listing) : nullptr;
    if (!dir) {
        if (listing >= 0) {
            ::close(listing);
        }
        return names;
    }
    // The descriptor was duplicated at its start; a folder read before is read from the start again.
    ::rewinddir(dir);
    while (const dirent *entry = ::readdir(dir)) {
        const QString name = QFile::decodeName(entry->d_name);
        struct stat info = {};
        if (entry->d_name[0] == '.' || !stat(name, &info) || !S_ISSOCK(info.st_mode) || info.st_uid != ::geteuid()) {
            continue;
        }
        const qint64 pid = pidOf(name);
        if (pid > 0 && !isAlive(pid)) {
            // Left behind by a process that did not end cleanly.
            remove(name);
            continue;
        }
        names.append(name);
    }
    ::closedir(dir);
    std::sort(names.begin(), names.end());
    QStringList paths;
    paths.reserve(names.size());
    for (const QString &name : qAsConst(names)) {
        paths.append(filePath(name));
    }
    return paths;
}

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
    Folder opened;
    return opened.open(folder, Folder::Mode::Existing, error);
}

bool SocketDirectory::prepare(const QString &folder, QString *error)
{
    Folder opened;
    return opened.open(folder, Folder::Mode::Create, error);
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
    Folder opened;
    QString error;
    return opened.open(folder, Folder::Mode::Existing, &error) ? opened.sockets() : QStringList();
}

int SocketDirectory::maxPathBytes()
{
    return int(sizeof(sockaddr_un::sun_path)) - 1;
}

} // namespace VantixControl

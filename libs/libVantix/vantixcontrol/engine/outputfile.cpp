#include "outputfile_p.h"

#include <QFile>

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace VantixControl {

bool OutputFile::open(QFile *file, const QString &path, bool replace, QString *error)
{
    const QByteArray name = QFile::encodeName(path);
    // Without blocking: opening a named pipe for writing would otherwise wait for a reader.
    const int flags = O_WRONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC;
    const auto failed = [error, &path](const QString &why) {
        *error = QStringLiteral("cannot write %1: %2").arg(path, why);
        return false;
    };
    int fd = ::open(name.constData(), flags | O_CREAT | O_EXCL, 0666);
    if (fd < 0 && errno == EEXIST) {
        if (!replace) {
            return failed(QStringLiteral("it exists; --force replaces it"));
        }
        // Truncated only once it is known to be a regular file: a device is never touched.
        fd = ::open(name.constData(), flags);
        struct stat status;
        if (fd >= 0 && (::fstat(fd, &status) != 0 || !S_ISREG(status.st_mode))) {
            ::close(fd);
            return failed(QStringLiteral("it is no regular file"));
        }
        if (fd >= 0 && ::ftruncate(fd, 0) != 0) {
            const int why = errno;
            ::close(fd);
            return failed(QString::fromLocal8Bit(std::strerror(why)));
        }
    }
    if (fd < 0) {
        // A named pipe without a reader (ENXIO) is no file to write either.
        return failed(
            errno == ENXIO ? QStringLiteral("it is no regular file") : QString::fromLocal8Bit(std::strerror(errno)));
    }
    if (!file->open(fd, QIODevice::WriteOnly, QFileDevice::AutoCloseHandle)) {
        ::close(fd);
        return failed(file->errorString());
    }
    return true;
}

} // namespace VantixControl

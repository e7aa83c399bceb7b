#include "diskprivate_p.h"

#include "simulationdelays_p.h"

#include <qbcommon/appconfig.h>

#include <QDebug>
#include <QDir>
#include <QFileInfo>
#include <QTimer>

namespace TQ_SPAPI {

namespace {
// Removable disks are numbered from ID_DISK_USB (bit 8) upward; they come formatted.
constexpr int RemovableBit = 0x100;

/**
 * Where @p path really leads: the part that exists with its symbolic links
 * resolved, the missing rest appended. ".." is taken textually first. Empty
 * if a dangling link is in the way.
 */
QString physicalPath(const QString &path)
{
    QString existing = QDir::cleanPath(QDir::current().absoluteFilePath(path));
    QStringList missing;
    for (;;) {
        const QFileInfo info(existing);
        if (info.exists()) {
            break;
        }
        if (info.isSymLink() || info.path() == existing) {
            return QString();
        }
        missing.prepend(info.fileName());
        existing = info.path();
    }
    const QString canonical = QFileInfo(existing).canonicalFilePath();
    if (canonical.isEmpty() || missing.isEmpty()) {
        return canonical;
    }
    return QDir::cleanPath(canonical + QLatin1Char('/') + missing.join(QLatin1Char('/')));
}

// Whether @p inner lies strictly inside @p outer.
bool isStrictlyInside(const QString &inner, const QString &outer)
{
    const QString prefix = outer.endsWith(QLatin1Char('/')) ? outer : outer + QLatin1Char('/');
    return inner.size() > prefix.size() && inner.startsWith(prefix);
}
} // namespace

DiskPrivate::DiskPrivate(IDisk *q, IDevice::DeviceId id, const QString &path)
    : DevicePrivate(q, id, IDevice::DEVICE_DISK, path)
{
    // Read once: the failure cycle must not change under a running disk.
    const QString failures =
        AppConfig::instance()->argumentValue(QStringLiteral("--diskfailures"), QStringLiteral("0"));
    maxFailures = qMax(0, failures.toInt());
}

void DiskPrivate::initialize()
{
    const bool formatted =
        AppConfig::instance()->argumentExits(QStringLiteral("--disksformatted")) || (int(id) & RemovableBit) != 0;
    if (formatted) {
        // Nobody can be listening yet, so no statusChanged().
        status |= IDevice::F_FORMATTED;
    }
}

void DiskPrivate::mount()
{
    changeMount(true);
}

void DiskPrivate::unmount()
{
    changeMount(false);
}

void DiskPrivate::changeMount(bool mount)
{
    const IDevice::DeviceError failure = mount ? IDevice::E_DISK_NOT_READY : IDevice::E_DISK_NOT_MOUNTED;
    const IDevice::Flags precondition = mount ? IDevice::F_FORMATTED : IDevice::F_ACTIVE;

    // Cleared silently, so that a repeated failure is announced again.
    lastError = IDevice::E_NO_ERROR;
    if (failureCount != maxFailures) {
        ++failureCount;
        setError(failure);
        return;
    }
    failureCount = 0;
    if (!status.testFlag(precondition)) {
        setError(failure);
        return;
    }
    QTimer::singleShot(SimulationDelays::MountMs, this, [this, mount] {
        if (mount) {
            setStatus(status | IDevice::F_ACTIVE);
        } else {
            setStatus(status & ~IDevice::DeviceFlags(IDevice::F_ACTIVE));
        }
    });
}

void DiskPrivate::format(uint size)
{
    qDebug() << "disk size" << size;

    const char *why = nullptr;
    const QString target = formatTarget(&why);
    if (target.isEmpty()) {
        qWarning().nospace() << "Refusing to format " << path << ": " << why;
        failLater(IDevice::E_DISK_NO_SPACE);
        return;
    }
    // Removes hidden and system entries too; links inside are removed, not followed.
    if (!QDir(target).removeRecursively() || !QDir().mkpath(target)) {
        failLater(IDevice::E_DISK_NO_SPACE);
        return;
    }
    QTimer::singleShot(SimulationDelays::FormatMs, this, [this] { setStatus(status | IDevice::F_FORMATTED); });
}

QString DiskPrivate::formatTarget(const char **why) const
{
    if (path.isEmpty()) {
        // An empty path would be taken as the working directory.
        *why = "the path is empty";
        return QString();
    }
    const QString target = physicalPath(path);
    if (target.isEmpty()) {
        *why = "it leads through a dangling symbolic link";
        return QString();
    }
    if (QDir(target).isRoot()) {
        *why = "it is the file-system root";
        return QString();
    }
    const QString home = physicalPath(QDir::homePath());
    if (target == home || isStrictlyInside(home, target)) {
        *why = "it is the home directory or one of its parents";
        return QString();
    }
    if (QFileInfo(QDir::cleanPath(QDir::current().absoluteFilePath(path))).isSymLink()) {
        // Emptying it would empty whatever it points to.
        *why = "it is a symbolic link";
        return QString();
    }
    const QString rootPath = AppConfig::instance()->rootPath();
    const QString root = rootPath.isEmpty() ? QString() : physicalPath(rootPath);
    if (root.isEmpty() || !isStrictlyInside(target, root)) {
        *why = "it is not inside the application root";
        return QString();
    }
    return target;
}

void DiskPrivate::failLater(IDevice::DeviceError e)
{
    QTimer::singleShot(SimulationDelays::DiskFailureMs, this, [this, e] { setError(e); });
}

uint DiskPrivate::size() const
{
    return Capacity;
}

uint DiskPrivate::free() const
{
    return Capacity;
}

} // namespace TQ_SPAPI

#ifndef VANTIX_SYSTEMINFOSTORE_P_H
#define VANTIX_SYSTEMINFOSTORE_P_H

#include <vantix/system.h>
#include <vantix/vantix_private_export.h>

#include <QString>
#include <QVariantMap>

namespace TQ_SPAPI {

/**
 * The files behind the system-information map: the unit's "nvram" settings
 * file, which keeps the identity generated on first start, and the host's
 * os-release file. All file access of the map lives here.
 *
 * Nothing here ever stops start-up: a damaged nvram file is moved aside and
 * replaced by a fresh identity, and a folder that cannot be written leaves the
 * map in memory only. Both cases are logged as warnings.
 */
class VANTIX_PRIVATE_EXPORT SystemInfoStore
{
public:
    /// "tolvex" for the Tolvex platforms, "quarnel" for every other one.
    static QString family(System::PlatformType platform);
    /// "nvram-<family>".
    static QString fileName(System::PlatformType platform);
    /// Where the nvram file of @p platform lives (under AppConfig::varEtcPath).
    static QString filePath(System::PlatformType platform);

    /**
     * Fills @p map at start-up: the identity from the nvram file, generated
     * and written when there is no usable file, then the entries that are
     * refreshed on every start (versions, operating system, host name).
     */
    static void fill(QVariantMap &map, System::PlatformType platform);
    /// Writes every entry of @p map to the nvram file of @p platform; false if that failed.
    static bool save(const QVariantMap &map, System::PlatformType platform);

    /// The os-release file read at start-up; "/etc/os-release" unless replaced.
    static QString osReleasePath();
    /// Reads another os-release file (tests); an empty path returns to the host's.
    static void setOsReleasePath(const QString &path);

private:
    static bool load(const QString &path, QVariantMap &map, const char **damage);
    static bool moveAside(const QString &path, QString *keptAs);
    static void generateIdentity(QVariantMap &map, System::PlatformType platform);
    static void addPerStartEntries(QVariantMap &map);
    static bool write(const QVariantMap &map, const QString &path);
};

} // namespace TQ_SPAPI

#endif

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
 * Nothing here ever stops start-up: a damaged nvram file (unreadable, broken
 * INI, or without any entry) is moved aside and replaced by a fresh identity,
 * and a folder that cannot be written leaves the map in memory only. Both
 * cases are logged as warnings. Any other file is loaded as it stands and is
 * not rewritten at start-up, even when it lacks identity entries.
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
     * Fills @p map at start-up: the entries of the nvram file, or a generated
     * identity, written, when there is no usable file; then the entries that
     * are refreshed on every start (versions, operating system, host name).
     */
    static void fill(QVariantMap &map, System::PlatformType platform);
    /// Writes every storable entry of @p map to the nvram file of @p platform; false if that failed.
    static bool save(const QVariantMap &map, System::PlatformType platform);
    /**
     * Sets @p key to @p value in @p map and saves the whole map, as
     * System::addSystemInfoPair does. A key that isStorableKey() refuses is
     * refused with a warning and the map is left as it was; false then.
     */
    static bool add(QVariantMap &map, const QString &key, const QString &value, System::PlatformType platform);
    /// Whether @p key reads back from the nvram file under the same name and with its own value.
    static bool isStorableKey(const QString &key);

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

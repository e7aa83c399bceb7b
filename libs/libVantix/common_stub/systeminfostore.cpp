#include "systeminfostore_p.h"

#include <qbcommon/appconfig.h>

#include <QDateTime>
#include <QDebug>
#include <QDir>
#include <QFileInfo>
#include <QHostInfo>
#include <QSettings>
#include <QStringList>
#include <QUuid>

namespace TQ_SPAPI {

namespace {
// Damaged files kept side by side before we stop keeping more.
constexpr int MaxKeptCopies = 100;

QString &osReleaseOverride()
{
    static QString path;
    return path;
}

struct BoardIdentity
{
    const char *boardId;
    const char *revision;
    const char *serial;
};

BoardIdentity boardIdentity(System::PlatformType platform)
{
    switch (platform) {
    case System::PT_TOLVEX:
    case System::PT_TOLVEX_PLUS:
        return {"30DA", "C", "TSBF12123456"};
    case System::PT_QUARNEL:
    case System::PT_QUARNEL_PLUS:
        return {"40BA", "D", "TSBF12987654"};
    default:
        return {"NONE", "N", "TSBF00000000"};
    }
}

// INI values with unquoted commas are read back as lists; the map holds text.
QString textOf(const QVariant &value)
{
    if (value.userType() == QMetaType::QStringList) {
        return value.toStringList().join(QStringLiteral(", "));
    }
    return value.toString();
}
} // namespace

QString SystemInfoStore::family(System::PlatformType platform)
{
    const bool tolvex = platform == System::PT_TOLVEX || platform == System::PT_TOLVEX_PLUS;
    return tolvex ? QStringLiteral("tolvex") : QStringLiteral("quarnel");
}

QString SystemInfoStore::fileName(System::PlatformType platform)
{
    return QStringLiteral("nvram-%1").arg(family(platform));
}

QString SystemInfoStore::filePath(System::PlatformType platform)
{
    return AppConfig::instance()->varEtcPath(fileName(platform));
}

QString SystemInfoStore::osReleasePath()
{
    const QString &path = osReleaseOverride();
    return path.isEmpty() ? QStringLiteral("/etc/os-release") : path;
}

void SystemInfoStore::setOsReleasePath(const QString &path)
{
    osReleaseOverride() = path;
}

void SystemInfoStore::fill(QVariantMap &map, System::PlatformType platform)
{
    const QString path = filePath(platform);
    bool loaded = false;
    bool mayWrite = true;

    if (QFileInfo::exists(path)) {
        QVariantMap stored;
        const char *damage = nullptr;
        if (load(path, stored, &damage)) {
            map.insert(stored);
            loaded = true;
        } else {
            QString keptAs;
            if (moveAside(path, &keptAs)) {
                qWarning().noquote() << QStringLiteral(
                    "Damaged nvram file \"%1\" (%2) kept as \"%3\"; a new identity is generated")
                                            .arg(path, QLatin1String(damage), keptAs);
            } else {
                // Writing over it would destroy the only copy of the old identity.
                mayWrite = false;
                qWarning().noquote() << QStringLiteral(
                    "Damaged nvram file \"%1\" (%2) cannot be moved aside; a new identity is used in memory only")
                                            .arg(path, QLatin1String(damage));
            }
        }
    }

    if (!loaded) {
        generateIdentity(map, platform);
        if (mayWrite) {
            write(map, path);
        }
    }
    addPerStartEntries(map);
}

bool SystemInfoStore::save(const QVariantMap &map, System::PlatformType platform)
{
    return write(map, filePath(platform));
}

// QSettings files a key under its normalised form: without leading and
// trailing slashes, and with a run of slashes taken as one. Such a key would
// be read back under another name, or land on the entry of another key.
bool SystemInfoStore::isStorableKey(const QString &key)
{
    return !key.isEmpty() && !key.startsWith(QLatin1Char('/')) && !key.endsWith(QLatin1Char('/')) &&
        !key.contains(QLatin1String("//"));
}

bool SystemInfoStore::add(QVariantMap &map, const QString &key, const QString &value, System::PlatformType platform)
{
    if (!isStorableKey(key)) {
        qWarning().noquote() << QStringLiteral(
            "System information key \"%1\" refused: the nvram file cannot keep it (empty, or a leading, trailing or "
            "double slash)")
                                    .arg(key);
        return false;
    }
    map.insert(key, value);
    save(map, platform);
    return true;
}

// The file is damaged when QSettings cannot read it (AccessError: no read
// permission, or a folder in its place), when its INI structure is broken
// (FormatError), or when it holds no entry at all. Anything else was written
// for this unit, by us or by hand, and is taken as it stands: a file that
// lacks some identity entries still keeps the ones it has.
bool SystemInfoStore::load(const QString &path, QVariantMap &map, const char **damage)
{
    const QSettings settings(path, QSettings::IniFormat);
    if (settings.status() == QSettings::AccessError) {
        *damage = "unreadable";
        return false;
    }
    if (settings.status() == QSettings::FormatError) {
        *damage = "format error";
        return false;
    }
    QVariantMap entries;
    const QStringList keys = settings.allKeys();
    for (const QString &key : keys) {
        // value() looks such a key up under another name, so what it returns
        // belongs to some other line of the file, or to none.
        if (!isStorableKey(key)) {
            qWarning().noquote()
                << QStringLiteral("nvram file \"%1\": entry \"%2\" cannot be read as written; ignored").arg(path, key);
            continue;
        }
        entries.insert(key, textOf(settings.value(key)));
    }
    if (entries.isEmpty()) {
        *damage = "no entries";
        return false;
    }
    map.insert(entries);
    return true;
}

// Keeps the damaged file under the first free name of "<file>.corrupt",
// "<file>.corrupt.2", "<file>.corrupt.3", ...: an older copy is never replaced.
bool SystemInfoStore::moveAside(const QString &path, QString *keptAs)
{
    const QString base = path + QLatin1String(".corrupt");
    for (int n = 1; n <= MaxKeptCopies; ++n) {
        const QString candidate = n == 1 ? base : base + QLatin1Char('.') + QString::number(n);
        const QFileInfo taken(candidate);
        if (taken.exists() || taken.isSymLink()) {
            continue;
        }
        if (!QDir().rename(path, candidate)) {
            return false;
        }
        *keptAs = candidate;
        return true;
    }
    return false;
}

void SystemInfoStore::generateIdentity(QVariantMap &map, System::PlatformType platform)
{
    const BoardIdentity board = boardIdentity(platform);
    QString uuid = QUuid::createUuid().toString();
    uuid.remove(QLatin1Char('{')).remove(QLatin1Char('}'));
    const QString productId = AppConfig::instance()->argumentValue(QStringLiteral("--id"), QStringLiteral("200-00000"));

    map.insert(QStringLiteral("HW_BOARD_ID"), QLatin1String(board.boardId));
    map.insert(QStringLiteral("HW_BOARD_REVISION"), QLatin1String(board.revision));
    map.insert(QStringLiteral("TQ_PRODUCT_DATE"), QDateTime::currentDateTime().toString(QStringLiteral("yyyy-MM-dd")));
    map.insert(QStringLiteral("TQ_PRODUCT_ID"), productId);
    map.insert(QStringLiteral("TQ_PRODUCT_SERIAL"), QLatin1String(board.serial));
    map.insert(QStringLiteral("TQ_PRODUCT_UUID"), uuid);
}

void SystemInfoStore::addPerStartEntries(QVariantMap &map)
{
    map.insert(QStringLiteral("BoardControllerVersion"), QStringLiteral("X.X"));
    map.insert(QStringLiteral("API_NAME"), QStringLiteral("LinuxStub"));
    map.insert(QStringLiteral("SYSCTRL_VERSION"), QStringLiteral("X.X"));

    // A missing file reads as empty entries.
    const QSettings osRelease(osReleasePath(), QSettings::IniFormat);
    map.insert(QStringLiteral("OS_VERSION"), textOf(osRelease.value(QStringLiteral("VERSION"))).trimmed());
    map.insert(QStringLiteral("OS_NAME"), textOf(osRelease.value(QStringLiteral("NAME"))).trimmed());
    map.insert(QStringLiteral("OS_HOSTNAME"), QHostInfo::localHostName());
}

bool SystemInfoStore::write(const QVariantMap &map, const QString &path)
{
    const QString folder = QFileInfo(path).absolutePath();
    bool written = false;
    if (QDir().mkpath(folder)) {
        QSettings settings(path, QSettings::IniFormat);
        for (auto it = map.cbegin(); it != map.cend(); ++it) {
            // Such an entry could never be loaded as it is; it stays in memory only.
            if (isStorableKey(it.key())) {
                settings.setValue(it.key(), textOf(it.value()));
            }
        }
        settings.sync();
        written = settings.status() == QSettings::NoError;
    }
    if (!written) {
        qWarning().noquote()
            << QStringLiteral("Cannot write nvram file \"%1\"; system information is kept in memory only").arg(path);
    }
    return written;
}

} // namespace TQ_SPAPI

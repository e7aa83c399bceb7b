// Fuzzes the reading of the unit's nvram file: the input is the whole file,
// read at start-up through SystemInfoStore::fill. A file with at least one
// entry is taken as it stands and left untouched; any other is kept aside and
// replaced by a complete identity. Either way every entry is text. The last
// line with a "=" is then added as an entry, as addSystemInfoPair does, and
// every entry saved then must read back unchanged on the next start (the
// per-start ones are refreshed instead).

#include "fuzzsupport.h"
#include "systeminfostore_p.h"

#include <qbcommon/appconfig.h>

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSettings>
#include <QTemporaryDir>

#include <cstddef>
#include <cstdint>

using namespace TQ_SPAPI;

namespace {
constexpr System::PlatformType Platform = System::PT_TOLVEX;

// Refreshed on every start, whatever was saved for them.
const char *const PerStartKeys[] = {
    "API_NAME", "BoardControllerVersion", "OS_HOSTNAME", "OS_NAME", "OS_VERSION", "SYSCTRL_VERSION"};

const char *const IdentityKeys[] = {
    "HW_BOARD_ID", "HW_BOARD_REVISION", "TQ_PRODUCT_DATE", "TQ_PRODUCT_ID", "TQ_PRODUCT_SERIAL", "TQ_PRODUCT_UUID"};

struct Harness
{
    QTemporaryDir root;
    quint64 inputs = 0;
};
Harness *harness = nullptr;

QVariantMap start()
{
    return FuzzSupport::startedSystemInfo(Platform);
}

QByteArray contentOf(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("(unreadable)");
}

// Text with everything but printable ASCII as %XX (UTF-8), for the report.
QString printable(const QString &text)
{
    return QString::fromLatin1(text.toUtf8().toPercentEncoding(" ,.:;/=_-()[]{}@\\\"'"));
}

// The first entry of @p before that @p after lost or changed, for the report.
// Entries only @p after has are not counted: saving merges into the file, so
// lines of a damaged file that did not read as entries may surface as such.
QString firstLoss(const QVariantMap &before, const QVariantMap &after)
{
    for (auto it = before.cbegin(); it != before.cend(); ++it) {
        if (after.value(it.key()) != it.value()) {
            return QStringLiteral("\"%1\": \"%2\" became \"%3\" (%4)")
                .arg(printable(it.key()), printable(it.value().toString()), printable(after.value(it.key()).toString()),
                    QLatin1String(after.contains(it.key()) ? "present" : "absent"));
        }
    }
    return QString();
}
} // namespace

extern "C" int LLVMFuzzerInitialize(int *argc, char ***argv)
{
    FuzzSupport::startApplication(argc, argv);
    harness = new Harness;
    FuzzSupport::removeAtExit(harness->root.path());
    AppConfig::instance()->setArguments(QStringList{QStringLiteral("fuzz")});
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    // A folder of its own per input: QSettings caches a file by name, size and
    // modification time, so two inputs of one size written within the same
    // tick would otherwise both read as the first.
    const QString folder = harness->root.path() + QLatin1Char('/') + QString::number(harness->inputs++);
    AppConfig::instance()->setRootPath(folder);
    const QString path = SystemInfoStore::filePath(Platform);
    QDir().mkpath(QFileInfo(path).absolutePath());
    {
        QFile file(path);
        FuzzSupport::check(file.open(QIODevice::WriteOnly), "cannot write", path);
        file.write(reinterpret_cast<const char *>(data), qint64(size));
    }

    const QVariantMap first = start();
    for (auto it = first.cbegin(); it != first.cend(); ++it) {
        FuzzSupport::observe(0, it.key());
        FuzzSupport::observe(1, it.value().toString());
    }
    const QByteArray input(reinterpret_cast<const char *>(data), int(size));
    const QString keptAs = path + QLatin1String(".corrupt");
    if (QFileInfo::exists(keptAs)) {
        FuzzSupport::check(contentOf(keptAs) == input, "file kept aside changed");
        const QSettings written(path, QSettings::IniFormat);
        for (const char *key : IdentityKeys) {
            const QVariant value = first.value(QLatin1String(key));
            FuzzSupport::check(value.userType() == QMetaType::QString, "identity entry missing:", QLatin1String(key));
            FuzzSupport::check(
                written.value(QLatin1String(key)) == value, "identity entry not written:", QLatin1String(key));
        }
    } else {
        // Trusted: nothing generated, nothing written back.
        FuzzSupport::check(contentOf(path) == input, "trusted file rewritten at start-up");
        const QSettings file(path, QSettings::IniFormat);
        for (const char *key : IdentityKeys) {
            FuzzSupport::check(first.contains(QLatin1String(key)) == file.contains(QLatin1String(key)),
                "identity entry generated or lost for a trusted file:", QLatin1String(key));
        }
    }
    for (auto it = first.cbegin(); it != first.cend(); ++it) {
        FuzzSupport::check(it.value().userType() == QMetaType::QString, "entry not text:", it.key());
    }
    FuzzSupport::check(
        first.value(QStringLiteral("API_NAME")) == QLatin1String("LinuxStub"), "per-start entry not refreshed");

    QVariantMap saved = first;
    const QList<QByteArray> lines = input.split('\n');
    for (auto line = lines.crbegin(); line != lines.crend(); ++line) {
        const int equals = line->indexOf('=');
        if (equals < 0) {
            continue;
        }
        const QString key = QString::fromUtf8(line->left(equals));
        const QString value = QString::fromUtf8(line->mid(equals + 1));
        const bool added = SystemInfoStore::add(saved, key, value, Platform);
        FuzzSupport::check(added == SystemInfoStore::isStorableKey(key), "add disagrees with isStorableKey:", key);
        FuzzSupport::check(added ? saved.value(key) == value : saved == first, "add changed the wrong entries:", key);
        break;
    }

    FuzzSupport::check(SystemInfoStore::save(saved, Platform), "saving failed", path);
    const QVariantMap second = start();
    QVariantMap expected = saved;
    for (const char *key : PerStartKeys) {
        expected.insert(QLatin1String(key), first.value(QLatin1String(key)));
    }
    const QString loss = firstLoss(expected, second);
    FuzzSupport::check(loss.isEmpty(), "saved entry read back changed:", loss);

    QDir(folder).removeRecursively();
    return 0;
}

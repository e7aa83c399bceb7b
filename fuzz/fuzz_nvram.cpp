// Fuzzes the reading of the unit's nvram file: the input is the whole file,
// read at start-up through SystemInfoStore::fill. Whatever the file holds,
// start-up must end with a complete identity in text, and every entry saved
// then must read back unchanged on the next start.

#include "fuzzsupport.h"
#include "systeminfostore_p.h"

#include <qbcommon/appconfig.h>

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>

#include <cstddef>
#include <cstdint>

using namespace TQ_SPAPI;

namespace {
constexpr System::PlatformType Platform = System::PT_TOLVEX;

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
    for (const char *key : IdentityKeys) {
        const QVariant value = first.value(QLatin1String(key));
        FuzzSupport::check(
            value.userType() == QMetaType::QString, "identity entry missing or not text:", QLatin1String(key));
    }
    for (auto it = first.cbegin(); it != first.cend(); ++it) {
        FuzzSupport::check(it.value().userType() == QMetaType::QString, "entry not text:", it.key());
    }
    FuzzSupport::check(
        first.value(QStringLiteral("API_NAME")) == QLatin1String("LinuxStub"), "per-start entry not refreshed");

    FuzzSupport::check(SystemInfoStore::save(first, Platform), "saving failed", path);
    const QVariantMap second = start();
    const QString loss = firstLoss(first, second);
    FuzzSupport::check(loss.isEmpty(), "saved entry read back changed:", loss);

    QDir(folder).removeRecursively();
    return 0;
}

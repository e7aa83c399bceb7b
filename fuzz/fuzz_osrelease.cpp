// Fuzzes the reading of the host's os-release file: the input is the whole
// file, read at start-up through SystemInfoStore::fill. Whatever it holds, the
// operating-system entries come out as trimmed text and the unit's identity,
// which lives in another file, stays as it was.

#include "fuzzsupport.h"
#include "systeminfostore_p.h"

#include <qbcommon/appconfig.h>

#include <QFile>
#include <QTemporaryDir>

#include <cstddef>
#include <cstdint>

using namespace TQ_SPAPI;

namespace {
constexpr System::PlatformType Platform = System::PT_QUARNEL;

struct Harness
{
    QTemporaryDir root;
    QString uuid;
    quint64 inputs = 0;
};
Harness *harness = nullptr;

QVariantMap start()
{
    return FuzzSupport::startedSystemInfo(Platform);
}

void checkText(const QVariantMap &map, const char *key)
{
    const QVariant value = map.value(QLatin1String(key));
    FuzzSupport::check(value.userType() == QMetaType::QString, "entry missing or not text:", QLatin1String(key));
    const QString text = value.toString();
    FuzzSupport::check(text == text.trimmed(), "entry not trimmed:", QLatin1String(key));
}
} // namespace

extern "C" int LLVMFuzzerInitialize(int *argc, char ***argv)
{
    FuzzSupport::startApplication(argc, argv);
    harness = new Harness;
    FuzzSupport::removeAtExit(harness->root.path());
    AppConfig::instance()->setRootPath(harness->root.path() + QStringLiteral("/unit"));
    AppConfig::instance()->setArguments(QStringList{QStringLiteral("fuzz")});
    // The first start creates the nvram file; every later one reads it.
    harness->uuid = start().value(QStringLiteral("TQ_PRODUCT_UUID")).toString();
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    // A new name per input, as QSettings caches a file by name, size and modification time.
    const QString path = harness->root.path() + QStringLiteral("/os-release-") + QString::number(harness->inputs++);
    {
        QFile file(path);
        FuzzSupport::check(file.open(QIODevice::WriteOnly), "cannot write", path);
        file.write(reinterpret_cast<const char *>(data), qint64(size));
    }
    SystemInfoStore::setOsReleasePath(path);

    const QVariantMap map = start();
    checkText(map, "OS_NAME");
    checkText(map, "OS_VERSION");
    FuzzSupport::observe(0, map.value(QStringLiteral("OS_NAME")).toString());
    FuzzSupport::observe(1, map.value(QStringLiteral("OS_VERSION")).toString());
    FuzzSupport::check(map.value(QStringLiteral("TQ_PRODUCT_UUID")).toString() == harness->uuid, "identity changed");

    QFile::remove(path);
    return 0;
}

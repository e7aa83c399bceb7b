#include "faketime.h"

#include <QCoreApplication>
#include <QFile>
#include <QFileInfo>

#include <cerrno>
#include <cmath>
#include <cstring>
#include <unistd.h>

namespace FakeTime {

namespace {
const QString LibraryVariable = QStringLiteral("VANTIX_FAKETIME_LIB");
const QString Preload = QStringLiteral("LD_PRELOAD");
} // namespace

QString libraryPath()
{
    const QString chosen = qEnvironmentVariable("VANTIX_FAKETIME_LIB");
    if (!chosen.isEmpty()) {
        return chosen;
    }
    return QStringLiteral("/usr/lib/%1/faketime/libfaketime.so.1").arg(QLatin1String(VANTIX_MULTIARCH));
}

bool findLibrary(QString *path, QString *error)
{
    *path = libraryPath();
    if (QFileInfo(*path).isFile()) {
        return true;
    }
    if (!qEnvironmentVariableIsEmpty("VANTIX_FAKETIME_LIB")) {
        *error = QStringLiteral("%1 names %2, which is not a file; libfaketime comes with the Debian package faketime")
                     .arg(LibraryVariable, *path);
    } else {
        *error = QStringLiteral("--speed needs libfaketime, which is not at %1: install the Debian package faketime "
                                "(or set %2 to the library)")
                     .arg(*path, LibraryVariable);
    }
    return false;
}

bool parseSpeed(const QString &text, double *speed, QString *error)
{
    bool ok = false;
    const double value = text.toDouble(&ok);
    if (!ok || !std::isfinite(value) || value <= 0) {
        *error =
            QStringLiteral("--speed takes a number above 0 (100 runs time 100 times faster), not \"%1\"").arg(text);
        return false;
    }
    *speed = value;
    return true;
}

QString timeSetting(double speed)
{
    return QStringLiteral("+0 x") + QString::number(speed, 'g', 12);
}

QProcessEnvironment environment(const QProcessEnvironment &base, const QString &library, double speed)
{
    QProcessEnvironment environment = base;
    const QString preload = base.value(Preload);
    environment.insert(Preload, preload.isEmpty() ? library : library + QLatin1Char(':') + preload);
    environment.insert(QStringLiteral("FAKETIME"), timeSetting(speed));
    // Qt's timers and QElapsedTimer read the monotonic clock; it must speed up with the others.
    environment.insert(QStringLiteral("FAKETIME_DONT_FAKE_MONOTONIC"), QStringLiteral("0"));
    // An AddressSanitizer build insists on coming first among the loaded libraries.
    const QString asan = base.value(QStringLiteral("ASAN_OPTIONS"));
    if (!asan.contains(QLatin1String("verify_asan_link_order"))) {
        environment.insert(QStringLiteral("ASAN_OPTIONS"),
            asan.isEmpty() ? QStringLiteral("verify_asan_link_order=0")
                           : asan + QStringLiteral(":verify_asan_link_order=0"));
    }
    return environment;
}

bool isActive(const QProcessEnvironment &environment, const QString &library, double speed)
{
    return environment.value(QStringLiteral("FAKETIME")) == timeSetting(speed) &&
        environment.value(Preload).split(QLatin1Char(':')).contains(library);
}

bool restartAtSpeed(const QString &speedText, char *argv[], QString *error)
{
    double speed = 0;
    QString library;
    if (!parseSpeed(speedText, &speed, error) || !findLibrary(&library, error)) {
        return false;
    }
    const QProcessEnvironment current = QProcessEnvironment::systemEnvironment();
    if (isActive(current, library, speed)) {
        return true;
    }
    const QProcessEnvironment accelerated = environment(current, library, speed);
    for (const QString &name : accelerated.keys()) {
        qputenv(name.toLocal8Bit().constData(), accelerated.value(name).toLocal8Bit());
    }
    ::execv(QFile::encodeName(QCoreApplication::applicationFilePath()).constData(), argv);
    *error =
        QStringLiteral("cannot start again under libfaketime: %1").arg(QString::fromLocal8Bit(std::strerror(errno)));
    return false;
}

} // namespace FakeTime

#include "deviceprivate_p.h"

#include "simulationdelays_p.h"

#include <QDebug>
#include <QFile>
#include <QTimerEvent>

#include <cmath>

namespace TQ_SPAPI {

namespace {
// One line of a value file, as Latin-1 up to the first NUL byte.
QString readLineFrom(QFile &file)
{
    const QByteArray line = file.readLine();
    const int length = int(qstrnlen(line.constData(), uint(line.size())));
    return QString::fromLatin1(line.constData(), length);
}
} // namespace

DevicePrivate::DevicePrivate(IDevice *q, IDevice::DeviceId id, IDevice::DeviceType type, const QString &path)
    : QObject(q)
    , q(q)
    , id(id)
    , type(type)
    , path(path)
{
}

DevicePrivate::~DevicePrivate() = default;

void DevicePrivate::setAbility(IDevice::Flags flags)
{
    // All or nothing: a request overlapping an earlier one is dropped whole.
    if (abilities & flags) {
        return;
    }
    abilities |= flags;
    applyAbilityLater(flags, true);
}

void DevicePrivate::clearAbility(IDevice::Flags flags)
{
    // Never dropped, and not checked against what was requested.
    abilities &= ~IDevice::DeviceFlags(flags);
    applyAbilityLater(flags, false);
}

// A timer of this object rather than a single-shot timer object: it goes with
// the device, so a device unplugged before the delay is over leaves nothing
// behind, however fast devices come and go. Precise, as a single-shot timer
// of this length is, so requests apply in the order they were made.
void DevicePrivate::applyAbilityLater(IDevice::Flags flags, bool set)
{
    pendingAbilities.append({startTimer(SimulationDelays::AbilityMs, Qt::PreciseTimer), flags, set});
}

void DevicePrivate::timerEvent(QTimerEvent *event)
{
    for (int i = 0; i < pendingAbilities.size(); ++i) {
        if (pendingAbilities.at(i).timerId != event->timerId()) {
            continue;
        }
        const PendingAbility pending = pendingAbilities.takeAt(i);
        killTimer(pending.timerId);
        // Re-read the status now: changes made meanwhile are kept.
        const IDevice::DeviceFlags newStatus =
            pending.set ? status | pending.flags : status & ~IDevice::DeviceFlags(pending.flags);
        if (newStatus != status) {
            setStatus(newStatus);
        }
        return;
    }
    QObject::timerEvent(event);
}

void DevicePrivate::initialize() { }

IDevice::DeviceError DevicePrivate::error() const
{
    return lastError;
}

void DevicePrivate::setError(IDevice::DeviceError e)
{
    if (e == lastError) {
        return;
    }
    lastError = e;
    Q_EMIT q->error(e);
}

void DevicePrivate::reset()
{
    // Nothing to reset in a simulation; the record's context names the device call.
    qDebug();
}

void DevicePrivate::onPathChanged(QString newPath)
{
    if (newPath == path) {
        return;
    }
    path = newPath;
    Q_EMIT q->pathChanged(path);
}

void DevicePrivate::onStatusChanged(IDevice::DeviceFlags newStatus)
{
    if (newStatus == status) {
        return;
    }
    status = newStatus;
    Q_EMIT q->statusChanged(newStatus);
}

QString DevicePrivate::readString(const QString &name) const
{
    QFile file(path + QLatin1Char('/') + name);
    if (!file.open(QIODevice::ReadOnly)) {
        return QString();
    }
    const QString text = readLineFrom(file).trimmed();
    // An empty file reads as an empty, not a null, string.
    return text.isNull() ? QString(QLatin1String("")) : text;
}

qreal DevicePrivate::tryToReadqrealFromMilli(const QString &name) const
{
    QFile file(path + QLatin1Char('/') + name);
    if (!file.open(QIODevice::ReadOnly)) {
        return std::nan("");
    }
    bool ok = false;
    const qlonglong value = readLineFrom(file).trimmed().toLongLong(&ok, 10);
    if (!ok) {
        qWarning() << "Could not convert read value from" << file.fileName() << "to an integer";
        return std::nan("");
    }
    return value / 1000.0;
}

qreal DevicePrivate::readqrealFromMilli(const QString &name) const
{
    return valueOrZero(tryToReadqrealFromMilli(name), name);
}

qreal DevicePrivate::tryToReadqrealFromMicro(const QString &name) const
{
    return tryToReadqrealFromMilli(name) / 1000.0;
}

qreal DevicePrivate::readqrealFromMicro(const QString &name) const
{
    return valueOrZero(tryToReadqrealFromMicro(name), name);
}

qreal DevicePrivate::valueOrZero(qreal value, const QString &name) const
{
    if (std::isnan(value)) {
        qWarning().noquote() << QLatin1String("Could not read value from ") + path + QLatin1Char('/') + name;
        return 0.0;
    }
    return value;
}

} // namespace TQ_SPAPI

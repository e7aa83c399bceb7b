#include "hardwarerestore_p.h"

#include "deviceoperations_p.h"
#include "devicenames_p.h"
#include "hotplug_p.h"
#include "reflection_p.h"
#include "simulationdelays_p.h"
#include "valuetext_p.h"

#include <vantix/icanmux.h>
#include <vantix/itimesettings.h>
#include <vantix/system.h>

#include <QMetaEnum>

using namespace TQ_SPAPI;

namespace VantixControl {

namespace {
using D = IDevice;

bool isSameDevice(const IDevice &device, const SavedDevice &saved)
{
    return saved.className == device.metaObject()->className() && saved.type == device.type() &&
        saved.path == device.path();
}

QString describe(const SavedDevice &saved)
{
    return QStringLiteral("plugged as %1 %2")
        .arg(QString::fromLatin1(saved.className).section(QLatin1String("::"), -1),
            ValueText::enumText(QMetaEnum::fromType<D::DeviceType>(), int(saved.type)));
}

QString describe(const IDevice &device)
{
    return QStringLiteral("plugged as %1 %2")
        .arg(Reflection::shortClassName(&device),
            ValueText::enumText(QMetaEnum::fromType<D::DeviceType>(), int(device.type())));
}

QString statusText(D::DeviceFlags status)
{
    return ValueText::enumText(QMetaEnum::fromType<D::DeviceFlags>(), int(status));
}

QString flightText(System::FligtModeFlags flags)
{
    return ValueText::enumText(QMetaEnum::fromType<System::FligtModeFlags>(), int(flags));
}

// The values of @p object that differ from @p saved, the status aside.
void valueDifferences(const QObject *object, const SavedObject &saved, QVector<RestoreDifference> *differences)
{
    if (!object) {
        return;
    }
    const QVector<SavedValue> now = Snapshot::valuesOf(object);
    for (const SavedValue &value : saved.values) {
        if (value.name == "status") {
            continue;
        }
        const auto current = std::find_if(
            now.begin(), now.end(), [&value](const SavedValue &candidate) { return candidate.name == value.name; });
        if (current == now.end() || current->text == value.text) {
            continue;
        }
        RestoreDifference difference;
        difference.what = saved.name + QLatin1Char('.') + QString::fromLatin1(value.name);
        difference.now = current->text;
        difference.saved = value.text;
        difference.why = DeviceOperations::whyNotSettable(object, saved, value.name);
        difference.mark = DeviceOperations::isMark(object, value.name);
        differences->append(difference);
    }
}

// The status bits that differ: the overrides' mark apart, the others together with why no operation sets them.
void statusDifferences(const IDevice &device, const SavedDevice &saved, QVector<RestoreDifference> *differences)
{
    const D::DeviceFlags differing = device.status() ^ saved.status;
    if (!differing) {
        return;
    }
    RestoreDifference difference;
    difference.what = saved.name + QStringLiteral(".status");
    difference.now = statusText(device.status());
    difference.saved = statusText(saved.status);
    if (differing == D::F_OVERRIDE) {
        difference.why = DeviceOperations::whyNotSettable(&device, D::F_OVERRIDE, saved.status & D::F_OVERRIDE);
        difference.mark = true;
        differences->append(difference);
        return;
    }
    QStringList reasons;
    for (quint32 bit = 1; bit && bit <= quint32(D::F_RESETTING); bit <<= 1) {
        if (bit != D::F_OVERRIDE && differing.testFlag(D::Flags(bit))) {
            const QString why =
                DeviceOperations::whyNotSettable(&device, D::Flags(bit), saved.status.testFlag(D::Flags(bit)));
            if (!why.isEmpty()) {
                reasons.append(why);
            }
        }
    }
    difference.why = reasons.join(QLatin1String("; "));
    differences->append(difference);
}
} // namespace

QString RestoreDifference::text() const
{
    const QString text = QStringLiteral("%1 is %2, saved %3").arg(what, now, saved);
    return why.isEmpty() ? text : text + QStringLiteral(": ") + why;
}

HardwareRestore::HardwareRestore(System *system, const Snapshot &saved)
    : m_system(system)
    , m_saved(saved)
{
}

void HardwareRestore::plugging(RestoreWork *work) const
{
    if (!m_system) {
        return;
    }
    // Away first what the snapshot lacks, or holds as another device; the last plugged go first.
    const QList<IDevicePtr> now = m_system->devices();
    for (auto it = now.crbegin(); it != now.crend(); ++it) {
        const SavedDevice *saved = m_saved.device((*it)->id());
        // A port may have taken its stick along already.
        if ((saved && isSameDevice(**it, *saved)) || !m_system->device((*it)->id())) {
            continue;
        }
        HotPlug::unplug((*it)->id());
        ++work->unplugged;
        work->started(0);
    }
    // The stick a saved active port brought comes again when the port becomes active.
    const SavedDevice *portA = m_saved.device(D::ID_USB_OTG_A);
    const IDevicePtr portNow = m_system->device(D::ID_USB_OTG_A);
    const bool stickComes =
        portA && portA->status.testFlag(D::F_ACTIVE) && !(portNow && portNow->status().testFlag(D::F_ACTIVE));
    for (const SavedDevice &saved : m_saved.devices) {
        if (m_system->device(saved.id) || (saved.id == D::ID_DISK_USB && stickComes)) {
            continue;
        }
        HotPlug::plug(saved.id, saved.type, saved.path);
        ++work->plugged;
        // Every new device is enabled after the ability delay.
        work->started(SimulationDelays::AbilityMs);
    }
}

void HardwareRestore::values(RestoreWork *work) const
{
    if (!m_system) {
        return;
    }
    for (const SavedDevice &saved : m_saved.devices) {
        const IDevicePtr device = m_system->device(saved.id);
        if (device && isSameDevice(*device, saved)) {
            DeviceOperations::restore(m_system, device.data(), saved, work);
        }
    }
    DeviceOperations::restoreWritable(m_system->timeSettings(), m_saved.timeSettings, work);
    DeviceOperations::restoreWritable(m_system->canMux(), m_saved.canMux, work);

    // The system information, through the System's own operations.
    const QVariantMap now = m_system->systemInfo();
    for (auto it = m_saved.systemInfo.cbegin(); it != m_saved.systemInfo.cend(); ++it) {
        if (now.value(it.key()) != it.value()) {
            m_system->addSystemInfoPair(it.key(), it.value().toString());
            ++work->values;
            work->started(0);
        }
    }
    for (auto it = now.cbegin(); it != now.cend(); ++it) {
        if (!m_saved.systemInfo.contains(it.key())) {
            m_system->deleteSystemInfoKey(it.key());
            ++work->values;
            work->started(0);
        }
    }
}

void HardwareRestore::flightMode(RestoreWork *work) const
{
    if (!m_system || m_system->flightModeStatus().testFlag(System::FLIGHT_MODE_TRANSITION)) {
        return;
    }
    // FLIGHT_MODE_ENABLED is no bit: flight mode is on while FLIGHT_MODE_DISABLED is clear.
    const bool wantedOn = !m_saved.flightMode.testFlag(System::FLIGHT_MODE_DISABLED);
    if (wantedOn == !m_system->flightModeStatus().testFlag(System::FLIGHT_MODE_DISABLED)) {
        return;
    }
    m_system->setFlightMode(wantedOn);
    work->flightMode = true;
    work->started(SimulationDelays::FlightModeTransitionMs);
}

QVector<RestoreDifference> HardwareRestore::differences() const
{
    QVector<RestoreDifference> differences;
    if (!m_system) {
        return differences;
    }
    for (const SavedDevice &saved : m_saved.devices) {
        const IDevicePtr device = m_system->device(saved.id);
        if (!device || !isSameDevice(*device, saved)) {
            differences.append({saved.name, device ? describe(*device) : QStringLiteral("not plugged"), describe(saved),
                QString(), false});
            continue;
        }
        valueDifferences(device.data(), saved, &differences);
        statusDifferences(*device, saved, &differences);
    }
    for (const IDevicePtr &device : m_system->devices()) {
        if (!m_saved.device(device->id())) {
            differences.append(
                {DeviceNames::name(device->id()), describe(*device), QStringLiteral("not plugged"), QString(), false});
        }
    }
    valueDifferences(m_system->timeSettings(), m_saved.timeSettings, &differences);
    valueDifferences(m_system->canMux(), m_saved.canMux, &differences);
    const QVariantMap now = m_system->systemInfo();
    QStringList keys = now.keys() + m_saved.systemInfo.keys();
    keys.removeDuplicates();
    for (const QString &key : qAsConst(keys)) {
        if (now.value(key) != m_saved.systemInfo.value(key)) {
            const auto text = [](const QVariantMap &map, const QString &key) {
                return map.contains(key) ? ValueText::format(map.value(key)) : QStringLiteral("absent");
            };
            differences.append({QStringLiteral("System.systemInfo[%1]").arg(key), text(now, key),
                text(m_saved.systemInfo, key), QString(), false});
        }
    }
    if (m_system->flightModeStatus() != m_saved.flightMode) {
        differences.append({QStringLiteral("System.flightModeStatus"), flightText(m_system->flightModeStatus()),
            flightText(m_saved.flightMode), QString(), false});
    }
    return differences;
}

} // namespace VantixControl

#include "deviceoperations_p.h"

#include "effects_p.h"
#include "hardwarerestore_p.h"
#include "reflection_p.h"
#include "simulationdelays_p.h"
#include "snapshot_p.h"
#include "systemprivate_p.h"
#include "valuetext_p.h"

#include <vantix/iaudio.h>
#include <vantix/ibattery.h>
#include <vantix/ibutton.h>
#include <vantix/icanmux.h>
#include <vantix/idisk.h>
#include <vantix/iled.h>
#include <vantix/inetwork.h>
#include <vantix/iwifi.h>

#include <QMetaProperty>

using namespace TQ_SPAPI;

namespace VantixControl {

namespace {
using D = IDevice;
namespace Delays = SimulationDelays;

/// A value set by an override operation of the simulation rather than by a setter.
struct Override
{
    const char *className;
    const char *property;
    /// The one device the operation acts on, or ID_UNKNOWN_DEV for any of the class.
    D::DeviceId only;
    void (*apply)(SystemPrivate *system, D::DeviceId id, const QVariant &value);
};

// The overrides announce their value even when it is unchanged; they are called only for values that differ.
const Override overrides[] = {
    {"TQ_SPAPI::IBattery", "fuelGauge", D::ID_UNKNOWN_DEV,
        [](SystemPrivate *s, D::DeviceId id, const QVariant &v) { s->overrideFuelGauge(id, v.toInt()); }},
    {"TQ_SPAPI::IBattery", "current", D::ID_UNKNOWN_DEV,
        [](SystemPrivate *s, D::DeviceId id, const QVariant &v) { s->overrideCurrent(id, v.toDouble()); }},
    {"TQ_SPAPI::INetwork", "networkState", D::ID_UNKNOWN_DEV,
        [](SystemPrivate *s, D::DeviceId id, const QVariant &v) {
            s->overrideNetworkState(id, INetwork::NetworkState(ValueText::enumValue(v)));
        }},
    {"TQ_SPAPI::INetwork", "ip", D::ID_UNKNOWN_DEV,
        [](SystemPrivate *s, D::DeviceId id, const QVariant &v) { s->overrideIP(id, v.toString()); }},
    {"TQ_SPAPI::IWifi", "wifiSsid", D::ID_NETWORK_WIFI,
        [](SystemPrivate *s, D::DeviceId, const QVariant &v) { s->overrideSSID(v.toString()); }},
    {"TQ_SPAPI::IWifi", "wifiChannel", D::ID_NETWORK_WIFI,
        [](SystemPrivate *s, D::DeviceId, const QVariant &v) { s->overrideWifiChannel(v.toInt()); }},
    {"TQ_SPAPI::IWifi", "wifiSignalStrength", D::ID_NETWORK_WIFI,
        [](SystemPrivate *s, D::DeviceId, const QVariant &v) { s->overrideWifiSignalStrength(v.toInt()); }},
    {"TQ_SPAPI::IWifi", "wifiCountry", D::ID_NETWORK_WIFI,
        [](SystemPrivate *s, D::DeviceId, const QVariant &v) { s->overrideWifiCountry(v.toString()); }},
    {"TQ_SPAPI::IAudio", "jackFlags", D::ID_AUDIO,
        [](SystemPrivate *s, D::DeviceId, const QVariant &v) {
            s->overrideJack(IAudio::JackFlags(ValueText::enumValue(v)));
        }},
    {"TQ_SPAPI::IButton", "pressed", D::ID_UNKNOWN_DEV,
        [](SystemPrivate *s, D::DeviceId id, const QVariant &v) { s->overrideButton(id, v.toBool()); }},
};

const Override *overrideOf(const QObject *object, const QByteArray &property)
{
    const auto *device = qobject_cast<const IDevice *>(object);
    for (const Override &row : overrides) {
        if (device && property == row.property && object->inherits(row.className) &&
            (row.only == D::ID_UNKNOWN_DEV || row.only == device->id())) {
            return &row;
        }
    }
    return nullptr;
}

// The LED's mode, colour and flash times change together, through on(), off() and setFlash().
const char *const ledProperties[] = {"mode", "color", "msOn", "msOff"};

bool isLedProperty(const QObject *object, const QByteArray &property)
{
    return qobject_cast<const ILed *>(object) &&
        std::find_if(std::begin(ledProperties), std::end(ledProperties),
            [&property](const char *name) { return property == name; }) != std::end(ledProperties);
}

QString textNow(const QObject *object, const QByteArray &name)
{
    const int index = object->metaObject()->indexOfProperty(name.constData());
    if (index < 0) {
        return QString();
    }
    const QMetaProperty property = object->metaObject()->property(index);
    return ValueText::format(property.read(object), Reflection::enumOf(object, property));
}

bool differs(const QObject *object, const SavedValue *saved)
{
    return saved && textNow(object, saved->name) != saved->text;
}

void restoreOverrides(System *system, IDevice *device, const SavedDevice &saved, RestoreWork *work)
{
    for (const SavedValue &value : saved.values) {
        const Override *row = overrideOf(device, value.name);
        if (row && differs(device, &value)) {
            row->apply(SystemPrivate::get(system), device->id(), value.value);
            ++work->values;
            work->started(0);
        }
    }
}

void restoreLed(ILed *led, const SavedDevice &saved, RestoreWork *work)
{
    const SavedValue *mode = saved.value("mode");
    const SavedValue *color = saved.value("color");
    const SavedValue *msOn = saved.value("msOn");
    const SavedValue *msOff = saved.value("msOff");
    if (!mode || !color || !msOn || !msOff ||
        (!differs(led, mode) && !differs(led, color) && !differs(led, msOn) && !differs(led, msOff))) {
        return;
    }
    const auto wanted = ILed::LedMode(ValueText::enumValue(mode->value));
    // No operation brings an LED back to its default mode.
    if (wanted == ILed::LED_DEFAULT) {
        return;
    }
    const auto colour = Qt::GlobalColor(ValueText::enumValue(color->value));
    // The flash times change only with a flash, the colour only with a flash or with on().
    if (wanted == ILed::LED_FLASH || differs(led, msOn) || differs(led, msOff)) {
        led->setFlash(colour, msOn->value.toInt(), msOff->value.toInt());
    }
    if (wanted == ILed::LED_ON || (wanted == ILed::LED_OFF && differs(led, color))) {
        led->on(colour);
    }
    if (wanted == ILed::LED_OFF) {
        led->off();
    }
    ++work->values;
    work->started(0);
}

// Sets (@p wanted) or clears one status bit through the operation that owns it; false when none does.
bool restoreStatusBit(System *system, IDevice *device, D::Flags bit, bool wanted, RestoreWork *work)
{
    SystemPrivate *simulation = SystemPrivate::get(system);
    auto *disk = qobject_cast<IDisk *>(device);
    if (!DeviceOperations::whyNotSettable(device, bit, wanted).isEmpty()) {
        return false;
    }
    ++work->values;
    if (bit == D::F_CHARGE && qobject_cast<IBattery *>(device)) {
        simulation->overrideChargeToggle(device->id());
        work->started(0);
    } else if (bit == D::F_POWER_CONNECTED) {
        simulation->overridePowerConnectedToggle(device->id());
        work->started(0);
    } else if (disk && bit == D::F_FORMATTED) {
        disk->format(0);
        work->started(Delays::FormatMs);
    } else if (disk && bit == D::F_ACTIVE) {
        // A disk mounts once formatted; a format started in this step is waited for first.
        if (!device->status().testFlag(D::F_FORMATTED)) {
            --work->values;
            return false;
        }
        wanted ? disk->mount() : disk->unmount();
        work->started(Delays::MountMs);
    } else if (bit == D::F_ENABLE && device->id() == D::ID_NETWORK_WIFI && qobject_cast<IWifi *>(device)) {
        simulation->overrideWifiEnabled(wanted);
        work->started(0);
    } else if (bit == D::F_TERMINATE && system->canMux() && device->id() == D::ID_CAN_BUS) {
        system->canMux()->setTermination(wanted ? ICanMux::CAN_TERM_ON : ICanMux::CAN_TERM_OFF);
        work->started(Delays::AbilityMs);
    } else {
        wanted ? device->setAbility(bit) : device->clearAbility(bit);
        // The Wi-Fi device switches its two abilities at once.
        work->started(qobject_cast<IWifi *>(device) ? 0 : Delays::AbilityMs);
    }
    return true;
}

void restoreStatus(System *system, IDevice *device, const SavedDevice &saved, RestoreWork *work)
{
    const D::DeviceFlags differing = device->status() ^ saved.status;
    for (quint32 bit = 1; bit && bit <= quint32(D::F_RESETTING); bit <<= 1) {
        if (differing.testFlag(D::Flags(bit))) {
            restoreStatusBit(system, device, D::Flags(bit), saved.status.testFlag(D::Flags(bit)), work);
        }
    }
}
} // namespace

void DeviceOperations::restore(System *system, IDevice *device, const SavedDevice &saved, RestoreWork *work)
{
    restoreOverrides(system, device, saved, work);
    if (auto *led = qobject_cast<ILed *>(device)) {
        restoreLed(led, saved, work);
    }
    restoreWritable(device, saved, work);
    // A status still on its way (a device just plugged) is looked at again once it has arrived.
    const DevicePrivate *d = DevicePrivate::get(device);
    if (!d || !d->hasPendingAbilities()) {
        restoreStatus(system, device, saved, work);
    }
}

void DeviceOperations::restoreWritable(QObject *object, const SavedObject &saved, RestoreWork *work)
{
    if (!object) {
        return;
    }
    for (const QMetaProperty &property : Reflection::properties(object->metaObject())) {
        const SavedValue *value = saved.value(property.name());
        if (!property.isWritable() || !value || overrideOf(object, value->name) || !differs(object, value)) {
            continue;
        }
        const Effect effect = effectOf(object->metaObject(), property.name());
        if (effect.kind == Effect::None || !property.write(object, value->value)) {
            continue;
        }
        ++work->values;
        // An indirect setter acts through an ability of another device.
        work->started(effect.kind == Effect::Indirect ? Delays::AbilityMs : 0);
    }
}

QString DeviceOperations::whyNotSettable(const QObject *object, const SavedObject &saved, const QByteArray &property)
{
    if (isLedProperty(object, property)) {
        const SavedValue *mode = saved.value("mode");
        return mode && ValueText::enumValue(mode->value) == ILed::LED_DEFAULT
            ? QStringLiteral("an LED that has been switched never returns to LED_DEFAULT")
            : QString();
    }
    if (overrideOf(object, property)) {
        return QString();
    }
    const int index = object->metaObject()->indexOfProperty(property.constData());
    if (index >= 0 && object->metaObject()->property(index).isWritable() &&
        effectOf(object->metaObject(), property).kind != Effect::None) {
        return QString();
    }
    if (isMark(object, property)) {
        return QStringLiteral("it counts charge starts; no operation sets it");
    }
    return QStringLiteral("no operation sets it");
}

bool DeviceOperations::isMark(const QObject *object, const QByteArray &property)
{
    return qobject_cast<const IBattery *>(object) && property == "chargeCounter";
}

QString DeviceOperations::whyNotSettable(const IDevice *device, D::Flags bit, bool wanted)
{
    const QString name = ValueText::enumText(QMetaEnum::fromType<D::DeviceFlags>(), bit);
    switch (bit) {
    case D::F_OVERRIDE:
        return QStringLiteral("%1 marks values set from outside the device; no operation clears it").arg(name);
    case D::F_SENSORCRITICAL:
    case D::F_SENSORHIGH:
    case D::F_SENSORLOW:
        return QStringLiteral("only the sensor's own limit check switches %1").arg(name);
    case D::F_FORMATTED:
        return qobject_cast<const IDisk *>(device) && wanted
            ? QString()
            : QStringLiteral("no operation %1 %2")
                  .arg(wanted ? QStringLiteral("sets") : QStringLiteral("clears"), name);
    case D::F_ACTIVE:
        if (device->id() == D::ID_NETWORK_WIFI) {
            return QStringLiteral("the Wi-Fi device takes no %1").arg(name);
        }
        break;
    default:
        break;
    }
    return QString();
}

} // namespace VantixControl

#include "devicenames_p.h"

#include <vantix/vantixdebug.h>

#include <qbcommon/appconfig.h>

#include <QMetaEnum>
#include <QPair>
#include <QVector>

#include <algorithm>

using TQ_SPAPI::IDevice;

namespace VantixControl {

namespace {
using D = IDevice;

// The first alias of an id is the one shown; the others are accepted too.
const QVector<QPair<QString, D::DeviceId>> &aliases()
{
    static const QVector<QPair<QString, D::DeviceId>> table{
        {QStringLiteral("ledpower"), D::ID_LED_POWER},
        {QStringLiteral("led"), D::ID_LED_POWER},
        {QStringLiteral("ledwifi"), D::ID_LED_WIFI},
        {QStringLiteral("tempcpu"), D::ID_TEMP_CPU},
        {QStringLiteral("tempboard"), D::ID_TEMP_BOARD},
        {QStringLiteral("tempbatt1"), D::ID_TEMP_BATT_1ST},
        {QStringLiteral("tempbatt2"), D::ID_TEMP_BATT_2ND},
        {QStringLiteral("battery1"), D::ID_BATTERY_1ST},
        {QStringLiteral("battery"), D::ID_BATTERY_1ST},
        {QStringLiteral("battery2"), D::ID_BATTERY_2ND},
        {QStringLiteral("wifi"), D::ID_NETWORK_WIFI},
        {QStringLiteral("lan"), D::ID_NETWORK_LAN},
        {QStringLiteral("p2p"), D::ID_NETWORK_WIFI_P2P},
        {QStringLiteral("manikin5v"), D::ID_POWER_MANIKIN_5V},
        {QStringLiteral("manikinvbus"), D::ID_POWER_MANIKIN_VBUS},
        {QStringLiteral("bluetooth"), D::ID_BLUETOOTH},
        {QStringLiteral("audio"), D::ID_AUDIO},
        {QStringLiteral("vibrator"), D::ID_VIBRATOR},
        {QStringLiteral("display"), D::ID_DISPLAY},
        {QStringLiteral("pwm"), D::ID_PWM},
        {QStringLiteral("canbus"), D::ID_CAN_BUS},
        {QStringLiteral("canserial"), D::ID_CAN_SERIAL},
        {QStringLiteral("amplifier"), D::ID_SOUND_AMPLIFIER},
        {QStringLiteral("otga"), D::ID_USB_OTG_A},
        {QStringLiteral("otgb"), D::ID_USB_OTG_B},
        {QStringLiteral("userdata"), D::ID_DISK_USER_DATA},
        {QStringLiteral("iocontroller"), D::ID_IOCONTROLLER},
        {QStringLiteral("button"), D::ID_BUTTON_POWER},
        {QStringLiteral("manikinserial"), D::ID_MANIKIN_SERIAL},
        {QStringLiteral("usb"), D::ID_USB},
        {QStringLiteral("power"), D::ID_POWER_SUPPLY},
        {QStringLiteral("systemdisk"), D::ID_DISK_SYSTEM},
        {QStringLiteral("stick"), D::ID_DISK_USB},
    };
    return table;
}

const QMetaEnum &idEnum()
{
    static const QMetaEnum e = QMetaEnum::fromType<D::DeviceId>();
    return e;
}

// Removable disks: ID_DISK_USB and the ids above it up to the next bit.
bool isRemovableDisk(int id)
{
    return id >= D::ID_DISK_USB && id < 2 * D::ID_DISK_USB;
}

bool parseNumber(const QString &text, int *value)
{
    bool ok = false;
    *value = text.startsWith(QLatin1String("0x"), Qt::CaseInsensitive) ? text.mid(2).toInt(&ok, 16) : text.toInt(&ok);
    return ok;
}
} // namespace

QString DeviceNames::name(D::DeviceId id)
{
    const char *key = idEnum().valueToKey(int(id));
    if (key) {
        return QString::fromLatin1(key);
    }
    if (isRemovableDisk(int(id))) {
        return QStringLiteral("ID_DISK_USB+%1").arg(int(id) - int(D::ID_DISK_USB));
    }
    return QString::number(int(id));
}

QString DeviceNames::alias(D::DeviceId id)
{
    for (const auto &entry : aliases()) {
        if (entry.second == id) {
            return entry.first;
        }
    }
    if (isRemovableDisk(int(id))) {
        // The second stick is stick2, and so on.
        return QStringLiteral("stick%1").arg(int(id) - int(D::ID_DISK_USB) + 1);
    }
    return QString();
}

QStringList DeviceNames::aliasTable()
{
    QStringList result;
    for (const auto &entry : aliases()) {
        result.append(QStringLiteral("%1=%2").arg(entry.first, name(entry.second)));
    }
    return result;
}

bool DeviceNames::parse(const QString &text, D::DeviceId *id)
{
    const QString word = text.trimmed();
    if (word.isEmpty()) {
        return false;
    }
    int number = 0;
    if (parseNumber(word, &number)) {
        if (idEnum().valueToKey(number) || isRemovableDisk(number)) {
            *id = D::DeviceId(number);
            return true;
        }
        return false;
    }
    const QString lower = word.toLower();
    for (const auto &entry : aliases()) {
        if (entry.first == lower) {
            *id = entry.second;
            return true;
        }
    }
    if (lower.startsWith(QLatin1String("stick")) && parseNumber(lower.mid(5), &number) && number >= 1 &&
        isRemovableDisk(int(D::ID_DISK_USB) + number - 1)) {
        *id = D::DeviceId(int(D::ID_DISK_USB) + number - 1);
        return true;
    }

    // Id names, also written IDevice::ID_AUDIO, id_audio or SOUND_AMPLIFIER.
    const int scope = word.lastIndexOf(QLatin1String("::"));
    QString bare = scope < 0 ? word : word.mid(scope + 2);
    const int plus = bare.indexOf(QLatin1Char('+'));
    int offset = 0;
    if (plus > 0) {
        if (!parseNumber(bare.mid(plus + 1), &offset) || offset < 0) {
            return false;
        }
        bare.truncate(plus);
    }
    if (!bare.startsWith(QLatin1String("ID_"), Qt::CaseInsensitive)) {
        bare.prepend(QLatin1String("ID_"));
    }
    for (int i = 0; i < idEnum().keyCount(); ++i) {
        if (QString::fromLatin1(idEnum().key(i)).compare(bare, Qt::CaseInsensitive) == 0) {
            const int value = idEnum().value(i) + offset;
            if (offset != 0 && !(idEnum().value(i) == D::ID_DISK_USB && isRemovableDisk(value))) {
                return false;
            }
            *id = D::DeviceId(value);
            return true;
        }
    }
    return false;
}

D::DeviceType DeviceNames::defaultType(D::DeviceId id)
{
    if (isRemovableDisk(int(id))) {
        return D::DEVICE_DISK;
    }
    switch (id) {
    case D::ID_LED_POWER:
    case D::ID_LED_WIFI:
        return D::DEVICE_LED;
    case D::ID_TEMP_CPU:
    case D::ID_TEMP_BOARD:
    case D::ID_TEMP_BATT_1ST:
    case D::ID_TEMP_BATT_2ND:
        return D::DEVICE_TEMPERATURE;
    case D::ID_BATTERY_1ST:
    case D::ID_BATTERY_2ND:
        return D::DEVICE_BATTERY;
    case D::ID_NETWORK_WIFI:
        // Like the platform's own Wi-Fi, it follows flight mode.
        return D::DEVICE_NETWORK | D::DEVICE_FIGHT_MODE;
    case D::ID_NETWORK_LAN:
    case D::ID_NETWORK_WIFI_P2P:
        return D::DEVICE_NETWORK;
    case D::ID_POWER_MANIKIN_5V:
    case D::ID_POWER_MANIKIN_VBUS:
    case D::ID_POWER_SUPPLY:
        return D::DEVICE_POWER;
    case D::ID_BLUETOOTH:
        return D::DEVICE_BUS | D::DEVICE_FIGHT_MODE;
    case D::ID_AUDIO:
    case D::ID_SOUND_AMPLIFIER:
        return D::DEVICE_AUDIO;
    case D::ID_VIBRATOR:
        return D::DEVICE_VIBRATOR;
    case D::ID_DISPLAY:
        return D::DEVICE_DISPLAY;
    case D::ID_PWM:
        return D::DEVICE_PWM;
    case D::ID_CAN_BUS:
        return D::DEVICE_CAN | D::DEVICE_BUS;
    case D::ID_CAN_SERIAL:
        return D::DEVICE_SERIAL | D::DEVICE_CAN;
    case D::ID_USB_OTG_A:
    case D::ID_USB_OTG_B:
    case D::ID_USB:
        return D::DEVICE_USB;
    case D::ID_DISK_USER_DATA:
    case D::ID_DISK_SYSTEM:
        return D::DEVICE_DISK;
    case D::ID_IOCONTROLLER:
    case D::ID_MANIKIN_SERIAL:
        return D::DEVICE_SERIAL;
    case D::ID_BUTTON_POWER:
        return D::DEVICE_BUTTON;
    default:
        return D::DEVICE_UNKNOWN;
    }
}

QString DeviceNames::defaultPath(D::DeviceId id)
{
    AppConfig *config = AppConfig::instance();
    if (id == D::ID_DISK_USER_DATA) {
        return config->varPath(QStringLiteral("data"));
    }
    if (id == D::ID_DISK_SYSTEM) {
        return config->varPath(QString());
    }
    if (isRemovableDisk(int(id))) {
        // The same folder whichever way the stick was plugged.
        return TQ_SPAPI::VantixDebug::usbStickFolder(int(id) - int(D::ID_DISK_USB));
    }
    return QString();
}

QList<D::DeviceId> DeviceNames::knownIds()
{
    QList<D::DeviceId> ids;
    for (int i = 0; i < idEnum().keyCount(); ++i) {
        if (idEnum().value(i) != D::ID_UNKNOWN_DEV) {
            ids.append(D::DeviceId(idEnum().value(i)));
        }
    }
    std::sort(ids.begin(), ids.end());
    return ids;
}

} // namespace VantixControl

#include "enumlabels_p.h"

#include <QHash>
#include <QMetaEnum>

namespace VantixControl {

namespace {
struct Label
{
    const char *enumName;
    const char *key;
    const char *text;
};

// One row per value a user meets in a client; a value left out is shown by its key.
constexpr Label table[] = {
    {"NetworkState", "NETWORK_STATE_UNAVAILABLE", "Unavailable"},
    {"NetworkState", "NETWORK_STATE_FLIGHTMMODE", "Flight mode"},
    {"NetworkState", "NETWORK_STATE_DEACTIVATING", "Deactivating"},
    {"NetworkState", "NETWORK_STATE_ACTIVATING", "Activating"},
    {"NetworkState", "NETWORK_STATE_FAILED", "Failed"},
    {"NetworkState", "NETWORK_STATE_NEED_AUTH", "Needs a password"},
    {"NetworkState", "NETWORK_STATE_DISCONNECTED", "Disconnected"},
    {"NetworkState", "NETWORK_STATE_ASSOCIATING", "Associating"},
    {"NetworkState", "NETWORK_STATE_ASSOCIATED", "Associated"},
    {"NetworkState", "NETWORK_STATE_AUTHENTICATING", "Authenticating"},
    {"NetworkState", "NETWORK_STATE_COMPLETED", "Completed"},
    {"NetworkState", "NETWORK_STATE_IP_CONFIG", "Getting an address"},
    {"NetworkState", "NETWORK_STATE_ACTIVATED", "Activated"},

    {"FligtModeFlags", "FLIGHT_MODE_ENABLED", "on"},
    {"FligtModeFlags", "FLIGHT_MODE_DISABLED", "off"},
    {"FligtModeFlags", "FLIGHT_MODE_TRANSITION", "switching…"},

    {"DeviceFlags", "F_NOFLAGS", "none"},
    {"DeviceFlags", "F_ENABLE", "enabled"},
    {"DeviceFlags", "F_ACTIVE", "active"},
    {"DeviceFlags", "F_LOG", "logging"},
    {"DeviceFlags", "F_OVERRIDE", "overridden"},
    {"DeviceFlags", "F_CHARGE", "charging"},
    {"DeviceFlags", "F_SENSORCRITICAL", "critical"},
    {"DeviceFlags", "F_SENSORHIGH", "high"},
    {"DeviceFlags", "F_SENSORLOW", "low"},
    {"DeviceFlags", "F_ENABLEHIGH", "high alarm on"},
    {"DeviceFlags", "F_ENABLELOW", "low alarm on"},
    {"DeviceFlags", "F_ENABLESCANNING", "scanning"},
    {"DeviceFlags", "F_SHARED", "shared"},
    {"DeviceFlags", "F_TERMINATE", "terminating"},
    {"DeviceFlags", "F_FORMATTED", "formatted"},
    {"DeviceFlags", "F_POWER_CONNECTED", "external power"},
    {"DeviceFlags", "F_VALID", "valid"},
    {"DeviceFlags", "F_RESETTING", "resetting"},

    {"JackFlags", "JACK_NOT_CONNECTED", "nothing plugged"},
    {"JackFlags", "JACK_HEADPHONE", "headphone"},
    {"JackFlags", "JACK_MIC", "microphone"},

    {"LedMode", "LED_DEFAULT", "Default"},
    {"LedMode", "LED_ON", "On"},
    {"LedMode", "LED_OFF", "Off"},
    {"LedMode", "LED_FLASH", "Flashing"},

    {"DeviceError", "E_NO_ERROR", "No error"},
    {"DeviceError", "E_OVERRIDE", "Overridden"},
    {"DeviceError", "E_INVALID_COLOR", "Invalid colour"},
    {"DeviceError", "E_MODE_FAILED", "Mode failed"},
    {"DeviceError", "E_DISK_NOT_READY", "Disk not ready"},
    {"DeviceError", "E_DISK_NO_SPACE", "No space on the disk"},
    {"DeviceError", "E_DISK_NOT_MOUNTED", "Disk not mounted"},
    {"DeviceError", "E_NO_NETWORK", "No network"},
    {"DeviceError", "E_INVALID_TIMEZONE", "Invalid time zone"},
    {"DeviceError", "E_BATTERY_CANT_ENABLE", "The battery cannot be enabled"},
    {"DeviceError", "E_BATTERY_CANT_DISABLE", "The battery cannot be disabled"},
    {"DeviceError", "E_BATTERY_CANT_CHARGE", "The battery cannot charge"},
    {"DeviceError", "E_DISABLED", "Disabled"},
    {"DeviceError", "E_NOT_SUPORTED", "Not supported"},
    {"DeviceError", "E_NOT_IMPLEMENTED", "Not implemented"},
    {"DeviceError", "E_FILE_ERROR", "File error"},
    {"DeviceError", "E_NETWORK_ERROR", "Network error"},

    {"ReconnectState", "RS_NONE", "None"},
    {"ReconnectState", "RS_OUT_OF_RANGE", "Out of range"},
    {"ReconnectState", "RS_ACTIVE_NETWORK_REMOVED", "Network removed"},
    {"ReconnectState", "RS_ACTIVATING", "Activating"},

    {"peerState", "PS_UNKNOWN", "Unknown"},
    {"peerState", "PS_GROUP_OWNER", "Group owner"},
    {"peerState", "PS_CONNECTED", "Connected"},
    {"peerState", "PS_REQUESTING", "Requesting"},
    {"peerState", "PS_REFUSED", "Refused"},
    {"peerState", "PS_ERROR", "Error"},
    {"peerState", "PS_DISCONNECTED", "Disconnected"},

    // Colours are read inside phrases ("Flashing dark red") and stay in lower case.
    {"GlobalColor", "color0", "colour 0"},
    {"GlobalColor", "color1", "colour 1"},
    {"GlobalColor", "black", "black"},
    {"GlobalColor", "white", "white"},
    {"GlobalColor", "darkGray", "dark grey"},
    {"GlobalColor", "gray", "grey"},
    {"GlobalColor", "lightGray", "light grey"},
    {"GlobalColor", "red", "red"},
    {"GlobalColor", "green", "green"},
    {"GlobalColor", "blue", "blue"},
    {"GlobalColor", "cyan", "cyan"},
    {"GlobalColor", "magenta", "magenta"},
    {"GlobalColor", "yellow", "yellow"},
    {"GlobalColor", "darkRed", "dark red"},
    {"GlobalColor", "darkGreen", "dark green"},
    {"GlobalColor", "darkBlue", "dark blue"},
    {"GlobalColor", "darkCyan", "dark cyan"},
    {"GlobalColor", "darkMagenta", "dark magenta"},
    {"GlobalColor", "darkYellow", "dark yellow"},
    {"GlobalColor", "transparent", "transparent"},

    {"BootType", "BOOT_UNKNOWN", "Unknown"},
    {"BootType", "BOOT_BUTTON", "Power button"},
    {"BootType", "BOOT_POWER", "Power applied"},
    {"BootType", "BOOT_BATTERY", "Battery inserted"},
    {"BootType", "BOOT_REBOOT", "Reboot"},
};

const QHash<QString, QHash<QString, QString>> &byEnum()
{
    static const QHash<QString, QHash<QString, QString>> result = [] {
        QHash<QString, QHash<QString, QString>> labels;
        for (const Label &l : table) {
            labels[QLatin1String(l.enumName)].insert(QLatin1String(l.key), QString::fromUtf8(l.text));
        }
        return labels;
    }();
    return result;
}
} // namespace

QString EnumLabels::label(const QString &enumName, const QString &key)
{
    return byEnum().value(enumName).value(key);
}

QJsonObject EnumLabels::labels(const QMetaEnum &e)
{
    const QHash<QString, QString> labels = byEnum().value(QLatin1String(e.name()));
    QJsonObject result;
    for (int i = 0; i < e.keyCount(); ++i) {
        const QString key = QLatin1String(e.key(i));
        if (labels.contains(key)) {
            result.insert(key, labels.value(key));
        }
    }
    return result;
}

} // namespace VantixControl

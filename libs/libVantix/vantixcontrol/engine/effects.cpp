#include "effects_p.h"

#include <QMetaObject>

namespace VantixControl {

namespace {
struct Row
{
    const char *className;
    const char *member;
    Effect::Kind kind;
    const char *hint;
};

const Row rows[] = {
    {"TQ_SPAPI::IDevice", "reset", Effect::None, "simulated devices have nothing to reset"},
    {"TQ_SPAPI::IWifi", "wifiCountry", Effect::None,
        "the country changes only through the debug command setwificountry,<code>"},
    {"TQ_SPAPI::IWifi", "connectToWifiAccessPoint", Effect::TraceOnly,
        "the state changes through setwifistate,<state>"},
    {"TQ_SPAPI::IWifi", "connectToWifiBss", Effect::TraceOnly, "the state changes through setwifistate,<state>"},
    {"TQ_SPAPI::IWifi", "connectToWifiAdhoc", Effect::TraceOnly, "the state changes through setwifistate,<state>"},
    {"TQ_SPAPI::IWifi", "disconnectWifi", Effect::TraceOnly, "the state changes through setwifistate,<state>"},
    {"TQ_SPAPI::IWifi", "cancelWifiConnection", Effect::TraceOnly, "the state changes through setwifistate,<state>"},
    {"TQ_SPAPI::IWifi", "requestScan", Effect::TraceOnly, "access points come from the host's configurations"},
    {"TQ_SPAPI::IWifiP2P", "stopFindPeers", Effect::None, ""},
    {"TQ_SPAPI::IVibrator", "start", Effect::None, ""},
    {"TQ_SPAPI::IVibrator", "stop", Effect::None, ""},
    {"TQ_SPAPI::IApiMessage", "checkSystemLog", Effect::None, ""},
    {"TQ_SPAPI::IIOController", "restart", Effect::TraceOnly, ""},
    {"TQ_SPAPI::System", "reboot", Effect::TraceOnly, ""},
    {"TQ_SPAPI::System", "suspend", Effect::TraceOnly, ""},
    {"TQ_SPAPI::System", "serviceSwitch", Effect::TraceOnly, ""},
    {"TQ_SPAPI::System", "serviceStop", Effect::TraceOnly, ""},
    {"TQ_SPAPI::System", "serviceStart", Effect::TraceOnly, ""},
    {"TQ_SPAPI::System", "serviceRestart", Effect::TraceOnly, ""},
    {"TQ_SPAPI::ICanMux", "activeDevice", Effect::Indirect,
        "the chosen CAN device is enabled 100 ms later; activeDevice keeps its value"},
    {"TQ_SPAPI::ICanMux", "termination", Effect::Indirect,
        "it shows as F_TERMINATE in ID_CAN_BUS's status 100 ms later; termination keeps its value"},
};
} // namespace

QString Effect::name() const
{
    switch (kind) {
    case None:
        return QStringLiteral("none");
    case TraceOnly:
        return QStringLiteral("trace");
    case Indirect:
        return QStringLiteral("indirect");
    case Normal:
        break;
    }
    return QString();
}

Effect effectOf(const QMetaObject *metaObject, const QByteArray &member)
{
    // Members are inherited: a class derived from IWifi keeps its base's effects.
    for (const QMetaObject *m = metaObject; m; m = m->superClass()) {
        for (const Row &row : rows) {
            if (member == row.member && qstrcmp(m->className(), row.className) == 0) {
                return Effect{row.kind, QLatin1String(row.hint)};
            }
        }
    }
    return Effect();
}

} // namespace VantixControl

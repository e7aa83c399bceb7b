#include "summarylabel.h"

#include "panelsession.h"

#include <vantixcontrol/protocol/event.h>

SummaryLabel::SummaryLabel(PanelSession *session, QWidget *parent)
    : ElidedLabel(parent)
    , m_session(session)
{
    setObjectName(QStringLiteral("summary"));
    connect(session, &PanelSession::valueChanged, this, &SummaryLabel::refresh);
    connect(session, &PanelSession::schemaChanged, this, &SummaryLabel::refresh);
    // The application says it has shut the unit down, and that it runs again after a reboot.
    connect(session, &PanelSession::eventReceived, this, [this](const VantixControl::Event &event) {
        if (event.object == QLatin1String("System") &&
            (event.signal == QLatin1String("apiClosed") || event.signal == QLatin1String("apiReady"))) {
            m_poweredOff = event.signal == QLatin1String("apiClosed");
            refresh();
        }
    });
    connect(session, &PanelSession::attaching, this, [this] {
        m_poweredOff = false;
        setText(QString());
    });
    connect(session, &PanelSession::detached, this, [this] { setText(QString()); });
}

void SummaryLabel::refresh()
{
    const auto known = [this](const QString &target, const QString &property) {
        return m_session->value(target, property).known;
    };
    QStringList parts;
    if (m_poweredOff) {
        parts.append(tr("powered off"));
    }
    for (const QString &battery : {QStringLiteral("ID_BATTERY_1ST"), QStringLiteral("ID_BATTERY_2ND")}) {
        const QString fuel = QStringLiteral("fuelGauge");
        if (known(battery, fuel)) {
            parts.append(tr("battery %1 %2 %")
                             .arg(battery == QLatin1String("ID_BATTERY_1ST") ? 1 : 2)
                             .arg(m_session->value(battery, fuel).value.toInt()));
        }
    }
    const QString state = QStringLiteral("networkState");
    const QString lan = QStringLiteral("ID_NETWORK_LAN");
    if (known(lan, state)) {
        parts.append(tr("wired %1").arg(m_session->valueText(lan, state).toLower()));
    }
    const QString wifi = QStringLiteral("ID_NETWORK_WIFI");
    if (known(wifi, state)) {
        const bool off = known(wifi, QStringLiteral("status")) &&
            !m_session->hasFlag(wifi, QStringLiteral("status"), QStringLiteral("F_ENABLE"));
        parts.append(off ? tr("Wi-Fi off") : tr("Wi-Fi %1").arg(m_session->valueText(wifi, state).toLower()));
    }
    const QString audio = QStringLiteral("ID_AUDIO");
    if (known(audio, QStringLiteral("jackFlags"))) {
        parts.append(tr("jack: %1").arg(m_session->valueText(audio, QStringLiteral("jackFlags"))));
    }
    const QString flight = QStringLiteral("flightModeStatus");
    if (known(QStringLiteral("System"), flight)) {
        parts.append(tr("flight mode %1").arg(m_session->valueText(QStringLiteral("System"), flight)));
    }
    setText(parts.join(QStringLiteral("  ·  ")));
}

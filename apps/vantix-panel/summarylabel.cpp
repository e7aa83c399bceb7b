#include "summarylabel.h"

#include "panelsession.h"

namespace {
// "NETWORK_STATE_ACTIVATED" reads as "activated", "JACK_HEADPHONE|JACK_MIC" as "headphone + mic".
QString shortName(const QString &name, const QString &prefix)
{
    QStringList parts;
    for (QString part : name.split(QLatin1Char('|'))) {
        if (part.startsWith(prefix)) {
            part = part.mid(prefix.size());
        }
        parts.append(part.toLower().replace(QLatin1Char('_'), QLatin1Char(' ')));
    }
    return parts.join(QLatin1String(" + "));
}
} // namespace

SummaryLabel::SummaryLabel(PanelSession *session, QWidget *parent)
    : QLabel(parent)
    , m_session(session)
{
    setTextFormat(Qt::RichText);
    connect(session, &PanelSession::valueChanged, this, &SummaryLabel::refresh);
    connect(session, &PanelSession::schemaChanged, this, &SummaryLabel::refresh);
    connect(session, &PanelSession::detached, this, &QLabel::clear);
}

void SummaryLabel::refresh()
{
    const auto text = [this](const QString &target, const QString &property) -> QString {
        const PropertyValue v = m_session->value(target, property);
        if (!v.known) {
            return QString();
        }
        return v.value.isString() ? v.value.toString() : v.text;
    };
    QStringList parts;
    for (const QString &battery : {QStringLiteral("ID_BATTERY_1ST"), QStringLiteral("ID_BATTERY_2ND")}) {
        const QString fuel = text(battery, QStringLiteral("fuelGauge"));
        if (!fuel.isEmpty()) {
            parts.append(
                QStringLiteral("%1 <b>%2 %</b>")
                    .arg(battery == QLatin1String("ID_BATTERY_1ST") ? tr("battery 1") : tr("battery 2"), fuel));
        }
    }
    const QString statePrefix = QStringLiteral("NETWORK_STATE_");
    const QString lan = text(QStringLiteral("ID_NETWORK_LAN"), QStringLiteral("networkState"));
    if (!lan.isEmpty()) {
        parts.append(tr("wired <b>%1</b>").arg(shortName(lan, statePrefix)));
    }
    const QString wifi = text(QStringLiteral("ID_NETWORK_WIFI"), QStringLiteral("networkState"));
    if (!wifi.isEmpty()) {
        parts.append(tr("Wi-Fi <b>%1</b>").arg(shortName(wifi, statePrefix)));
    }
    const QString jack = text(QStringLiteral("ID_AUDIO"), QStringLiteral("jackFlags"));
    if (!jack.isEmpty()) {
        parts.append(tr("jack <b>%1</b>").arg(shortName(jack, QStringLiteral("JACK_"))));
    }
    const QString flight = text(QStringLiteral("System"), QStringLiteral("flightModeStatus"));
    if (!flight.isEmpty()) {
        parts.append(tr("flight mode <b>%1</b>").arg(shortName(flight, QStringLiteral("FLIGHT_MODE_"))));
    }
    setText(parts.join(QLatin1String(" &nbsp;&middot;&nbsp; ")));
}

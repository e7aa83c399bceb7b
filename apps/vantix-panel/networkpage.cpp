#include "networkpage.h"

#include "panelsession.h"

#include <QComboBox>
#include <QFormLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QJsonObject>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QSignalBlocker>
#include <QSlider>
#include <QVBoxLayout>

namespace {
const QString lan = QStringLiteral("ID_NETWORK_LAN");
const QString wifi = QStringLiteral("ID_NETWORK_WIFI");
const QString stateType = QStringLiteral("NetworkState");
const QString networkState = QStringLiteral("networkState");
} // namespace

NetworkPage::NetworkPage(PanelSession *session, QWidget *parent)
    : Page(session, parent)
{
    auto *layout = new QVBoxLayout(this);
    auto *row = new QHBoxLayout;
    row->addWidget(wiredBox(), 1);
    row->addWidget(wifiBox(), 2);
    layout->addLayout(row);
    layout->addWidget(flightBox());
    layout->addStretch(1);
    layout->addWidget(statusLabel());

    connect(session, &PanelSession::valueChanged, this, &NetworkPage::update);
    connect(session, &PanelSession::schemaChanged, this, [this] {
        // The thirteen states come from the application's own enum.
        for (QComboBox *combo : {m_wiredState, m_wifiState}) {
            const QSignalBlocker blocker(combo);
            combo->clear();
            combo->addItems(m_session->enumKeys(stateType));
        }
        for (const QString &target : {lan, wifi}) {
            update(target, networkState);
        }
        update(QStringLiteral("System"), QStringLiteral("flightModeStatus"));
        update(wifi, QStringLiteral("wifiSignalStrength"));
        updateAccessPoints();
    });
}

QString NetworkPage::flightText() const
{
    return m_flight->text();
}

QComboBox *NetworkPage::stateCombo(const QString &command)
{
    auto *combo = new QComboBox(this);
    connect(combo, QOverload<int>::of(&QComboBox::activated), this, [this, combo, command](int index) {
        const int value = m_session->enumValue(stateType, combo->itemText(index));
        run(QStringLiteral("%1,%2").arg(command).arg(value));
    });
    return combo;
}

QLineEdit *NetworkPage::textField(const QString &target, const QString &property, const QString &command)
{
    auto *field = new QLineEdit(this);
    field->setObjectName(target + QLatin1Char('.') + property);
    // Debug commands split at commas only: the text goes as it is, blanks and all.
    connect(field, &QLineEdit::returnPressed, this, [this, field, command] {
        run(QStringLiteral("%1,%2").arg(command, field->text()));
        field->setModified(false);
    });
    return field;
}

QGroupBox *NetworkPage::wiredBox()
{
    auto *box = new QGroupBox(tr("Wired (ID_NETWORK_LAN)"), this);
    auto *form = new QFormLayout(box);
    m_wiredState = stateCombo(QStringLiteral("setwiredstate"));
    form->addRow(tr("State"), m_wiredState);
    form->addRow(tr("Address"), textField(lan, QStringLiteral("ip"), QStringLiteral("setwiredip")));
    auto *cable = new QHBoxLayout;
    // A pulled cable leaves the device without carrier: unavailable, as NetworkManager says.
    cable->addWidget(commandButton(tr("Pull cable"), [this] {
        return QStringLiteral("setwiredstate,%1")
            .arg(m_session->enumValue(stateType, QStringLiteral("NETWORK_STATE_UNAVAILABLE")));
    }));
    cable->addWidget(commandButton(tr("Plug cable"), [this] {
        return QStringLiteral("setwiredstate,%1")
            .arg(m_session->enumValue(stateType, QStringLiteral("NETWORK_STATE_ACTIVATED")));
    }));
    form->addRow(cable);
    return box;
}

QGroupBox *NetworkPage::wifiBox()
{
    auto *box = new QGroupBox(tr("Wi-Fi (ID_NETWORK_WIFI)"), this);
    auto *form = new QFormLayout(box);
    m_wifiState = stateCombo(QStringLiteral("setwifistate"));
    form->addRow(tr("State"), m_wifiState);
    form->addRow(tr("Address"), textField(wifi, QStringLiteral("ip"), QStringLiteral("setwifiip")));
    form->addRow(tr("SSID"), textField(wifi, QStringLiteral("wifiSsid"), QStringLiteral("setssid")));
    form->addRow(tr("Channel"), textField(wifi, QStringLiteral("wifiChannel"), QStringLiteral("setwifichannel")));
    form->addRow(tr("Country"), textField(wifi, QStringLiteral("wifiCountry"), QStringLiteral("setwificountry")));
    auto *signal = new QHBoxLayout;
    m_signal = new QSlider(Qt::Horizontal, box);
    m_signal->setRange(0, 100);
    m_signalText = new QLabel(box);
    m_signalText->setMinimumWidth(48);
    connect(m_signal, &QSlider::valueChanged, this, [this](int value) {
        m_signalText->setText(QStringLiteral("%1 %").arg(value));
        if (!m_signal->isSliderDown()) {
            run(QStringLiteral("setwifisignalstrength,%1").arg(value));
        }
    });
    connect(m_signal, &QSlider::sliderReleased, this,
        [this] { run(QStringLiteral("setwifisignalstrength,%1").arg(m_signal->value())); });
    signal->addWidget(m_signal);
    signal->addWidget(m_signalText);
    form->addRow(tr("Signal"), signal);
    auto *radio = new QHBoxLayout;
    radio->addWidget(commandButton(tr("Wi-Fi on"), QStringLiteral("enablewifi")));
    radio->addWidget(commandButton(tr("Wi-Fi off"), QStringLiteral("disablewifi")));
    form->addRow(radio);
    m_wifiDetails = new QLabel(box);
    form->addRow(tr("Status"), m_wifiDetails);
    m_accessPoints = new QListWidget(box);
    m_accessPoints->setMaximumHeight(90);
    form->addRow(tr("Access points"), m_accessPoints);
    return box;
}

QGroupBox *NetworkPage::flightBox()
{
    auto *box = new QGroupBox(tr("Flight mode"), this);
    auto *layout = new QHBoxLayout(box);
    layout->addWidget(commandButton(tr("Enter"), QStringLiteral("flightmode on")));
    layout->addWidget(commandButton(tr("Leave"), QStringLiteral("flightmode off")));
    m_flight = new QLabel(box);
    layout->addWidget(m_flight, 1);
    return box;
}

void NetworkPage::update(const QString &target, const QString &property)
{
    const PropertyValue v = m_session->value(target, property);
    const QString text = v.value.isString() ? v.value.toString() : v.text;
    if (property == networkState && (target == lan || target == wifi)) {
        QComboBox *combo = target == lan ? m_wiredState : m_wifiState;
        const QSignalBlocker blocker(combo);
        combo->setCurrentIndex(combo->findText(text));
    } else if (target == QLatin1String("System") && property == QLatin1String("flightModeStatus")) {
        // The transition shows while it lasts (about 2 s).
        const bool moving = text.contains(QLatin1String("FLIGHT_MODE_TRANSITION"));
        m_flight->setText(moving ? QStringLiteral("<b>%1</b> (in transition)").arg(text) : text);
    } else if (target == wifi && property == QLatin1String("wifiSignalStrength")) {
        if (!m_signal->isSliderDown()) {
            const QSignalBlocker blocker(m_signal);
            m_signal->setValue(v.value.toInt());
            m_signalText->setText(QStringLiteral("%1 %").arg(v.value.toInt()));
        }
    } else if (target == wifi && property == QLatin1String("status")) {
        m_wifiDetails->setText(text);
    }
    auto *field = findChild<QLineEdit *>(target + QLatin1Char('.') + property);
    if (field && !(field->hasFocus() && field->isModified())) {
        field->setText(text);
    }
}

void NetworkPage::updateAccessPoints()
{
    m_accessPoints->clear();
    for (const QString &name : m_session->targetNames()) {
        if (m_session->target(name).value(QLatin1String("class")).toString().contains(QLatin1String("AccessPoint"))) {
            m_accessPoints->addItem(name);
        }
    }
    if (m_accessPoints->count() == 0) {
        m_accessPoints->addItem(tr("none (access points come from the host's Wi-Fi configurations)"));
    }
}

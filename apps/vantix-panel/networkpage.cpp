#include "networkpage.h"

#include "columnslayout.h"
#include "feedbacklabel.h"
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
const QString flightType = QStringLiteral("FligtModeFlags");

QFormLayout *narrowForm(QWidget *box)
{
    auto *form = new QFormLayout(box);
    form->setFieldGrowthPolicy(QFormLayout::AllNonFixedFieldsGrow);
    return form;
}
} // namespace

NetworkPage::NetworkPage(PanelSession *session, QWidget *parent)
    : Page(session, parent)
{
    auto *layout = new QVBoxLayout(this);
    auto *boxes = new ColumnsLayout(2);
    boxes->setSpacing(layout->spacing());
    boxes->addWidget(wiredBox());
    boxes->addWidget(wifiBox());
    layout->addLayout(boxes);
    layout->addWidget(flightBox());
    layout->addStretch(1);

    connect(session, &PanelSession::valueChanged, this, &NetworkPage::update);
    connect(session, &PanelSession::schemaChanged, this, [this] {
        // The thirteen states come from the application's own enum, in its words.
        for (QComboBox *combo : {m_wiredState, m_wifiState}) {
            const QSignalBlocker blocker(combo);
            combo->clear();
            for (const QString &key : m_session->enumKeys(stateType)) {
                combo->addItem(m_session->enumLabel(stateType, key), key);
                combo->setItemData(combo->count() - 1, key, Qt::ToolTipRole);
            }
        }
        for (const QString &target : {lan, wifi}) {
            update(target, networkState);
            update(target, QStringLiteral("status"));
        }
        update(QStringLiteral("System"), QStringLiteral("flightModeStatus"));
        update(wifi, QStringLiteral("wifiSignalStrength"));
        updateAccessPoints();
    });
    connect(session, &PanelSession::attaching, this, [this] {
        for (QLineEdit *field : findChildren<QLineEdit *>()) {
            field->clear();
        }
        for (QComboBox *combo : {m_wiredState, m_wifiState}) {
            combo->setCurrentIndex(-1);
        }
        m_flight->clear();
        m_wifiDetails->clear();
        m_accessPoints->clear();
    });
}

QString NetworkPage::flightText() const
{
    return m_flight->text();
}

QString NetworkPage::wifiStatusText() const
{
    return m_wifiDetails->text();
}

QWidget *NetworkPage::stateRow(const QString &command, const QString &target, QComboBox **created)
{
    auto *combo = new QComboBox(this);
    *created = combo;
    // Long state names elide rather than widen the page.
    combo->setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
    combo->setMinimumContentsLength(12);
    combo->setObjectName(target + QStringLiteral(".networkState"));
    FeedbackLabel *feedback = this->feedback({target});
    connect(combo, QOverload<int>::of(&QComboBox::activated), this, [this, combo, command, feedback](int index) {
        const int value = m_session->enumValue(stateType, combo->itemData(index).toString());
        run(QStringLiteral("%1,%2").arg(command).arg(value), feedback);
    });
    return fieldRow(combo, feedback);
}

QWidget *NetworkPage::textField(const QString &target, const QString &property, const QString &command, bool integer)
{
    auto *field = new QLineEdit(this);
    field->setObjectName(target + QLatin1Char('.') + property);
    FeedbackLabel *feedback = this->feedback({target});
    // Debug commands split at commas only: the text goes as it is, blanks and all.
    connect(field, &QLineEdit::returnPressed, this, [this, field, command, feedback, integer] {
        const QString text = integer ? field->text().trimmed() : field->text();
        bool ok = true;
        if (integer && (text.toInt(&ok) < 0 || !ok)) {
            feedback->showProblem(tr("\"%1\" is not a whole number of 0 or more").arg(text));
            return;
        }
        run(QStringLiteral("%1,%2").arg(command, text), feedback);
        field->setModified(false);
    });
    field->setToolTip(tr("Return sends %1,<value>").arg(command));
    return fieldRow(field, feedback);
}

QGroupBox *NetworkPage::wiredBox()
{
    auto *box = new QGroupBox(tr("Wired"), this);
    box->setToolTip(lan);
    auto *form = narrowForm(box);
    form->addRow(tr("State"), stateRow(QStringLiteral("setwiredstate"), lan, &m_wiredState));
    form->addRow(tr("Address"), textField(lan, QStringLiteral("ip"), QStringLiteral("setwiredip")));
    // A pulled cable leaves the device without carrier: unavailable, as NetworkManager says.
    FeedbackLabel *cableFeedback = feedback({lan});
    QPushButton *pull = commandButton(
        tr("Pull cable"),
        [this] {
            return QStringLiteral("setwiredstate,%1")
                .arg(m_session->enumValue(stateType, QStringLiteral("NETWORK_STATE_UNAVAILABLE")));
        },
        cableFeedback);
    QPushButton *plug = commandButton(
        tr("Plug cable"),
        [this] {
            return QStringLiteral("setwiredstate,%1")
                .arg(m_session->enumValue(stateType, QStringLiteral("NETWORK_STATE_ACTIVATED")));
        },
        cableFeedback);
    pull->setToolTip(tr("The wired state becomes Unavailable"));
    plug->setToolTip(tr("The wired state becomes Activated"));
    form->addRow(controlRow({pull, plug}, cableFeedback));
    return box;
}

QGroupBox *NetworkPage::wifiBox()
{
    auto *box = new QGroupBox(tr("Wi-Fi"), this);
    box->setToolTip(wifi);
    auto *form = narrowForm(box);
    form->addRow(tr("State"), stateRow(QStringLiteral("setwifistate"), wifi, &m_wifiState));
    form->addRow(tr("Address"), textField(wifi, QStringLiteral("ip"), QStringLiteral("setwifiip")));
    form->addRow(tr("SSID"), textField(wifi, QStringLiteral("wifiSsid"), QStringLiteral("setssid")));
    form->addRow(tr("Channel"), textField(wifi, QStringLiteral("wifiChannel"), QStringLiteral("setwifichannel"), true));
    form->addRow(tr("Country"), textField(wifi, QStringLiteral("wifiCountry"), QStringLiteral("setwificountry")));

    auto *signal = new QWidget(box);
    auto *signalLayout = new QHBoxLayout(signal);
    signalLayout->setContentsMargins(0, 0, 0, 0);
    m_signal = new QSlider(Qt::Horizontal, signal);
    m_signal->setRange(0, 100);
    m_signalText = new QLabel(signal);
    m_signalText->setMinimumWidth(fontMetrics().horizontalAdvance(QStringLiteral("100 %")) + 4);
    FeedbackLabel *signalFeedback = feedback({wifi});
    connect(m_signal, &QSlider::valueChanged, this, [this, signalFeedback](int value) {
        m_signalText->setText(QStringLiteral("%1 %").arg(value));
        if (!m_signal->isSliderDown()) {
            run(QStringLiteral("setwifisignalstrength,%1").arg(value), signalFeedback);
        }
    });
    connect(m_signal, &QSlider::sliderReleased, this, [this, signalFeedback] {
        run(QStringLiteral("setwifisignalstrength,%1").arg(m_signal->value()), signalFeedback);
    });
    signalLayout->addWidget(m_signal, 1);
    signalLayout->addWidget(m_signalText);
    form->addRow(tr("Signal"), fieldRow(signal, signalFeedback));

    FeedbackLabel *radioFeedback = feedback({wifi});
    form->addRow(controlRow({commandButton(tr("Wi-Fi on"), QStringLiteral("enablewifi"), radioFeedback),
                                commandButton(tr("Wi-Fi off"), QStringLiteral("disablewifi"), radioFeedback)},
        radioFeedback));
    m_wifiDetails = new QLabel(box);
    m_wifiDetails->setWordWrap(true);
    form->addRow(tr("Status"), m_wifiDetails);
    m_accessPoints = new QListWidget(box);
    m_accessPoints->setMaximumHeight(fontMetrics().height() * 4);
    m_accessPoints->setWordWrap(true);
    m_accessPoints->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    form->addRow(tr("Access points"), m_accessPoints);
    return box;
}

QGroupBox *NetworkPage::flightBox()
{
    auto *box = new QGroupBox(tr("Flight mode"), this);
    auto *layout = new QVBoxLayout(box);
    FeedbackLabel *flightFeedback = feedback({QStringLiteral("System")});
    m_flight = new QLabel(box);
    layout->addWidget(
        controlRow({commandButton(tr("Enter"), QStringLiteral("flightmode on"), flightFeedback),
                       commandButton(tr("Leave"), QStringLiteral("flightmode off"), flightFeedback), m_flight},
            flightFeedback));
    return box;
}

void NetworkPage::update(const QString &target, const QString &property)
{
    const PropertyValue v = m_session->value(target, property);
    const QString text = v.value.isString() ? v.value.toString() : v.text;
    if (property == networkState && (target == lan || target == wifi)) {
        QComboBox *combo = target == lan ? m_wiredState : m_wifiState;
        const QSignalBlocker blocker(combo);
        combo->setCurrentIndex(combo->findData(text));
        combo->setToolTip(text);
    } else if (target == QLatin1String("System") && property == QLatin1String("flightModeStatus")) {
        // The transition shows while it lasts (about 2 s).
        const bool moving = text.contains(QLatin1String("FLIGHT_MODE_TRANSITION"));
        const QString words = m_session->enumText(flightType, text);
        m_flight->setText(!v.known ? QString()
                : moving           ? tr("<b>Flight mode: %1</b>").arg(words)
                                   : tr("Flight mode: %1").arg(words));
        m_flight->setToolTip(text);
    } else if (target == wifi && property == QLatin1String("wifiSignalStrength")) {
        if (!m_signal->isSliderDown()) {
            const QSignalBlocker blocker(m_signal);
            m_signal->setValue(v.value.toInt());
            m_signalText->setText(v.known ? QStringLiteral("%1 %").arg(v.value.toInt()) : QString());
        }
    } else if (target == wifi && property == QLatin1String("status")) {
        // Without F_ENABLE the radio is off, whatever its network state says.
        const bool on = m_session->hasFlag(wifi, property, QStringLiteral("F_ENABLE"));
        m_wifiDetails->setText(!v.known ? QString()
                : on                    ? tr("On: %1").arg(m_session->valueText(wifi, property))
                                        : tr("Off"));
        m_wifiDetails->setToolTip(text);
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
        m_accessPoints->addItem(tr("none (they come from the host's Wi-Fi configurations)"));
    }
}

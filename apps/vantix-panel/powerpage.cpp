#include "powerpage.h"

#include "panelsession.h"

#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QSignalBlocker>
#include <QSlider>
#include <QSpinBox>
#include <QVBoxLayout>

namespace {
const QString powerSupply = QStringLiteral("ID_POWER_SUPPLY");

// The fuel in the colours of the keypad presets' levels: low at 15 %, critical at 10 %.
void showFuel(QLabel *label, int percent)
{
    const char *colour = percent <= 10 ? "#c62828" : percent <= 15 ? "#ef6c00" : "#2e7d32";
    label->setText(QStringLiteral("<span style='color:%1; font-weight:bold; font-size:14pt'>%2 %</span>")
                       .arg(QLatin1String(colour))
                       .arg(percent));
}
} // namespace

PowerPage::PowerPage(PanelSession *session, QWidget *parent)
    : Page(session, parent)
{
    auto *layout = new QVBoxLayout(this);
    auto *batteries = new QHBoxLayout;
    batteries->addWidget(batteryBox(m_batteries[0], 1));
    batteries->addWidget(batteryBox(m_batteries[1], 2));
    layout->addLayout(batteries);

    auto *supply = new QGroupBox(tr("Power supply and presets"), this);
    auto *supplyLayout = new QHBoxLayout(supply);
    m_mains = new QPushButton(tr("Mains connected"), supply);
    m_mains->setCheckable(true);
    m_mains->setToolTip(tr("Toggle external power on the power supply (F9)"));
    connect(m_mains, &QPushButton::clicked, this, [this] { run(QStringLiteral("key F9")); });
    supplyLayout->addWidget(m_mains);
    supplyLayout->addSpacing(16);
    // The keypad presets of the debug controller: they set the first battery's fuel and start nothing else.
    supplyLayout->addWidget(commandButton(tr("Low (15 %)"), QStringLiteral("key keypad+1")));
    supplyLayout->addWidget(commandButton(tr("Critical (10 %)"), QStringLiteral("key keypad+2")));
    supplyLayout->addWidget(commandButton(tr("Shutdown (5 %)"), QStringLiteral("key keypad+3")));
    supplyLayout->addStretch(1);
    layout->addWidget(supply);
    layout->addWidget(rampBox());
    layout->addStretch(1);
    layout->addWidget(statusLabel());

    connect(session, &PanelSession::valueChanged, this, [this](const QString &target, const QString &) {
        for (Battery &b : m_batteries) {
            if (b.target == target) {
                update(b);
            }
        }
        if (target == powerSupply) {
            m_mains->setChecked(
                m_session->hasFlag(powerSupply, QStringLiteral("status"), QStringLiteral("F_POWER_CONNECTED")));
        }
    });
    connect(session, &PanelSession::schemaChanged, this, [this] {
        for (Battery &b : m_batteries) {
            update(b);
        }
        m_mains->setEnabled(!m_session->target(powerSupply).isEmpty());
    });
}

QSlider *PowerPage::fuelSlider(int number) const
{
    return m_batteries[number == 2 ? 1 : 0].fuel;
}

QPushButton *PowerPage::chargingButton(int number) const
{
    return m_batteries[number == 2 ? 1 : 0].charging;
}

QGroupBox *PowerPage::batteryBox(Battery &battery, int number)
{
    battery.target = number == 1 ? QStringLiteral("ID_BATTERY_1ST") : QStringLiteral("ID_BATTERY_2ND");
    battery.box = new QGroupBox(tr("Battery %1").arg(number), this);
    auto *grid = new QGridLayout(battery.box);
    battery.fuel = new QSlider(Qt::Horizontal, battery.box);
    battery.fuel->setObjectName(QStringLiteral("fuel%1").arg(number));
    battery.fuel->setRange(0, 100);
    battery.fuel->setPageStep(10);
    battery.fuelText = new QLabel(battery.box);
    battery.fuelText->setMinimumWidth(64);
    const QString selector = QString::number(number);
    QSlider *fuel = battery.fuel;
    const auto sendFuel = [this, selector, fuel] {
        run(QStringLiteral("setbatteryfuel,%1,%2").arg(selector).arg(fuel->value()));
    };
    // While dragging, the value goes once, when the slider is let go.
    connect(fuel, &QSlider::valueChanged, this, [fuel, sendFuel] {
        if (!fuel->isSliderDown()) {
            sendFuel();
        }
    });
    connect(fuel, &QSlider::sliderReleased, this, sendFuel);
    connect(fuel, &QSlider::valueChanged, battery.fuelText,
        [label = battery.fuelText](int value) { showFuel(label, value); });
    grid->addWidget(new QLabel(tr("Fuel gauge"), battery.box), 0, 0);
    grid->addWidget(fuel, 0, 1, 1, 3);
    grid->addWidget(battery.fuelText, 0, 4);

    battery.charging = new QPushButton(tr("Charging"), battery.box);
    battery.charging->setCheckable(true);
    connect(battery.charging, &QPushButton::clicked, this,
        [this, selector] { run(QStringLiteral("togglecharging,%1").arg(selector)); });
    battery.powerConnected = new QPushButton(tr("Power connected"), battery.box);
    battery.powerConnected->setCheckable(true);
    connect(battery.powerConnected, &QPushButton::clicked, this, [this, target = battery.target] {
        // No debug command toggles a battery's external power; the device's own flag does.
        const bool on = m_session->hasFlag(target, QStringLiteral("status"), QStringLiteral("F_POWER_CONNECTED"));
        run(QStringLiteral("call %1 %2 F_POWER_CONNECTED")
                .arg(target, on ? QStringLiteral("clearAbility") : QStringLiteral("setAbility")));
    });
    grid->addWidget(battery.charging, 1, 1);
    grid->addWidget(battery.powerConnected, 1, 2);

    auto *current = new QLineEdit(battery.box);
    current->setPlaceholderText(tr("ampere, e.g. -0.5"));
    const auto sendCurrent = [this, selector, current] {
        run(QStringLiteral("setbatterycurrent,%1,%2").arg(selector, current->text().trimmed()));
    };
    connect(current, &QLineEdit::returnPressed, this, sendCurrent);
    auto *setCurrent = new QPushButton(tr("Set current"), battery.box);
    connect(setCurrent, &QPushButton::clicked, this, sendCurrent);
    grid->addWidget(new QLabel(tr("Current"), battery.box), 2, 0);
    grid->addWidget(current, 2, 1);
    grid->addWidget(setCurrent, 2, 2);

    battery.details = new QLabel(battery.box);
    battery.details->setWordWrap(true);
    grid->addWidget(battery.details, 3, 0, 1, 5);
    auto *buttons = new QHBoxLayout;
    battery.add = commandButton(tr("Add"), QStringLiteral("addbattery,%1").arg(selector));
    battery.add->setParent(battery.box);
    buttons->addWidget(battery.add);
    QPushButton *remove = commandButton(tr("Remove"), QStringLiteral("rmbattery,%1").arg(selector));
    remove->setParent(battery.box);
    buttons->addWidget(remove);
    buttons->addStretch(1);
    grid->addLayout(buttons, 4, 0, 1, 5);
    update(battery);
    return battery.box;
}

QGroupBox *PowerPage::rampBox()
{
    auto *box = new QGroupBox(tr("Drain ramp (first battery)"), this);
    auto *layout = new QHBoxLayout(box);
    auto *from = new QSpinBox(box);
    auto *to = new QSpinBox(box);
    auto *seconds = new QSpinBox(box);
    from->setRange(0, 100);
    to->setRange(0, 100);
    from->setValue(100);
    to->setValue(5);
    from->setSuffix(QStringLiteral(" %"));
    to->setSuffix(QStringLiteral(" %"));
    seconds->setRange(1, 3600);
    seconds->setValue(30);
    seconds->setSuffix(tr(" s"));
    layout->addWidget(new QLabel(tr("From"), box));
    layout->addWidget(from);
    layout->addWidget(new QLabel(tr("to"), box));
    layout->addWidget(to);
    layout->addWidget(new QLabel(tr("over"), box));
    layout->addWidget(seconds);
    // The ramp runs in the application; its answer comes when it has ended.
    layout->addWidget(commandButton(tr("Start ramp"), [from, to, seconds] {
        return QStringLiteral("ramp ID_BATTERY_1ST setbatteryfuel,1 %1 %2 %3")
            .arg(from->value())
            .arg(to->value())
            .arg(seconds->value() * 1000);
    }));
    auto *stop = new QPushButton(tr("Stop"), box);
    connect(stop, &QPushButton::clicked, this, [this] { m_session->client().cancel(); });
    layout->addWidget(stop);
    layout->addStretch(1);
    return box;
}

void PowerPage::update(Battery &battery)
{
    const bool present = !m_session->target(battery.target).isEmpty();
    for (QWidget *w : battery.box->findChildren<QWidget *>()) {
        w->setEnabled(w == battery.add ? !present : present || w == battery.details);
    }
    if (!present) {
        battery.details->setText(tr("not plugged"));
        return;
    }
    const PropertyValue fuel = m_session->value(battery.target, QStringLiteral("fuelGauge"));
    if (fuel.known && !battery.fuel->isSliderDown()) {
        const QSignalBlocker blocker(battery.fuel);
        battery.fuel->setValue(fuel.value.toInt());
        showFuel(battery.fuelText, fuel.value.toInt());
    }
    const QString status = QStringLiteral("status");
    battery.charging->setChecked(m_session->hasFlag(battery.target, status, QStringLiteral("F_CHARGE")));
    battery.powerConnected->setChecked(m_session->hasFlag(battery.target, status, QStringLiteral("F_POWER_CONNECTED")));
    battery.details->setText(tr("%1 · current %2 A · voltage %3 V")
                                 .arg(m_session->value(battery.target, status).text,
                                     m_session->value(battery.target, QStringLiteral("current")).text,
                                     m_session->value(battery.target, QStringLiteral("voltage")).text));
}

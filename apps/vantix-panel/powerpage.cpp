#include "powerpage.h"

#include "columnslayout.h"
#include "feedbacklabel.h"
#include "panelsession.h"

#include <vantixcontrol/protocol/reply.h>
#include <vantixcontrol/protocol/words.h>

#include <QCheckBox>
#include <QGridLayout>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QPointer>
#include <QPushButton>
#include <QRegularExpression>
#include <QSignalBlocker>
#include <QSlider>
#include <QSpinBox>
#include <QVBoxLayout>

using VantixControl::Reply;

namespace {
const QString powerSupply = QStringLiteral("ID_POWER_SUPPLY");
const QString statusProperty = QStringLiteral("status");

// The fuel in the colours of the keypad presets' levels: low at 15 %, critical at 10 %.
void showFuel(QLabel *label, int percent)
{
    const char *colour = percent <= 10 ? "#c62828" : percent <= 15 ? "#ef6c00" : "#2e7d32";
    label->setText(QStringLiteral("<span style='color:%1; font-weight:bold; font-size:14pt'>%2 %</span>")
                       .arg(QLatin1String(colour))
                       .arg(percent));
}

void setChecked(QCheckBox *box, bool on)
{
    const QSignalBlocker blocker(box);
    box->setChecked(on);
}
} // namespace

PowerPage::PowerPage(PanelSession *session, QWidget *parent)
    : Page(session, parent)
{
    auto *layout = new QVBoxLayout(this);
    auto *batteries = new ColumnsLayout(2);
    batteries->setSpacing(layout->spacing());
    batteries->addWidget(batteryBox(m_batteries[0], 1));
    batteries->addWidget(batteryBox(m_batteries[1], 2));
    layout->addLayout(batteries);
    layout->addWidget(supplyBox());
    layout->addWidget(rampBox());
    layout->addStretch(1);

    connect(session, &PanelSession::valueChanged, this, [this](const QString &target, const QString &) {
        for (Battery &b : m_batteries) {
            if (b.target == target) {
                update(b);
            }
        }
        if (target == powerSupply) {
            setChecked(m_mains, m_session->hasFlag(powerSupply, statusProperty, QStringLiteral("F_POWER_CONNECTED")));
        }
    });
    connect(session, &PanelSession::schemaChanged, this, [this] {
        for (Battery &b : m_batteries) {
            update(b);
        }
        const bool supply = !m_session->target(powerSupply).isEmpty();
        m_mains->setEnabled(supply);
        m_mains->setToolTip(supply ? tr("Connects or disconnects external power on the power supply (key F9)")
                                   : tr("This platform has no power supply device (%1)").arg(powerSupply));
    });
    connect(session, &PanelSession::attaching, this, &PowerPage::clear);
}

QSlider *PowerPage::fuelSlider(int number) const
{
    return battery(number).fuel;
}

QString PowerPage::fuelText(int number) const
{
    return battery(number).fuelText->text().remove(QRegularExpression(QStringLiteral("<[^>]*>")));
}

QCheckBox *PowerPage::chargingBox(int number) const
{
    return battery(number).charging;
}

QLineEdit *PowerPage::currentField(int number) const
{
    return battery(number).current;
}

QPushButton *PowerPage::setCurrentButton(int number) const
{
    return battery(number).setCurrent;
}

void PowerPage::sendCurrent(int number)
{
    const Battery &b = battery(number);
    const QString text = b.current->text().trimmed();
    bool ok = false;
    const double ampere = text.toDouble(&ok);
    // The debug command reads anything that is not a number as 0 A: what is no number is never sent.
    if (!ok || !qIsFinite(ampere)) {
        b.currentFeedback->showProblem(text.isEmpty()
                ? tr("Type a current in ampere first, such as -0.5")
                : tr("\"%1\" is not a number of ampere (such as -0.5)").arg(text));
        return;
    }
    run(QStringLiteral("setbatterycurrent,%1,%2").arg(b.selector, QString::number(ampere)), b.currentFeedback);
}

QGroupBox *PowerPage::batteryBox(Battery &battery, int number)
{
    battery.target = number == 1 ? QStringLiteral("ID_BATTERY_1ST") : QStringLiteral("ID_BATTERY_2ND");
    battery.selector = QString::number(number);
    battery.box = new QGroupBox(tr("Battery %1").arg(number), this);
    battery.box->setToolTip(battery.target);
    auto *grid = new QGridLayout(battery.box);
    grid->setColumnStretch(1, 3);
    grid->setColumnStretch(2, 2);
    const QStringList targets{battery.target};
    const QString selector = battery.selector;

    // Fuel: the value goes once, when the slider is let go or moved by the keyboard.
    battery.fuel = new QSlider(Qt::Horizontal, battery.box);
    battery.fuel->setObjectName(QStringLiteral("fuel%1").arg(number));
    battery.fuel->setRange(0, 100);
    battery.fuel->setPageStep(10);
    battery.fuelText = new QLabel(QStringLiteral("–"), battery.box);
    battery.fuelText->setMinimumWidth(fontMetrics().horizontalAdvance(QStringLiteral("100 %")) * 3 / 2);
    FeedbackLabel *fuelFeedback = feedback(targets);
    QSlider *fuel = battery.fuel;
    const auto sendFuel = [this, selector, fuel, fuelFeedback] {
        run(QStringLiteral("setbatteryfuel,%1,%2").arg(selector).arg(fuel->value()), fuelFeedback);
    };
    connect(fuel, &QSlider::valueChanged, this, [fuel, sendFuel] {
        if (!fuel->isSliderDown()) {
            sendFuel();
        }
    });
    connect(fuel, &QSlider::sliderReleased, this, sendFuel);
    connect(fuel, &QSlider::valueChanged, battery.fuelText,
        [label = battery.fuelText](int value) { showFuel(label, value); });
    auto *fuelRow = new QHBoxLayout;
    fuelRow->addWidget(fuel, 1);
    fuelRow->addWidget(battery.fuelText);
    grid->addWidget(new QLabel(tr("Fuel"), battery.box), 0, 0);
    grid->addLayout(fuelRow, 0, 1);
    grid->addWidget(fuelFeedback, 0, 2);

    // The check boxes show the application's flags; a click asks for the change and the flag follows.
    battery.charging = new QCheckBox(tr("Charging"), battery.box);
    battery.charging->setToolTip(
        tr("F_CHARGE in the battery's status; a click toggles it (togglecharging,%1)").arg(selector));
    battery.powerConnected = new QCheckBox(tr("External power"), battery.box);
    battery.powerConnected->setToolTip(tr("F_POWER_CONNECTED in the battery's status"));
    FeedbackLabel *flagsFeedback = feedback(targets);
    connect(battery.charging, &QCheckBox::clicked, this,
        [this, selector, flagsFeedback] { run(QStringLiteral("togglecharging,%1").arg(selector), flagsFeedback); });
    connect(battery.powerConnected, &QCheckBox::clicked, this, [this, target = battery.target, flagsFeedback] {
        // No debug command toggles a battery's external power; the device's own flag does.
        const bool on = m_session->hasFlag(target, statusProperty, QStringLiteral("F_POWER_CONNECTED"));
        run(VantixControl::Words::join(
                {QStringLiteral("call"), target, on ? QStringLiteral("clearAbility") : QStringLiteral("setAbility"),
                    QStringLiteral("F_POWER_CONNECTED")}),
            flagsFeedback);
    });
    auto *flagsRow = new QHBoxLayout;
    flagsRow->addWidget(battery.charging);
    flagsRow->addWidget(battery.powerConnected);
    flagsRow->addStretch(1);
    grid->addWidget(new QLabel(tr("Power"), battery.box), 1, 0);
    grid->addLayout(flagsRow, 1, 1);
    grid->addWidget(flagsFeedback, 1, 2);

    battery.current = new QLineEdit(battery.box);
    battery.current->setPlaceholderText(tr("ampere, e.g. -0.5"));
    battery.current->setObjectName(QStringLiteral("current%1").arg(number));
    battery.setCurrent = new QPushButton(tr("Set current"), battery.box);
    battery.currentFeedback = feedback(targets);
    connect(battery.current, &QLineEdit::returnPressed, this, [this, number] { sendCurrent(number); });
    connect(battery.setCurrent, &QPushButton::clicked, this, [this, number] { sendCurrent(number); });
    auto *currentRow = new QHBoxLayout;
    currentRow->addWidget(battery.current, 1);
    currentRow->addWidget(battery.setCurrent);
    grid->addWidget(new QLabel(tr("Current"), battery.box), 2, 0);
    grid->addLayout(currentRow, 2, 1);
    grid->addWidget(battery.currentFeedback, 2, 2);

    battery.details = new QLabel(battery.box);
    battery.details->setWordWrap(true);
    grid->addWidget(battery.details, 3, 0, 1, 3);

    FeedbackLabel *plugFeedback = feedback(targets);
    battery.add = commandButton(tr("Add"), QStringLiteral("addbattery,%1").arg(selector), plugFeedback);
    battery.remove = commandButton(tr("Remove"), QStringLiteral("rmbattery,%1").arg(selector), plugFeedback);
    grid->addWidget(controlRow({battery.add, battery.remove}, plugFeedback), 4, 0, 1, 3);
    update(battery);
    return battery.box;
}

QGroupBox *PowerPage::supplyBox()
{
    auto *box = new QGroupBox(tr("Power supply and presets"), this);
    auto *layout = new QVBoxLayout(box);
    FeedbackLabel *mainsFeedback = feedback({powerSupply});
    m_mains = new QCheckBox(tr("Mains connected"), box);
    connect(m_mains, &QCheckBox::clicked, this, [this, mainsFeedback] {
        // The box shows what the application holds: the key toggles, the event sets the box.
        setChecked(m_mains, !m_mains->isChecked());
        run(QStringLiteral("key F9"), mainsFeedback);
    });
    // The keypad presets of the debug controller: they set the first battery's fuel and start nothing else.
    FeedbackLabel *presetFeedback = feedback({QStringLiteral("ID_BATTERY_1ST")});
    QPushButton *low = commandButton(tr("Low battery 15 %"), QStringLiteral("key keypad+1"), presetFeedback);
    QPushButton *critical = commandButton(tr("Critical 10 %"), QStringLiteral("key keypad+2"), presetFeedback);
    QPushButton *shutdown = commandButton(tr("Shutdown 5 %"), QStringLiteral("key keypad+3"), presetFeedback);
    layout->addWidget(controlRow({m_mains}, mainsFeedback));
    layout->addWidget(controlRow({low, critical, shutdown}, presetFeedback));
    return box;
}

QGroupBox *PowerPage::rampBox()
{
    auto *box = new QGroupBox(tr("Drain ramp (first battery)"), this);
    auto *layout = new QVBoxLayout(box);
    auto *from = new QSpinBox(box);
    auto *to = new QSpinBox(box);
    auto *seconds = new QSpinBox(box);
    from->setRange(0, 100);
    to->setRange(0, 100);
    from->setValue(100);
    to->setValue(5);
    from->setPrefix(tr("from "));
    to->setPrefix(tr("to "));
    from->setSuffix(QStringLiteral(" %"));
    to->setSuffix(QStringLiteral(" %"));
    seconds->setRange(1, 3600);
    seconds->setValue(30);
    seconds->setPrefix(tr("over "));
    seconds->setSuffix(tr(" s"));
    FeedbackLabel *rampFeedback = feedback({QStringLiteral("ID_BATTERY_1ST")});
    auto *start = new QPushButton(tr("Start ramp"), box);
    m_stopRamp = new QPushButton(tr("Stop"), box);
    m_stopRamp->setEnabled(false);
    m_stopRamp->setToolTip(tr("Stops the running ramp where it is"));
    connect(start, &QPushButton::clicked, this, [this, from, to, seconds, start, rampFeedback] {
        // The ramp runs in the application; its answer comes when it has ended.
        const QString line = VantixControl::Words::join({QStringLiteral("ramp"), QStringLiteral("ID_BATTERY_1ST"),
            QStringLiteral("setbatteryfuel,1"), QString::number(from->value()), QString::number(to->value()),
            QString::number(seconds->value() * 1000)});
        start->setEnabled(false);
        m_stopRamp->setEnabled(true);
        rampFeedback->begin();
        QPointer<PowerPage> self(this);
        m_session->run(line, [self, start, rampFeedback](const Reply &reply) {
            if (self) {
                start->setEnabled(true);
                self->m_stopRamp->setEnabled(false);
                rampFeedback->showReply(reply);
            }
        });
    });
    connect(m_stopRamp, &QPushButton::clicked, this, [this] { m_session->client().cancel(); });
    layout->addWidget(controlRow({from, to, seconds, start, m_stopRamp}, rampFeedback));
    return box;
}

void PowerPage::update(Battery &battery)
{
    const bool present = !m_session->target(battery.target).isEmpty();
    const QString missing = tr("Battery %1 is not plugged: Add plugs it").arg(battery.selector);
    for (QWidget *w : {static_cast<QWidget *>(battery.fuel), static_cast<QWidget *>(battery.charging),
             static_cast<QWidget *>(battery.powerConnected), static_cast<QWidget *>(battery.current),
             static_cast<QWidget *>(battery.setCurrent), static_cast<QWidget *>(battery.remove)}) {
        w->setEnabled(present);
    }
    battery.add->setEnabled(!present);
    battery.add->setToolTip(present ? tr("Battery %1 is plugged").arg(battery.selector)
                                    : QStringLiteral("addbattery,%1").arg(battery.selector));
    battery.remove->setToolTip(present ? QStringLiteral("rmbattery,%1").arg(battery.selector) : missing);
    battery.setCurrent->setToolTip(
        present ? QStringLiteral("setbatterycurrent,%1,<ampere>").arg(battery.selector) : missing);
    const PropertyValue fuel = m_session->value(battery.target, QStringLiteral("fuelGauge"));
    if (!present || !fuel.known) {
        const QSignalBlocker blocker(battery.fuel);
        battery.fuel->setValue(0);
        battery.fuelText->setText(QStringLiteral("–"));
        setChecked(battery.charging, false);
        setChecked(battery.powerConnected, false);
        battery.details->setText(present ? QStringLiteral("…") : tr("not plugged"));
        return;
    }
    if (!battery.fuel->isSliderDown()) {
        const QSignalBlocker blocker(battery.fuel);
        battery.fuel->setValue(fuel.value.toInt());
        showFuel(battery.fuelText, fuel.value.toInt());
    }
    setChecked(battery.charging, m_session->hasFlag(battery.target, statusProperty, QStringLiteral("F_CHARGE")));
    setChecked(battery.powerConnected,
        m_session->hasFlag(battery.target, statusProperty, QStringLiteral("F_POWER_CONNECTED")));
    const auto number = [this, &battery](const char *property) {
        return m_session->value(battery.target, QLatin1String(property)).text;
    };
    battery.details->setText(
        tr("Status: %1 · %2 V · %3 A")
            .arg(m_session->valueText(battery.target, statusProperty), number("voltage"), number("current")));
    battery.details->setToolTip(m_session->value(battery.target, statusProperty).text);
}

void PowerPage::clear()
{
    for (Battery &b : m_batteries) {
        b.current->clear();
        update(b);
    }
    setChecked(m_mains, false);
}

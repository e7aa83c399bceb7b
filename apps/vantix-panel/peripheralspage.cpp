#include "peripheralspage.h"

#include "ledview.h"
#include "panelsession.h"
#include "propertyeditor.h"
#include "targetform.h"

#include <QCheckBox>
#include <QFormLayout>
#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QJsonObject>
#include <QLabel>
#include <QPushButton>
#include <QSignalBlocker>
#include <QSlider>
#include <QVBoxLayout>

#include <algorithm>

namespace {
const QString audio = QStringLiteral("ID_AUDIO");
const QString button = QStringLiteral("ID_BUTTON_POWER");
const QString display = QStringLiteral("ID_DISPLAY");

bool isLed(const QJsonObject &target)
{
    return target.value(QLatin1String("class")).toString().endsWith(QLatin1String("ILed"));
}

// The multiplexer object first, then the CAN devices it switches between.
bool isCan(const QString &name, const QJsonObject &target)
{
    return name.startsWith(QLatin1String("ID_CAN_")) ||
        target.value(QLatin1String("class")).toString().endsWith(QLatin1String("CanMux"));
}

void clearLayout(QLayout *layout)
{
    while (QLayoutItem *item = layout->takeAt(0)) {
        delete item->widget();
        delete item;
    }
}
} // namespace

PeripheralsPage::PeripheralsPage(PanelSession *session, QWidget *parent)
    : Page(session, parent)
{
    auto *grid = new QGridLayout(this);
    grid->addWidget(audioBox(), 0, 0);
    grid->addWidget(buttonBox(), 0, 1);
    m_ledBox = new QGroupBox(tr("LEDs"), this);
    new QGridLayout(m_ledBox);
    grid->addWidget(m_ledBox, 1, 0);
    grid->addWidget(displayBox(), 1, 1);
    m_canBox = new QGroupBox(tr("CAN multiplexer"), this);
    new QVBoxLayout(m_canBox);
    grid->addWidget(m_canBox, 2, 0, 1, 2);
    grid->setRowStretch(3, 1);
    grid->addWidget(statusLabel(), 4, 0, 1, 2);

    connect(session, &PanelSession::valueChanged, this, &PeripheralsPage::update);
    connect(session, &PanelSession::schemaChanged, this, [this] {
        rebuildLeds();
        rebuildCan();
        // The editor takes its kind from the schema, so it is made once the schema is known.
        clearLayout(m_backlight->layout());
        if (!m_session->target(display).isEmpty()) {
            m_backlight->layout()->addWidget(editor(display, QStringLiteral("backlight")));
        }
        for (const QString &target : {audio, button, display}) {
            for (const QString &property : {QStringLiteral("jackFlags"), QStringLiteral("pressed"),
                     QStringLiteral("brightnes"), QStringLiteral("maxBrightness")}) {
                update(target, property);
            }
        }
    });
}

QGroupBox *PeripheralsPage::audioBox()
{
    auto *box = new QGroupBox(tr("Audio jack (ID_AUDIO)"), this);
    auto *layout = new QHBoxLayout(box);
    m_headphone = new QCheckBox(tr("Headphone plugged"), box);
    m_microphone = new QCheckBox(tr("Microphone plugged"), box);
    // The debug commands toggle one bit each: the box shows the application's value once it answers.
    connect(m_headphone, &QCheckBox::clicked, this, [this] { run(QStringLiteral("jack")); });
    connect(m_microphone, &QCheckBox::clicked, this, [this] { run(QStringLiteral("mic")); });
    layout->addWidget(m_headphone);
    layout->addWidget(m_microphone);
    layout->addStretch(1);
    return box;
}

QGroupBox *PeripheralsPage::buttonBox()
{
    auto *box = new QGroupBox(tr("Power button (ID_BUTTON_POWER)"), this);
    auto *layout = new QHBoxLayout(box);
    layout->addWidget(commandButton(tr("Press"), QStringLiteral("pwrpress")));
    layout->addWidget(commandButton(tr("Release"), QStringLiteral("pwrrelase")));
    m_button = new QLabel(box);
    layout->addWidget(m_button, 1);
    return box;
}

QGroupBox *PeripheralsPage::displayBox()
{
    auto *box = new QGroupBox(tr("Display (ID_DISPLAY)"), this);
    auto *form = new QFormLayout(box);
    m_brightness = new QSlider(Qt::Horizontal, box);
    m_brightness->setRange(0, 100);
    m_brightnessText = new QLabel(box);
    m_brightnessText->setMinimumWidth(32);
    connect(m_brightness, &QSlider::valueChanged, m_brightnessText, QOverload<int>::of(&QLabel::setNum));
    const auto send = [this] { run(QStringLiteral("set ID_DISPLAY brightnes %1").arg(m_brightness->value())); };
    connect(m_brightness, &QSlider::valueChanged, this, [this, send] {
        if (!m_brightness->isSliderDown()) {
            send();
        }
    });
    connect(m_brightness, &QSlider::sliderReleased, this, send);
    auto *row = new QHBoxLayout;
    row->addWidget(m_brightness, 1);
    row->addWidget(m_brightnessText);
    form->addRow(tr("Brightness"), row);
    m_backlight = new QWidget(box);
    new QVBoxLayout(m_backlight);
    m_backlight->layout()->setContentsMargins(0, 0, 0, 0);
    form->addRow(tr("Backlight"), m_backlight);
    return box;
}

void PeripheralsPage::rebuildLeds()
{
    QStringList names;
    for (const QString &name : m_session->targetNames()) {
        if (isLed(m_session->target(name))) {
            names.append(name);
        }
    }
    // A new schema with the same LEDs (after a hot-plug elsewhere) keeps their views: no flicker.
    QStringList sorted = names;
    sorted.sort();
    if (!m_leds.isEmpty() && sorted == m_leds.keys()) {
        for (const QString &name : names) {
            updateLed(name);
        }
        return;
    }
    auto *layout = static_cast<QGridLayout *>(m_ledBox->layout());
    clearLayout(layout);
    m_leds.clear();
    int row = 0;
    for (const QString &name : names) {
        auto *view = new LedView(m_ledBox);
        m_leds.insert(name, view);
        layout->addWidget(view, row, 0);
        layout->addWidget(new QLabel(name, m_ledBox), row, 1);
        auto *state = new QLabel(m_ledBox);
        state->setObjectName(name);
        layout->addWidget(state, row, 2);
        updateLed(name);
        ++row;
    }
    if (row == 0) {
        layout->addWidget(new QLabel(tr("this platform has no LED"), m_ledBox), 0, 0);
    }
    layout->setColumnStretch(2, 1);
}

void PeripheralsPage::rebuildCan()
{
    QLayout *layout = m_canBox->layout();
    clearLayout(layout);
    bool any = false;
    QStringList names = m_session->targetNames();
    std::stable_partition(names.begin(), names.end(), [this](const QString &name) {
        return m_session->target(name).value(QLatin1String("class")).toString().endsWith(QLatin1String("CanMux"));
    });
    for (const QString &name : qAsConst(names)) {
        const QJsonObject target = m_session->target(name);
        if (!isCan(name, target)) {
            continue;
        }
        if (target.value(QLatin1String("kind")).toString() == QLatin1String("device")) {
            // The CAN devices themselves have nothing to set: their status is enough here.
            auto *state = new QLabel(m_canBox);
            state->setObjectName(name);
            layout->addWidget(state);
            update(name, QStringLiteral("status"));
        } else {
            layout->addWidget(new QLabel(QStringLiteral("<b>%1</b>").arg(name), m_canBox));
            layout->addWidget(new TargetForm(m_session, name, false, m_canBox));
        }
        any = true;
    }
    if (!any) {
        layout->addWidget(new QLabel(tr("this platform has no CAN multiplexer"), m_canBox));
    }
}

void PeripheralsPage::update(const QString &target, const QString &property)
{
    if (m_leds.contains(target)) {
        updateLed(target);
    } else if (property == QLatin1String("status") && target.startsWith(QLatin1String("ID_CAN_"))) {
        if (auto *state = m_canBox->findChild<QLabel *>(target)) {
            state->setText(QStringLiteral("%1: %2").arg(target, m_session->value(target, property).text));
        }
    } else if (target == audio && property == QLatin1String("jackFlags")) {
        m_headphone->setChecked(m_session->hasFlag(audio, property, QStringLiteral("JACK_HEADPHONE")));
        m_microphone->setChecked(m_session->hasFlag(audio, property, QStringLiteral("JACK_MIC")));
    } else if (target == button && property == QLatin1String("pressed")) {
        const PropertyValue pressed = m_session->value(button, property);
        m_button->setText(m_session->target(button).isEmpty() ? tr("not on this platform (plug ID_BUTTON_POWER)")
                : pressed.value.toBool()                      ? tr("<b>pressed</b>")
                                                              : tr("released"));
    } else if (target == display &&
        (property == QLatin1String("brightnes") || property == QLatin1String("maxBrightness"))) {
        const QSignalBlocker blocker(m_brightness);
        m_brightness->setEnabled(!m_session->target(display).isEmpty());
        m_brightness->setMaximum(qMax(1, m_session->value(display, QStringLiteral("maxBrightness")).value.toInt()));
        m_brightness->setValue(m_session->value(display, QStringLiteral("brightnes")).value.toInt());
        m_brightnessText->setNum(m_brightness->value());
    }
}

void PeripheralsPage::updateLed(const QString &target)
{
    const auto text = [this, target](const char *property) {
        const PropertyValue v = m_session->value(target, QLatin1String(property));
        return v.value.isString() ? v.value.toString() : v.text;
    };
    const QString mode = text("mode");
    const QString colour = text("color");
    const int msOn = m_session->value(target, QStringLiteral("msOn")).value.toInt();
    const int msOff = m_session->value(target, QStringLiteral("msOff")).value.toInt();
    m_leds.value(target)->setState(mode, colour, msOn, msOff);
    if (auto *state = m_ledBox->findChild<QLabel *>(target)) {
        state->setText(mode == QLatin1String("LED_FLASH")
                ? QStringLiteral("%1 %2, %3 ms on / %4 ms off").arg(mode, colour).arg(msOn).arg(msOff)
                : QStringLiteral("%1 %2").arg(mode, colour));
    }
}

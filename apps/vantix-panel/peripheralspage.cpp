#include "peripheralspage.h"

#include "columnslayout.h"
#include "feedbacklabel.h"
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
#include <QSpinBox>
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
    auto *layout = new QVBoxLayout(this);
    auto *boxes = new ColumnsLayout(2);
    boxes->setSpacing(layout->spacing());
    boxes->addWidget(audioBox());
    boxes->addWidget(buttonBox());
    m_ledBox = new QGroupBox(tr("LEDs"), this);
    new QGridLayout(m_ledBox);
    boxes->addWidget(m_ledBox);
    boxes->addWidget(displayBox());
    layout->addLayout(boxes);
    m_canBox = new QGroupBox(tr("CAN multiplexer"), this);
    new QVBoxLayout(m_canBox);
    layout->addWidget(m_canBox);
    layout->addStretch(1);

    connect(session, &PanelSession::valueChanged, this, &PeripheralsPage::update);
    connect(session, &PanelSession::schemaChanged, this, [this] {
        rebuildLeds();
        rebuildCan();
        // The editor takes its kind from the schema, so it is made once the schema is known.
        clearLayout(m_backlight->layout());
        if (!m_session->target(display).isEmpty()) {
            m_backlight->layout()->addWidget(editor(display, QStringLiteral("backlight")));
        }
        update(audio, QStringLiteral("jackFlags"));
        update(button, QStringLiteral("pressed"));
        update(display, QStringLiteral("brightnes"));
    });
}

QString PeripheralsPage::ledText(const QString &target) const
{
    auto *state = m_ledBox->findChild<QLabel *>(target);
    return state ? state->text() : QString();
}

QGroupBox *PeripheralsPage::audioBox()
{
    auto *box = new QGroupBox(tr("Audio jack"), this);
    box->setToolTip(audio);
    auto *layout = new QVBoxLayout(box);
    m_headphone = new QCheckBox(tr("Headphone plugged"), box);
    m_microphone = new QCheckBox(tr("Microphone plugged"), box);
    FeedbackLabel *jackFeedback = feedback({audio});
    // The debug commands toggle one bit each: the box shows the application's value once it answers.
    const auto toggle = [this, jackFeedback](QCheckBox *check, const QString &line) {
        connect(check, &QCheckBox::clicked, this, [this, check, line, jackFeedback] {
            const QSignalBlocker blocker(check);
            check->setChecked(!check->isChecked());
            run(line, jackFeedback);
        });
    };
    toggle(m_headphone, QStringLiteral("jack"));
    toggle(m_microphone, QStringLiteral("mic"));
    layout->addWidget(controlRow({m_headphone, m_microphone}, jackFeedback));
    return box;
}

QGroupBox *PeripheralsPage::buttonBox()
{
    auto *box = new QGroupBox(tr("Power button"), this);
    box->setToolTip(button);
    auto *layout = new QVBoxLayout(box);
    FeedbackLabel *buttonFeedback = feedback({button});
    m_press = commandButton(tr("Press"), QStringLiteral("pwrpress"), buttonFeedback);
    m_release = commandButton(tr("Release"), QStringLiteral("pwrrelase"), buttonFeedback);
    m_plugButton = commandButton(tr("Plug the button"), QStringLiteral("plug ") + button, buttonFeedback);
    m_button = new QLabel(box);
    layout->addWidget(controlRow({m_press, m_release, m_plugButton, m_button}, buttonFeedback));
    return box;
}

QGroupBox *PeripheralsPage::displayBox()
{
    auto *box = new QGroupBox(tr("Display"), this);
    box->setToolTip(display);
    auto *form = new QFormLayout(box);
    form->setFieldGrowthPolicy(QFormLayout::AllNonFixedFieldsGrow);
    auto *brightness = new QWidget(box);
    auto *row = new QHBoxLayout(brightness);
    row->setContentsMargins(0, 0, 0, 0);
    m_brightness = new QSlider(Qt::Horizontal, brightness);
    m_brightnessBox = new QSpinBox(brightness);
    // A typed value goes on Return or when the field is left, not at every digit.
    m_brightnessBox->setKeyboardTracking(false);
    m_brightnessFeedback = feedback({display});
    connect(m_brightness, &QSlider::valueChanged, this, [this](int value) {
        const QSignalBlocker blocker(m_brightnessBox);
        m_brightnessBox->setValue(value);
        if (!m_brightness->isSliderDown()) {
            sendBrightness(value);
        }
    });
    connect(m_brightness, &QSlider::sliderReleased, this, [this] { sendBrightness(m_brightness->value()); });
    connect(m_brightnessBox, QOverload<int>::of(&QSpinBox::valueChanged), this, [this](int value) {
        const QSignalBlocker blocker(m_brightness);
        m_brightness->setValue(value);
        sendBrightness(value);
    });
    row->addWidget(m_brightness, 1);
    row->addWidget(m_brightnessBox);
    form->addRow(tr("Brightness"), fieldRow(brightness, m_brightnessFeedback));
    m_backlight = new QWidget(box);
    new QVBoxLayout(m_backlight);
    m_backlight->layout()->setContentsMargins(0, 0, 0, 0);
    form->addRow(tr("Backlight"), m_backlight);
    return box;
}

void PeripheralsPage::sendBrightness(int value)
{
    // The controls cannot go beyond the display's own maximum; the Devices page can, for experts.
    run(QStringLiteral("set ID_DISPLAY brightnes %1").arg(value), m_brightnessFeedback);
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
        QString title = name;
        title.remove(QStringLiteral("ID_LED_"));
        title = title.left(1) + title.mid(1).toLower();
        auto *nameLabel = new QLabel(title, m_ledBox);
        nameLabel->setToolTip(name);
        layout->addWidget(nameLabel, row, 1);
        auto *state = new QLabel(m_ledBox);
        state->setObjectName(name);
        state->setWordWrap(true);
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
            state->setWordWrap(true);
            layout->addWidget(state);
            update(name, QStringLiteral("status"));
        } else {
            layout->addWidget(new QLabel(QStringLiteral("<b>%1</b>").arg(name), m_canBox));
            layout->addWidget(new TargetForm(m_session, name, false, PropertyEditor::Words, m_canBox));
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
            state->setText(QStringLiteral("%1: %2").arg(target, m_session->valueText(target, property)));
            state->setToolTip(m_session->value(target, property).text);
        }
    } else if (target == audio && property == QLatin1String("jackFlags")) {
        const bool present = !m_session->target(audio).isEmpty();
        for (QCheckBox *check : {m_headphone, m_microphone}) {
            check->setEnabled(present);
            check->setToolTip(present ? QString() : tr("This platform has no audio jack (%1)").arg(audio));
        }
        const QSignalBlocker headphone(m_headphone);
        const QSignalBlocker microphone(m_microphone);
        m_headphone->setChecked(m_session->hasFlag(audio, property, QStringLiteral("JACK_HEADPHONE")));
        m_microphone->setChecked(m_session->hasFlag(audio, property, QStringLiteral("JACK_MIC")));
    } else if (target == button && property == QLatin1String("pressed")) {
        const bool present = !m_session->target(button).isEmpty();
        const QString missing = tr("This platform has no power button device (%1): plug it first").arg(button);
        m_press->setEnabled(present);
        m_release->setEnabled(present);
        m_press->setToolTip(present ? QStringLiteral("pwrpress") : missing);
        m_release->setToolTip(present ? QStringLiteral("pwrrelase") : missing);
        m_plugButton->setVisible(!present);
        const PropertyValue pressed = m_session->value(button, property);
        m_button->setText(!present       ? tr("not on this platform")
                : !pressed.known         ? QString()
                : pressed.value.toBool() ? tr("<b>Pressed</b>")
                                         : tr("Released"));
    } else if (target == display &&
        (property == QLatin1String("brightnes") || property == QLatin1String("maxBrightness"))) {
        const PropertyValue maximum = m_session->value(display, QStringLiteral("maxBrightness"));
        const bool usable = !m_session->target(display).isEmpty() && maximum.known;
        const QSignalBlocker sliderBlocker(m_brightness);
        const QSignalBlocker boxBlocker(m_brightnessBox);
        for (QWidget *w : {static_cast<QWidget *>(m_brightness), static_cast<QWidget *>(m_brightnessBox)}) {
            w->setEnabled(usable);
            w->setToolTip(usable ? tr("0 to %1, the display's maximum").arg(maximum.value.toInt())
                                 : tr("The display's maximum brightness is not known yet"));
        }
        m_brightness->setMaximum(qMax(0, maximum.value.toInt()));
        m_brightnessBox->setMaximum(qMax(0, maximum.value.toInt()));
        const int value = m_session->value(display, QStringLiteral("brightnes")).value.toInt();
        m_brightness->setValue(value);
        m_brightnessBox->setValue(value);
    }
}

void PeripheralsPage::updateLed(const QString &target)
{
    const auto raw = [this, target](const char *property) {
        const PropertyValue v = m_session->value(target, QLatin1String(property));
        return v.value.isString() ? v.value.toString() : v.text;
    };
    const QString mode = raw("mode");
    const QString colour = raw("color");
    const int msOn = m_session->value(target, QStringLiteral("msOn")).value.toInt();
    const int msOff = m_session->value(target, QStringLiteral("msOff")).value.toInt();
    m_leds.value(target)->setState(mode, colour, msOn, msOff);
    if (auto *state = m_ledBox->findChild<QLabel *>(target)) {
        const QString modeWords = m_session->enumLabel(QStringLiteral("LedMode"), mode);
        const QString colourWords = m_session->enumLabel(QStringLiteral("GlobalColor"), colour);
        state->setText(mode.isEmpty()              ? QStringLiteral("…")
                : mode == QLatin1String("LED_OFF") ? modeWords
                : mode == QLatin1String("LED_FLASH")
                ? tr("%1 %2, %3 ms on / %4 ms off").arg(modeWords, colourWords).arg(msOn).arg(msOff)
                : tr("%1 %2").arg(modeWords, colourWords));
        state->setToolTip(QStringLiteral("%1 %2 %3 %4").arg(mode, colour).arg(msOn).arg(msOff));
    }
}

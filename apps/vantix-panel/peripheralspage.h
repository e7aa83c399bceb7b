#ifndef VANTIXPANEL_PERIPHERALSPAGE_H
#define VANTIXPANEL_PERIPHERALSPAGE_H

#include "page.h"

#include <QMap>

class LedView;
class QCheckBox;
class QGroupBox;
class QLabel;
class QPushButton;
class QSlider;
class QSpinBox;

/// The audio jack, the power button, the LEDs, the display and, where the platform has it, the CAN multiplexer.
class PeripheralsPage : public Page
{
    Q_OBJECT

public:
    explicit PeripheralsPage(PanelSession *session, QWidget *parent = nullptr);

    QCheckBox *headphone() const { return m_headphone; }
    QCheckBox *microphone() const { return m_microphone; }
    QPushButton *pressButton() const { return m_press; }
    QSlider *brightnessSlider() const { return m_brightness; }
    QSpinBox *brightnessBox() const { return m_brightnessBox; }
    LedView *led(const QString &target) const { return m_leds.value(target); }
    /// What the page says of LED @p target ("Flashing red, 100 ms on / 100 ms off").
    QString ledText(const QString &target) const;

private:
    QGroupBox *audioBox();
    QGroupBox *buttonBox();
    QGroupBox *displayBox();
    void rebuildLeds();
    void rebuildCan();
    void update(const QString &target, const QString &property);
    void updateLed(const QString &target);
    void sendBrightness(int value);

    QCheckBox *m_headphone = nullptr;
    QCheckBox *m_microphone = nullptr;
    QPushButton *m_press = nullptr;
    QPushButton *m_release = nullptr;
    QPushButton *m_plugButton = nullptr;
    QLabel *m_button = nullptr;
    QSlider *m_brightness = nullptr;
    QSpinBox *m_brightnessBox = nullptr;
    class FeedbackLabel *m_brightnessFeedback = nullptr;
    QWidget *m_backlight = nullptr;
    QGroupBox *m_ledBox = nullptr;
    QGroupBox *m_canBox = nullptr;
    QMap<QString, LedView *> m_leds;
};

#endif

#ifndef VANTIXPANEL_PERIPHERALSPAGE_H
#define VANTIXPANEL_PERIPHERALSPAGE_H

#include "page.h"

#include <QMap>

class LedView;
class QCheckBox;
class QGroupBox;
class QLabel;
class QSlider;
class QVBoxLayout;

/// The audio jack, the power button, the LEDs, the display and, where the platform has it, the CAN multiplexer.
class PeripheralsPage : public Page
{
    Q_OBJECT

public:
    explicit PeripheralsPage(PanelSession *session, QWidget *parent = nullptr);

    QCheckBox *headphone() const { return m_headphone; }
    QCheckBox *microphone() const { return m_microphone; }
    LedView *led(const QString &target) const { return m_leds.value(target); }

private:
    QGroupBox *audioBox();
    QGroupBox *buttonBox();
    QGroupBox *displayBox();
    void rebuildLeds();
    void rebuildCan();
    void update(const QString &target, const QString &property);
    void updateLed(const QString &target);

    QCheckBox *m_headphone = nullptr;
    QCheckBox *m_microphone = nullptr;
    QLabel *m_button = nullptr;
    QSlider *m_brightness = nullptr;
    QLabel *m_brightnessText = nullptr;
    QWidget *m_backlight = nullptr;
    QGroupBox *m_ledBox = nullptr;
    QGroupBox *m_canBox = nullptr;
    QMap<QString, LedView *> m_leds;
};

#endif

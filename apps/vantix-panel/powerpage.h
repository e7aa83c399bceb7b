#ifndef VANTIXPANEL_POWERPAGE_H
#define VANTIXPANEL_POWERPAGE_H

#include "page.h"

class FeedbackLabel;
class QCheckBox;
class QGroupBox;
class QLabel;
class QLineEdit;
class QPushButton;
class QSlider;

/// The batteries and the power supply: fuel, charging, mains, current, the second battery, presets and drains.
class PowerPage : public Page
{
    Q_OBJECT

public:
    explicit PowerPage(PanelSession *session, QWidget *parent = nullptr);

    /// The fuel gauge slider of battery @p number (1 or 2).
    QSlider *fuelSlider(int number) const;
    /// The fuel as the page shows it beside the slider ("42 %", or "–" while unknown).
    QString fuelText(int number) const;
    QCheckBox *chargingBox(int number) const;
    QLineEdit *currentField(int number) const;
    QPushButton *setCurrentButton(int number) const;
    /// Sends the current typed for battery @p number, once it is a number.
    void sendCurrent(int number);

private:
    struct Battery
    {
        QString target;
        QString selector;
        QGroupBox *box = nullptr;
        QSlider *fuel = nullptr;
        QLabel *fuelText = nullptr;
        QCheckBox *charging = nullptr;
        QCheckBox *powerConnected = nullptr;
        QLineEdit *current = nullptr;
        QPushButton *setCurrent = nullptr;
        FeedbackLabel *currentFeedback = nullptr;
        QLabel *details = nullptr;
        QPushButton *add = nullptr;
        QPushButton *remove = nullptr;
    };
    const Battery &battery(int number) const { return m_batteries[number == 2 ? 1 : 0]; }
    QGroupBox *batteryBox(Battery &battery, int number);
    QGroupBox *supplyBox();
    QGroupBox *rampBox();
    void update(Battery &battery);
    void clear();

    Battery m_batteries[2];
    QCheckBox *m_mains = nullptr;
    QPushButton *m_stopRamp = nullptr;
};

#endif

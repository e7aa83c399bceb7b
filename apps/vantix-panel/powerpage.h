#ifndef VANTIXPANEL_POWERPAGE_H
#define VANTIXPANEL_POWERPAGE_H

#include "page.h"

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
    QPushButton *chargingButton(int number) const;

private:
    struct Battery
    {
        QString target;
        QGroupBox *box = nullptr;
        QSlider *fuel = nullptr;
        QLabel *fuelText = nullptr;
        QPushButton *charging = nullptr;
        QPushButton *powerConnected = nullptr;
        QLabel *details = nullptr;
        QPushButton *add = nullptr;
    };
    QGroupBox *batteryBox(Battery &battery, int number);
    QGroupBox *rampBox();
    void update(Battery &battery);

    Battery m_batteries[2];
    QPushButton *m_mains = nullptr;
};

#endif

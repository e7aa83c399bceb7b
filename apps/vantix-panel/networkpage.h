#ifndef VANTIXPANEL_NETWORKPAGE_H
#define VANTIXPANEL_NETWORKPAGE_H

#include "page.h"

class QComboBox;
class QGroupBox;
class QLabel;
class QLineEdit;
class QListWidget;
class QSlider;

/// The wired network and the Wi-Fi: states by name, addresses, SSID, radio values, flight mode, access points.
class NetworkPage : public Page
{
    Q_OBJECT

public:
    explicit NetworkPage(PanelSession *session, QWidget *parent = nullptr);

    QComboBox *wiredState() const { return m_wiredState; }
    QComboBox *wifiState() const { return m_wifiState; }
    /// The flight mode as the page shows it, with its transition.
    QString flightText() const;

private:
    QGroupBox *wiredBox();
    QGroupBox *wifiBox();
    QGroupBox *flightBox();
    QComboBox *stateCombo(const QString &command);
    /// A field that sends "<command>,<text>" on Return, and shows @p property of @p target live.
    QLineEdit *textField(const QString &target, const QString &property, const QString &command);
    void update(const QString &target, const QString &property);
    void updateAccessPoints();

    QComboBox *m_wiredState = nullptr;
    QComboBox *m_wifiState = nullptr;
    QSlider *m_signal = nullptr;
    QLabel *m_signalText = nullptr;
    QLabel *m_flight = nullptr;
    QLabel *m_wifiDetails = nullptr;
    QListWidget *m_accessPoints = nullptr;
};

#endif

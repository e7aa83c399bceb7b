#ifndef VANTIXPANEL_NETWORKPAGE_H
#define VANTIXPANEL_NETWORKPAGE_H

#include "page.h"

class FeedbackLabel;
class QComboBox;
class QGroupBox;
class QLabel;
class QLineEdit;
class QListWidget;
class QSlider;

/// The wired network and the Wi-Fi: states in words, addresses, SSID, radio values, flight mode, access points.
class NetworkPage : public Page
{
    Q_OBJECT

public:
    explicit NetworkPage(PanelSession *session, QWidget *parent = nullptr);

    QComboBox *wiredState() const { return m_wiredState; }
    QComboBox *wifiState() const { return m_wifiState; }
    /// The flight mode as the page shows it, with its transition.
    QString flightText() const;
    QString wifiStatusText() const;

private:
    QGroupBox *wiredBox();
    QGroupBox *wifiBox();
    QGroupBox *flightBox();
    /// A list of the network states that sends "<command>,<number>", and its outcome.
    QWidget *stateRow(const QString &command, const QString &target, QComboBox **combo);
    /**
     * A field that sends "<command>,<text>" on Return and shows @p property of @p target live; @p integer
     * fields send whole numbers of 0 or more only.
     */
    QWidget *textField(const QString &target, const QString &property, const QString &command, bool integer = false);
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

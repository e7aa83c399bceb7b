#ifndef VANTIXPANEL_PANELWINDOW_H
#define VANTIXPANEL_PANELWINDOW_H

#include "appselector.h"

#include <QMainWindow>

class ConnectBar;
class DevicesPage;
class LogPage;
class NetworkPage;
class PanelSession;
class PeripheralsPage;
class PowerPage;
class QLabel;
class QPushButton;
class QTabWidget;
class ShortcutBar;
class StoragePage;
class WifiDirectPage;

/**
 * The control panel: the application chooser on top, the shortcut keys, and
 * a page per area of the hardware. A lost application greys the pages out
 * and offers to reattach.
 */
class PanelWindow : public QMainWindow
{
    Q_OBJECT

public:
    explicit PanelWindow(QWidget *parent = nullptr);

    /// Attaches to what @p selector names, or to the only running application; else lists them.
    void start(const AppSelector &selector);
    void attach(const QString &socketPath);
    /// Attaches again to the application last driven, or to the only one running.
    void reattach();
    /// Shows page @p index (in the order of the tabs).
    void setCurrentPage(int index);

    PanelSession *session() const { return m_session; }
    ConnectBar *connectBar() const { return m_connectBar; }
    QTabWidget *tabs() const { return m_tabs; }
    DevicesPage *devicesPage() const { return m_devices; }
    PowerPage *powerPage() const { return m_power; }
    NetworkPage *networkPage() const { return m_network; }
    PeripheralsPage *peripheralsPage() const { return m_peripherals; }
    StoragePage *storagePage() const { return m_storage; }
    WifiDirectPage *wifiDirectPage() const { return m_wifiDirect; }
    LogPage *logPage() const { return m_log; }
    QString bannerText() const;

private:
    void setControlsEnabled(bool enabled);
    void showBanner(const QString &text, bool offerReattach);

    PanelSession *m_session;
    ConnectBar *m_connectBar;
    QLabel *m_banner;
    QPushButton *m_reattach;
    ShortcutBar *m_shortcuts;
    QTabWidget *m_tabs;
    DevicesPage *m_devices;
    PowerPage *m_power;
    NetworkPage *m_network;
    PeripheralsPage *m_peripherals;
    StoragePage *m_storage;
    WifiDirectPage *m_wifiDirect;
    LogPage *m_log;
    QString m_lastSocket;
};

#endif

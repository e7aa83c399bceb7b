#ifndef VANTIXPANEL_PANELWINDOW_H
#define VANTIXPANEL_PANELWINDOW_H

#include "appselector.h"

#include <QMainWindow>
#include <QSet>

class ConnectBar;
class DevicesPage;
class ElidedLabel;
class InstanceWatcher;
class LogPage;
class NetworkPage;
class Page;
class PanelSession;
class PeripheralsPage;
class PowerPage;
class QLabel;
class QPushButton;
class QTabWidget;
class ShortcutBar;
class StoragePage;
class SummaryLabel;
class WifiDirectPage;

/**
 * The control panel: the application chooser on top, the shortcut keys, and
 * a page per area of the hardware. A lost application greys the pages out
 * and offers to reattach; a new instance of it is attached as it starts.
 */
class PanelWindow : public QMainWindow
{
    Q_OBJECT

public:
    explicit PanelWindow(QWidget *parent = nullptr);

    /// The pages' names for --tab, in the order of the tabs.
    static QStringList pageNames();

    /// Attaches to what @p selector names, or to the only running application; else lists them.
    void start(const AppSelector &selector);
    void attach(const QString &socketPath);
    /// Attaches again to the application last driven, or to the only one running.
    void reattach();
    /// Which new application the panel attaches to by itself once its own has gone; the others it offers.
    enum class Follow {
        SameName, ///< one of the name of the application last attached, or of the name --app gave
        Any, ///< any application that starts
        None, ///< none
    };
    void setFollow(Follow follow) { m_follow = follow; }
    /// Shows page @p name (one of pageNames()); false for a name that is none.
    bool setCurrentPage(const QString &name);

    PanelSession *session() const { return m_session; }
    ConnectBar *connectBar() const { return m_connectBar; }
    QTabWidget *tabs() const { return m_tabs; }
    /// Every page, in the order of the tabs.
    QList<Page *> pages() const { return m_pages; }
    DevicesPage *devicesPage() const;
    PowerPage *powerPage() const;
    NetworkPage *networkPage() const;
    PeripheralsPage *peripheralsPage() const;
    StoragePage *storagePage() const;
    WifiDirectPage *wifiDirectPage() const;
    LogPage *logPage() const;
    QString bannerText() const;
    QString summaryText() const;
    /// The status bar's sign of a running recording; empty while none runs.
    QString recordingText() const;

private:
    void setControlsEnabled(bool enabled);
    /// @p offerSocket: the banner's button attaches to it; empty: the button reattaches.
    void showBanner(const QString &text, bool offerButton, const QString &offerSocket = QString());
    void onApplications(const QList<VantixControl::Client::Application> &applications);

    PanelSession *m_session;
    ConnectBar *m_connectBar;
    QLabel *m_banner;
    QPushButton *m_reattach;
    ShortcutBar *m_shortcuts;
    QTabWidget *m_tabs;
    QList<Page *> m_pages;
    SummaryLabel *m_summary;
    ElidedLabel *m_recording;
    InstanceWatcher *m_watcher;
    QString m_lastSocket;
    QString m_offeredSocket;
    /// The application to follow by name: the last one attached, or the one --app names.
    QString m_followName;
    Follow m_follow = Follow::SameName;
    /// The first listing only tells what already ran.
    bool m_baseline = false;
    /// No application is attached nor being attached: a new one may be taken.
    bool m_free = true;
    /// Sockets that were running while an application was attached: not new.
    QSet<QString> m_known;
};

#endif

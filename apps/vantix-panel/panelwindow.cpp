#include "panelwindow.h"

#include "connectbar.h"
#include "devicespage.h"
#include "logpage.h"
#include "networkpage.h"
#include "panelsession.h"
#include "peripheralspage.h"
#include "powerpage.h"
#include "resethardware.h"
#include "shortcutbar.h"
#include "storagepage.h"
#include "summarylabel.h"
#include "wifidirectpage.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QPointer>
#include <QPushButton>
#include <QScrollArea>
#include <QStatusBar>
#include <QTabWidget>
#include <QVBoxLayout>

using VantixControl::Client;

PanelWindow::PanelWindow(QWidget *parent)
    : QMainWindow(parent)
    , m_session(new PanelSession(this))
    , m_connectBar(new ConnectBar(this))
    , m_banner(new QLabel(this))
    , m_reattach(new QPushButton(tr("Reattach"), this))
    , m_shortcuts(new ShortcutBar(m_session, this))
    , m_tabs(new QTabWidget(this))
    , m_devices(new DevicesPage(m_session, this))
    , m_power(new PowerPage(m_session, this))
    , m_network(new NetworkPage(m_session, this))
    , m_peripherals(new PeripheralsPage(m_session, this))
    , m_storage(new StoragePage(m_session, this))
    , m_wifiDirect(new WifiDirectPage(m_session, this))
    , m_log(new LogPage(m_session, this))
{
    setWindowTitle(QStringLiteral("vantix-panel"));
    // Pages that grow with the platform (CAN, peers) scroll; the others fit.
    const auto scrolled = [this](QWidget *page) {
        auto *area = new QScrollArea(m_tabs);
        area->setWidgetResizable(true);
        area->setFrameShape(QFrame::NoFrame);
        area->setWidget(page);
        return area;
    };
    m_tabs->addTab(scrolled(m_power), tr("Power"));
    m_tabs->addTab(scrolled(m_network), tr("Network"));
    m_tabs->addTab(scrolled(m_peripherals), tr("Peripherals"));
    m_tabs->addTab(scrolled(m_storage), tr("Storage and USB"));
    m_tabs->addTab(m_wifiDirect, tr("Wi-Fi Direct"));
    m_tabs->addTab(m_devices, tr("Devices"));
    m_tabs->addTab(m_log, tr("Log and scenarios"));

    auto *bannerRow = new QWidget(this);
    bannerRow->setObjectName(QStringLiteral("banner"));
    bannerRow->setStyleSheet(QStringLiteral("#banner { background: #fff3e0; border: 1px solid #ffb74d; }"));
    auto *bannerLayout = new QHBoxLayout(bannerRow);
    bannerLayout->addWidget(m_banner, 1);
    bannerLayout->addWidget(m_reattach);
    m_banner->setWordWrap(true);

    auto *central = new QWidget(this);
    auto *layout = new QVBoxLayout(central);
    layout->addWidget(m_connectBar);
    layout->addWidget(bannerRow);
    layout->addWidget(m_shortcuts);
    layout->addWidget(new ResetHardware(m_session, this));
    layout->addWidget(m_tabs, 1);
    setCentralWidget(central);
    bannerRow->hide();
    statusBar()->addWidget(new SummaryLabel(m_session, this), 1);
    setControlsEnabled(false);

    connect(m_connectBar, &ConnectBar::attachRequested, this, &PanelWindow::attach);
    connect(m_reattach, &QPushButton::clicked, this, &PanelWindow::reattach);
    connect(m_session, &PanelSession::attached, this, [this] {
        const Client::Application a = m_session->application();
        setWindowTitle(QStringLiteral("vantix-panel — %1 (pid %2, %3)").arg(a.name).arg(a.pid).arg(a.platformName));
        m_connectBar->setStatus(tr("attached to %1, pid %2").arg(a.name).arg(a.pid));
        m_banner->parentWidget()->hide();
        setControlsEnabled(true);
    });
    connect(m_session, &PanelSession::detached, this, [this](const QString &reason) {
        setControlsEnabled(false);
        setWindowTitle(QStringLiteral("vantix-panel — detached"));
        m_connectBar->setStatus(tr("detached"), true);
        showBanner(tr("The application has gone or cannot be reached (%1).").arg(reason), true);
        m_connectBar->refresh(m_lastSocket);
    });
}

void PanelWindow::start(const AppSelector &selector)
{
    m_connectBar->refresh();
    QPointer<PanelWindow> self(this);
    selector.resolve([self, this, selector](const QString &socketPath, const QString &error) {
        if (!self) {
            return;
        }
        if (!socketPath.isEmpty()) {
            attach(socketPath);
        } else if (selector.isEmpty()) {
            // None or several: the user chooses in the bar, or starts a simulator.
            showBanner(
                error.section(QLatin1Char('\n'), 0, 0) + tr(" — choose one above, or start a simulator."), false);
        } else {
            showBanner(error.section(QLatin1Char('\n'), 0, 0), false);
        }
    });
}

void PanelWindow::attach(const QString &socketPath)
{
    m_lastSocket = socketPath;
    m_connectBar->setStatus(tr("attaching to %1 …").arg(socketPath));
    m_session->attach(socketPath);
}

void PanelWindow::reattach()
{
    QPointer<PanelWindow> self(this);
    Client::findApplications([self, this](const QList<Client::Application> &applications) {
        if (!self) {
            return;
        }
        for (const Client::Application &a : applications) {
            if (a.socketPath == m_lastSocket) {
                attach(a.socketPath);
                return;
            }
        }
        if (applications.size() == 1) {
            attach(applications.first().socketPath);
            return;
        }
        m_connectBar->refresh(m_lastSocket);
        showBanner(applications.isEmpty() ? tr("No application is running; start one, or a simulator above.")
                                          : tr("%1 applications run: choose one above.").arg(applications.size()),
            true);
    });
}

void PanelWindow::setCurrentPage(int index)
{
    m_tabs->setCurrentIndex(index);
}

QString PanelWindow::bannerText() const
{
    return m_banner->parentWidget()->isHidden() ? QString() : m_banner->text();
}

void PanelWindow::setControlsEnabled(bool enabled)
{
    m_tabs->setEnabled(enabled);
    m_shortcuts->setEnabled(enabled);
}

void PanelWindow::showBanner(const QString &text, bool offerReattach)
{
    m_banner->setText(text);
    m_reattach->setVisible(offerReattach);
    m_banner->parentWidget()->show();
}

#include "panelwindow.h"

#include "connectbar.h"
#include "devicespage.h"
#include "elidedlabel.h"
#include "instancewatcher.h"
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

namespace {
// The pages, in the order of the tabs: the name --tab takes, the tab's title, and whether the page scrolls
// (pages that grow with the platform: CAN, disks) or has its own scrolling parts.
struct PageEntry
{
    const char *name;
    const char *title;
    bool scrolled;
    Page *(*make)(PanelSession *session, QWidget *parent);
};

template<typename T>
Page *makePage(PanelSession *session, QWidget *parent)
{
    return new T(session, parent);
}

const PageEntry pageTable[] = {
    {"power", QT_TRANSLATE_NOOP("PanelWindow", "Power"), true, makePage<PowerPage>},
    {"network", QT_TRANSLATE_NOOP("PanelWindow", "Network"), true, makePage<NetworkPage>},
    {"peripherals", QT_TRANSLATE_NOOP("PanelWindow", "Peripherals"), true, makePage<PeripheralsPage>},
    {"storage", QT_TRANSLATE_NOOP("PanelWindow", "Storage and USB"), true, makePage<StoragePage>},
    {"wifi-direct", QT_TRANSLATE_NOOP("PanelWindow", "Wi-Fi Direct"), false, makePage<WifiDirectPage>},
    {"devices", QT_TRANSLATE_NOOP("PanelWindow", "Devices"), false, makePage<DevicesPage>},
    {"log", QT_TRANSLATE_NOOP("PanelWindow", "Log and scenarios"), false, makePage<LogPage>},
};

template<typename T>
T *findPage(const QList<Page *> &pages)
{
    for (Page *page : pages) {
        if (auto *typed = qobject_cast<T *>(page)) {
            return typed;
        }
    }
    return nullptr;
}
} // namespace

PanelWindow::PanelWindow(QWidget *parent)
    : QMainWindow(parent)
    , m_session(new PanelSession(this))
    , m_connectBar(new ConnectBar(this))
    , m_banner(new QLabel(this))
    , m_reattach(new QPushButton(tr("Reattach"), this))
    , m_shortcuts(new ShortcutBar(m_session, this))
    , m_tabs(new QTabWidget(this))
    , m_summary(new SummaryLabel(m_session, this))
    , m_recording(new ElidedLabel(this))
    , m_watcher(new InstanceWatcher(this))
{
    setWindowTitle(QStringLiteral("vantix-panel"));
    for (const PageEntry &entry : pageTable) {
        Page *page = entry.make(m_session, this);
        m_pages.append(page);
        QWidget *tab = page;
        if (entry.scrolled) {
            auto *area = new QScrollArea(m_tabs);
            area->setWidgetResizable(true);
            area->setFrameShape(QFrame::NoFrame);
            area->setWidget(page);
            tab = area;
        }
        m_tabs->addTab(tab, tr(entry.title));
    }

    auto *bannerRow = new QWidget(this);
    bannerRow->setObjectName(QStringLiteral("banner"));
    bannerRow->setStyleSheet(QStringLiteral("#banner { background: #fff3e0; border: 1px solid #ffb74d; }"));
    auto *bannerLayout = new QHBoxLayout(bannerRow);
    bannerLayout->addWidget(m_banner, 1);
    bannerLayout->addWidget(m_reattach);
    m_banner->setWordWrap(true);
    m_banner->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);

    auto *central = new QWidget(this);
    auto *layout = new QVBoxLayout(central);
    layout->addWidget(m_connectBar);
    layout->addWidget(bannerRow);
    layout->addWidget(m_shortcuts);
    layout->addWidget(new ResetHardware(m_session, this));
    layout->addWidget(m_tabs, 1);
    setCentralWidget(central);
    bannerRow->hide();
    statusBar()->addWidget(m_summary, 1);
    // A recording runs until it is stopped: the sign stays in sight whatever page is open.
    m_recording->setColour(QColor(0xc6, 0x28, 0x28));
    m_recording->setBold(true);
    m_recording->setObjectName(QStringLiteral("recording"));
    statusBar()->addPermanentWidget(m_recording);
    m_recording->hide();
    setControlsEnabled(false);

    connect(m_connectBar, &ConnectBar::attachRequested, this, &PanelWindow::attach);
    connect(m_reattach, &QPushButton::clicked, this, [this] {
        if (m_offeredSocket.isEmpty()) {
            reattach();
        } else {
            attach(m_offeredSocket);
        }
    });
    connect(m_session, &PanelSession::attached, this, [this] {
        const Client::Application a = m_session->application();
        setWindowTitle(QStringLiteral("vantix-panel — %1 (pid %2, %3)").arg(a.name).arg(a.pid).arg(a.platformName));
        m_connectBar->setStatus(tr("attached to %1, pid %2").arg(a.name).arg(a.pid));
        m_connectBar->refresh(m_session->socketPath());
        m_banner->parentWidget()->hide();
        m_followName = a.name;
        setControlsEnabled(true);
        // What runs now is not new when this one goes.
        m_watcher->scan();
    });
    connect(m_session, &PanelSession::detached, this, [this](const QString &reason) {
        m_free = true;
        setControlsEnabled(false);
        setWindowTitle(QStringLiteral("vantix-panel — detached"));
        m_connectBar->setStatus(tr("detached"), true);
        showBanner(tr("The application has gone or cannot be reached (%1).").arg(reason), true);
        m_connectBar->refresh(m_lastSocket);
    });
    connect(m_session, &PanelSession::recordingChanged, this, [this](const QString &file) {
        m_recording->setText(file.isEmpty() ? QString() : tr("● REC %1").arg(file));
        m_recording->setVisible(!file.isEmpty());
    });
    connect(m_watcher, &InstanceWatcher::applicationsChanged, this, &PanelWindow::onApplications);
}

QStringList PanelWindow::pageNames()
{
    QStringList names;
    for (const PageEntry &entry : pageTable) {
        names.append(QLatin1String(entry.name));
    }
    return names;
}

DevicesPage *PanelWindow::devicesPage() const
{
    return findPage<DevicesPage>(m_pages);
}

PowerPage *PanelWindow::powerPage() const
{
    return findPage<PowerPage>(m_pages);
}

NetworkPage *PanelWindow::networkPage() const
{
    return findPage<NetworkPage>(m_pages);
}

PeripheralsPage *PanelWindow::peripheralsPage() const
{
    return findPage<PeripheralsPage>(m_pages);
}

StoragePage *PanelWindow::storagePage() const
{
    return findPage<StoragePage>(m_pages);
}

WifiDirectPage *PanelWindow::wifiDirectPage() const
{
    return findPage<WifiDirectPage>(m_pages);
}

LogPage *PanelWindow::logPage() const
{
    return findPage<LogPage>(m_pages);
}

void PanelWindow::start(const AppSelector &selector)
{
    m_followName = selector.name;
    m_free = false;
    m_connectBar->refresh();
    QPointer<PanelWindow> self(this);
    selector.resolve([self, this, selector](const QString &socketPath, const QString &error) {
        if (!self) {
            return;
        }
        if (!socketPath.isEmpty()) {
            attach(socketPath);
            return;
        }
        m_free = true;
        if (selector.isEmpty()) {
            // None or several: the user chooses in the bar, or starts a simulator.
            showBanner(
                error.section(QLatin1Char('\n'), 0, 0) + tr(" — choose one above, or start a simulator."), false);
        } else {
            showBanner(error.section(QLatin1Char('\n'), 0, 0), false);
        }
        m_watcher->scan();
    });
}

void PanelWindow::attach(const QString &socketPath)
{
    m_free = false;
    m_lastSocket = socketPath;
    m_offeredSocket.clear();
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

void PanelWindow::onApplications(const QList<Client::Application> &applications)
{
    if (!m_free || !m_baseline) {
        m_baseline = true;
        for (const Client::Application &a : applications) {
            m_known.insert(a.socketPath);
        }
        return;
    }
    m_connectBar->refresh(m_lastSocket);
    QList<Client::Application> fresh;
    for (const Client::Application &a : applications) {
        if (!m_known.contains(a.socketPath)) {
            fresh.append(a);
        }
        m_known.insert(a.socketPath);
    }
    for (const Client::Application &a : qAsConst(fresh)) {
        // The application the panel drove, started again (or any one, with --follow).
        if (m_follow == Follow::Any ||
            (m_follow == Follow::SameName && !m_followName.isEmpty() && a.name == m_followName)) {
            attach(a.socketPath);
            return;
        }
    }
    if (!fresh.isEmpty()) {
        const Client::Application &a = fresh.last();
        showBanner(tr("%1 (pid %2, %3) has started.").arg(a.name).arg(a.pid).arg(a.platformName), true, a.socketPath);
    }
}

bool PanelWindow::setCurrentPage(const QString &name)
{
    const int index = pageNames().indexOf(name.toLower());
    if (index < 0) {
        return false;
    }
    m_tabs->setCurrentIndex(index);
    return true;
}

QString PanelWindow::bannerText() const
{
    return m_banner->parentWidget()->isHidden() ? QString() : m_banner->text();
}

QString PanelWindow::summaryText() const
{
    return m_summary->text();
}

QString PanelWindow::recordingText() const
{
    return m_recording->isHidden() ? QString() : m_recording->text();
}

void PanelWindow::setControlsEnabled(bool enabled)
{
    m_tabs->setEnabled(enabled);
    m_shortcuts->setEnabled(enabled);
}

void PanelWindow::showBanner(const QString &text, bool offerButton, const QString &offerSocket)
{
    m_offeredSocket = offerSocket;
    m_banner->setText(text);
    m_reattach->setText(offerSocket.isEmpty() ? tr("Reattach") : tr("Attach"));
    m_reattach->setVisible(offerButton);
    m_banner->parentWidget()->show();
}

#include "connectbar.h"

#include "elidedlabel.h"
#include "flowlayout.h"
#include "simlauncher.h"

#include <vantixcontrol/client/client.h>
#include <vantix/platformnames.h>

#include <QComboBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QPointer>
#include <QPushButton>
#include <QToolButton>

using VantixControl::Client;

ConnectBar::ConnectBar(QWidget *parent)
    : QWidget(parent)
    , m_applications(new QComboBox(this))
    , m_attach(new QPushButton(tr("Attach"), this))
    , m_platforms(new QComboBox(this))
    , m_start(new QPushButton(tr("Start simulator"), this))
    , m_status(new ElidedLabel(this))
    , m_launcher(new SimLauncher(this))
{
    // Long names elide: the bar fits an 800 pixel window.
    m_applications->setMinimumContentsLength(20);
    m_applications->setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
    m_applications->setToolTip(tr("The running applications that use Vantix"));
    auto *reload = new QToolButton(this);
    reload->setText(QStringLiteral("⟳"));
    reload->setToolTip(tr("List the running applications again"));
    m_platforms->addItems(TQ_SPAPI::PlatformNames::names());
    m_platforms->setCurrentText(QStringLiteral("tolvex-plus"));
    m_platforms->setToolTip(tr("The platform of a new simulator"));
    m_platforms->setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
    m_platforms->setMinimumContentsLength(10);

    // Three groups that wrap on a narrow window: the running applications, a new simulator, the state.
    const auto group = [this](const QList<QWidget *> &widgets) {
        auto *box = new QWidget(this);
        auto *row = new QHBoxLayout(box);
        row->setContentsMargins(0, 0, 8, 0);
        for (QWidget *w : widgets) {
            w->setParent(box);
            row->addWidget(w);
        }
        return box;
    };
    auto *layout = new FlowLayout(this);
    layout->setLastFills(true);
    layout->addWidget(group({new QLabel(tr("Application:"), this), m_applications, reload, m_attach}));
    layout->addWidget(group({m_platforms, m_start}));
    layout->addWidget(m_status);

    connect(reload, &QToolButton::clicked, this, [this] { refresh(m_applications->currentData().toString()); });
    connect(m_attach, &QPushButton::clicked, this, [this] {
        const QString socket = m_applications->currentData().toString();
        if (!socket.isEmpty()) {
            Q_EMIT attachRequested(socket);
        }
    });
    connect(m_start, &QPushButton::clicked, this, &ConnectBar::startSimulator);
    connect(m_launcher, &SimLauncher::ready, this, [this](const QString &socket) {
        m_start->setEnabled(true);
        refresh(socket);
        Q_EMIT attachRequested(socket);
    });
    connect(m_launcher, &SimLauncher::failed, this, [this](const QString &message) {
        m_start->setEnabled(true);
        setStatus(message, true);
    });
}

void ConnectBar::startSimulator()
{
    m_start->setEnabled(false);
    setStatus(tr("starting vantix-sim --platform %1 …").arg(m_platforms->currentText()));
    m_launcher->start(m_platforms->currentText());
}

void ConnectBar::refresh(const QString &prefer)
{
    // The search outlives a window closed meanwhile: its answer is then dropped.
    QPointer<ConnectBar> self(this);
    Client::findApplications([self, this, prefer](const QList<Client::Application> &applications) {
        if (!self) {
            return;
        }
        m_applications->clear();
        for (const Client::Application &a : applications) {
            m_applications->addItem(
                QStringLiteral("%1 (pid %2, %3)").arg(a.name).arg(a.pid).arg(a.platformName), a.socketPath);
            m_applications->setItemData(m_applications->count() - 1, a.socketPath, Qt::ToolTipRole);
        }
        const int index = m_applications->findData(prefer);
        if (index >= 0) {
            m_applications->setCurrentIndex(index);
        }
        m_attach->setEnabled(!applications.isEmpty());
        Q_EMIT refreshed(applications.size());
    });
}

void ConnectBar::setStatus(const QString &text, bool problem)
{
    m_status->setText(text);
    m_status->setColour(problem ? QColor(0xc6, 0x28, 0x28) : QColor());
}

QString ConnectBar::statusText() const
{
    return m_status->text();
}

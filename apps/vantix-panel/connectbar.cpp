#include "connectbar.h"

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
    , m_status(new QLabel(this))
    , m_launcher(new SimLauncher(this))
{
    m_applications->setMinimumContentsLength(24);
    m_applications->setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
    m_applications->setToolTip(tr("The running applications that use Vantix"));
    auto *reload = new QToolButton(this);
    reload->setText(QStringLiteral("⟳"));
    reload->setToolTip(tr("List the running applications again"));
    m_platforms->addItems(TQ_SPAPI::PlatformNames::names());
    m_platforms->setCurrentText(QStringLiteral("tolvex-plus"));
    m_platforms->setToolTip(tr("The platform of a new simulator"));

    auto *layout = new QHBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(new QLabel(tr("Application:"), this));
    layout->addWidget(m_applications);
    layout->addWidget(reload);
    layout->addWidget(m_attach);
    layout->addSpacing(16);
    layout->addWidget(m_platforms);
    layout->addWidget(m_start);
    layout->addSpacing(16);
    layout->addWidget(m_status, 1);

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
    m_status->setStyleSheet(problem ? QStringLiteral("color: #c62828;") : QString());
}

QString ConnectBar::statusText() const
{
    return m_status->text();
}

#include "storagepage.h"

#include "methodrow.h"
#include "panelsession.h"

#include <vantixcontrol/protocol/event.h>

#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QJsonArray>
#include <QJsonObject>
#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>

namespace {
const QString otgA = QStringLiteral("ID_USB_OTG_A");
const QString otgB = QStringLiteral("ID_USB_OTG_B");
const QString usb = QStringLiteral("ID_USB");
const QString stick = QStringLiteral("ID_DISK_USB");

bool isDisk(const QJsonObject &target)
{
    return target.value(QLatin1String("class")).toString().endsWith(QLatin1String("IDisk"));
}
} // namespace

StoragePage::StoragePage(PanelSession *session, QWidget *parent)
    : Page(session, parent)
    , m_disks(new QGroupBox(tr("Disks"), this))
{
    auto *grid = new QGridLayout(this);
    grid->addWidget(portBox(tr("USB OTG port A"), otgA,
                        {commandButton(tr("Plug"), QStringLiteral("addotga")),
                            commandButton(tr("Activate"), QStringLiteral("call ID_USB_OTG_A setAbility F_ACTIVE")),
                            commandButton(tr("Unplug"), QStringLiteral("rmotga"))}),
        0, 0);
    grid->addWidget(portBox(tr("USB OTG port B"), otgB,
                        {commandButton(tr("Plug"), QStringLiteral("addotgb")),
                            commandButton(tr("Activate"), QStringLiteral("activateotgb")),
                            commandButton(tr("Unplug"), QStringLiteral("rmotgb"))}),
        0, 1);
    grid->addWidget(portBox(tr("USB device"), usb,
                        {commandButton(tr("Plug"), QStringLiteral("plug ID_USB")),
                            commandButton(tr("Unplug"), QStringLiteral("unplug ID_USB"))}),
        1, 0);
    grid->addWidget(portBox(tr("USB stick (comes with an active port A)"), stick, {}), 1, 1);
    new QVBoxLayout(m_disks);
    grid->addWidget(m_disks, 2, 0, 1, 2);
    grid->setRowStretch(3, 1);
    grid->addWidget(statusLabel(), 4, 0, 1, 2);

    connect(session, &PanelSession::valueChanged, this, [this](const QString &target, const QString &property) {
        if (property == QLatin1String("status")) {
            updateState(target);
        }
    });
    // A disk's failures come as its error signal, not as a property: the last one shows on its row.
    connect(session, &PanelSession::eventReceived, this, [this](const VantixControl::Event &event) {
        if (event.signal == QLatin1String("error")) {
            if (auto *label = m_disks->findChild<QLabel *>(event.object + QStringLiteral(".error"))) {
                label->setText(event.argumentsText());
            }
        }
    });
    connect(session, &PanelSession::schemaChanged, this, [this] {
        for (const QString &target : {otgA, otgB, usb, stick}) {
            updateState(target);
        }
        rebuildDisks();
    });
}

QString StoragePage::stateText(const QString &target) const
{
    if (auto *label = findChild<QLabel *>(target)) {
        return label->text();
    }
    return QString();
}

QGroupBox *StoragePage::portBox(const QString &title, const QString &target, const QList<QWidget *> &buttons)
{
    auto *box = new QGroupBox(QStringLiteral("%1 (%2)").arg(title, target), this);
    auto *layout = new QHBoxLayout(box);
    auto *state = new QLabel(tr("unplugged"), box);
    state->setObjectName(target);
    state->setMinimumWidth(160);
    layout->addWidget(state, 1);
    for (QWidget *button : buttons) {
        button->setParent(box);
        layout->addWidget(button);
    }
    return box;
}

void StoragePage::updateState(const QString &target)
{
    auto *label = findChild<QLabel *>(target);
    if (!label) {
        return;
    }
    if (m_session->target(target).isEmpty()) {
        label->setText(tr("unplugged"));
        return;
    }
    const PropertyValue status = m_session->value(target, QStringLiteral("status"));
    label->setText(tr("plugged: %1").arg(status.known ? status.text : QStringLiteral("…")));
}

void StoragePage::rebuildDisks()
{
    QLayout *layout = m_disks->layout();
    while (QLayoutItem *item = layout->takeAt(0)) {
        delete item->widget();
        delete item;
    }
    for (const QString &name : m_session->targetNames()) {
        const QJsonObject target = m_session->target(name);
        if (!isDisk(target)) {
            continue;
        }
        auto *row = new QWidget(m_disks);
        auto *rowLayout = new QHBoxLayout(row);
        rowLayout->setContentsMargins(0, 0, 0, 0);
        auto *state = new QLabel(row);
        state->setObjectName(name);
        state->setMinimumWidth(320);
        rowLayout->addWidget(new QLabel(QStringLiteral("<b>%1</b>").arg(name), row));
        rowLayout->addWidget(state, 1);
        // The disk's own methods: format, mount, unmount, each with its answer (errors included).
        for (const QJsonValue &m : target.value(QLatin1String("methods")).toArray()) {
            const QString method = m.toObject().value(QLatin1String("name")).toString();
            if (method == QLatin1String("format") || method == QLatin1String("mount") ||
                method == QLatin1String("unmount")) {
                rowLayout->addWidget(new MethodRow(m_session, name, m.toObject(), row));
            }
        }
        auto *error = new QLabel(row);
        error->setObjectName(name + QStringLiteral(".error"));
        error->setStyleSheet(QStringLiteral("color: #c62828;"));
        rowLayout->addWidget(error);
        layout->addWidget(row);
        updateState(name);
    }
}

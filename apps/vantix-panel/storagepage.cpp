#include "storagepage.h"

#include "columnslayout.h"
#include "feedbacklabel.h"
#include "panelsession.h"

#include <vantixcontrol/protocol/words.h>

#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QJsonArray>
#include <QJsonObject>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QVBoxLayout>

namespace Words = VantixControl::Words;

namespace {
// A disk's F_ACTIVE is its mount state, which has a line of its own.
QString diskFlags(PanelSession *session, const QString &target)
{
    QStringList flags = session->value(target, QStringLiteral("status")).text.split(QLatin1Char('|'));
    flags.removeAll(QStringLiteral("F_ACTIVE"));
    return session->enumText(QStringLiteral("DeviceFlags"), flags.join(QLatin1Char('|')));
}

const QString otgA = QStringLiteral("ID_USB_OTG_A");
const QString otgB = QStringLiteral("ID_USB_OTG_B");
const QString usb = QStringLiteral("ID_USB");
const QString stick = QStringLiteral("ID_DISK_USB");
const QString statusProperty = QStringLiteral("status");

bool isDisk(const QJsonObject &target)
{
    return target.value(QLatin1String("class")).toString().endsWith(QLatin1String("IDisk"));
}

QLabel *stateLabel(QWidget *parent)
{
    auto *label = new QLabel(parent);
    label->setWordWrap(true);
    label->setTextInteractionFlags(Qt::TextSelectableByMouse);
    return label;
}
} // namespace

StoragePage::StoragePage(PanelSession *session, QWidget *parent)
    : Page(session, parent)
    , m_disks(new QGroupBox(tr("Disks"), this))
{
    auto *layout = new QVBoxLayout(this);
    auto *boxes = new ColumnsLayout(2);
    boxes->setSpacing(layout->spacing());
    m_ports[0].target = otgA;
    m_ports[1].target = otgB;
    m_ports[2].target = usb;
    boxes->addWidget(portBox(m_ports[0], tr("USB OTG port A"), QStringLiteral("addotga"),
        Words::join({QStringLiteral("call"), otgA, QStringLiteral("setAbility"), QStringLiteral("F_ACTIVE")}),
        QStringLiteral("rmotga")));
    boxes->addWidget(portBox(m_ports[1], tr("USB OTG port B"), QStringLiteral("addotgb"),
        QStringLiteral("activateotgb"), QStringLiteral("rmotgb")));
    boxes->addWidget(portBox(m_ports[2], tr("USB device"), Words::join({QStringLiteral("plug"), usb}), QString(),
        Words::join({QStringLiteral("unplug"), usb})));
    boxes->addWidget(stickBox());
    layout->addLayout(boxes);
    m_diskRows = new QVBoxLayout(m_disks);
    layout->addWidget(m_disks);
    layout->addStretch(1);

    connect(session, &PanelSession::valueChanged, this, [this](const QString &target, const QString &property) {
        if (property != statusProperty) {
            return;
        }
        for (Port &port : m_ports) {
            if (port.target == target) {
                updatePort(port);
            }
        }
        if (target == stick) {
            updateStick();
        }
        updateDisk(target);
    });
    connect(session, &PanelSession::valueChanged, this, [this](const QString &target, const QString &property) {
        if (target == stick && property == QLatin1String("path")) {
            updateStick();
        }
    });
    connect(session, &PanelSession::schemaChanged, this, [this] {
        for (Port &port : m_ports) {
            updatePort(port);
        }
        updateStick();
        rebuildDisks();
    });
}

QString StoragePage::stateText(const QString &target) const
{
    if (target == stick) {
        return stickText();
    }
    for (const Port &port : m_ports) {
        if (port.target == target) {
            return port.state->text();
        }
    }
    return QString();
}

QString StoragePage::stickText() const
{
    return m_stick->text();
}

QPushButton *StoragePage::button(const QString &target, const QString &line) const
{
    for (QPushButton *b : findChildren<QPushButton *>()) {
        if (b->property("line").toString() == line && b->property("target").toString() == target) {
            return b;
        }
    }
    return nullptr;
}

QGroupBox *StoragePage::portBox(
    Port &port, const QString &title, const QString &plugLine, const QString &activateLine, const QString &unplugLine)
{
    port.box = new QGroupBox(title, this);
    port.box->setToolTip(port.target);
    auto *layout = new QVBoxLayout(port.box);
    port.state = stateLabel(port.box);
    layout->addWidget(port.state);
    FeedbackLabel *portFeedback = feedback({port.target});
    port.plug = commandButton(tr("Plug"), plugLine, portFeedback);
    QList<QWidget *> buttons{port.plug};
    if (!activateLine.isEmpty()) {
        port.activate = commandButton(tr("Activate"), activateLine, portFeedback);
        buttons.append(port.activate);
    }
    port.unplug = commandButton(tr("Unplug"), unplugLine, portFeedback);
    buttons.append(port.unplug);
    for (QWidget *b : qAsConst(buttons)) {
        b->setProperty("target", port.target);
    }
    layout->addWidget(controlRow(buttons, portFeedback));
    layout->addStretch(1);
    updatePort(port);
    return port.box;
}

QGroupBox *StoragePage::stickBox()
{
    auto *box = new QGroupBox(tr("USB stick"), this);
    box->setToolTip(tr("%1: it comes with an active OTG port A").arg(stick));
    auto *layout = new QVBoxLayout(box);
    m_stick = stateLabel(box);
    layout->addWidget(m_stick);
    FeedbackLabel *stickFeedback = feedback({stick});
    m_mount = commandButton(
        tr("Mount"), Words::join({QStringLiteral("call"), stick, QStringLiteral("mount")}), stickFeedback);
    m_unmount = commandButton(
        tr("Unmount"), Words::join({QStringLiteral("call"), stick, QStringLiteral("unmount")}), stickFeedback);
    m_mount->setProperty("target", stick);
    m_unmount->setProperty("target", stick);
    layout->addWidget(controlRow({m_mount, m_unmount}, stickFeedback));
    layout->addStretch(1);
    updateStick();
    return box;
}

void StoragePage::updatePort(Port &port)
{
    const bool present = !m_session->target(port.target).isEmpty();
    const PropertyValue status = m_session->value(port.target, statusProperty);
    const bool active = m_session->hasFlag(port.target, statusProperty, QStringLiteral("F_ACTIVE"));
    port.state->setText(!present ? tr("Not plugged")
            : !status.known      ? tr("Plugged")
                                 : tr("Plugged: %1").arg(m_session->valueText(port.target, statusProperty)));
    port.state->setToolTip(present ? status.text : QString());
    // What cannot apply now is disabled, and its tooltip says why.
    port.plug->setEnabled(!present);
    port.plug->setToolTip(present ? tr("%1 is plugged").arg(port.target) : port.plug->property("line").toString());
    port.unplug->setEnabled(present);
    port.unplug->setToolTip(
        present ? port.unplug->property("line").toString() : tr("%1 is not plugged").arg(port.target));
    if (port.activate) {
        port.activate->setEnabled(present && !active);
        port.activate->setToolTip(!present ? tr("%1 is not plugged: plug it first").arg(port.target)
                : active                   ? tr("%1 is active").arg(port.target)
                                           : port.activate->property("line").toString());
    }
}

void StoragePage::updateStick()
{
    const bool present = !m_session->target(stick).isEmpty();
    const PropertyValue status = m_session->value(stick, statusProperty);
    const bool mounted = m_session->hasFlag(stick, statusProperty, QStringLiteral("F_ACTIVE"));
    if (!present) {
        m_stick->setText(tr("Not plugged: plug and activate OTG port A to bring it"));
        m_stick->setToolTip(QString());
    } else if (!status.known) {
        m_stick->setText(tr("Plugged"));
    } else {
        const QString path = m_session->value(stick, QStringLiteral("path")).value.toString();
        m_stick->setText(tr("Plugged: %1\n%2\nFolder: %3")
                             .arg(diskFlags(m_session, stick), mounted ? tr("Mounted") : tr("Not mounted"),
                                 path.isEmpty() ? tr("none") : path));
        m_stick->setToolTip(status.text);
    }
    m_mount->setEnabled(present && !mounted);
    m_unmount->setEnabled(present && mounted);
    const QString why = !present ? tr("The stick is not plugged") : QString();
    m_mount->setToolTip(!why.isEmpty() ? why
            : mounted                  ? tr("The stick is mounted")
                                       : m_mount->property("line").toString());
    m_unmount->setToolTip(!why.isEmpty() ? why
            : !mounted                   ? tr("The stick is not mounted")
                                         : m_unmount->property("line").toString());
}

void StoragePage::rebuildDisks()
{
    QStringList names;
    for (const QString &name : m_session->targetNames()) {
        if (isDisk(m_session->target(name))) {
            names.append(name);
        }
    }
    // The same disks keep their rows, and what is typed in them.
    if (names == m_diskNames && !names.isEmpty()) {
        for (const QString &name : qAsConst(names)) {
            updateDisk(name);
        }
        return;
    }
    m_diskNames = names;
    while (QLayoutItem *item = m_diskRows->takeAt(0)) {
        delete item->widget();
        delete item;
    }
    m_diskStates.clear();
    for (const QString &name : qAsConst(names)) {
        auto *row = new QWidget(m_disks);
        auto *rowLayout = new QVBoxLayout(row);
        rowLayout->setContentsMargins(0, 0, 0, 0);
        auto *title = new QLabel(QStringLiteral("<b>%1</b>").arg(name), row);
        auto *state = stateLabel(row);
        m_diskStates.insert(name, state);
        auto *heading = new QHBoxLayout;
        heading->addWidget(title);
        heading->addWidget(state, 1);
        rowLayout->addLayout(heading);

        FeedbackLabel *diskFeedback = feedback({name});
        auto *size = new QLineEdit(row);
        size->setPlaceholderText(tr("size in bytes"));
        size->setMaximumWidth(fontMetrics().averageCharWidth() * 16);
        QPushButton *format = commandButton(
            tr("Format"),
            [this, name, size, diskFeedback]() -> QString {
                bool ok = false;
                const uint bytes = size->text().trimmed().toUInt(&ok);
                if (!ok) {
                    diskFeedback->showProblem(tr("The size is a whole number of bytes, such as 536870912"));
                    return QString();
                }
                return Words::join({QStringLiteral("call"), name, QStringLiteral("format"), QString::number(bytes)});
            },
            diskFeedback);
        format->setToolTip(tr("Formats the disk: what it holds is gone"));
        QPushButton *mount = commandButton(
            tr("Mount"), Words::join({QStringLiteral("call"), name, QStringLiteral("mount")}), diskFeedback);
        QPushButton *unmount = commandButton(
            tr("Unmount"), Words::join({QStringLiteral("call"), name, QStringLiteral("unmount")}), diskFeedback);
        for (QPushButton *b : {format, mount, unmount}) {
            b->setProperty("target", name);
        }
        rowLayout->addWidget(controlRow({size, format, mount, unmount}, diskFeedback));
        m_diskRows->addWidget(row);
        updateDisk(name);
    }
    if (names.isEmpty()) {
        m_diskRows->addWidget(new QLabel(tr("no disk"), m_disks));
    }
}

void StoragePage::updateDisk(const QString &target)
{
    QLabel *state = m_diskStates.value(target);
    if (!state) {
        return;
    }
    const PropertyValue status = m_session->value(target, statusProperty);
    const bool mounted = m_session->hasFlag(target, statusProperty, QStringLiteral("F_ACTIVE"));
    state->setText(!status.known
            ? QStringLiteral("…")
            : tr("%1 · %2").arg(diskFlags(m_session, target), mounted ? tr("mounted") : tr("not mounted")));
    state->setToolTip(status.text);
}

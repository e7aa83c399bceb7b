#ifndef VANTIXPANEL_STORAGEPAGE_H
#define VANTIXPANEL_STORAGEPAGE_H

#include "page.h"

#include <QMap>

class FeedbackLabel;
class QGroupBox;
class QLabel;
class QPushButton;
class QVBoxLayout;

/// The USB OTG ports, the USB device, the stick, and every disk with format, mount and unmount.
class StoragePage : public Page
{
    Q_OBJECT

public:
    explicit StoragePage(PanelSession *session, QWidget *parent = nullptr);

    /// What the page shows of a port, the USB device or the stick: "Not plugged", or its state in words.
    QString stateText(const QString &target) const;
    /// The stick's box: its status, folder and mount state, or that it is not plugged.
    QString stickText() const;
    /// The button of box @p target that runs @p line.
    QPushButton *button(const QString &target, const QString &line) const;

private:
    struct Port
    {
        QString target;
        QGroupBox *box = nullptr;
        QLabel *state = nullptr;
        QPushButton *plug = nullptr;
        QPushButton *activate = nullptr;
        QPushButton *unplug = nullptr;
    };
    QGroupBox *portBox(Port &port, const QString &title, const QString &plugLine, const QString &activateLine,
        const QString &unplugLine);
    QGroupBox *stickBox();
    void updatePort(Port &port);
    void updateStick();
    void rebuildDisks();
    void updateDisk(const QString &target);

    Port m_ports[3];
    QLabel *m_stick = nullptr;
    QPushButton *m_mount = nullptr;
    QPushButton *m_unmount = nullptr;
    QGroupBox *m_disks;
    QVBoxLayout *m_diskRows = nullptr;
    QMap<QString, QLabel *> m_diskStates;
    QStringList m_diskNames;
};

#endif

#ifndef VANTIXPANEL_STORAGEPAGE_H
#define VANTIXPANEL_STORAGEPAGE_H

#include "page.h"

class QGroupBox;
class QLabel;

/// The USB OTG ports, the USB device, the stick, and every disk with format, mount and unmount.
class StoragePage : public Page
{
    Q_OBJECT

public:
    explicit StoragePage(PanelSession *session, QWidget *parent = nullptr);

    /// What the page shows of @p target: its status flags, or "unplugged".
    QString stateText(const QString &target) const;

private:
    QGroupBox *portBox(const QString &title, const QString &target, const QList<QWidget *> &buttons);
    void updateState(const QString &target);
    void rebuildDisks();

    QGroupBox *m_disks;
};

#endif

#ifndef VANTIXPANEL_DEVICESPAGE_H
#define VANTIXPANEL_DEVICESPAGE_H

#include "page.h"

class QScrollArea;
class QTreeWidget;

/**
 * Every target the application has (the System, each device, hot-plugged
 * ones included, and the other objects), with all properties, an editor for
 * those that are writable and a button per method. Built from the schema
 * alone, so a new device class needs nothing here.
 */
class DevicesPage : public Page
{
    Q_OBJECT

public:
    explicit DevicesPage(PanelSession *session, QWidget *parent = nullptr);

    /// Shows @p target on the right.
    void select(const QString &target);
    QString selected() const { return m_shown; }

private:
    void rebuildList();
    void showTarget(const QString &target);
    void updateStatus(const QString &target);

    QTreeWidget *m_list;
    QScrollArea *m_detail;
    QString m_shown;
};

#endif

#ifndef VANTIXPANEL_TARGETFORM_H
#define VANTIXPANEL_TARGETFORM_H

#include "propertyeditor.h"

#include <QWidget>

class PanelSession;

/// Every property of one target, live and editable where writable, and a row per method; from the schema alone.
class TargetForm : public QWidget
{
    Q_OBJECT

public:
    TargetForm(PanelSession *session, const QString &target, bool withMethods, PropertyEditor::Naming naming,
        QWidget *parent = nullptr);
};

#endif

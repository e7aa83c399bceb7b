#include "targetform.h"

#include "methodrow.h"
#include "panelsession.h"

#include <QFormLayout>
#include <QJsonArray>
#include <QJsonObject>
#include <QLabel>

TargetForm::TargetForm(
    PanelSession *session, const QString &target, bool withMethods, PropertyEditor::Naming naming, QWidget *parent)
    : QWidget(parent)
{
    const QJsonObject schema = session->target(target);
    auto *form = new QFormLayout(this);
    form->setFieldGrowthPolicy(QFormLayout::AllNonFixedFieldsGrow);
    // Names above their fields on a narrow page.
    form->setRowWrapPolicy(QFormLayout::WrapLongRows);
    QStringList shown;
    for (const QJsonValue &p : schema.value(QLatin1String("properties")).toArray()) {
        const QString name = p.toObject().value(QLatin1String("name")).toString();
        if (shown.contains(name)) {
            continue; // a property the class redeclares
        }
        shown.append(name);
        auto *editor = new PropertyEditor(session, target, name, naming, this);
        editor->setObjectName(name);
        form->addRow(name, editor);
    }
    const QJsonArray methods = schema.value(QLatin1String("methods")).toArray();
    if (withMethods && !methods.isEmpty()) {
        form->addRow(new QLabel(tr("<b>Methods</b>"), this));
        for (const QJsonValue &m : methods) {
            form->addRow(new MethodRow(session, target, m.toObject(), naming, this));
        }
    }
}

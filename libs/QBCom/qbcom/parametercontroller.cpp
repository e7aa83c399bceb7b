#include "parametercontroller.h"

#include "qbparameter.h"

namespace TQ_QBCom {

ParameterController::ParameterController(QObject *parent)
    : QObject(parent)
{
}

ParameterController::~ParameterController() = default;

QBParameter *ParameterController::addParameter(QBParameter *parameter)
{
    if (!parameter) {
        return nullptr;
    }
    parameter->setParent(this);
    m_parameters.append(parameter);
    // A parameter deleted by someone else must not linger as a dangling entry.
    connect(parameter, &QObject::destroyed, this, [this](QObject *object) {
        m_parameters.removeAll(static_cast<QBParameter *>(object));
    });
    return parameter;
}

QBParameter *ParameterController::parameter(const QString &name) const
{
    for (QBParameter *p : m_parameters) {
        if (p->name() == name) {
            return p;
        }
    }
    return nullptr;
}

QList<QBParameter *> ParameterController::parameters() const
{
    return m_parameters;
}

bool ParameterController::setValue(const QString &name, const QVariant &value)
{
    bool found = false;
    // Copy: a receiver may add parameters while we deliver.
    const QList<QBParameter *> all = m_parameters;
    for (QBParameter *p : all) {
        if (p->name() == name) {
            p->setValue(value);
            found = true;
        }
    }
    return found;
}

} // namespace TQ_QBCom

#include "parametercontroller.h"

#include "qbparameter.h"

#include <algorithm>

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
    // By now it is only a QObject, so compare addresses rather than cast.
    connect(parameter, &QObject::destroyed, this, [this](QObject *object) {
        m_parameters.erase(std::remove_if(m_parameters.begin(), m_parameters.end(),
                                          [object](QBParameter *p) { return static_cast<QObject *>(p) == object; }),
                           m_parameters.end());
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

#include "qbparameter.h"

namespace TQ_QBCom {

QBParameter::QBParameter(const QString &name, const QVariant &value, const QVariant &metadata, QObject *parent)
    : QObject(parent)
    , m_name(name)
    , m_value(value)
    , m_metadata(metadata)
{
    setObjectName(name);
}

QBParameter::~QBParameter() = default;

QString QBParameter::name() const
{
    return m_name;
}

QVariant QBParameter::value() const
{
    return m_value;
}

QVariant QBParameter::metadata() const
{
    return m_metadata;
}

void QBParameter::setValue(const QVariant &value)
{
    m_value = value;
    Q_EMIT valueChanged(value.toString());
}

} // namespace TQ_QBCom

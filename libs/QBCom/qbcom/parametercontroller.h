#ifndef QBCOM_PARAMETERCONTROLLER_H
#define QBCOM_PARAMETERCONTROLLER_H

#include <qbcom/qbcom_export.h>

#include <QList>
#include <QObject>

class QVariant;

namespace TQ_QBCom {

class QBParameter;

/**
 * Owns an application's parameters and lets any part of it write them by
 * name. Several parameters may share a name; a write by name reaches all.
 */
class QBCOM_EXPORT ParameterController : public QObject
{
    Q_OBJECT

public:
    explicit ParameterController(QObject *parent = nullptr);
    ~ParameterController() override;

    /// Takes ownership of @p parameter and returns it, or null for null.
    QBParameter *addParameter(QBParameter *parameter);

    /// The first parameter called @p name, or null.
    QBParameter *parameter(const QString &name) const;
    QList<QBParameter *> parameters() const;

    /// Writes @p value to every parameter called @p name; false if none is.
    bool setValue(const QString &name, const QVariant &value);

private:
    QList<QBParameter *> m_parameters;
};

} // namespace TQ_QBCom

#endif

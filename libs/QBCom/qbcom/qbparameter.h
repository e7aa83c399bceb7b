#ifndef QBCOM_QBPARAMETER_H
#define QBCOM_QBPARAMETER_H

#include <qbcom/qbcom_export.h>

#include <QObject>
#include <QVariant>

namespace TQ_QBCom {

/**
 * A named value that parts of an application share.
 *
 * A parameter doubles as a command channel: every setValue() announces the
 * value, also when it repeats, so the same command can be sent twice in a row.
 */
class QBCOM_EXPORT QBParameter : public QObject
{
    Q_OBJECT
    Q_PROPERTY(QString name READ name CONSTANT)
    Q_PROPERTY(QVariant value READ value WRITE setValue NOTIFY valueChanged)

public:
    /**
     * @param value the initial value
     * @param metadata free for the owner of the parameter (a default, a
     *        description); the parameter itself never interprets it
     */
    QBParameter(const QString &name, const QVariant &value, const QVariant &metadata = QVariant(),
                QObject *parent = nullptr);
    ~QBParameter() override;

    QString name() const;
    QVariant value() const;
    QVariant metadata() const;

public Q_SLOTS:
    void setValue(const QVariant &value);

Q_SIGNALS:
    /// Emitted on every setValue(), with the value converted to text.
    void valueChanged(const QString &value);

private:
    QString m_name;
    QVariant m_value;
    QVariant m_metadata;
};

} // namespace TQ_QBCom

#endif

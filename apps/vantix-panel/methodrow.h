#ifndef VANTIXPANEL_METHODROW_H
#define VANTIXPANEL_METHODROW_H

#include "propertyeditor.h"

#include <QJsonObject>
#include <QWidget>

class FeedbackLabel;
class PanelSession;
class QPushButton;

/**
 * A button for one invokable method of a target, a field per argument of
 * the kind its type calls for (a list for an enum, a box for a bool, a
 * checked number field for numbers), and the outcome beside them: the
 * answer, or the device's error signal that followed the call.
 */
class MethodRow : public QWidget
{
    Q_OBJECT

public:
    /// @p naming: whether an enum argument's list shows the values in words or by their names.
    MethodRow(PanelSession *session, const QString &target, const QJsonObject &method,
        PropertyEditor::Naming naming = PropertyEditor::RawNames, QWidget *parent = nullptr);

    QPushButton *button() const { return m_button; }
    int argumentCount() const { return m_inputs.size(); }
    /// Fills argument @p index as a user would; false when its field cannot take @p text (not in its list).
    bool setArgument(int index, const QString &text);
    /// The answer's text or the problem shown beside the row.
    QString answerText() const;
    FeedbackLabel *feedback() const { return m_feedback; }
    /// Calls the method with the arguments in the fields, once they are values of their types.
    void call();

private:
    struct Input
    {
        QString name;
        QString type;
        QWidget *widget = nullptr;
    };
    QWidget *inputFor(const QString &type, const QString &name);
    /// The word for @p input, or false with @p problem when its text is not a value of its type.
    bool word(const Input &input, QString *word, QString *problem) const;

    PanelSession *m_session;
    PropertyEditor::Naming m_naming;
    QString m_target;
    QString m_method;
    QPushButton *m_button;
    QList<Input> m_inputs;
    FeedbackLabel *m_feedback;
};

#endif

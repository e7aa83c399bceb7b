#ifndef VANTIXPANEL_PROPERTYEDITOR_H
#define VANTIXPANEL_PROPERTYEDITOR_H

#include <QWidget>

class FeedbackLabel;
class PanelSession;
class QCheckBox;
class QComboBox;
class QLabel;
class QLineEdit;

/**
 * Shows one property of one target live and, when it is writable, edits it
 * with the widget its type calls for: a check box for bool, a list for an
 * enum, a text field for the rest. The application checks every value; a
 * refused one shows the application's error next to the field.
 */
class PropertyEditor : public QWidget
{
    Q_OBJECT

public:
    /// How enum and flag values read: in words (the raw names in the tooltip), or by their names.
    enum Naming { Words, RawNames };

    PropertyEditor(PanelSession *session, const QString &target, const QString &property, Naming naming = RawNames,
        QWidget *parent = nullptr);

    QString target() const { return m_target; }
    QString propertyName() const { return m_property; }
    /// The error of the last refused value; empty after a change is accepted.
    QString errorText() const;
    QLabel *label() const { return m_label; }
    QLineEdit *lineEdit() const { return m_line; }
    QCheckBox *checkBox() const { return m_check; }
    QComboBox *comboBox() const { return m_combo; }

    /// Sends @p text as the new value (what the field does on Return).
    void submit(const QString &text);

private:
    void showValue();

    PanelSession *m_session;
    QString m_target;
    QString m_property;
    QString m_type;
    Naming m_naming;
    QLabel *m_label = nullptr;
    QLineEdit *m_line = nullptr;
    QCheckBox *m_check = nullptr;
    QComboBox *m_combo = nullptr;
    FeedbackLabel *m_error = nullptr;
};

#endif

#ifndef VANTIXPANEL_METHODROW_H
#define VANTIXPANEL_METHODROW_H

#include <QJsonObject>
#include <QWidget>

class PanelSession;
class QLabel;
class QLineEdit;
class QPushButton;

/**
 * A button for one invokable method of a target, with a field for its
 * arguments (typed as on the console) and the answer beside it.
 */
class MethodRow : public QWidget
{
    Q_OBJECT

public:
    MethodRow(PanelSession *session, const QString &target, const QJsonObject &method, QWidget *parent = nullptr);

    QPushButton *button() const { return m_button; }
    QLineEdit *arguments() const { return m_arguments; }
    QString answerText() const;
    void call();

private:
    PanelSession *m_session;
    QString m_target;
    QString m_method;
    QPushButton *m_button;
    QLineEdit *m_arguments = nullptr;
    QLabel *m_answer;
};

#endif

#ifndef VANTIXPANEL_SIMLAUNCHER_H
#define VANTIXPANEL_SIMLAUNCHER_H

#include <QObject>
#include <QProcess>

class QTimer;

/**
 * Starts vantix-sim for a platform in the background and tells its control
 * socket once it serves one. The simulator reads its console from the pipe
 * this object holds open, so it ends when the panel does.
 */
class SimLauncher : public QObject
{
    Q_OBJECT

public:
    explicit SimLauncher(QObject *parent = nullptr);
    ~SimLauncher() override;

    /// vantix-sim beside this program, else the one of the build tree, else from PATH.
    static QString defaultProgram();
    /// The simulator to run; defaultProgram() unless set.
    QString program() const { return m_program; }
    void setProgram(const QString &path) { m_program = path; }
    void start(const QString &platform);

Q_SIGNALS:
    void ready(const QString &socketPath);
    void failed(const QString &message);

private:
    void poll();

    QProcess *m_process = nullptr;
    QTimer *m_poll;
    int m_attempts = 0;
    QString m_program = defaultProgram();
};

#endif

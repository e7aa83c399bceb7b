#ifndef VANTIXAPPS_INTERRUPTNOTIFIER_H
#define VANTIXAPPS_INTERRUPTNOTIFIER_H

#include <QList>
#include <QObject>

class QSocketNotifier;

/// Turns Ctrl+C (SIGINT) into a signal of the event loop; one per process.
class InterruptNotifier : public QObject
{
    Q_OBJECT

public:
    explicit InterruptNotifier(QObject *parent = nullptr);
    ~InterruptNotifier() override;

    /// Treats @p signal (SIGTERM, SIGHUP) as Ctrl+C too.
    void alsoOn(int signal);

Q_SIGNALS:
    void interrupted();

private:
    QSocketNotifier *m_notifier = nullptr;
    QList<int> m_signals;
};

#endif

#ifndef VANTIXAPPS_INTERRUPTNOTIFIER_H
#define VANTIXAPPS_INTERRUPTNOTIFIER_H

#include <QObject>

class QSocketNotifier;

/// Turns Ctrl+C (SIGINT) into a signal of the event loop; one per process.
class InterruptNotifier : public QObject
{
    Q_OBJECT

public:
    explicit InterruptNotifier(QObject *parent = nullptr);
    ~InterruptNotifier() override;

Q_SIGNALS:
    void interrupted();

private:
    QSocketNotifier *m_notifier = nullptr;
};

#endif

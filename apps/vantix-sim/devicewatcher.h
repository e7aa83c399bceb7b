#ifndef VANTIXSIM_DEVICEWATCHER_H
#define VANTIXSIM_DEVICEWATCHER_H

#include <vantix/idevice.h>

#include <QElapsedTimer>
#include <QObject>
#include <QTextStream>

namespace TQ_SPAPI {
class System;
}

/**
 * Prints the device table and a line for every device arrival, removal and
 * status change, and for the network values as they change.
 */
class DeviceWatcher : public QObject
{
    Q_OBJECT

public:
    DeviceWatcher(TQ_SPAPI::System *system, QTextStream &out, QObject *parent = nullptr);

    void printTable();
    /// Starts printing events, and watches every device present and to come.
    void watch();

private:
    void watchDevice(const TQ_SPAPI::IDevicePtr &device);
    void event(const QString &text);

    TQ_SPAPI::System *m_system;
    QTextStream &m_out;
    QElapsedTimer m_clock;
};

#endif

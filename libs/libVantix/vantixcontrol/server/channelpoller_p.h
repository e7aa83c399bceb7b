#ifndef VANTIXCONTROL_CHANNELPOLLER_P_H
#define VANTIXCONTROL_CHANNELPOLLER_P_H

#include <vantix/vantix_private_export.h>

#include <QHash>
#include <QObject>

class QSocketNotifier;

namespace VantixControl {

class ClientChannel;

/**
 * Watches the descriptors of all of a server's clients through one epoll
 * instance, which the event loop sees as a single descriptor: a turn of the
 * loop then costs the same with a thousand idle clients as with none, where
 * a socket notifier per client would make every turn look at each of them.
 */
class VANTIX_PRIVATE_EXPORT ChannelPoller : public QObject
{
    Q_OBJECT

public:
    explicit ChannelPoller(QObject *parent = nullptr);
    ~ChannelPoller() override;

    /// Tells @p channel when @p descriptor can be read, from now on.
    void add(int descriptor, ClientChannel *channel);
    /// What @p descriptor's channel is told of: input, room to write, or both.
    void watch(int descriptor, bool read, bool write);
    void remove(int descriptor);

private:
    void dispatch();

    int m_epoll;
    QSocketNotifier *m_notifier = nullptr;
    QHash<int, ClientChannel *> m_channels;
};

} // namespace VantixControl

#endif

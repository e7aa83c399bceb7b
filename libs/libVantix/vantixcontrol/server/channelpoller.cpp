#include "channelpoller_p.h"

#include "clientchannel_p.h"
#include "logging_p.h"

#include <QSocketNotifier>

#include <cstring>
#include <sys/epoll.h>
#include <unistd.h>

namespace VantixControl {

namespace {
// Events taken per turn of the loop; more wait for the next turn.
constexpr int BatchSize = 64;
} // namespace

ChannelPoller::ChannelPoller(QObject *parent)
    : QObject(parent)
    , m_epoll(::epoll_create1(EPOLL_CLOEXEC))
{
    if (m_epoll < 0) {
        qCWarning(lcControl).noquote() << "Control server: cannot watch clients:" << ::strerror(errno);
        return;
    }
    m_notifier = new QSocketNotifier(m_epoll, QSocketNotifier::Read, this);
    connect(m_notifier, &QSocketNotifier::activated, this, &ChannelPoller::dispatch);
}

ChannelPoller::~ChannelPoller()
{
    delete m_notifier;
    if (m_epoll >= 0) {
        ::close(m_epoll);
    }
}

void ChannelPoller::add(int descriptor, ClientChannel *channel)
{
    m_channels.insert(descriptor, channel);
    epoll_event event = {};
    event.events = EPOLLIN;
    event.data.fd = descriptor;
    ::epoll_ctl(m_epoll, EPOLL_CTL_ADD, descriptor, &event);
}

void ChannelPoller::watch(int descriptor, bool read, bool write)
{
    epoll_event event = {};
    event.events = (read ? quint32(EPOLLIN) : 0u) | (write ? quint32(EPOLLOUT) : 0u);
    event.data.fd = descriptor;
    ::epoll_ctl(m_epoll, EPOLL_CTL_MOD, descriptor, &event);
}

void ChannelPoller::remove(int descriptor)
{
    m_channels.remove(descriptor);
    ::epoll_ctl(m_epoll, EPOLL_CTL_DEL, descriptor, nullptr);
}

void ChannelPoller::dispatch()
{
    epoll_event events[BatchSize];
    const int count = ::epoll_wait(m_epoll, events, BatchSize, 0);
    for (int i = 0; i < count; ++i) {
        // Looked up each time: one told earlier may have closed another.
        if (ClientChannel *channel = m_channels.value(events[i].data.fd)) {
            const quint32 what = events[i].events;
            channel->ready(what & EPOLLIN, what & EPOLLOUT, what & (EPOLLHUP | EPOLLERR));
        }
    }
}

} // namespace VantixControl

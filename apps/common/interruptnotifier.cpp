#include "interruptnotifier.h"

#include <QSocketNotifier>

#include <csignal>
#include <sys/socket.h>
#include <unistd.h>

namespace {
int s_fds[2] = {-1, -1};

void onSignal(int)
{
    const char byte = 1;
    // Only async-signal-safe work here: the event loop does the rest.
    [[maybe_unused]] const ssize_t written = ::write(s_fds[0], &byte, 1);
}
} // namespace

InterruptNotifier::InterruptNotifier(QObject *parent)
    : QObject(parent)
{
    if (::socketpair(AF_UNIX, SOCK_STREAM, 0, s_fds) != 0) {
        return;
    }
    m_notifier = new QSocketNotifier(s_fds[1], QSocketNotifier::Read, this);
    connect(m_notifier, &QSocketNotifier::activated, this, [this] {
        char byte;
        if (::read(s_fds[1], &byte, 1) == 1) {
            Q_EMIT interrupted();
        }
    });
    alsoOn(SIGINT);
}

void InterruptNotifier::alsoOn(int signal)
{
    if (!m_notifier) {
        return;
    }
    struct sigaction action = {};
    action.sa_handler = onSignal;
    sigemptyset(&action.sa_mask);
    action.sa_flags = SA_RESTART;
    ::sigaction(signal, &action, nullptr);
    m_signals.append(signal);
}

InterruptNotifier::~InterruptNotifier()
{
    for (const int signal : qAsConst(m_signals)) {
        ::signal(signal, SIG_DFL);
    }
    delete m_notifier;
    ::close(s_fds[0]);
    ::close(s_fds[1]);
}

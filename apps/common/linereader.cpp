#include "linereader.h"

#include <cerrno>
#include <unistd.h>

LineReader::LineReader(int fd, QObject *parent)
    : QObject(parent)
    , m_notifier(fd, QSocketNotifier::Read)
    , m_fd(fd)
{
    connect(&m_notifier, &QSocketNotifier::activated, this, &LineReader::read);
}

void LineReader::read()
{
    char chunk[4096];
    const ssize_t n = ::read(m_fd, chunk, sizeof chunk);
    if (n < 0 && (errno == EINTR || errno == EAGAIN)) {
        return;
    }
    if (n <= 0) {
        m_notifier.setEnabled(false);
        if (!m_pending.isEmpty()) {
            Q_EMIT linesRead({QString::fromUtf8(m_pending)});
            m_pending.clear();
        }
        Q_EMIT ended();
        return;
    }
    m_pending.append(chunk, int(n));
    QStringList lines;
    int end = 0;
    while ((end = m_pending.indexOf('\n')) >= 0) {
        lines.append(QString::fromUtf8(m_pending.left(end)));
        m_pending.remove(0, end + 1);
    }
    if (!lines.isEmpty()) {
        Q_EMIT linesRead(lines);
    }
}

#include "linesplitter_p.h"

#include "protocol.h"

namespace VantixControl {

void LineSplitter::append(const char *data, int size)
{
    // What was taken is let go before the buffer grows, so it holds one line and one read at most.
    if (m_start > 0) {
        m_buffer.remove(0, m_start);
        m_scanned -= m_start;
        m_start = 0;
    }
    m_buffer.append(data, size);
}

LineSplitter::Result LineSplitter::next(QByteArray *line)
{
    for (;;) {
        const int newline = m_buffer.indexOf('\n', qMax(m_scanned, m_start));
        if (newline < 0) {
            m_scanned = m_buffer.size();
            // A \r at the end may still be followed by its \n, so it does not count yet.
            int held = m_buffer.size() - m_start;
            if (held > 0 && m_buffer.endsWith('\r')) {
                --held;
            }
            if (m_skipping || held > Protocol::MaxLineBytes) {
                m_buffer.clear();
                m_start = 0;
                m_scanned = 0;
                if (!m_skipping) {
                    m_skipping = true;
                    return TooLong;
                }
            }
            return NeedMore;
        }
        const int begin = m_start;
        m_start = newline + 1;
        m_scanned = m_start;
        if (m_skipping) {
            m_skipping = false;
            continue;
        }
        int length = newline - begin;
        if (length > 0 && m_buffer.at(newline - 1) == '\r') {
            --length;
        }
        if (length > Protocol::MaxLineBytes) {
            return TooLong;
        }
        *line = m_buffer.mid(begin, length);
        return Line;
    }
}

} // namespace VantixControl

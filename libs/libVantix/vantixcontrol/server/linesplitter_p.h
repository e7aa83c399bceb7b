#ifndef VANTIXCONTROL_LINESPLITTER_P_H
#define VANTIXCONTROL_LINESPLITTER_P_H

#include <vantix/vantix_private_export.h>

#include <QByteArray>

namespace VantixControl {

/**
 * Cuts what a client sends into request lines, whatever the boundaries of
 * the reads it comes in: a line is whole at its newline, a \r before the
 * newline is dropped, and a line longer than Protocol::MaxLineBytes is
 * reported once and skipped up to its newline, so that no more than one
 * line's worth of bytes is ever held.
 */
class VANTIX_PRIVATE_EXPORT LineSplitter
{
public:
    enum Result {
        NeedMore, ///< no whole line yet
        Line, ///< the next line
        TooLong, ///< a line over the limit, reported once; its rest is skipped
    };

    void append(const char *data, int size);
    /// The next line, without its \r\n, or what stands in its way.
    Result next(QByteArray *line);

private:
    QByteArray m_buffer;
    int m_start = 0; // where the next line begins in m_buffer
    int m_scanned = 0; // how far m_buffer was searched for a newline
    bool m_skipping = false;
};

} // namespace VantixControl

#endif

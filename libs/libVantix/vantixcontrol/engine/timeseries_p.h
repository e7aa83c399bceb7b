#ifndef VANTIXCONTROL_TIMESERIES_P_H
#define VANTIXCONTROL_TIMESERIES_P_H

#include "reply.h"

#include <vantix/vantix_private_export.h>

#include <QByteArray>
#include <QString>
#include <QVector>

#include <functional>

namespace VantixControl {

/**
 * A time series read from a CSV file of "milliseconds,value" rows, as feed
 * plays it. The whole file is read and checked before anything is played:
 * a header row is allowed, blank lines and lines starting with # are
 * skipped, times count from the start and never go backwards, and every
 * value is one the target takes. Size, rows and times are bounded (see
 * Timing), so a series costs at most a few MB.
 */
class VANTIX_PRIVATE_EXPORT TimeSeries
{
public:
    /// Whether a value is one the target takes; why not in the second argument.
    using Check = std::function<bool(const QString &value, QString *why)>;

    /**
     * Reads @p path (absolute) without ever blocking on it. False with the
     * answer to give instead: Failed for a file that cannot be read, is no
     * regular file or is too large; BadValue, naming the line, for content
     * that is no such series or holds a value @p check refuses.
     */
    static bool read(const QString &path, const Check &check, TimeSeries *series, Reply *refusal);

    int size() const { return m_ms.size(); }
    /// When row @p row is due, counted from the start.
    qint64 ms(int row) const { return m_ms.at(row); }
    QString value(int row) const;
    /// The line of the file row @p row came from, counted from 1.
    int line(int row) const { return m_lines.at(row); }
    /// The last row's time: how long one pass takes.
    qint64 span() const { return m_ms.isEmpty() ? 0 : m_ms.last(); }
    /// The file's name without its folder, for messages.
    QString fileName() const { return m_fileName; }

private:
    bool parse(const QByteArray &data, const Check &check, Reply *refusal);

    QString m_fileName;
    QVector<qint64> m_ms;
    QVector<int> m_lines;
    /// Where each value ends in m_values; it starts where the one before ends.
    QVector<int> m_ends;
    /// Every value's UTF-8 text, one after the other.
    QByteArray m_values;
};

} // namespace VantixControl

#endif

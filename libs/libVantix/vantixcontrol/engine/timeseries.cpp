#include "timeseries_p.h"

#include "timing_p.h"
#include "valuetext_p.h"

#include <QFile>
#include <QFileInfo>
#include <QList>
#include <QTextCodec>

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace VantixControl {

namespace {
bool isBlank(char c)
{
    return c == ' ' || c == '\t';
}

// One CSV line's fields: blanks around a field are dropped; a field in double
// quotes keeps everything inside, "" standing for one quote.
bool splitFields(const QByteArray &line, QList<QByteArray> *fields, QString *why)
{
    const int n = line.size();
    int i = 0;
    for (;;) {
        while (i < n && isBlank(line.at(i))) {
            ++i;
        }
        QByteArray field;
        if (i < n && line.at(i) == '"') {
            bool closed = false;
            for (++i; i < n; ++i) {
                if (line.at(i) != '"') {
                    field += line.at(i);
                } else if (i + 1 < n && line.at(i + 1) == '"') {
                    field += '"';
                    ++i;
                } else {
                    closed = true;
                    ++i;
                    break;
                }
            }
            while (i < n && isBlank(line.at(i))) {
                ++i;
            }
            if (!closed || (i < n && line.at(i) != ',')) {
                *why = closed ? QStringLiteral("text after a closing quote") : QStringLiteral("a quote is not closed");
                return false;
            }
        } else {
            const int start = i;
            while (i < n && line.at(i) != ',') {
                ++i;
            }
            field = line.mid(start, i - start).trimmed();
            if (field.contains('"')) {
                *why = QStringLiteral("a quote inside a value that does not start with one");
                return false;
            }
        }
        fields->append(field);
        if (i >= n) {
            return true;
        }
        ++i;
    }
}

// A whole number of milliseconds within a feed's reach, or -1.
qint64 parseMs(const QByteArray &field)
{
    qlonglong ms = -1;
    if (!ValueText::parseInteger(QString::fromUtf8(field), &ms) || ms < 0 || ms > Timing::MaxFeedMs) {
        return -1;
    }
    return ms;
}
} // namespace

QString TimeSeries::value(int row) const
{
    const int start = row == 0 ? 0 : m_ends.at(row - 1);
    return QString::fromUtf8(m_values.constData() + start, m_ends.at(row) - start);
}

bool TimeSeries::read(const QString &path, const Check &check, TimeSeries *series, Reply *refusal)
{
    *series = TimeSeries();
    series->m_fileName = QFileInfo(path).fileName();
    const auto failed = [refusal, &path](const QString &why) {
        *refusal = Reply::failure(ErrorClass::Failed, QStringLiteral("cannot read %1: %2").arg(path, why));
        return false;
    };
    // Without blocking: a named pipe without a writer must not hold the application up.
    const int fd = ::open(QFile::encodeName(path).constData(), O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC);
    if (fd < 0) {
        return failed(QString::fromLocal8Bit(std::strerror(errno)));
    }
    QFile file;
    struct stat status;
    if (::fstat(fd, &status) != 0 || !S_ISREG(status.st_mode)) {
        ::close(fd);
        return failed(QStringLiteral("it is no regular file"));
    }
    const QString tooLarge =
        QStringLiteral("it is larger than %1 bytes, the most a feed reads").arg(Timing::MaxFeedBytes);
    if (status.st_size > Timing::MaxFeedBytes) {
        ::close(fd);
        return failed(tooLarge);
    }
    if (!file.open(fd, QIODevice::ReadOnly, QFileDevice::AutoCloseHandle)) {
        ::close(fd);
        return failed(file.errorString());
    }
    // One byte more than allowed tells a file that grew since it was looked at.
    const QByteArray data = file.read(Timing::MaxFeedBytes + 1);
    if (file.error() != QFileDevice::NoError) {
        return failed(file.errorString());
    }
    if (data.size() > Timing::MaxFeedBytes) {
        return failed(tooLarge);
    }
    return series->parse(data, check, refusal);
}

bool TimeSeries::parse(const QByteArray &data, const Check &check, Reply *refusal)
{
    const auto bad = [this, refusal](int line, const QString &why) {
        const QString where =
            line > 0 ? QStringLiteral("%1:%2: ").arg(m_fileName).arg(line) : m_fileName + QStringLiteral(": ");
        *refusal = Reply::failure(ErrorClass::BadValue, where + why);
        return false;
    };
    QTextCodec::ConverterState state;
    QTextCodec::codecForMib(106)->toUnicode(data.constData(), data.size(), &state);
    if (state.invalidChars > 0 || data.contains('\0')) {
        return bad(0, QStringLiteral("not a CSV text: it is not UTF-8 text"));
    }

    bool seenContent = false;
    int lineNumber = 0;
    for (int start = 0; start < data.size();) {
        int end = data.indexOf('\n', start);
        if (end < 0) {
            end = data.size();
        }
        QByteArray line = data.mid(start, end - start);
        start = end + 1;
        ++lineNumber;
        if (line.endsWith('\r')) {
            line.chop(1);
        }
        const QByteArray trimmed = line.trimmed();
        if (trimmed.isEmpty() || trimmed.startsWith('#')) {
            continue;
        }
        QList<QByteArray> fields;
        QString why;
        if (!splitFields(line, &fields, &why)) {
            return bad(lineNumber, why);
        }
        if (fields.size() != 2) {
            return bad(
                lineNumber, QStringLiteral("expected two fields, milliseconds,value; got %1").arg(fields.size()));
        }
        const qint64 ms = parseMs(fields.at(0));
        const bool first = !seenContent;
        seenContent = true;
        if (ms < 0) {
            // The first row may name the columns.
            qlonglong number = 0;
            if (first && !ValueText::parseInteger(QString::fromUtf8(fields.at(0)), &number)) {
                continue;
            }
            return bad(lineNumber,
                QStringLiteral("milliseconds: expected a whole number from 0 to %1, got \"%2\"")
                    .arg(Timing::MaxFeedMs)
                    .arg(QString::fromUtf8(fields.at(0))));
        }
        if (!m_ms.isEmpty() && ms < m_ms.last()) {
            return bad(lineNumber,
                QStringLiteral("%1 ms is earlier than %2 ms on line %3: times must not go backwards")
                    .arg(ms)
                    .arg(m_ms.last())
                    .arg(m_lines.last()));
        }
        if (m_ms.size() == Timing::MaxFeedRows) {
            return bad(lineNumber, QStringLiteral("more than %1 rows, the most a feed plays").arg(Timing::MaxFeedRows));
        }
        if (!check(QString::fromUtf8(fields.at(1)), &why)) {
            return bad(lineNumber, QStringLiteral("value: ") + why);
        }
        m_ms.append(ms);
        m_lines.append(lineNumber);
        m_values += fields.at(1);
        m_ends.append(m_values.size());
    }
    if (m_ms.isEmpty()) {
        return bad(0, QStringLiteral("no rows of milliseconds,value"));
    }
    return true;
}

} // namespace VantixControl

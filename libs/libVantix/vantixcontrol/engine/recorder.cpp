#include "recorder_p.h"

#include "outputfile_p.h"
#include "reply.h"
#include "timing_p.h"
#include "words.h"

#include "logging_p.h"

namespace VantixControl {

namespace {
// A comment's text on one line: nothing in it can end the line and start another.
QByteArray commentText(const QString &text)
{
    return Words::printable(text).toUtf8();
}
} // namespace

bool Recorder::start(const QString &path, bool replace, const QString &header, qint64 nowMs, QString *error)
{
    if (isRecording()) {
        *error = QStringLiteral("already recording to %1; record stop ends it").arg(m_path);
        return false;
    }
    m_failure.clear();
    m_lines = 0;
    if (!OutputFile::open(&m_file, path, replace, error)) {
        return false;
    }
    m_path = path;
    if (!write(header.toUtf8())) {
        *error = m_failure;
        m_failure.clear();
        return false;
    }
    m_lastMs = nowMs;
    m_skipNext = true;
    return true;
}

bool Recorder::stop(QString *path, QString *error)
{
    *path = m_path;
    if (!m_failure.isEmpty()) {
        *error = m_failure;
        m_failure.clear();
        return false;
    }
    if (!isRecording()) {
        *error = QStringLiteral("nothing is being recorded");
        return false;
    }
    m_file.close();
    return true;
}

void Recorder::begin(qint64 nowMs)
{
    m_commandStartMs = nowMs;
}

void Recorder::note(const QString &line, const QStringList &words, const Reply &reply, qint64 nowMs)
{
    if (!isRecording()) {
        return;
    }
    if (m_skipNext) {
        m_skipNext = false;
        m_lastMs = nowMs;
        return;
    }
    QByteArray text;
    // A timed command takes its own time on replay; only the pause before it is a wait.
    const qint64 gap = m_commandStartMs - m_lastMs;
    if (gap >= Timing::MinimumRecordedWaitMs) {
        text += "wait " + QByteArray::number(gap) + '\n';
    }
    if (reply.ok && !words.isEmpty()) {
        // Quoted afresh: the words come back as they were read, on one line.
        text += Words::join(words).toUtf8() + '\n';
    } else if (reply.ok) {
        text += '#' + commentText(line.mid(1)) + '\n';
    } else {
        text += "# " + commentText(line) + "\n#   KO: " + commentText(reply.text) + '\n';
    }
    write(text);
    m_lastMs = nowMs;
}

bool Recorder::write(const QByteArray &text)
{
    if (m_file.write(text) == text.size() && m_file.flush()) {
        ++m_lines;
        return true;
    }
    m_failure = QStringLiteral("the recording to %1 ended after %2 entries: %3")
                    .arg(m_path)
                    .arg(qMax(0, m_lines - 1))
                    .arg(m_file.errorString());
    qCWarning(lcConsole).noquote() << m_failure;
    m_file.close();
    return false;
}

} // namespace VantixControl

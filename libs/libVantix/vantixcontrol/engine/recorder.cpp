#include "recorder_p.h"

#include "reply.h"

#include <QFileInfo>

namespace VantixControl {

namespace {
// Gaps shorter than this are typing speed, not part of the story.
constexpr qint64 MinimumWaitMs = 10;
} // namespace

bool Recorder::start(const QString &path, const QString &header, qint64 nowMs, QString *error)
{
    if (isRecording()) {
        *error = QStringLiteral("already recording to %1; record stop ends it").arg(m_file.fileName());
        return false;
    }
    m_file.setFileName(QFileInfo(path).absoluteFilePath());
    if (!m_file.open(QIODevice::WriteOnly | QIODevice::Truncate | QIODevice::Text)) {
        *error = QStringLiteral("cannot write %1: %2").arg(m_file.fileName(), m_file.errorString());
        return false;
    }
    m_file.write(header.toUtf8());
    m_file.flush();
    m_lastMs = nowMs;
    m_skipNext = true;
    return true;
}

QString Recorder::stop()
{
    const QString path = m_file.fileName();
    if (!isRecording()) {
        return QString();
    }
    m_file.close();
    return path;
}

void Recorder::begin(qint64 nowMs)
{
    m_commandStartMs = nowMs;
}

void Recorder::note(const QString &line, const Reply &reply, qint64 nowMs)
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
    if (gap >= MinimumWaitMs) {
        text += "wait " + QByteArray::number(gap) + '\n';
    }
    if (reply.ok) {
        text += line.toUtf8() + '\n';
    } else {
        text += "# " + line.toUtf8() + "\n#   KO: " + reply.text.toUtf8() + '\n';
    }
    m_file.write(text);
    m_file.flush();
    m_lastMs = nowMs;
}

} // namespace VantixControl

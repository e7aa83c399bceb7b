#ifndef VANTIXCONTROL_RECORDER_P_H
#define VANTIXCONTROL_RECORDER_P_H

#include <vantix/vantix_private_export.h>

#include <QFile>
#include <QString>

namespace VantixControl {

struct Reply;

/**
 * Writes the commands of a session to a script that replays them: each
 * command on its line, the time between commands as "wait" lines, and a
 * command that failed as a comment, so that the replay does not stop at it.
 */
class VANTIX_PRIVATE_EXPORT Recorder
{
public:
    /// False with the reason if @p path cannot be written or a recording runs.
    bool start(const QString &path, const QString &header, qint64 nowMs, QString *error);
    /// The file written; empty when none was recording.
    QString stop();
    bool isRecording() const { return m_file.isOpen(); }
    QString path() const { return m_file.fileName(); }
    /// A command starts: the time since the last one ended becomes a wait.
    void begin(qint64 nowMs);
    /// Records a command that has just ended.
    void note(const QString &line, const Reply &reply, qint64 nowMs);

private:
    QFile m_file;
    qint64 m_lastMs = 0;
    // The record command itself ends after the recording has started; it is not part of it.
    bool m_skipNext = false;
    qint64 m_commandStartMs = 0;
};

} // namespace VantixControl

#endif

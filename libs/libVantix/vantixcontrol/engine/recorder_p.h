#ifndef VANTIXCONTROL_RECORDER_P_H
#define VANTIXCONTROL_RECORDER_P_H

#include <vantix/vantix_private_export.h>

#include <QFile>
#include <QString>
#include <QStringList>

namespace VantixControl {

struct Reply;

/**
 * Writes the commands of a session to a script that replays them: each
 * command on its line, the time between commands as "wait" lines, and a
 * command that failed as a comment, so that the replay does not stop at it.
 * Every entry is one line, whatever the command held: a line break in it
 * never makes a line of its own.
 */
class VANTIX_PRIVATE_EXPORT Recorder
{
public:
    /// False with the reason if @p path cannot be written (see OutputFile) or a recording runs.
    bool start(const QString &path, bool replace, const QString &header, qint64 nowMs, QString *error);
    /**
     * Ends the recording: true with the file written, false with the reason
     * when nothing was recording or a write failed, which ended it early.
     */
    bool stop(QString *path, QString *error);
    bool isRecording() const { return m_file.isOpen(); }
    QString path() const { return m_path; }
    /// A command starts: the time since the last one ended becomes a wait.
    void begin(qint64 nowMs);
    /**
     * Records a command that has just ended: @p words as they were read
     * when it succeeded, else @p line and the reason as a comment.
     */
    void note(const QString &line, const QStringList &words, const Reply &reply, qint64 nowMs);

private:
    bool write(const QByteArray &text);

    QFile m_file;
    QString m_path;
    // Why the recording ended before "record stop"; told by the stop.
    QString m_failure;
    int m_lines = 0;
    qint64 m_lastMs = 0;
    // The record command itself ends after the recording has started; it is not part of it.
    bool m_skipNext = false;
    qint64 m_commandStartMs = 0;
};

} // namespace VantixControl

#endif

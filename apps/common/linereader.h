#ifndef VANTIXAPPS_LINEREADER_H
#define VANTIXAPPS_LINEREADER_H

#include <QByteArray>
#include <QObject>
#include <QSocketNotifier>
#include <QStringList>

/**
 * Reads a file descriptor (standard input) from the event loop, without
 * blocking it, and hands on whole lines; the last line needs no newline.
 */
class LineReader : public QObject
{
    Q_OBJECT

public:
    explicit LineReader(int fd, QObject *parent = nullptr);

Q_SIGNALS:
    void linesRead(const QStringList &lines);
    void ended();

private:
    void read();

    QSocketNotifier m_notifier;
    int m_fd;
    QByteArray m_pending;
};

#endif

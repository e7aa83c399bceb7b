#ifndef VANTIX_TEST_LOGCAPTURE_H
#define VANTIX_TEST_LOGCAPTURE_H

#include <QList>
#include <QString>
#include <QtGlobal>

/// One record of the Qt message log.
struct LogRecord {
    QtMsgType type;
    QString category;
    QString function;
    QString message;
};

/**
 * Collects the Qt message log while alive, so tests can check the exact words
 * a component logs, at which level and from which function.
 */
class LogCapture
{
public:
    LogCapture();
    ~LogCapture();

    QList<LogRecord> records() const;
    /// Messages only, in order.
    QStringList messages() const;
    /// Whether some record of @p type has exactly the message @p message.
    bool contains(const QString &message, QtMsgType type = QtDebugMsg) const;
    int count(const QString &message) const;
    void clear();

private:
    static void handler(QtMsgType type, const QMessageLogContext &context, const QString &message);
    QtMessageHandler m_previous;
};

#endif

#include "logcapture.h"

#include <QStringList>

namespace {
QList<LogRecord> *s_records = nullptr;
}

LogCapture::LogCapture()
{
    s_records = new QList<LogRecord>;
    m_previous = qInstallMessageHandler(&LogCapture::handler);
}

LogCapture::~LogCapture()
{
    qInstallMessageHandler(m_previous);
    delete s_records;
    s_records = nullptr;
}

void LogCapture::handler(QtMsgType type, const QMessageLogContext &context, const QString &message)
{
    if (s_records) {
        s_records->append(LogRecord{type, QString::fromLatin1(context.category),
                                    QString::fromLatin1(context.function), message});
    }
}

QList<LogRecord> LogCapture::records() const
{
    return *s_records;
}

QStringList LogCapture::messages() const
{
    QStringList result;
    for (const LogRecord &r : *s_records) {
        result.append(r.message);
    }
    return result;
}

bool LogCapture::contains(const QString &message, QtMsgType type) const
{
    for (const LogRecord &r : *s_records) {
        if (r.type == type && r.message == message) {
            return true;
        }
    }
    return false;
}

int LogCapture::count(const QString &message) const
{
    return messages().count(message);
}

void LogCapture::clear()
{
    s_records->clear();
}

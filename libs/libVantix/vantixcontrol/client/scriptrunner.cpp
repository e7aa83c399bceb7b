#include "scriptrunner.h"

#include <QPointer>

namespace VantixControl {

ScriptRunner::ScriptRunner(Executor executor, QObject *parent)
    : QObject(parent)
    , m_executor(std::move(executor))
{
}

void ScriptRunner::start()
{
    if (!m_started) {
        m_started = true;
        process();
    }
}

void ScriptRunner::feed(const QStringList &lines, const QString &source, bool script)
{
    int &number = m_lineNumbers[source];
    for (const QString &text : lines) {
        m_queue.append(Line{text, source, ++number, script});
    }
    process();
}

void ScriptRunner::endOfInput()
{
    m_inputEnded = true;
    process();
}

void ScriptRunner::stop(int exitCode, const QString &message)
{
    if (m_finished) {
        return;
    }
    m_finished = true;
    m_queue.clear();
    Q_EMIT finished(exitCode, message);
}

void ScriptRunner::process()
{
    if (!m_started || m_finished || m_processing) {
        return;
    }
    m_processing = true;
    const QPointer<ScriptRunner> alive(this);
    while (alive && !m_busy && !m_finished && !m_queue.isEmpty()) {
        const Line line = m_queue.takeFirst();
        const QString text = line.text.trimmed();
        if (text.isEmpty() || text.startsWith(QLatin1Char('#'))) {
            continue;
        }
        m_busy = true;
        Q_EMIT lineStarted(text, line.script);
        m_executor(text, [this, alive, line](const Reply &reply) {
            if (alive) {
                complete(line, reply);
            }
        });
    }
    if (!alive) {
        return;
    }
    m_processing = false;
    if (!m_busy && m_queue.isEmpty() && m_inputEnded) {
        stop(0);
    }
}

void ScriptRunner::complete(const Line &line, const Reply &reply)
{
    if (m_finished) {
        return;
    }
    m_busy = false;
    const QString text = line.text.trimmed();
    Q_EMIT answered(text, reply);
    if (!reply.ok && line.script) {
        stop(1, QStringLiteral("%1:%2: %3: %4").arg(line.source, QString::number(line.number), text, reply.text));
        return;
    }
    if (!m_processing) {
        process();
    }
}

} // namespace VantixControl

#include "simulatedclock.h"

#include <vantixcontrol/client/client.h>
#include <vantixcontrol/protocol/reply.h>
#include <vantixcontrol/protocol/words.h>

#include <QFile>
#include <QPointer>
#include <QRegularExpression>

#include <memory>

using namespace VantixControl;

SimulatedClock::SimulatedClock(const QString &socketPath, const QString &recordFile, QObject *parent)
    : QObject(parent)
    , m_client(new Client(this))
    , m_socketPath(socketPath)
    , m_recordFile(recordFile)
{
}

void SimulatedClock::start(const std::function<void(bool)> &started)
{
    const QPointer<SimulatedClock> alive(this);
    auto answered = std::make_shared<bool>(false);
    const auto answer = [alive, answered, started](bool ok) {
        if (alive && !*answered) {
            *answered = true;
            started(ok);
        }
    };
    connect(m_client, &Client::disconnected, this, [this, answer](const QString &) {
        m_running = false;
        answer(false);
    });
    connect(m_client, &Client::connected, this, [this, answer] {
        m_client->execute(QStringLiteral("record ") + Words::quote(m_recordFile), [this, answer](const Reply &reply) {
            m_running = reply.ok;
            answer(reply.ok);
        });
    });
    m_client->connectToServer(m_socketPath);
}

void SimulatedClock::stop(const std::function<void(qint64)> &stopped)
{
    if (!m_running) {
        stopped(-1);
        return;
    }
    m_running = false;
    // The comment ends the pause the recorder measures; stop closes the file.
    m_client->execute(QStringLiteral("# the scenario has ended"), [](const Reply &) {});
    const QPointer<SimulatedClock> alive(this);
    m_client->execute(QStringLiteral("record stop"), [this, alive, stopped](const Reply &reply) {
        if (!alive) {
            return;
        }
        QFile file(m_recordFile);
        if (!reply.ok || !file.open(QIODevice::ReadOnly | QIODevice::Text)) {
            stopped(-1);
            return;
        }
        // Pauses under 10 ms are not written: no wait line is a pause shorter than that.
        static const QRegularExpression wait(QStringLiteral("^wait (\\d+)$"), QRegularExpression::MultilineOption);
        qint64 ms = 0;
        QRegularExpressionMatchIterator it = wait.globalMatch(QString::fromUtf8(file.readAll()));
        while (it.hasNext()) {
            ms += it.next().captured(1).toLongLong();
        }
        stopped(ms);
    });
}

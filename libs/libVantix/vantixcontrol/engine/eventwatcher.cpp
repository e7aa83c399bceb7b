#include "eventwatcher_p.h"

namespace VantixControl {

EventWatcher::EventWatcher(TQ_SPAPI::System *system, QObject *parent)
    : QObject(parent)
    , m_shared(SystemWatcher::of(system))
{
}

EventWatcher::~EventWatcher()
{
    m_shared->removeListener(this);
}

void EventWatcher::start()
{
    if (!m_started) {
        m_started = true;
        m_before = m_shared->emissions();
    }
}

void EventWatcher::setReporting(bool reporting)
{
    m_reporting = reporting;
    for (SystemWatcher *watcher : {m_shared.get(), m_own.get()}) {
        if (watcher && reporting) {
            watcher->addListener(this);
        } else if (watcher) {
            watcher->removeListener(this);
        }
    }
}

void EventWatcher::watch(QObject *object, const QString &name)
{
    if (!m_own) {
        m_own = SystemWatcher::of(nullptr);
        if (m_reporting) {
            m_own->addListener(this);
        }
    }
    if (!m_shared->isWatched(object)) {
        m_own->watch(object, name);
    }
}

bool EventWatcher::isWatched(const QObject *object) const
{
    return m_shared->isWatched(object) || (m_own && m_own->isWatched(object));
}

QString EventWatcher::nameOf(const QObject *object) const
{
    const QString name = m_own ? m_own->nameOf(object) : QString();
    return name.isEmpty() ? m_shared->nameOf(object) : name;
}

QObject *EventWatcher::find(const QString &name) const
{
    QObject *object = m_shared->find(name);
    return object || !m_own ? object : m_own->find(name);
}

QList<QObject *> EventWatcher::objects() const
{
    return m_own ? m_shared->objects() + m_own->objects() : m_shared->objects();
}

int EventWatcher::emissions(const QString &objectName, const QByteArray &signal) const
{
    int count = m_shared->emissions().value(objectName).value(signal);
    if (m_started) {
        count -= m_before.value(objectName).value(signal);
    }
    return m_own ? count + m_own->emissions().value(objectName).value(signal) : count;
}

} // namespace VantixControl

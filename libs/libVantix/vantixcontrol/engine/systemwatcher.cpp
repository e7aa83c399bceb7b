#include "systemwatcher_p.h"

#include "devicenames_p.h"
#include "eventwatcher_p.h"
#include "reflection_p.h"
#include "systemprivate_p.h"

#include <vantix/system.h>

#include <QMetaMethod>
#include <QMetaProperty>
#include <QRegularExpression>

using namespace TQ_SPAPI;

namespace VantixControl {

/**
 * Receives every signal of one object. It has no meta-object of its own:
 * connections are made to method indexes past QObject's, which qt_metacall
 * turns back into the index of the signal that fired.
 */
class SignalRelay : public QObject
{
public:
    SignalRelay(SystemWatcher *watcher, QObject *target)
        : QObject(watcher)
        , m_watcher(watcher)
        , m_target(target)
    {
        const QMetaObject *metaObject = target->metaObject();
        const int own = QObject::staticMetaObject.methodCount();
        for (int i = own; i < metaObject->methodCount(); ++i) {
            if (metaObject->method(i).methodType() == QMetaMethod::Signal) {
                QMetaObject::connect(target, i, this, own + i, Qt::DirectConnection);
            }
        }
    }

    int qt_metacall(QMetaObject::Call call, int id, void **arguments) override
    {
        id = QObject::qt_metacall(call, id, arguments);
        if (id < 0 || call != QMetaObject::InvokeMetaMethod) {
            return id;
        }
        m_watcher->relay(m_target, id, arguments);
        return -1;
    }

private:
    SystemWatcher *m_watcher;
    QObject *m_target;
};

// Gives the watcher up once its last session has let go: at once, or after the signal being relayed.
struct SystemWatcherDeleter
{
    void operator()(SystemWatcher *watcher) const
    {
        if (watcher->m_relaying > 0) {
            watcher->m_orphaned = true;
            watcher->m_listeners.clear();
            watcher->deleteLater();
        } else {
            delete watcher;
        }
    }
};

namespace {
QHash<const System *, std::weak_ptr<SystemWatcher>> &registry()
{
    static QHash<const System *, std::weak_ptr<SystemWatcher>> watchers;
    return watchers;
}

// A peer is best known by its bssid: the first constant text property that is set.
QString identityOf(const QObject *object)
{
    for (const QMetaProperty &p : Reflection::properties(object->metaObject())) {
        if (p.isConstant() && p.userType() == QMetaType::QString) {
            const QString value = p.read(object).toString();
            if (!value.isEmpty()) {
                return value;
            }
        }
    }
    return QString();
}

bool isPlainPointer(int typeId)
{
    const QMetaType::TypeFlags complex =
        QMetaType::NeedsConstruction | QMetaType::NeedsDestruction | QMetaType::IsEnumeration | QMetaType::IsGadget;
    return typeId >= QMetaType::User && QMetaType::sizeOf(typeId) == int(sizeof(void *)) &&
        !(QMetaType::typeFlags(typeId) & complex);
}

// Whether an object's properties may hold further objects.
bool hasObjectProperties(const QMetaObject *metaObject)
{
    for (const QMetaProperty &p : Reflection::properties(metaObject)) {
        if (ValueText::holdsObject(p.userType()) || isPlainPointer(p.userType())) {
            return true;
        }
    }
    return false;
}
} // namespace

std::shared_ptr<SystemWatcher> SystemWatcher::of(System *system)
{
    if (!system) {
        return std::shared_ptr<SystemWatcher>(new SystemWatcher(nullptr), SystemWatcherDeleter());
    }
    std::weak_ptr<SystemWatcher> &slot = registry()[system];
    std::shared_ptr<SystemWatcher> watcher = slot.lock();
    // One left over from a System that was at the same address serves only its old sessions.
    if (!watcher || watcher->m_system != system) {
        watcher.reset(new SystemWatcher(system), SystemWatcherDeleter());
        slot = watcher;
        watcher->start();
    }
    return watcher;
}

SystemWatcher::SystemWatcher(System *system)
    : m_system(system)
    , m_systemPrivate(system ? SystemPrivate::get(system) : nullptr)
{
}

SystemWatcher::~SystemWatcher()
{
    auto &watchers = registry();
    for (auto it = watchers.begin(); it != watchers.end();) {
        it = it->expired() ? watchers.erase(it) : std::next(it);
    }
}

bool SystemWatcher::isInterfaceObject(const QObject *object)
{
    static const QRegularExpression interfaceName(QStringLiteral("^I[A-Z][A-Za-z0-9]*$"));
    return object && !qobject_cast<const IDevice *>(object) &&
        interfaceName.match(Reflection::shortClassName(object)).hasMatch();
}

QString SystemWatcher::aliasOf(const QObject *object)
{
    return Reflection::shortClassName(object).mid(1).toLower();
}

void SystemWatcher::start()
{
    watchFrom(m_system, QStringLiteral("System"), m_system);
    for (const IDevicePtr &device : m_system->devices()) {
        watch(device.data());
    }
    // Before the queued deviceDetected: what happens right after plugging is shown too.
    connect(m_systemPrivate, &SystemPrivate::devicePlugged, this,
        [this](const IDevicePtr &device) { watch(device.data()); });
}

void SystemWatcher::addListener(EventWatcher *listener)
{
    if (!m_listeners.contains(listener)) {
        m_listeners.append(listener);
    }
}

void SystemWatcher::removeListener(EventWatcher *listener)
{
    m_listeners.removeAll(listener);
}

void SystemWatcher::watch(QObject *object, const QString &name)
{
    watchFrom(object, name, object);
}

void SystemWatcher::watchFrom(QObject *object, const QString &name, QObject *root)
{
    if (!object || m_entries.contains(object)) {
        return;
    }
    Entry entry;
    entry.fixedName = name;
    entry.root = qobject_cast<IDevice *>(object) || object == m_system ? object : root;
    if (name.isEmpty() && !qobject_cast<IDevice *>(object)) {
        entry.serial = ++m_serials[Reflection::shortClassName(object)];
    }
    entry.relay = new SignalRelay(this, object);
    entry.mayReach = hasObjectProperties(object->metaObject());
    m_entries.insert(object, entry);
    m_order.append(object);
    connect(object, &QObject::destroyed, this, [this, object] { forget(object); });
    const int watchedBefore = m_entries.size();
    scanReachable(object, entry.root);
    // An object that already has interface objects among its children may get more.
    if (m_entries.size() > watchedBefore) {
        m_entries[object].mayReach = true;
    }
}

void SystemWatcher::forget(QObject *object)
{
    const auto it = m_entries.find(object);
    if (it == m_entries.end()) {
        return;
    }
    delete it->relay;
    m_entries.erase(it);
    m_order.removeAll(object);
}

QString SystemWatcher::nameOf(const QObject *object) const
{
    const auto it = m_entries.constFind(object);
    return it == m_entries.constEnd() ? QString() : nameOf(object, *it);
}

QString SystemWatcher::nameOf(const QObject *object, const Entry &entry) const
{
    if (!entry.settledName.isEmpty()) {
        return entry.settledName;
    }
    QString name;
    if (!entry.fixedName.isEmpty()) {
        name = entry.fixedName;
    } else if (const auto *device = qobject_cast<const IDevice *>(object)) {
        name = DeviceNames::name(device->id());
    } else if (entry.root == m_system) {
        name = Reflection::shortClassName(object);
    } else {
        const QString identity = identityOf(object);
        if (identity.isEmpty()) {
            // Its identity may still be set: the name is worked out again next time.
            return QStringLiteral("%1#%2").arg(Reflection::shortClassName(object)).arg(entry.serial);
        }
        name = QStringLiteral("%1(%2)").arg(Reflection::shortClassName(object), identity);
    }
    entry.settledName = name;
    return name;
}

QObject *SystemWatcher::find(const QString &name) const
{
    for (QObject *object : m_order) {
        if (nameOf(object).compare(name, Qt::CaseInsensitive) == 0 ||
            (isInterfaceObject(object) && aliasOf(object) == name.toLower())) {
            return object;
        }
    }
    return nullptr;
}

QObject *SystemWatcher::knownObject(const void *address, QObject *root) const
{
    if (!address) {
        return nullptr;
    }
    for (QObject *object : m_order) {
        if (static_cast<const void *>(object) == address) {
            return object;
        }
    }
    const QList<QObject *> descendants = root ? root->findChildren<QObject *>() : QList<QObject *>();
    for (QObject *object : descendants) {
        if (static_cast<const void *>(object) == address) {
            return object;
        }
    }
    return nullptr;
}

// Everything an object leads to: QObjects held by its properties, and interface objects among its children.
void SystemWatcher::scanReachable(QObject *object, QObject *root)
{
    for (const QMetaProperty &p : Reflection::properties(object->metaObject())) {
        const int typeId = p.userType();
        if (!p.isReadable()) {
            continue;
        }
        QObject *value = nullptr;
        if (ValueText::holdsObject(typeId)) {
            value = ValueText::objectOf(p.read(object));
        } else if (isPlainPointer(typeId)) {
            // A pointer Qt does not know for a QObject (a const model pointer) counts only
            // when it is the address of an object known to be alive; it is never followed.
            const QVariant held = p.read(object);
            value = knownObject(*static_cast<const void *const *>(held.constData()), root);
        }
        if (value && !m_entries.contains(value)) {
            watchFrom(value, nameOf(object) + QLatin1Char('.') + QString::fromLatin1(p.name()), root);
        }
    }
    const QList<QObject *> children = object->findChildren<QObject *>();
    for (QObject *child : children) {
        if (isInterfaceObject(child) && !m_entries.contains(child)) {
            watchFrom(child, QString(), root);
        }
    }
}

const SystemWatcher::Method &SystemWatcher::method(const QMetaObject *metaObject, int methodIndex)
{
    const auto key = qMakePair(metaObject, methodIndex);
    auto it = m_methods.find(key);
    if (it != m_methods.end()) {
        return *it;
    }
    const QMetaMethod m = metaObject->method(methodIndex);
    Method info;
    info.rawName = m.name();
    info.name = QString::fromLatin1(info.rawName);
    const QList<QByteArray> types = m.parameterTypes();
    const QList<QByteArray> names = m.parameterNames();
    for (int i = 0; i < m.parameterCount(); ++i) {
        Argument argument;
        argument.name = QString::fromLatin1(names.at(i));
        argument.typeId = m.parameterType(i);
        argument.holdsObject = argument.typeId != QMetaType::UnknownType && ValueText::holdsObject(argument.typeId);
        if (argument.typeId == QMetaType::UnknownType || argument.typeId >= QMetaType::User) {
            argument.enumerator = ValueText::findEnum(types.at(i), metaObject);
        }
        info.arguments.append(argument);
    }
    return *m_methods.insert(key, info);
}

Event SystemWatcher::buildEvent(QObject *sender, const Method &info, void **arguments) const
{
    Event event;
    event.ms = m_systemPrivate ? m_systemPrivate->elapsedMs() : 0;
    event.object = nameOf(sender);
    event.signal = info.name;
    event.arguments.reserve(info.arguments.size());
    for (int i = 0; i < info.arguments.size(); ++i) {
        const Argument &a = info.arguments.at(i);
        const void *data = arguments[i + 1];
        EventArgument out;
        out.name = a.name;
        if (a.enumerator.isValid()) {
            out.text = ValueText::enumText(a.enumerator, ValueText::readEnum(data, a.typeId));
            out.value = out.text;
        } else if (a.typeId == QMetaType::UnknownType || !data) {
            out.text = QStringLiteral("(none)");
        } else {
            const QVariant value(a.typeId, data);
            out.text = ValueText::format(value, QMetaEnum(), this);
            out.value = ValueText::toJson(value, QMetaEnum(), this);
        }
        event.arguments.append(out);
    }
    return event;
}

void SystemWatcher::relay(QObject *sender, int methodIndex, void **arguments)
{
    const auto entry = m_entries.constFind(sender);
    if (entry == m_entries.constEnd() || m_orphaned) {
        return;
    }
    const Method &info = method(sender->metaObject(), methodIndex);
    ++m_emissions[nameOf(sender, *entry)][info.rawName];
    QObject *root = entry->root;
    const bool senderReaches = entry->mayReach;
    ++m_relaying;

    // Objects in the arguments are watched first, so that they appear under their watch names.
    for (int i = 0; i < info.arguments.size(); ++i) {
        if (info.arguments.at(i).holdsObject) {
            if (QObject *object = ValueText::objectOf(QVariant(info.arguments.at(i).typeId, arguments[i + 1]))) {
                // A detected device belongs to no one else; other objects belong to the sender's device.
                watchFrom(object, QString(), qobject_cast<IDevice *>(object) ? object : root);
            }
        }
    }
    if (!m_listeners.isEmpty()) {
        const Event event = buildEvent(sender, info, arguments);
        // A session may stop listening, or go, while it is told.
        const QVector<QPointer<EventWatcher>> listeners = m_listeners;
        for (const QPointer<EventWatcher> &listener : listeners) {
            if (listener && !m_orphaned && m_listeners.contains(listener)) {
                Q_EMIT listener->signalled(event);
            }
        }
    }

    if (!m_orphaned) {
        if (senderReaches && sender != root && m_entries.contains(sender)) {
            scanReachable(sender, root);
        }
        const auto rootEntry = m_entries.constFind(root);
        if (rootEntry != m_entries.constEnd() && rootEntry->mayReach) {
            scanReachable(root, root);
        }
    }
    --m_relaying;
}

} // namespace VantixControl

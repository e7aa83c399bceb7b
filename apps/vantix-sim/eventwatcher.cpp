#include "eventwatcher.h"

#include "devicenames.h"
#include "valuetext.h"

#include <vantix/system.h>

#include <QMetaMethod>
#include <QMetaProperty>
#include <QRegularExpression>

using namespace TQ_SPAPI;

/**
 * Receives every signal of one object. It has no meta-object of its own:
 * connections are made to method indexes past QObject's, which qt_metacall
 * turns back into the index of the signal that fired.
 */
class SignalRelay : public QObject
{
public:
    SignalRelay(EventWatcher *watcher, QObject *target)
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
    EventWatcher *m_watcher;
    QObject *m_target;
};

namespace {
QString shortClassName(const QObject *object)
{
    const QString name = QString::fromLatin1(object->metaObject()->className());
    return name.mid(name.lastIndexOf(QLatin1Char(':')) + 1);
}

// A peer is best known by its bssid: the first constant text property that is set.
QString identityOf(const QObject *object)
{
    const QMetaObject *metaObject = object->metaObject();
    for (int i = QObject::staticMetaObject.propertyCount(); i < metaObject->propertyCount(); ++i) {
        const QMetaProperty p = metaObject->property(i);
        if (p.isConstant() && p.userType() == QMetaType::QString) {
            const QString value = p.read(object).toString();
            if (!value.isEmpty()) {
                return value;
            }
        }
    }
    return QString();
}
} // namespace

EventWatcher::EventWatcher(System *system, QObject *parent)
    : QObject(parent)
    , m_system(system)
{
    ValueText::setObjectNamer([this](const QObject *object) { return nameOf(object); });
}

EventWatcher::~EventWatcher()
{
    ValueText::setObjectNamer(nullptr);
}

bool EventWatcher::isInterfaceObject(const QObject *object)
{
    static const QRegularExpression interfaceName(QStringLiteral("^I[A-Z][A-Za-z0-9]*$"));
    return object && !qobject_cast<const IDevice *>(object) && interfaceName.match(shortClassName(object)).hasMatch();
}

QString EventWatcher::aliasOf(const QObject *object)
{
    return shortClassName(object).mid(1).toLower();
}

void EventWatcher::start()
{
    if (m_started) {
        return;
    }
    m_started = true;
    watchFrom(m_system, QStringLiteral("System"), m_system);
    for (const IDevicePtr &device : m_system->devices()) {
        watch(device.data());
    }
}

void EventWatcher::watch(QObject *object, const QString &name)
{
    watchFrom(object, name, object);
}

void EventWatcher::watchFrom(QObject *object, const QString &name, QObject *root)
{
    if (!object || m_entries.contains(object)) {
        return;
    }
    ValueText::addMetaObject(object->metaObject());
    Entry entry;
    entry.fixedName = name;
    entry.root = qobject_cast<IDevice *>(object) || object == m_system ? object : root;
    if (name.isEmpty() && !qobject_cast<IDevice *>(object)) {
        entry.serial = ++m_serials[shortClassName(object)];
    }
    entry.relay = new SignalRelay(this, object);
    m_entries.insert(object, entry);
    m_order.append(object);
    connect(object, &QObject::destroyed, this, [this, object] { forget(object); });
    scanReachable(object, entry.root);
}

void EventWatcher::forget(QObject *object)
{
    const auto it = m_entries.find(object);
    if (it == m_entries.end()) {
        return;
    }
    delete it->relay;
    m_entries.erase(it);
    m_order.removeAll(object);
}

QString EventWatcher::nameOf(const QObject *object) const
{
    const auto it = m_entries.constFind(object);
    if (it == m_entries.constEnd()) {
        return QString();
    }
    if (!it->fixedName.isEmpty()) {
        return it->fixedName;
    }
    if (const auto *device = qobject_cast<const IDevice *>(object)) {
        return DeviceNames::name(device->id());
    }
    if (it->root == m_system) {
        return shortClassName(object);
    }
    const QString identity = identityOf(object);
    return identity.isEmpty() ? QStringLiteral("%1#%2").arg(shortClassName(object)).arg(it->serial)
                              : QStringLiteral("%1(%2)").arg(shortClassName(object), identity);
}

QObject *EventWatcher::find(const QString &name) const
{
    for (QObject *object : m_order) {
        if (nameOf(object).compare(name, Qt::CaseInsensitive) == 0 ||
            (isInterfaceObject(object) && aliasOf(object) == name.toLower())) {
            return object;
        }
    }
    return nullptr;
}

int EventWatcher::emissions(const QString &objectName, const QByteArray &signal) const
{
    return m_emissions.value(objectName).value(signal);
}

namespace {
bool isPlainPointer(int typeId)
{
    const QMetaType::TypeFlags complex =
        QMetaType::NeedsConstruction | QMetaType::NeedsDestruction | QMetaType::IsEnumeration | QMetaType::IsGadget;
    return typeId >= QMetaType::User && QMetaType::sizeOf(typeId) == int(sizeof(void *)) &&
        !(QMetaType::typeFlags(typeId) & complex);
}
} // namespace

QObject *EventWatcher::knownObject(const void *address, QObject *root) const
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
void EventWatcher::scanReachable(QObject *object, QObject *root)
{
    const QMetaObject *metaObject = object->metaObject();
    for (int i = QObject::staticMetaObject.propertyCount(); i < metaObject->propertyCount(); ++i) {
        const QMetaProperty p = metaObject->property(i);
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

void EventWatcher::relay(QObject *sender, int methodIndex, void **arguments)
{
    const auto entry = m_entries.constFind(sender);
    if (entry == m_entries.constEnd()) {
        return;
    }
    QObject *root = entry->root;
    const QMetaMethod method = sender->metaObject()->method(methodIndex);
    const QList<QByteArray> types = method.parameterTypes();
    const QList<QByteArray> names = method.parameterNames();
    // Objects in the arguments are watched first, so that they appear under their watch names.
    for (int i = 0; i < method.parameterCount(); ++i) {
        const int typeId = method.parameterType(i);
        if (typeId != QMetaType::UnknownType && ValueText::holdsObject(typeId)) {
            if (QObject *object = ValueText::objectOf(QVariant(typeId, arguments[i + 1]))) {
                // A detected device belongs to no one else; other objects belong to the sender's device.
                watchFrom(object, QString(), qobject_cast<IDevice *>(object) ? object : root);
            }
        }
    }
    QStringList texts;
    for (int i = 0; i < method.parameterCount(); ++i) {
        const QString value =
            ValueText::formatArgument(method.parameterType(i), types.at(i), arguments[i + 1], sender->metaObject());
        texts.append(names.at(i).isEmpty() ? value : QString::fromLatin1(names.at(i)) + QLatin1Char('=') + value);
    }
    const QString name = nameOf(sender);
    ++m_emissions[name][method.name()];
    Q_EMIT signalled(sender, name, QString::fromLatin1(method.name()), texts);

    if (sender != root && m_entries.contains(sender)) {
        scanReachable(sender, root);
    }
    if (m_entries.contains(root)) {
        scanReachable(root, root);
    }
}

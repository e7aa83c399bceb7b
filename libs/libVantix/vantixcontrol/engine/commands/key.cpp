// key <name>: a key released for the debug controller's shortcuts, as plain
// values, so it works in any application, with or without a window.

#include "commandtable_p.h"
#include "keynames_p.h"
#include "schema_p.h"
#include <vantix/vantixdebug.h>

#include <QJsonArray>
#include <QJsonObject>

using TQ_SPAPI::VantixDebug;

namespace VantixControl {

namespace {
Reply key(Invocation &invocation)
{
    // The name was checked before the command ran.
    int code = 0;
    Qt::KeyboardModifiers modifiers;
    QString error;
    KeyNames::parse(invocation.word(QStringLiteral("key")), &code, &modifiers, &error);
    const QString name = KeyNames::name(code, modifiers);
    switch (VantixDebug::instance()->runShortcut(code, modifiers)) {
    case VantixDebug::ShortcutConsumed:
        return Reply::success(QStringLiteral("consumed"));
    case VantixDebug::ShortcutPassedOn:
        return Reply::success(QStringLiteral("not consumed"));
    case VantixDebug::ShortcutSkipped:
        return Reply::failure(
            ErrorClass::Failed, QStringLiteral("%1: the device it acts on is not present; nothing changed").arg(name));
    case VantixDebug::ShortcutNone:
        break;
    }
    QStringList keys;
    for (const QJsonValue &value : Schema::shortcuts()) {
        keys.append(value.toObject().value(QLatin1String("key")).toString());
    }
    return Reply::failure(ErrorClass::BadValue,
        QStringLiteral("%1 is no shortcut of the debug controller; they are %2")
            .arg(name, keys.join(QLatin1String(", "))));
}
} // namespace

void addKey(CommandTable &table)
{
    CommandEntry entry;
    entry.name = QStringLiteral("key");
    entry.forms = {{required(QStringLiteral("key"), Argument::Key)}};
    entry.help = QStringLiteral("release a key for the debug controller: keypad+1, shift+F4, ctrl+F4, F2, F9");
    entry.label = QStringLiteral("Key");
    entry.run = key;
    table.add(entry);
}

} // namespace VantixControl

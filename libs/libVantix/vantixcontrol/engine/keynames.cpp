#include "keynames_p.h"

#include <QMetaEnum>
#include <QStringList>

namespace VantixControl {

namespace {
struct ModifierName
{
    const char *name;
    Qt::KeyboardModifier modifier;
};

// The first name of a modifier is the one written back.
const ModifierName modifierNames[] = {
    {"shift", Qt::ShiftModifier},
    {"ctrl", Qt::ControlModifier},
    {"control", Qt::ControlModifier},
    {"alt", Qt::AltModifier},
    {"meta", Qt::MetaModifier},
    {"keypad", Qt::KeypadModifier},
    {"kp", Qt::KeypadModifier},
    {"num", Qt::KeypadModifier},
};

bool modifierOf(const QString &word, Qt::KeyboardModifier *modifier)
{
    const QString w = word.trimmed().toLower();
    for (const ModifierName &m : modifierNames) {
        if (w == QLatin1String(m.name)) {
            *modifier = m.modifier;
            return true;
        }
    }
    return false;
}

// Qt's own key names, with or without "Key_" (F2, Key_Enter, backspace), or
// one printable character, whose key code is its upper-case form.
int keyOf(const QString &name)
{
    if (name.size() == 1 && name.at(0).unicode() > 0x20 && name.at(0).unicode() < 0x7f) {
        return name.at(0).toUpper().unicode();
    }
    const QMetaEnum keys = QMetaEnum::fromType<Qt::Key>();
    const QString wanted = name.startsWith(QLatin1String("Key_"), Qt::CaseInsensitive) ? name.mid(4) : name;
    for (int i = 0; i < keys.keyCount(); ++i) {
        if (QString::fromLatin1(keys.key(i)).mid(4).compare(wanted, Qt::CaseInsensitive) == 0) {
            return keys.value(i);
        }
    }
    return 0;
}
} // namespace

bool KeyNames::parse(const QString &text, int *key, Qt::KeyboardModifiers *modifiers, QString *error)
{
    QString rest = text.trimmed();
    QString keyName;
    // The plus key itself: "+", "keypad++".
    if (rest == QLatin1String("+") || rest.endsWith(QLatin1String("++"))) {
        keyName = QStringLiteral("+");
        rest.chop(rest.size() == 1 ? 1 : 2);
    } else {
        const int plus = rest.lastIndexOf(QLatin1Char('+'));
        keyName = rest.mid(plus + 1);
        rest.truncate(plus < 0 ? 0 : plus);
    }
    Qt::KeyboardModifiers found;
    if (!rest.isEmpty()) {
        for (const QString &word : rest.split(QLatin1Char('+'))) {
            Qt::KeyboardModifier modifier = Qt::NoModifier;
            if (!modifierOf(word, &modifier)) {
                *error = QStringLiteral("unknown modifier \"%1\"; expected shift, ctrl, alt, meta or keypad").arg(word);
                return false;
            }
            found |= modifier;
        }
    }
    const int code = keyName.trimmed().isEmpty() ? 0 : keyOf(keyName.trimmed());
    if (code == 0) {
        *error =
            QStringLiteral("unknown key \"%1\"; expected a key name such as F2, F9, 1, A, Space or Enter").arg(keyName);
        return false;
    }
    *key = code;
    *modifiers = found;
    return true;
}

QString KeyNames::name(int key, Qt::KeyboardModifiers modifiers)
{
    QStringList parts;
    for (const Qt::KeyboardModifier m :
        {Qt::ShiftModifier, Qt::ControlModifier, Qt::AltModifier, Qt::MetaModifier, Qt::KeypadModifier}) {
        if (modifiers.testFlag(m)) {
            for (const ModifierName &n : modifierNames) {
                if (n.modifier == m) {
                    parts.append(QLatin1String(n.name));
                    break;
                }
            }
        }
    }
    const char *keyName = QMetaEnum::fromType<Qt::Key>().valueToKey(key);
    parts.append(keyName ? QString::fromLatin1(keyName).mid(4) : QString::number(key));
    return parts.join(QLatin1Char('+'));
}

} // namespace VantixControl

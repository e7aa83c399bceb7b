#include "keynames.h"

#include <QKeySequence>
#include <QMetaEnum>
#include <QStringList>

namespace {
bool modifierOf(const QString &word, Qt::KeyboardModifier *modifier)
{
    const QString w = word.trimmed().toLower();
    if (w == QLatin1String("shift")) {
        *modifier = Qt::ShiftModifier;
    } else if (w == QLatin1String("ctrl") || w == QLatin1String("control")) {
        *modifier = Qt::ControlModifier;
    } else if (w == QLatin1String("alt")) {
        *modifier = Qt::AltModifier;
    } else if (w == QLatin1String("meta")) {
        *modifier = Qt::MetaModifier;
    } else if (w == QLatin1String("keypad") || w == QLatin1String("kp") || w == QLatin1String("num")) {
        *modifier = Qt::KeypadModifier;
    } else {
        return false;
    }
    return true;
}

int keyOf(const QString &name)
{
    const QKeySequence sequence = QKeySequence::fromString(name, QKeySequence::PortableText);
    if (sequence.count() == 1) {
        const int combined = sequence[0];
        const int key = combined & ~int(Qt::KeyboardModifierMask);
        if ((combined & int(Qt::KeyboardModifierMask)) == 0 && key != 0 && key != Qt::Key_unknown) {
            return key;
        }
    }
    // Qt's own names, with or without "Key_": Key_Enter, backspace.
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

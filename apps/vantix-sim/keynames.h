#ifndef VANTIXSIM_KEYNAMES_H
#define VANTIXSIM_KEYNAMES_H

#include <QString>
#include <Qt>

/// Keys as a user writes them: "F2", "keypad+1", "shift+F4", "ctrl+F4".
namespace KeyNames {

/**
 * Reads a key with its modifiers (shift, ctrl, alt, meta, keypad) joined by
 * "+". On failure returns false and sets @p error to what was expected.
 */
bool parse(const QString &text, int *key, Qt::KeyboardModifiers *modifiers, QString *error);

} // namespace KeyNames

#endif

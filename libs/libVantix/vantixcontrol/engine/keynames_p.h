#ifndef VANTIXCONTROL_KEYNAMES_P_H
#define VANTIXCONTROL_KEYNAMES_P_H

#include <vantix/vantix_private_export.h>

#include <QString>
#include <Qt>

namespace VantixControl {

/// Keys as a user writes them: "F2", "keypad+1", "shift+F4", "ctrl+F4".
namespace KeyNames {

/**
 * Reads a key with its modifiers (shift, ctrl, alt, meta, keypad) joined by
 * "+". On failure returns false and sets @p error to what was expected.
 */
VANTIX_PRIVATE_EXPORT bool parse(const QString &text, int *key, Qt::KeyboardModifiers *modifiers, QString *error);
/// The way parse() reads it back: "keypad+1", "shift+F4".
VANTIX_PRIVATE_EXPORT QString name(int key, Qt::KeyboardModifiers modifiers);

} // namespace KeyNames
} // namespace VantixControl

#endif

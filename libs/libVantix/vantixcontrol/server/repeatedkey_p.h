#ifndef VANTIXCONTROL_REPEATEDKEY_P_H
#define VANTIXCONTROL_REPEATEDKEY_P_H

#include <vantix/vantix_private_export.h>

#include <QString>

class QByteArray;

namespace VantixControl {

/**
 * The first key that one object of the JSON text @p json names twice, at any
 * depth, as a reader would spell it ("\u0069d" is "id"); a null string when
 * there is none. Text that is not JSON is read as far as it goes.
 *
 * Requests with one are refused before Qt reads them: Qt 5.15's reader loses
 * the memory of an object or array that a repeated key replaces, so every
 * such line a client sent would stay in the application for good.
 */
VANTIX_PRIVATE_EXPORT QString repeatedKey(const QByteArray &json);

} // namespace VantixControl

#endif

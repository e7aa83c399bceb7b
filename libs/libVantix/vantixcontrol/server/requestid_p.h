#ifndef VANTIXCONTROL_REQUESTID_P_H
#define VANTIXCONTROL_REQUESTID_P_H

#include <vantix/vantix_private_export.h>

#include <QByteArray>

namespace VantixControl {

/**
 * The id of a request as the client wrote it: the JSON text of the "id"
 * member of the object on @p line (the last one, as JSON readers take it),
 * without the blanks around it, so that an answer can carry it back byte for
 * byte (9007199254740993 stays that, 1.0 stays 1.0). Empty when the line is
 * no object or has no id. The line is only scanned, not checked: a caller
 * that has not parsed it checks the text it gets.
 */
enum class IdOccurrence {
    Last, ///< as JSON readers take a repeated key
    First, ///< enough for a line known to hold one id, as answers do
};
VANTIX_PRIVATE_EXPORT QByteArray requestIdText(const QByteArray &line, IdOccurrence which = IdOccurrence::Last);

} // namespace VantixControl

#endif

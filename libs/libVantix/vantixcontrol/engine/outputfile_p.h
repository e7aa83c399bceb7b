#ifndef VANTIXCONTROL_OUTPUTFILE_P_H
#define VANTIXCONTROL_OUTPUTFILE_P_H

#include <vantix/vantix_private_export.h>

#include <QString>

class QFile;

namespace VantixControl {

/**
 * Files the console writes for a user (dump, record). Opening one never
 * blocks the application: a named pipe nobody reads, a device or a folder
 * is refused, and only a new name or, when the user said so, an existing
 * regular file is written.
 */
namespace OutputFile {

/// Opens @p path (absolute) for writing; false with the reason a user reads.
VANTIX_PRIVATE_EXPORT bool open(QFile *file, const QString &path, bool replace, QString *error);

} // namespace OutputFile
} // namespace VantixControl

#endif

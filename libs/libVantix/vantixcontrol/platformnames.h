#ifndef VANTIXCONTROL_PLATFORMNAMES_H
#define VANTIXCONTROL_PLATFORMNAMES_H

#include <vantix/system.h>
#include <vantix/vantix_export.h>

#include <QStringList>

namespace VantixControl {

/// The platform names users type ("tolvex-plus"), and back.
namespace PlatformNames {
VANTIX_EXPORT bool fromName(const QString &name, TQ_SPAPI::System::PlatformType *platform);
/// "tolvex-plus" for PT_TOLVEX_PLUS; the number for a platform without a name.
VANTIX_EXPORT QString name(TQ_SPAPI::System::PlatformType platform);
VANTIX_EXPORT QStringList names();
} // namespace PlatformNames

} // namespace VantixControl

#endif

#ifndef VANTIX_PLATFORMNAMES_H
#define VANTIX_PLATFORMNAMES_H

#include <vantix/system.h>
#include <vantix/vantix_export.h>

#include <QStringList>

namespace TQ_SPAPI {

/**
 * The platform names people type ("tolvex-plus"), and back: what an
 * application's --platform option, vantix-sim and the control tools take.
 */
namespace PlatformNames {
/// The platform named @p name, ignoring case; false for an unknown name.
VANTIX_EXPORT bool fromName(const QString &name, System::PlatformType *platform);
/// "tolvex-plus" for PT_TOLVEX_PLUS; the number for a platform without a name.
VANTIX_EXPORT QString name(System::PlatformType platform);
/// Every name, in the order of the platforms.
VANTIX_EXPORT QStringList names();
} // namespace PlatformNames

} // namespace TQ_SPAPI

#endif

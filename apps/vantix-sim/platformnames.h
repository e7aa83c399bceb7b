#ifndef VANTIXSIM_PLATFORMNAMES_H
#define VANTIXSIM_PLATFORMNAMES_H

#include <vantix/system.h>

#include <QStringList>

/// The platform names users type ("tolvex-plus"), and back.
namespace PlatformNames {
bool fromName(const QString &name, TQ_SPAPI::System::PlatformType *platform);
QStringList names();
} // namespace PlatformNames

#endif

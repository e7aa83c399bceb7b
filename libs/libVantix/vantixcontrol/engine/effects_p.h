#ifndef VANTIXCONTROL_EFFECTS_P_H
#define VANTIXCONTROL_EFFECTS_P_H

#include <vantix/vantix_private_export.h>

#include <QString>

struct QMetaObject;

namespace VantixControl {

/**
 * Setters and methods whose effect in this build is not what their name
 * says. Writing such a property or calling such a method must not be
 * answered with a plain OK, and front ends should not offer them as if they
 * worked.
 */
struct Effect
{
    enum Kind {
        Normal, ///< changes what its name says; checked by reading back
        None, ///< deliberately changes nothing in this build
        TraceOnly, ///< writes a trace line and changes nothing
        Indirect, ///< acts elsewhere; the property itself keeps its value
    };
    Kind kind = Normal;
    /// What to use instead, or where the effect shows.
    QString hint;

    /// "none", "trace", "indirect" or "" for the schema.
    QString name() const;
};

/// The effect of writing or calling @p member (a property or method name) of @p metaObject's class.
VANTIX_PRIVATE_EXPORT Effect effectOf(const QMetaObject *metaObject, const QByteArray &member);

} // namespace VantixControl

#endif

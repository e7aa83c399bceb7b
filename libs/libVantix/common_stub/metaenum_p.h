#ifndef VANTIX_METAENUM_P_H
#define VANTIX_METAENUM_P_H

#include <QByteArray>
#include <QMetaEnum>

namespace TQ_SPAPI {

/// The enumerator name of @p value ("ID_AUDIO"), empty for a value without one.
template<typename Enum>
QByteArray enumKey(Enum value)
{
    return QByteArray(QMetaEnum::fromType<Enum>().valueToKey(int(value)));
}

/// A flag set written by name ("F_ENABLE|F_CHARGE").
template<typename Flags>
QByteArray flagKeys(Flags value)
{
    return QMetaEnum::fromType<Flags>().valueToKeys(int(value));
}

} // namespace TQ_SPAPI

#endif

#ifndef VANTIXCONTROL_ENUMLABELS_P_H
#define VANTIXCONTROL_ENUMLABELS_P_H

#include <vantix/vantix_private_export.h>

#include <QJsonObject>

class QMetaEnum;

namespace VantixControl {

/**
 * The words a person reads for the enum values they meet ("Activated" for
 * NETWORK_STATE_ACTIVATED, "charging" for F_CHARGE), kept in one table so
 * that every client shows the same ones. Values of a plain enum read alone
 * and start with a capital; flags are read in lists, and colours inside
 * phrases, and do not.
 */
namespace EnumLabels {

/// The label of @p key of enum @p enumName ("NetworkState"); empty when it has none.
VANTIX_PRIVATE_EXPORT QString label(const QString &enumName, const QString &key);
/// Every key of @p e that has a label, with its label; empty for an enum without labels.
VANTIX_PRIVATE_EXPORT QJsonObject labels(const QMetaEnum &e);

} // namespace EnumLabels
} // namespace VantixControl

#endif

#ifndef VANTIXCONTROL_LOGGING_P_H
#define VANTIXCONTROL_LOGGING_P_H

#include <QLoggingCategory>

// The engine's and the server's own messages; only warnings show unless a
// user's logging rules ask for more ("vantix.control.debug=true").
Q_DECLARE_LOGGING_CATEGORY(lcConsole)
Q_DECLARE_LOGGING_CATEGORY(lcControl)

#endif

#include "logging_p.h"

Q_LOGGING_CATEGORY(lcConsole, "vantix.console", QtWarningMsg)
Q_LOGGING_CATEGORY(lcControl, "vantix.control", QtWarningMsg)

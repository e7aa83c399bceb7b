#ifndef VANTIXAPPS_APPSELECTOR_H
#define VANTIXAPPS_APPSELECTOR_H

#include <vantixcontrol/client/selector.h>

/// Which running application a tool talks to; the rules live in the client library.
using AppSelector = VantixControl::Selector;

#endif

#ifndef VANTIX_VANTIX_H
#define VANTIX_VANTIX_H

// Everything an application needs: include this one header.

#include <vantix/abstractlistmodel.h>
#include <vantix/devicelist.h>
#include <vantix/iaccesspoint.h>
#include <vantix/idevice.h>
#include <vantix/inetwork.h>
#include <vantix/iwifi.h>
#include <vantix/listmodel.h>
#include <vantix/system.h>

#include "vantixdebug.h"

#endif

#ifndef VANTIX_VANTIX_H
#define VANTIX_VANTIX_H

// Everything an application needs: include this one header.

#include <vantix/abstractlistmodel.h>
#include <vantix/devicelist.h>
#include <vantix/iaccesspoint.h>
#include <vantix/iapimessage.h>
#include <vantix/iaudio.h>
#include <vantix/ibattery.h>
#include <vantix/ibluetooth.h>
#include <vantix/ibutton.h>
#include <vantix/icanmux.h>
#include <vantix/idevice.h>
#include <vantix/idisk.h>
#include <vantix/idisplay.h>
#include <vantix/iiocontroller.h>
#include <vantix/iled.h>
#include <vantix/inetwork.h>
#include <vantix/ipwmecg.h>
#include <vantix/isensor.h>
#include <vantix/isoundamplifier.h>
#include <vantix/itimesettings.h>
#include <vantix/iusb.h>
#include <vantix/ivibrator.h>
#include <vantix/iwifi.h>
#include <vantix/iwifip2p.h>
#include <vantix/iwifip2ppeer.h>
#include <vantix/listmodel.h>
#include <vantix/platformnames.h>
#include <vantix/system.h>
#include <vantix/vantix_version.h>
#include <vantix/vantixdebug.h>
#include <vantix/wifip2pservice.h>

#endif

#ifndef VANTIX_USBPRIVATE_P_H
#define VANTIX_USBPRIVATE_P_H

#include <vantix/iusb.h>
#include <vantix/vantix_private_export.h>

#include "deviceprivate_p.h"

namespace TQ_SPAPI {

/**
 * The simulated USB function: an STM32 microcontroller waiting in its DFU
 * boot loader (vendor 0483, product df11, interface fe/01/02), the device a
 * firmware upgrade talks to.
 */
class VANTIX_PRIVATE_EXPORT UsbPrivate : public DevicePrivate
{
    Q_OBJECT

public:
    UsbPrivate(IUsb *q, IDevice::DeviceId id);

    const QString model = QStringLiteral("STM32_DFU");
    const QString modelRaw = QStringLiteral("STM32 DFU");
    const QString modelDb = QStringLiteral("STM Device in DFU Mode");
    const QString modelId = QStringLiteral("df11");
    const QString revision = QStringLiteral("0200");
    // The boot loader reports its vendor and model where a serial number would be.
    const QString serial = QStringLiteral("STMicroelectronics_STM32_DFU");
    const QString serialShort = QLatin1String("");
    const QString vendor = QStringLiteral("STMicroelectronics");
    const QString vendorId = QStringLiteral("0483");
    const QString usbInterfaces = QStringLiteral(":fe0102:");
};

} // namespace TQ_SPAPI

#endif

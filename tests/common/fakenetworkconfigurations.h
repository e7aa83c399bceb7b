#ifndef VANTIX_TEST_FAKENETWORKCONFIGURATIONS_H
#define VANTIX_TEST_FAKENETWORKCONFIGURATIONS_H

#include "networkconfigurations_p.h"

/**
 * Host network configurations made up by a test. Install it with
 * NetworkConfigurations::setInstance() before creating a device; change
 * `configurations` and emit the base's signals to play the host.
 */
class FakeNetworkConfigurations : public TQ_SPAPI::NetworkConfigurations
{
public:
    QList<Configuration> allConfigurations() const override { return configurations; }
    void updateConfigurations() override { ++updateRequests; }

    /// A wireless network the host knows; @p active if it is connected to it.
    static Configuration wlan(const QString &name, bool active)
    {
        Configuration c;
        c.name = name;
        c.wlan = true;
        c.defined = true;
        c.active = active;
        return c;
    }

    QList<Configuration> configurations;
    int updateRequests = 0;
};

#endif

/// What all users of the simulated interface share.
#ifndef VEK_SIM_DEVICE_INTERFACE_H
#define VEK_SIM_DEVICE_INTERFACE_H

#include <array>
#include <deque>
#include <vector>

#include <linux/ipmi.h>

#include "sim/device/clock.h"
#include "sim/model/message.h"

namespace Sim
{

class Bmc;
class Handle;

/// One life of it: when the device vanishes, its handles stay with what is
/// gone, and a device that comes back starts anew.
struct Interface
{
    struct Channel
    {
        uint8_t address = 0x20;
        uint8_t lun = 2;
        bool isIpmb = false;
    };
    struct Registration
    {
        const Handle* owner;
        unsigned netFn, command;
        unsigned channels; ///< One bit each.
    };

    explicit Interface(Bmc& bmc);

    bool gone = false;
    std::array<Channel, IPMI_NUM_CHANNELS> channels{};
    int maintenanceMode = IPMI_MAINTENANCE_MODE_AUTO;
    std::vector<Registration> registrations;
    std::deque<Bytes> events; ///< That no user has asked for so far.
    Time busyUntil{};         ///< The controller serves one request at a time.
};

} // namespace Sim

#endif

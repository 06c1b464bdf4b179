/// The chassis (IPMI v2.0, 28).
#ifndef VEK_SIM_MODEL_CHASSIS_H
#define VEK_SIM_MODEL_CHASSIS_H

#include "sim/model/command.h"

namespace Sim
{

struct Chassis
{
    enum class Light : uint8_t
    {
        Off = 0,
        Timed = 1,
        Forced = 2
    };

    uint8_t capabilities = 0;
    uint8_t fruAddress = 0x20, sdrAddress = 0x20, selAddress = 0x20,
            systemManagementAddress = 0x20;
    uint8_t bridgeAddress = 0x20;

    uint8_t power = 0x01; ///< Bit 0: on; 6:5 restore policy, and faults.
    uint8_t lastPowerEvent = 0;
    uint8_t faults = 0; ///< Bits 3:0 of the miscellaneous chassis state.
    uint8_t frontPanel = 0;

    bool identify = true;       ///< Chassis Identify is there.
    bool identifyForced = true; ///< With its second byte.
    bool lightForced = false;
    int64_t litUntil = 0; ///< Seconds since 1970.

    Light light(int64_t now) const;
};

extern const Family chassisFamily;

} // namespace Sim

#endif

/// The channels that lead to the controller (IPMI v2.0, 6.3 and 22.24).
#ifndef VEK_SIM_MODEL_CHANNEL_H
#define VEK_SIM_MODEL_CHANNEL_H

#include "sim/model/command.h"

namespace Sim
{

struct Channel
{
    uint8_t number = 0;
    uint8_t medium = 0;
    uint8_t protocol = 0;
    uint8_t sessions = 0; ///< Session support, not shifted.
    uint8_t activeSessions = 0;
    uint32_t vendor = 7154; ///< Who defined the protocol: the IPMI forum.
    Bytes auxiliary{0, 0};
};

extern const Family channelFamily;

} // namespace Sim

#endif

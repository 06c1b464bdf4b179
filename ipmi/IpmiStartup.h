/// The commands that are sent once when a node starts.
#ifndef VEK_IPMI_PRIVATE_IPMISTARTUP_H
#define VEK_IPMI_PRIVATE_IPMISTARTUP_H

#include <cstdint>

#include "ipmi/IpmiTransport.h"

namespace Ipmi
{

struct OneShotCommand
{
    int32_t enabled; ///< 1: send.
    /// Takes the response, whatever its completion code. A command without a
    /// handler is not sent.
    int (*handler)(ipmiifc_resp*);
    uint8_t netfn;
    uint8_t cmd;
    uint16_t data_len;
    uint8_t* data;
    int32_t flags;
};

constexpr unsigned oneShotCount = 7;
/// The first entries: device id and the operating system's name and version.
constexpr unsigned oneShotIdentityCount = 3;

extern OneShotCommand one_shot_list_cmd[oneShotCount];

/// Sends the first `count` entries and hands each response to its handler.
/// Always 0.
int IpmiIfcDataGet(unsigned count);

} // namespace Ipmi

#endif

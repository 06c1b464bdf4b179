/// The system interface's own state: what it may interrupt for, and what
/// waits to be read (IPMI v2.0, 22.1 to 22.8).
#ifndef VEK_SIM_MODEL_MESSAGING_H
#define VEK_SIM_MODEL_MESSAGING_H

#include <deque>

#include "sim/model/command.h"

namespace Sim
{

struct Messaging
{
    enum Enable : uint8_t
    {
        receiveInterrupt = 0x01,
        eventInterrupt = 0x02,
        eventMessageBuffer = 0x04,
        systemEventLogging = 0x08
    };
    enum Flag : uint8_t
    {
        receiveMessage = 0x01,
        eventMessage = 0x02
    };

    bool eventBuffer = true; ///< There is one that can be enabled.
    uint8_t enables = systemEventLogging;
    std::deque<Bytes> events;   ///< 16 bytes each; the first is in the buffer.
    std::deque<Bytes> received; ///< From buses, as Get Message gives them.

    uint8_t flags() const
    {
        return uint8_t((received.empty() ? 0 : receiveMessage) |
                       (events.empty() ? 0 : eventMessage));
    }
};

extern const Family messagingFamily;

} // namespace Sim

#endif

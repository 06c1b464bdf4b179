#include "sim/model/messaging.h"

#include "sim/profile/describe.h"

namespace Sim
{
namespace
{

// IPMI v2.0, 22.1.
constexpr Word enables[] = {
    {"receive-interrupt", 0x01},
    {"event-interrupt", 0x02},
    {"event-buffer", 0x04},
    {"system-event-logging", 0x08},
    {"oem-0", 0x20},
    {"oem-1", 0x40},
    {"oem-2", 0x80},
};

} // namespace

void describe(Fields& io, Messaging& messaging)
{
    io.flag("eventBuffer", messaging.eventBuffer);
    io.bits("enables", messaging.enables, enables);
}

} // namespace Sim

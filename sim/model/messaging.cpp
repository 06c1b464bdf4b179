#include "sim/model/messaging.h"

#include "sim/model/bmc.h"
#include "sim/model/ipmb.h"

namespace Sim
{
namespace
{

constexpr uint8_t nothingWaits = 0x80;
constexpr uint8_t nobodyThere = 0x83; // NAK on write

Bytes setEnables(Bmc& bmc, const Bytes& data)
{
    constexpr uint8_t reserved = 0x10;
    constexpr uint8_t needEventBuffer =
        Messaging::eventInterrupt | Messaging::eventMessageBuffer;
    Messaging& messaging = *bmc.state().messaging;
    if (!messaging.eventBuffer && data[0] & needEventBuffer)
        return {cc::invalidDataField};
    messaging.enables = uint8_t(data[0] & ~reserved);
    return {cc::ok};
}

Bytes getEnables(Bmc& bmc, const Bytes&)
{
    return {cc::ok, bmc.state().messaging->enables};
}

Bytes clearFlags(Bmc& bmc, const Bytes& data)
{
    Messaging& messaging = *bmc.state().messaging;
    if (data[0] & Messaging::eventMessage)
        messaging.events.clear();
    if (data[0] & Messaging::receiveMessage)
        messaging.received.clear();
    return {cc::ok};
}

Bytes getFlags(Bmc& bmc, const Bytes&)
{
    return {cc::ok, bmc.state().messaging->flags()};
}

Bytes getMessage(Bmc& bmc, const Bytes&)
{
    auto& received = bmc.state().messaging->received;
    if (received.empty())
        return {nothingWaits};
    Bytes answer{cc::ok};
    append(answer, received.front());
    received.pop_front();
    return answer;
}

Bytes sendMessage(Bmc& bmc, const Bytes& data)
{
    if (!bmc.state().channel(data[0] & 0x0F))
        return {cc::invalidDataField};
    const auto message = unwrap(data);
    if (!message)
        return {nobodyThere};
    const auto answer = bmc.bridge(message->request);
    if (!answer)
        return {nobodyThere};
    // Whoever sent it asks for the answer when the flags show it.
    bmc.state().messaging->received.push_back(wrap(*message, *answer));
    return {cc::ok};
}

Bytes readEvent(Bmc& bmc, const Bytes&)
{
    Bytes answer{cc::ok};
    Bytes event;
    if (!bmc.takeEvent(event))
        return {nothingWaits};
    append(answer, event);
    return answer;
}

constexpr Command commands[] = {
    {0x06, 0x2E, "set-bmc-global-enables", 1, 1, setEnables},
    {0x06, 0x2F, "get-bmc-global-enables", 0, 0, getEnables},
    {0x06, 0x30, "clear-message-flags", 1, 1, clearFlags},
    {0x06, 0x31, "get-message-flags", 0, 0, getFlags},
    {0x06, 0x33, "get-message", 0, 0, getMessage},
    {0x06, 0x34, "send-message", 1, 270, sendMessage},
    {0x06, 0x35, "read-event-message-buffer", 0, 0, readEvent},
};

} // namespace

const Family messagingFamily{commands, [](const Bmc& bmc) {
                                 return bmc.state().messaging.has_value();
                             }};

} // namespace Sim

#include "sim/model/channel.h"

#include "sim/model/bmc.h"

namespace Sim
{
namespace
{

Bytes describeChannel(const Channel& channel)
{
    Bytes answer{cc::ok,
                 channel.number,
                 channel.medium,
                 channel.protocol,
                 uint8_t(channel.sessions << 6 | channel.activeSessions),
                 uint8_t(channel.vendor),
                 uint8_t(channel.vendor >> 8),
                 uint8_t(channel.vendor >> 16)};
    append(answer, channel.auxiliary);
    return answer;
}

Bytes getChannelInfo(Bmc& bmc, const Bytes& data)
{
    constexpr uint8_t presentChannel = 0x0E;
    const uint8_t asked = data[0] & 0x0F;
    const uint8_t number = asked == presentChannel ? systemInterface : asked;
    const Channel* channel = bmc.state().channel(number);
    return channel ? describeChannel(*channel) : Bytes{cc::invalidDataField};
}

constexpr Command commands[] = {
    {0x06, 0x42, "get-channel-info", 1, 1, getChannelInfo},
};

} // namespace

const Family channelFamily{commands, [](const Bmc& bmc) {
                               return !bmc.state().channels.empty();
                           }};

} // namespace Sim

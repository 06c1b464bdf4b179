#include "sim/device/interface.h"

#include "sim/model/bmc.h"

namespace Sim
{

namespace
{

constexpr uint8_t netFnApp = 0x06, getChannelInfo = 0x42, mediumIpmb = 0x01;

bool isIpmb(Bmc& bmc, uint8_t channel)
{
    Request request;
    request.netFn = netFnApp;
    request.command = getChannelInfo;
    request.data = {channel};
    const auto answer = bmc.answer(request);
    // A controller from before this command has its bus on channel 0.
    if (answer && *answer == Bytes{cc::invalidCommand})
        return channel == 0;
    return answer && answer->size() > 2 && answer->front() == cc::ok &&
           ((*answer)[2] & 0x7F) == mediumIpmb;
}

} // namespace

/// The driver asks for the channels when it finds an interface. Here the
/// model is asked behind the controller's back: nothing is counted, and no
/// fault strikes, before the first client has come.
Interface::Interface(Bmc& bmc)
{
    constexpr uint8_t channelsWithMedium = 0x0C;
    for (uint8_t channel = 0; channel < channelsWithMedium; ++channel)
        channels[channel].isIpmb = isIpmb(bmc, channel);
}

} // namespace Sim

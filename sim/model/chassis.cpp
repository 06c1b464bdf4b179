#include "sim/model/chassis.h"

#include "sim/model/bmc.h"

namespace Sim
{

Chassis::Light Chassis::light(int64_t now) const
{
    if (lightForced)
        return Light::Forced;
    return now < litUntil ? Light::Timed : Light::Off;
}

namespace
{

Bytes getCapabilities(Bmc& bmc, const Bytes&)
{
    const Chassis& chassis = *bmc.state().chassis;
    return {cc::ok,
            chassis.capabilities,
            chassis.fruAddress,
            chassis.sdrAddress,
            chassis.selAddress,
            chassis.systemManagementAddress,
            chassis.bridgeAddress};
}

Bytes getStatus(Bmc& bmc, const Bytes&)
{
    const Chassis& chassis = *bmc.state().chassis;
    constexpr uint8_t identifyStateIsShown = 0x40;
    uint8_t state = chassis.faults;
    if (chassis.identify)
        state |= uint8_t(identifyStateIsShown |
                         uint8_t(chassis.light(bmc.now())) << 4);
    return {cc::ok, chassis.power, chassis.lastPowerEvent, state,
            chassis.frontPanel};
}

Bytes identify(Bmc& bmc, const Bytes& data)
{
    constexpr uint8_t defaultSeconds = 15;
    Chassis& chassis = *bmc.state().chassis;
    if (!chassis.identify)
        return {cc::invalidCommand};
    if (data.size() > 1 && !chassis.identifyForced)
        return {cc::dataLengthInvalid};
    chassis.litUntil = bmc.now() + (data.empty() ? defaultSeconds : data[0]);
    chassis.lightForced = data.size() > 1 && data[1] & 0x01;
    return {cc::ok};
}

constexpr Command commands[] = {
    {0x00, 0x00, "get-chassis-capabilities", 0, 0, getCapabilities},
    {0x00, 0x01, "get-chassis-status", 0, 0, getStatus},
    {0x00, 0x04, "chassis-identify", 0, 2, identify},
};

} // namespace

const Family chassisFamily{commands, [](const Bmc& bmc) {
                               return bmc.state().chassis.has_value();
                           }};

} // namespace Sim

#include "sim/model/identity.h"

#include "sim/model/bmc.h"

namespace Sim
{
namespace
{

Bytes getDeviceId(Bmc& bmc, const Bytes&)
{
    const Identity& id = bmc.state().identity;
    Bytes answer{cc::ok,
                 id.deviceId,
                 id.deviceRevision,
                 id.firmwareMajor,
                 id.firmwareMinor,
                 id.ipmiVersion,
                 id.deviceSupport,
                 uint8_t(id.manufacturer),
                 uint8_t(id.manufacturer >> 8),
                 uint8_t(id.manufacturer >> 16),
                 uint8_t(id.product),
                 uint8_t(id.product >> 8)};
    append(answer, id.auxiliaryFirmware);
    return answer;
}

/// A command that hands out fixed bytes, or is not there without them.
template <Bytes Identity::*member>
Bytes getBytes(Bmc& bmc, const Bytes&)
{
    const Bytes& bytes = bmc.state().identity.*member;
    if (bytes.empty())
        return {cc::invalidCommand};
    Bytes answer{cc::ok};
    append(answer, bytes);
    return answer;
}

constexpr Command commands[] = {
    {0x06, 0x01, "get-device-id", 0, 0, getDeviceId},
    {0x06, 0x04, "get-self-test-results", 0, 0, getBytes<&Identity::selfTest>},
    {0x06, 0x07, "get-acpi-power-state", 0, 0,
     getBytes<&Identity::acpiPowerState>},
    {0x06, 0x08, "get-device-guid", 0, 0, getBytes<&Identity::deviceGuid>},
    {0x06, 0x37, "get-system-guid", 0, 0, getBytes<&Identity::systemGuid>},
};

} // namespace

const Family identityFamily{commands, [](const Bmc&) {
                                return true;
                            }};

} // namespace Sim

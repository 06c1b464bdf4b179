#include "sim/device/address.h"

#include <algorithm>
#include <cstring>

namespace Sim
{

Address Address::systemInterface(uint8_t lun)
{
    ipmi_system_interface_addr local{};
    local.addr_type = IPMI_SYSTEM_INTERFACE_ADDR_TYPE;
    local.channel = IPMI_BMC_CHANNEL;
    local.lun = lun;
    return copy(&local, sizeof local);
}

Address Address::copy(const void* memory, unsigned length)
{
    Address address;
    std::memcpy(&address.bytes, memory, std::min(length, size));
    return address;
}

bool Address::isSystemInterface() const
{
    return bytes.addr_type == IPMI_SYSTEM_INTERFACE_ADDR_TYPE;
}

bool Address::isIpmb() const
{
    return bytes.addr_type == IPMI_IPMB_ADDR_TYPE ||
           bytes.addr_type == IPMI_IPMB_BROADCAST_ADDR_TYPE;
}

uint8_t Address::lun() const
{
    ipmi_system_interface_addr local;
    std::memcpy(&local, &bytes, sizeof local);
    return isSystemInterface() ? local.lun : bytes.lun;
}

} // namespace Sim

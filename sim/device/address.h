/// Addresses of messages as users of the driver lay them out in memory.
#ifndef VEK_SIM_DEVICE_ADDRESS_H
#define VEK_SIM_DEVICE_ADDRESS_H

#include <cstdint>

#include <linux/ipmi.h>

namespace Sim
{

/// The kernel finds any wild pointer out; here only what can be no pointer is.
inline bool isFault(const void* memory)
{
    return reinterpret_cast<uintptr_t>(memory) < 4096;
}

/// The bytes of a system interface address or of an IPMB address: both are
/// eight long.
struct Address
{
    static constexpr unsigned size = sizeof(ipmi_ipmb_addr);
    static_assert(size == sizeof(ipmi_system_interface_addr));

    ipmi_ipmb_addr bytes{};

    static Address systemInterface(uint8_t lun);
    /// Of memory that holds at least `length` bytes; missing ones are 0.
    static Address copy(const void* memory, unsigned length);

    bool isSystemInterface() const;
    bool isIpmb() const; ///< Broadcasts too.
    uint8_t lun() const;
};

} // namespace Sim

#endif

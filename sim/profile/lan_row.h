/// How a LAN parameter is written in a profile.
#ifndef VEK_SIM_PROFILE_LAN_ROW_H
#define VEK_SIM_PROFILE_LAN_ROW_H

#include "sim/profile/fields.h"

namespace Sim::LanRows
{

enum class Kind
{
    Address, ///< IPv4 or IPv6, by its size.
    Bytes,
    Text,
    Number,
    Choice,
    Bits,
    Vlan
};

struct Row
{
    const char* key;
    uint8_t parameter;
    Kind kind;
    size_t size;
    Words words;
};

/// Of as many bytes as the address has.
void describeAddress(Fields& io, const char* key, Bytes& address);

/// `data` has the row's size.
void describeData(Fields& io, const Row& row, Bytes& data);

/// Whether the key says all that the bytes do.
bool fits(const Row& row, const Bytes& data);

} // namespace Sim::LanRows

#endif

/// The bytes of areas and multi-records (FRU Information Storage Definition).
#ifndef VEK_IPMI_PRIVATE_IPMIFRURECORD_H
#define VEK_IPMI_PRIVATE_IPMIFRURECORD_H

#include <vek-ipmi/IpmiFruOptional.h>

#include "ipmi/RecordView.h"

namespace Ipmi
{

/// Where a type/length byte would stand (FRU Information Storage Definition,
/// 13.), behind an area's last field.
constexpr uint8_t fruEndMark = 0xc1;

inline RecordView viewOf(const IpmiFruOptional& area)
{
    return {area.bytes(), size_t(area.size())};
}

constexpr unsigned fruRecordHeaderSize = 5;

/// A view of the header's bytes (16.1).
class FruRecordHeader
{
public:
    explicit FruRecordHeader(RecordView bytes) : bytes_{bytes} {}

    uint8_t type() const { return bytes_.u8(0); }
    bool isLast() const { return bytes_.u8(1) & 0x80; }
    uint8_t dataSize() const { return bytes_.u8(2); }
    uint8_t dataChecksum() const { return bytes_.u8(3); }

private:
    RecordView bytes_;
};

} // namespace Ipmi

#endif

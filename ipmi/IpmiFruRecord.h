/// The header of a multi-record (FRU Information Storage Definition, 16.1).
#ifndef VEK_IPMI_PRIVATE_IPMIFRURECORD_H
#define VEK_IPMI_PRIVATE_IPMIFRURECORD_H

#include "ipmi/RecordView.h"

namespace Ipmi
{

constexpr unsigned fruRecordHeaderSize = 5;

/// A view of the header's bytes.
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

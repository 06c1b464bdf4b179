#include <vek-ipmi/IpmiSdrRecord.h>

#include <algorithm>
#include <iterator>

#include <vek-ipmi/CmpiStatus.h>

namespace Ipmi
{

IpmiSdrRecord::IpmiSdrRecord(uint32_t length, const uint8_t* bytes)
{
    set(length, bytes);
}

IpmiSdrRecord::IpmiSdrRecord(const IpmiSdrRecord& other)
{
    set(other.length_, other.bytes_);
}

IpmiSdrRecord& IpmiSdrRecord::operator=(const IpmiSdrRecord& other)
{
    if (this != &other)
        set(other.length_, other.bytes_);
    return *this;
}

// Volatile, or the compiler would leave out writes to bytes that nobody reads
// again.
IpmiSdrRecord::~IpmiSdrRecord()
{
    volatile uint8_t* const bytes = bytes_;
    for (uint32_t i = 0; i < capacity; ++i)
        bytes[i] = 0;
}

void IpmiSdrRecord::set(uint32_t length, const uint8_t* bytes)
{
    std::fill(std::begin(bytes_), std::end(bytes_), uint8_t{0});
    length_ = length;
    if (length > capacity)
        throw CmpiStatus(CMPI_RC_ERR_FAILED, "SDR is too long");
    if (length)
        std::copy_n(bytes, length, bytes_);
}

} // namespace Ipmi

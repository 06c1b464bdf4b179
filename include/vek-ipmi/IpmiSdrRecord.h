/// Sensor data records as bytes (IPMI v2.0, section 43).
#ifndef VEK_IPMI_IPMISDRRECORD_H
#define VEK_IPMI_IPMISDRRECORD_H

#include <cstdint>
#include <vector>

namespace Ipmi
{

/// One raw record of at most 64 bytes, header included. A plain value without
/// a lock.
class IpmiSdrRecord
{
public:
    static constexpr uint32_t capacity = 64;

    /// Length 0, all bytes zero.
    IpmiSdrRecord() = default;
    /// As set.
    IpmiSdrRecord(uint32_t length, const uint8_t* bytes);
    /// @throws CmpiStatus as set: a record whose last set failed has a length
    ///     that cannot be copied.
    IpmiSdrRecord(const IpmiSdrRecord& other);
    IpmiSdrRecord& operator=(const IpmiSdrRecord& other);
    /// Leaves zeroes behind.
    ~IpmiSdrRecord();

    /// @throws CmpiStatus rc 1 "SDR is too long" above 64 bytes. The bytes are
    ///     then zero while the length stays the one given: callers tell by it
    ///     which record it was.
    void set(uint32_t length, const uint8_t* bytes);

    uint32_t length() const { return length_; }
    const uint8_t* bytes() const { return bytes_; }

private:
    uint32_t length_ = 0;
    uint8_t bytes_[capacity] = {};
};

/// Get SDR Repository Info response as received (IPMI v2.0, 33.9); 16 and 32
/// bit values LS byte first. A version of 0 means that none was read yet.
struct ipmiifc_sdr_info
{
    uint8_t completionCode;
    uint8_t sdrVersion; ///< 51h, or BCD with the low nibble major.
    uint8_t recordCount[2];
    uint8_t freeSpace[2];    ///< Bytes; FFFEh: that or more; FFFFh: unknown.
    uint8_t additionTime[4]; ///< Seconds since 1970.
    uint8_t eraseTime[4];
    uint8_t operationSupport;
};

/// A record as the node holds it, whatever its type and length.
struct IpmiSdrEntry
{
    uint16_t recordId; ///< The id under which it was read: 0 for the first.
    uint8_t recordType;
    std::vector<uint8_t> bytes; ///< Header included.
};

/// How far a read of the repository has come; for showing it to people.
struct IpmiSdrProgress
{
    unsigned total;   ///< As the repository says; 0: not asked yet.
    unsigned headers; ///< Headers walked so far.
    unsigned records; ///< Records read or passed over so far.
    unsigned failed;  ///< Those of them that could not be read.
};

} // namespace Ipmi

#endif

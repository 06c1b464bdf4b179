/// The System Event Log as a whole (IPMI v2.0, section 31).
#ifndef VEK_IPMI_IPMISEL_H
#define VEK_IPMI_IPMISEL_H

#include <cstdint>

namespace Ipmi
{

/// Get SEL Info answer as received (IPMI v2.0, 31.2); 16 and 32 bit values LS
/// byte first. A version of 0 means that none was read yet.
struct ipmiifc_sel_info
{
    uint8_t completionCode;
    uint8_t selVersion; ///< BCD, low nibble major.
    uint8_t entryCount[2];
    uint8_t freeSpace[2];    ///< Bytes; FFFFh: that or more.
    uint8_t additionTime[4]; ///< Seconds since 1970, as every time of a log.
    uint8_t eraseTime[4];
    uint8_t operationSupport; ///< Bit 7: events were lost for want of room.
};

/// Get SEL Allocation Info answer as received (IPMI v2.0, 31.3).
struct ipmiifc_sel_alloc_info
{
    uint8_t completionCode;
    uint8_t unitCount[2];
    uint8_t unitSize[2]; ///< Bytes; 0: not specified.
    uint8_t freeUnits[2];
    uint8_t largestFreeBlock[2]; ///< In units.
    uint8_t maximumRecordSize;   ///< In units.
};

/// A log's version, counts and times as they were when it last changed. A
/// value that never changes; threads share it.
class IpmiSel
{
public:
    /// An empty log without times.
    IpmiSel() = default;
    /// Both are read at once and not kept.
    IpmiSel(const ipmiifc_sel_info* info, const ipmiifc_sel_alloc_info* alloc,
            int node);

    unsigned version() const { return version_; }
    int getCurrentNumberOfRecords() const;
    /// Entries and the room that is left, at 16 bytes a record.
    int getMaxNumberOfRecords() const;
    /// Seconds since 1970; 0 for none, for one that the controller counted
    /// from its own start (up to 20000000h; IPMI v2.0, 37), and from 80000000h
    /// on: callers take it for a signed value.
    unsigned getAddTimeStampUnix() const;
    unsigned getEraseTimeStampUnix() const;
    /// Operation support (IPMI v2.0, 31.2, byte 15).
    unsigned getFlags() const { return flags_; }
    bool getOverFlowFlag() const;
    /// Always true: the log cannot be switched off through this class.
    bool isEnabled() const { return enabled_ != 0; }
    /// Both do nothing. @return 1, success.
    int enable() const { return 1; }
    int disable() const { return 1; }
    /// As IpmiIfc::clearSel for the log's node.
    int clear() const;

private:
    uint32_t version_ = 0;
    uint32_t entries_ = 0;
    uint32_t freeSpace_ = 0;
    uint32_t additionTime_ = 0xffffffff;
    uint32_t eraseTime_ = 0xffffffff;
    uint32_t flags_ = 0;
    int node_ = 0;
    uint32_t unitSize_ = 0;
    uint8_t enabled_ = 1;
};

/// How far a read of the whole log has come, for showing it to people; and
/// whether the last read, whole or of what is new, came to the end.
struct IpmiSelProgress
{
    unsigned total;  ///< Entries as the log says; 0: not asked yet, or none.
    unsigned read;   ///< Records held so far.
    unsigned failed; ///< Attempts at a record that were given up.
    bool complete;
};

} // namespace Ipmi

#endif

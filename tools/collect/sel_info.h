/// State and clock of the event log (IPMI v2.0, section 31).
#ifndef VEK_TOOLS_COLLECT_SEL_INFO_H
#define VEK_TOOLS_COLLECT_SEL_INFO_H

#include <optional>

#include <vek-ipmi/IpmiSel.h>

#include "tools/collect/sel.h"
#include "tools/device.h"

namespace Tool
{

struct SelClock
{
    Completion completion;
    SelTime time;     ///< When that is good.
    int64_t host = 0; ///< Seconds since 1970, when the answer came.

    /// How far it is ahead of the host's; none when it was not set.
    std::optional<int64_t> ahead() const;
};

struct SelAllocation
{
    Completion completion;
    unsigned units = 0, unitSize = 0, freeUnits = 0, largestFreeBlock = 0,
             maximumRecordSize = 0; ///< Sizes in bytes, the last two in units.
};

struct SelInfo
{
    Ipmi::ipmiifc_sel_info raw{};
    Ipmi::IpmiSel log; ///< Of the same.
    SelTime lastAddition, lastErase;
    SelAllocation allocation;
    SelClock clock;

    /// IPMI v2.0, 31.2, byte 15.
    bool supports(unsigned bit) const
    {
        return raw.operationSupport >> bit & 1;
    }
};

/// @throws Failure without a Get SEL Info answer.
Ipmi::ipmiifc_sel_info readSelState(Device& device);

unsigned entriesOf(const Ipmi::ipmiifc_sel_info& state);

/// @throws Failure without a Get SEL Info answer.
SelInfo collectSelInfo(Device& device);

SelClock collectSelClock(Device& device);

} // namespace Tool

#endif

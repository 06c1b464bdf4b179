#include <vek-ipmi/IpmiSel.h>

#include <vek-ipmi/IpmiIfc.h>

#include "ipmi/IpmiSelRecord.h"

namespace Ipmi
{

namespace
{

constexpr uint32_t recordSize = 16;

uint32_t unixTime(uint32_t stamp)
{
    constexpr uint32_t none = 0xffffffff;
    constexpr int32_t lastOfStart = 0x20000000;
    return stamp == none || int32_t(stamp) <= lastOfStart ? 0 : stamp;
}

} // namespace

IpmiSel::IpmiSel(const ipmiifc_sel_info* info,
                 const ipmiifc_sel_alloc_info* alloc, int node)
    : version_{info->selVersion},
      entries_{word(info->entryCount)},
      freeSpace_{word(info->freeSpace)},
      additionTime_{longWord(info->additionTime)},
      eraseTime_{longWord(info->eraseTime)},
      flags_{info->operationSupport},
      node_{node},
      unitSize_{word(alloc->unitSize)}
{
    if (unitSize_ == 0)
        unitSize_ = recordSize;
}

int IpmiSel::getCurrentNumberOfRecords() const
{
    return int(entries_);
}

int IpmiSel::getMaxNumberOfRecords() const
{
    return int(entries_ * recordSize + freeSpace_) / int(recordSize);
}

unsigned IpmiSel::getAddTimeStampUnix() const
{
    return unixTime(additionTime_);
}

unsigned IpmiSel::getEraseTimeStampUnix() const
{
    return unixTime(eraseTime_);
}

bool IpmiSel::getOverFlowFlag() const
{
    constexpr uint32_t overflow = 0x80;
    return flags_ & overflow;
}

int IpmiSel::clear() const
{
    return IpmiIfc::clearSel(node_);
}

} // namespace Ipmi

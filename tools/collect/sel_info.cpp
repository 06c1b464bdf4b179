#include "tools/collect/sel_info.h"

#include <algorithm>
#include <cstring>
#include <ctime>

#include "tools/print/completion_codes.h"

namespace Tool
{

namespace
{

// Bytes that did not come are 0.
unsigned number(const Bytes& bytes, size_t at, size_t count)
{
    unsigned value = 0;
    for (size_t i = count; i-- > 0;)
        value = value << 8 | (at + i < bytes.size() ? bytes[at + i] : 0u);
    return value;
}

SelTime timeOf(const uint8_t (&bytes)[4])
{
    return {number({std::begin(bytes), std::end(bytes)}, 0, 4)};
}

// An answer that is cut says nothing to rely on.
Answer exchange(Device& device, Command command, size_t size)
{
    Answer answer = device.exchange(command, {});
    if (answer.completion.ok() && answer.data.size() < size)
        answer.completion.isCut = true;
    return answer;
}

SelAllocation collectAllocation(Device& device)
{
    const Answer answer = exchange(device, commands::getSelAllocation, 9);
    SelAllocation allocation;
    allocation.completion = answer.completion;
    allocation.units = number(answer.data, 0, 2);
    allocation.unitSize = number(answer.data, 2, 2);
    allocation.freeUnits = number(answer.data, 4, 2);
    allocation.largestFreeBlock = number(answer.data, 6, 2);
    allocation.maximumRecordSize = number(answer.data, 8, 1);
    return allocation;
}

} // namespace

std::optional<int64_t> SelClock::ahead() const
{
    if (!completion.ok() || !time.isDate())
        return std::nullopt;
    return int64_t{time.raw} - host;
}

Ipmi::ipmiifc_sel_info readSelState(Device& device)
{
    Ipmi::ipmiifc_sel_info state{};
    constexpr size_t size = sizeof state - 1; // behind the completion code
    const Answer answer = exchange(device, commands::getSelInfo, size);
    if (!answer.completion.ok())
        throw failureOf("Get SEL Info failed", commands::getSelInfo,
                        answer.completion);
    memcpy(&state.selVersion, answer.data.data(), size);
    return state;
}

unsigned entriesOf(const Ipmi::ipmiifc_sel_info& state)
{
    return state.entryCount[0] | state.entryCount[1] * 0x100u;
}

SelInfo collectSelInfo(Device& device)
{
    SelInfo info;
    info.raw = readSelState(device);
    const Ipmi::ipmiifc_sel_alloc_info unused{};
    info.log = Ipmi::IpmiSel{&info.raw, &unused, 0};
    info.lastAddition = timeOf(info.raw.additionTime);
    info.lastErase = timeOf(info.raw.eraseTime);
    info.allocation = collectAllocation(device);
    info.clock = collectSelClock(device);
    return info;
}

SelClock collectSelClock(Device& device)
{
    const Answer answer = exchange(device, commands::getSelTime, 4);
    SelClock clock;
    clock.completion = answer.completion;
    clock.time.raw = number(answer.data, 0, 4);
    clock.host = time(nullptr);
    return clock;
}

} // namespace Tool

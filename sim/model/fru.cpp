#include "sim/model/fru.h"

#include <algorithm>

#include "sim/model/bmc.h"
#include "sim/model/record.h"

namespace Sim
{
namespace
{

constexpr uint8_t netFnStorage = 0x0A, firstCommand = 0x10, lastCommand = 0x12;
constexpr uint8_t writeProtectedOffset = 0x80, deviceBusy = 0x81;
constexpr uint8_t blank = 0xFF;
constexpr size_t mostAtOnce = 255; // more does not fit in an answer

FruDevice* findDevice(Bmc& bmc, uint8_t device)
{
    std::vector<FruDevice>& all = bmc.state().frus;
    const auto found =
        std::find_if(all.begin(), all.end(), [&](const FruDevice& one) {
            return one.device == device && one.lun == bmc.lun();
        });
    return found == all.end() ? nullptr : &*found;
}

size_t unitOf(const FruDevice& fru)
{
    return fru.words ? 2 : 1;
}

size_t offsetOf(const FruDevice& fru, const Bytes& data)
{
    return word(data, 1) * (fru.byteOffsets ? 1 : unitOf(fru));
}

Bytes getAreaInfo(Bmc& bmc, const Bytes& data)
{
    const FruDevice* fru = findDevice(bmc, data[0]);
    if (!fru)
        return {cc::notPresent};
    Bytes answer{cc::ok};
    append16(answer, fru->size);
    answer.push_back(fru->words ? 1 : 0);
    return answer;
}

Bytes readData(Bmc& bmc, const Bytes& data)
{
    const FruDevice* fru = findDevice(bmc, data[0]);
    if (!fru)
        return {cc::notPresent};
    if (fru->isBusy(bmc.now()))
        return {deviceBusy};
    const size_t offset = offsetOf(*fru, data);
    const size_t wanted = data[3] * unitOf(*fru);
    if (wanted > (fru->readLimit ? fru->readLimit : mostAtOnce))
        return {fru->limitCode};
    if (wanted == 0)
        return {cc::invalidDataField};
    if (offset >= fru->size)
        return {cc::parameterOutOfRange};
    const size_t units =
        std::min(wanted, fru->size - offset + unitOf(*fru) - 1) / unitOf(*fru);
    Bytes answer{cc::ok, uint8_t(units)};
    for (size_t at = offset; at < offset + units * unitOf(*fru); ++at)
        answer.push_back(at < fru->contents.size() ? fru->contents[at] : blank);
    return answer;
}

bool isProtected(const FruDevice& fru, size_t offset, size_t count)
{
    return std::any_of(fru.writeProtected.begin(), fru.writeProtected.end(),
                       [&](const FruRange& range) {
                           return offset < size_t{range.offset} + range.count &&
                                  range.offset < offset + count;
                       });
}

Bytes writeData(Bmc& bmc, const Bytes& data)
{
    constexpr size_t dataAt = 3;
    FruDevice* fru = findDevice(bmc, data[0]);
    if (!fru)
        return {cc::notPresent};
    if (fru->isBusy(bmc.now()))
        return {deviceBusy};
    const size_t offset = offsetOf(*fru, data), count = data.size() - dataAt;
    if (count % unitOf(*fru) != 0)
        return {cc::dataLengthInvalid};
    if (offset + count > fru->size)
        return {cc::parameterOutOfRange};
    if (isProtected(*fru, offset, count))
        return {writeProtectedOffset};
    if (fru->contents.size() < offset + count)
        fru->contents.resize(offset + count, blank);
    std::copy(data.begin() + dataAt, data.end(),
              fru->contents.begin() + std::ptrdiff_t(offset));
    fru->writtenAt = bmc.now() + fru->writeSeconds;
    return {cc::ok, uint8_t(count / unitOf(*fru))};
}

constexpr Command commands[] = {
    {netFnStorage, firstCommand, "get-fru-inventory-area-info", 1, 1,
     getAreaInfo},
    {netFnStorage, 0x11, "read-fru-data", 4, 4, readData},
    {netFnStorage, lastCommand, "write-fru-data", 4, 255, writeData},
};

} // namespace

bool isOfFru(uint8_t netFn, uint8_t command)
{
    return netFn == netFnStorage && command >= firstCommand &&
           command <= lastCommand;
}

const Family fruFamily{commands, [](const Bmc& bmc) {
                           return !bmc.state().frus.empty();
                       }};

} // namespace Sim

#include "sim/model/sdr.h"

#include <algorithm>

#include "sim/model/bmc.h"
#include "sim/model/record.h"

namespace Sim
{
namespace
{

constexpr uint16_t unitSize = 16;

/// Two changes within a second can be told apart, too.
void stamp(uint32_t& time, int64_t now)
{
    time = std::max(uint32_t(now), time + 1);
}

Bytes getInfo(Bmc& bmc, const Bytes&)
{
    const Repository& repository = *bmc.state().repository;
    Bytes answer{cc::ok, repository.version};
    append16(answer, repository.records.size());
    append16(answer, repository.freeSpace);
    append32(answer, repository.added);
    append32(answer, repository.erased);
    answer.push_back(repository.operations);
    return answer;
}

Bytes getAllocationInfo(Bmc& bmc, const Bytes&)
{
    const Repository& repository = *bmc.state().repository;
    if (!(repository.operations & Repository::allocationInfo))
        return {cc::invalidCommand};
    size_t used = 0;
    for (const SdrRecord& record : repository.records)
        used += (record.bytes.size() + unitSize - 1) / unitSize;
    const size_t free = repository.freeSpace / unitSize;
    constexpr uint8_t largestRecord = 255 / unitSize;
    Bytes answer{cc::ok};
    for (size_t value : {used + free, size_t{unitSize}, free, free})
        append16(answer, value);
    answer.push_back(largestRecord);
    return answer;
}

Bytes reserve(Bmc& bmc, const Bytes&)
{
    Repository& repository = *bmc.state().repository;
    if (!(repository.operations & Repository::reserveSupported))
        return {cc::invalidCommand};
    Bytes answer{cc::ok};
    append16(answer, repository.reserve());
    return answer;
}

std::vector<SdrRecord>::const_iterator
findRecord(const std::vector<SdrRecord>& records, uint16_t id)
{
    if (id == firstRecord)
        return records.begin();
    const auto found =
        std::find_if(records.begin(), records.end(),
                     [id](const SdrRecord& r) { return r.id == id; });
    return found == records.end() && id == lastRecord && !records.empty()
               ? found - 1
               : found;
}

Bytes readRecord(const Repository& repository, uint16_t id, size_t offset,
                 size_t count)
{
    const auto& records = repository.records;
    const auto record = findRecord(records, id);
    if (record == records.end())
        return {cc::notPresent};
    const uint16_t next =
        record + 1 == records.end() ? lastRecord : record[1].id;
    return answerPiece(record->bytes, next,
                       {offset, count, repository.readLimit});
}

Bytes getRecord(Bmc& bmc, const Bytes& data)
{
    const Repository& repository = *bmc.state().repository;
    const uint8_t offset = data[4];
    const bool needsReservation =
        offset != 0 && repository.operations & Repository::reserveSupported;
    if (needsReservation && (repository.reservation == 0 ||
                             word(data, 0) != repository.reservation))
        return {cc::reservationCanceled};
    return readRecord(repository, word(data, 2), offset, data[5]);
}

Bytes getTime(Bmc& bmc, const Bytes&)
{
    Bytes answer{cc::ok};
    append32(answer, uint32_t(bmc.now()));
    return answer;
}

constexpr Command commands[] = {
    {0x0A, 0x20, "get-sdr-repository-info", 0, 0, getInfo},
    {0x0A, 0x21, "get-sdr-allocation-info", 0, 0, getAllocationInfo},
    {0x0A, 0x22, "reserve-sdr-repository", 0, 0, reserve},
    {0x0A, 0x23, "get-sdr", 6, 6, getRecord},
    {0x0A, 0x28, "get-sdr-repository-time", 0, 0, getTime},
};

} // namespace

uint16_t Repository::reserve()
{
    return reservation = lastReservation = idAfter(lastReservation);
}

void Repository::add(SdrRecord record, int64_t now, bool stamped)
{
    records.push_back(std::move(record));
    reservation = 0;
    if (stamped)
        stamp(added, now);
}

void Repository::change(int64_t now, bool stamped)
{
    if (gone) {
        add(std::move(*gone), now, stamped);
        gone.reset();
        return;
    }
    if (!records.empty()) {
        gone = std::move(records.back());
        records.pop_back();
    }
    reservation = 0;
    if (stamped)
        stamp(erased, now);
}

const Family sdrFamily{commands, [](const Bmc& bmc) {
                           return bmc.state().repository.has_value();
                       }};

} // namespace Sim

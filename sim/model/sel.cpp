#include "sim/model/sel.h"

#include <algorithm>

namespace Sim
{

uint16_t EventLog::reserve()
{
    return reservation = lastReservation = idAfter(lastReservation);
}

std::vector<SelRecord>::const_iterator EventLog::find(uint16_t id) const
{
    if (id == firstRecord || records.empty())
        return records.begin();
    // Most logs are numbered without a gap: a long one is not searched.
    const size_t guess = size_t(uint16_t(id - records.front().id));
    if (guess < records.size() && records[guess].id == id)
        return records.begin() + std::ptrdiff_t(guess);
    const auto found =
        std::find_if(records.begin(), records.end(),
                     [id](const SelRecord& one) { return one.id == id; });
    return found == records.end() && id == lastRecord ? found - 1 : found;
}

uint16_t EventLog::takeId()
{
    // Records may have been put here by hand.
    if (!records.empty())
        lastId = std::max(lastId, records.back().id);
    do {
        lastId = idAfter(lastId);
        idsCameRound |= lastId == 1;
    } while (idsCameRound && !records.empty() && find(lastId) != records.end());
    return lastId;
}

std::optional<uint16_t> EventLog::add(Bytes record, int64_t now)
{
    constexpr size_t ids = 0xFFFE;
    const bool full = records.size() >= std::min<size_t>(capacity, ids);
    if (full && !ring) {
        operations |= overflow;
        return std::nullopt;
    }
    if (full && !records.empty())
        records.erase(records.begin());
    const uint16_t id = takeId();
    record.resize(sel::recordSize);
    record[0] = uint8_t(id);
    record[1] = uint8_t(id >> 8);
    records.push_back({id, std::move(record)});
    reservation = 0;
    added = time(now);
    return id;
}

bool EventLog::remove(uint16_t id, int64_t now, uint16_t& removed)
{
    const auto found = find(id);
    if (found == records.end())
        return false;
    removed = found->id;
    records.erase(found);
    reservation = 0;
    erased = time(now);
    return true;
}

void EventLog::clear(int64_t now)
{
    records.clear();
    operations = uint8_t(operations & ~overflow);
    reservation = 0;
    lastId = 0;
    idsCameRound = false;
    erased = time(now);
    erasedAt = now + eraseSeconds;
}

} // namespace Sim

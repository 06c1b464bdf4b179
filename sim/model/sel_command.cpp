#include <algorithm>

#include "sim/model/bmc.h"
#include "sim/model/sel.h"

namespace Sim
{
namespace
{

constexpr uint8_t eraseInProgress = 0x81;

EventLog& logOf(Bmc& bmc)
{
    return *bmc.state().eventLog;
}

using Serve = Bytes (*)(Bmc& bmc, const Bytes& data);

/// What a log that is being erased does not serve.
template <Serve serve>
Bytes whenErased(Bmc& bmc, const Bytes& data)
{
    return logOf(bmc).isErasing(bmc.now()) ? Bytes{eraseInProgress}
                                           : serve(bmc, data);
}

bool holdsReservation(const EventLog& log, uint16_t reservation)
{
    return !(log.operations & EventLog::reserveSupported) ||
           (reservation != 0 && reservation == log.reservation);
}

size_t freeRecords(const EventLog& log)
{
    return log.capacity - std::min<size_t>(log.capacity, log.records.size());
}

Bytes getInfo(Bmc& bmc, const Bytes&)
{
    const EventLog& log = logOf(bmc);
    Bytes answer{cc::ok, log.version};
    append16(answer, log.records.size());
    append16(answer,
             std::min<size_t>(freeRecords(log) * sel::recordSize, 0xFFFF));
    append32(answer, log.added);
    append32(answer, log.erased);
    answer.push_back(log.operations);
    return answer;
}

Bytes getAllocationInfo(Bmc& bmc, const Bytes&)
{
    const EventLog& log = logOf(bmc);
    if (!(log.operations & EventLog::allocationInfo))
        return {cc::invalidCommand};
    const size_t unit = log.allocationUnit;
    const auto units = [unit](size_t records) {
        const size_t bytes = records * sel::recordSize;
        return unit ? std::min<size_t>(bytes / unit, 0xFFFF) : 0;
    };
    const size_t free = units(freeRecords(log));
    Bytes answer{cc::ok};
    for (size_t value : {units(log.capacity), unit, free, free})
        append16(answer, value);
    answer.push_back(uint8_t(std::max<size_t>(units(1), 1)));
    return answer;
}

Bytes reserve(Bmc& bmc, const Bytes&)
{
    EventLog& log = logOf(bmc);
    if (!(log.operations & EventLog::reserveSupported))
        return {cc::invalidCommand};
    Bytes answer{cc::ok};
    append16(answer, log.reserve());
    return answer;
}

Bytes getEntry(Bmc& bmc, const Bytes& data)
{
    const EventLog& log = logOf(bmc);
    const uint16_t reservation = word(data, 0);
    const uint8_t offset = data[4];
    const bool fromTheStart = offset == 0 && reservation == 0;
    if (!fromTheStart && !holdsReservation(log, reservation))
        return {cc::reservationCanceled};
    const auto record = log.find(word(data, 2));
    if (record == log.records.end())
        return {cc::notPresent};
    const uint16_t next =
        record + 1 == log.records.end() ? lastRecord : record[1].id;
    return answerPiece(record->bytes, next, {offset, data[5], log.readLimit});
}

void setTimeStamp(Bytes& record, uint32_t time)
{
    for (size_t at = 0; at < 4; ++at)
        record[3 + at] = uint8_t(time >> 8 * at);
}

Bytes addEntry(Bmc& bmc, const Bytes& data)
{
    EventLog& log = logOf(bmc);
    Bytes record = data;
    if (record[2] < sel::oemUntimed)
        setTimeStamp(record, log.time(bmc.now()));
    const auto id = log.add(std::move(record), bmc.now());
    if (!id)
        return {cc::outOfSpace};
    Bytes answer{cc::ok};
    append16(answer, *id);
    return answer;
}

Bytes deleteEntry(Bmc& bmc, const Bytes& data)
{
    EventLog& log = logOf(bmc);
    if (!(log.operations & EventLog::deleteSupported))
        return {cc::invalidCommand};
    if (!holdsReservation(log, word(data, 0)))
        return {cc::reservationCanceled};
    uint16_t removed = 0;
    if (!log.remove(word(data, 2), bmc.now(), removed))
        return {cc::notPresent};
    Bytes answer{cc::ok};
    append16(answer, removed);
    return answer;
}

Bytes clear(Bmc& bmc, const Bytes& data)
{
    constexpr uint8_t getStatus = 0x00, initiate = 0xAA;
    const EventLog& log = logOf(bmc);
    if (data[2] != 'C' || data[3] != 'L' || data[4] != 'R' ||
        (data[5] != getStatus && data[5] != initiate))
        return {cc::invalidDataField};
    if (data[5] == initiate) {
        if (log.isErasing(bmc.now()))
            return {eraseInProgress};
        if (!holdsReservation(log, word(data, 0)))
            return {cc::reservationCanceled};
        bmc.clearEventLog();
    }
    // Clients ask on with the reservation that their clear has cancelled.
    return {cc::ok, uint8_t(log.isErasing(bmc.now()) ? 0 : 1)};
}

Bytes getTime(Bmc& bmc, const Bytes&)
{
    Bytes answer{cc::ok};
    append32(answer, logOf(bmc).time(bmc.now()));
    return answer;
}

Bytes setTime(Bmc& bmc, const Bytes& data)
{
    const uint32_t time = word(data, 0) | uint32_t(word(data, 2)) << 16;
    logOf(bmc).timeOffset = int32_t(time - uint32_t(bmc.now()));
    return {cc::ok};
}

Bytes getUtcOffset(Bmc& bmc, const Bytes&)
{
    Bytes answer{cc::ok};
    append16(answer, uint16_t(logOf(bmc).utcOffset));
    return answer;
}

Bytes setUtcOffset(Bmc& bmc, const Bytes& data)
{
    constexpr int16_t day = 24 * 60, unspecified = 0x07FF;
    const auto minutes = int16_t(word(data, 0));
    if ((minutes < -day || minutes > day) && minutes != unspecified)
        return {cc::invalidDataField};
    logOf(bmc).utcOffset = minutes;
    return {cc::ok};
}

Bytes getLastProcessed(Bmc& bmc, const Bytes&)
{
    const EventLog& log = logOf(bmc);
    Bytes answer{cc::ok};
    append32(answer, log.added);
    append16(answer, log.records.empty() ? lastRecord : log.records.back().id);
    append16(answer, log.softwareProcessed);
    append16(answer, log.bmcProcessed);
    return answer;
}

Bytes setLastProcessed(Bmc& bmc, const Bytes& data)
{
    constexpr uint8_t byBmc = 0x01;
    EventLog& log = logOf(bmc);
    (data[0] & byBmc ? log.bmcProcessed : log.softwareProcessed) =
        word(data, 1);
    return {cc::ok};
}

/// From system software, which tells its own generator id.
Bytes platformEvent(Bmc& bmc, const Bytes& data)
{
    EventMessage event;
    event.generator = data[0];
    event.revision = data[1];
    event.sensorType = data[2];
    event.sensor = data[3];
    event.eventType = data[4];
    std::copy(data.begin() + 5, data.end(), event.data.begin());
    bmc.logEvent(event);
    return {cc::ok};
}

constexpr Command commands[] = {
    {0x04, 0x02, "platform-event-message", 6, 8, platformEvent},
    {0x04, 0x14, "set-last-processed-event-id", 3, 3,
     whenErased<setLastProcessed>},
    {0x04, 0x15, "get-last-processed-event-id", 0, 0,
     whenErased<getLastProcessed>},
    {0x0A, 0x40, "get-sel-info", 0, 0, whenErased<getInfo>},
    {0x0A, 0x41, "get-sel-allocation-info", 0, 0,
     whenErased<getAllocationInfo>},
    {0x0A, 0x42, "reserve-sel", 0, 0, whenErased<reserve>},
    {0x0A, 0x43, "get-sel-entry", 6, 6, whenErased<getEntry>},
    {0x0A, 0x44, "add-sel-entry", 16, 16, whenErased<addEntry>},
    {0x0A, 0x46, "delete-sel-entry", 4, 4, whenErased<deleteEntry>},
    {0x0A, 0x47, "clear-sel", 6, 6, clear},
    {0x0A, 0x48, "get-sel-time", 0, 0, getTime},
    {0x0A, 0x49, "set-sel-time", 4, 4, setTime},
    {0x0A, 0x5C, "get-sel-time-utc-offset", 0, 0, getUtcOffset},
    {0x0A, 0x5D, "set-sel-time-utc-offset", 2, 2, setUtcOffset},
};

} // namespace

const Family selFamily{commands, [](const Bmc& bmc) {
                           return bmc.state().eventLog.has_value();
                       }};

} // namespace Sim

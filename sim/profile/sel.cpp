#include "sim/model/sel.h"

#include <algorithm>

#include "sim/profile/describe.h"
#include "sim/profile/field_reader.h"
#include "sim/profile/sdr_words.h"

namespace Sim
{
namespace
{

constexpr auto decimal = Fields::Base::Decimal;
constexpr auto hexadecimal = Fields::Base::Hexadecimal;

/// A record that has no id so far gets the next.
constexpr uint16_t noId = 0xFFFF;
constexpr size_t typeAt = 2, timeAt = 3, longestRecord = 255;

uint8_t typeOf(const SelRecord& record)
{
    return record.bytes.size() > typeAt ? record.bytes[typeAt] : uint8_t{0};
}

void setId(SelRecord& record, uint16_t id)
{
    record.id = id;
    if (record.bytes.size() > 1) {
        record.bytes[0] = uint8_t(id);
        record.bytes[1] = uint8_t(id >> 8);
    }
}

/// A little-endian number of the record.
void describeNumber(Fields& io, const char* key, SelRecord& record, size_t at,
                    size_t size, Fields::Base base)
{
    uint32_t value = 0;
    for (size_t i = 0; i < size; ++i)
        value |= uint32_t(record.bytes[at + i]) << 8 * i;
    io.number(key, value, base, 0xFFFFFFFF >> 8 * (4 - size));
    for (size_t i = 0; i < size; ++i)
        record.bytes[at + i] = uint8_t(value >> 8 * i);
}

void describeCode(Fields& io, const char* key, uint8_t& byte, uint32_t max,
                  Words words)
{
    uint32_t value = byte;
    io.code(key, value, max, words);
    byte = uint8_t(value);
}

/// The record's end; what is not given is FFh.
void describeData(Fields& io, SelRecord& record, size_t from)
{
    const auto begin = record.bytes.begin() + std::ptrdiff_t(from);
    Bytes data{begin, record.bytes.end()};
    io.bytes("data", data, 0, sel::recordSize - from);
    data.resize(sel::recordSize - from, 0xFF);
    std::copy(data.begin(), data.end(), begin);
}

void describeEvent(Fields& io, SelRecord& record)
{
    constexpr size_t generatorAt = 7, revisionAt = 9, sensorTypeAt = 10,
                     sensorAt = 11, eventTypeAt = 12, dataAt = 13;
    Bytes& bytes = record.bytes;
    io.require("sensorType");
    io.require("sensor");
    describeNumber(io, "generator", record, generatorAt, 2, hexadecimal);
    io.number("evmRevision", bytes[revisionAt], hexadecimal);
    describeCode(io, "sensorType", bytes[sensorTypeAt], 0xFF,
                 SdrWords::sensorTypes);
    io.number("sensor", bytes[sensorAt], decimal);
    bool deassertion = bytes[eventTypeAt] & EventMessage::deassertion;
    uint8_t eventType = bytes[eventTypeAt] & 0x7F;
    describeCode(io, "eventType", eventType, 0x7F, SdrWords::eventTypes);
    if (io.reads() || deassertion)
        io.flag("deassertion", deassertion);
    bytes[eventTypeAt] =
        uint8_t(eventType | (deassertion ? EventMessage::deassertion : 0));
    describeData(io, record, dataAt);
}

void describeOem(Fields& io, SelRecord& record)
{
    constexpr size_t manufacturerAt = 7, dataAt = 10;
    uint8_t& type = record.bytes[typeAt];
    io.number("oem", type, hexadecimal);
    if (type < sel::oem)
        io.refuse("oem", "OEM records have a type from 0xc0 to 0xff");
    if (type >= sel::oemUntimed) {
        describeData(io, record, timeAt);
        return;
    }
    describeNumber(io, "time", record, timeAt, 4, decimal);
    describeNumber(io, "manufacturer", record, manufacturerAt, 3, decimal);
    describeData(io, record, dataAt);
}

void describeFields(Fields& io, SelRecord& record)
{
    if (io.reads())
        record.bytes = toRecord(EventMessage{}, 0);
    if (io.reads() ? io.has("oem") : typeOf(record) != sel::event) {
        describeOem(io, record);
        return;
    }
    describeNumber(io, "time", record, timeAt, 4, decimal);
    describeEvent(io, record);
}

uint16_t idInBytes(const Bytes& record)
{
    return record.size() < 2 ? 0 : word(record, 0);
}

/// Whether the fields say all that the bytes do.
bool fieldsSuffice(const SelRecord& record)
{
    return record.bytes.size() == sel::recordSize &&
           record.id == idInBytes(record.bytes) &&
           (typeOf(record) == sel::event || typeOf(record) >= sel::oem);
}

void describe(Fields& io, SelRecord& record)
{
    if (io.reads())
        record.id = noId;
    const bool asBytes = io.reads() ? io.has("record") : !fieldsSuffice(record);
    io.number("id", record.id, hexadecimal);
    if (!asBytes) {
        describeFields(io, record);
        if (io.reads() && record.id != noId)
            setId(record, record.id);
        return;
    }
    io.bytes("record", record.bytes, 0, longestRecord);
    if (io.reads() && !io.has("id"))
        record.id = idInBytes(record.bytes);
}

void numberRecords(EventLog& log)
{
    for (SelRecord& record : log.records) {
        if (record.id == noId)
            setId(record, idAfter(log.lastId));
        log.lastId = std::max(log.lastId, record.id);
    }
}

/// When its last record was added, as far as that is known.
uint32_t lastStamp(const EventLog& log)
{
    for (auto at = log.records.rbegin(); at != log.records.rend(); ++at)
        if (at->bytes.size() >= timeAt + 4 && typeOf(*at) < sel::oemUntimed)
            return word(at->bytes, timeAt) |
                   uint32_t(word(at->bytes, timeAt + 2)) << 16;
    return sel::never;
}

void finish(EventLog& log, bool stamped)
{
    numberRecords(log);
    if (!stamped)
        log.added = lastStamp(log);
}

// IPMI v2.0, 31.2.
constexpr Word operations[] = {
    {"allocation-info", EventLog::allocationInfo},
    {"reserve", EventLog::reserveSupported},
    {"partial-add", EventLog::partialAdd},
    {"delete", EventLog::deleteSupported},
    {"overflow", EventLog::overflow},
};
constexpr Word whenFull[] = {{"stop", 0}, {"ring", 1}};

} // namespace

void describe(Fields& io, EventLog& log)
{
    constexpr int32_t longest = 0x7FFFFFFF;
    uint8_t ring = log.ring;
    io.number("version", log.version, hexadecimal);
    io.number("added", log.added, decimal);
    io.number("erased", log.erased, decimal);
    io.bits("operations", log.operations, operations);
    io.number("capacity", log.capacity, decimal);
    io.choice("full", ring, whenFull);
    io.number("readLimit", log.readLimit, decimal);
    io.number("allocationUnit", log.allocationUnit, decimal);
    io.number("eraseSeconds", log.eraseSeconds, decimal);
    io.flag("logsClear", log.logsClear);
    io.integer("timeOffset", log.timeOffset, -longest, longest);
    io.list("records", log.records, describe);
    log.ring = ring;
    if (log.records.size() > log.capacity)
        io.refuse("records", "more than the capacity");
    if (io.reads())
        finish(log, io.has("added"));
}

EventLog makeEventLog(const std::vector<std::string>& records)
{
    EventLog log;
    for (const std::string& text : records) {
        const bool isJson = !text.empty() && text[0] == '{';
        log.records.emplace_back();
        readObject(isJson ? text : R"({"record": ")" + text + "\"}",
                   [&](Fields& io) { describe(io, log.records.back()); });
    }
    log.capacity = uint16_t(std::max<size_t>(log.capacity, log.records.size()));
    finish(log, false);
    return log;
}

} // namespace Sim

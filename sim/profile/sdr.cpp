#include "sim/model/sdr.h"

#include <algorithm>
#include <nlohmann/json.hpp>

#include "sim/model/sdr_record.h"
#include "sim/profile/describe.h"
#include "sim/profile/field_reader.h"
#include "sim/profile/field_writer.h"
#include "sim/profile/id_string.h"
#include "sim/profile/sdr_layout.h"
#include "sim/profile/sdr_words.h"

namespace Sim
{
namespace
{

/// A record that has no id so far gets the next.
constexpr uint16_t noId = 0xFFFF;
constexpr size_t longestRecord = 4096;

void setByte(Bytes& record, size_t at, size_t value)
{
    if (at < record.size())
        record[at] = uint8_t(value);
}

uint16_t idInHeader(const Bytes& record)
{
    return record.size() < 2 ? 0 : uint16_t(record[0] | record[1] << 8);
}

void setId(SdrRecord& record, uint16_t id)
{
    record.id = id;
    setByte(record.bytes, 0, id);
    setByte(record.bytes, 1, id >> 8);
}

/// The record's last field: a type/length byte and what follows it.
void describeId(Fields& io, Bytes& record, size_t at)
{
    const auto begin =
        record.begin() + std::ptrdiff_t(std::min(at, record.size()));
    Bytes id{begin, record.end()};
    uint8_t encoding =
        id.empty() ? uint8_t(IdEncoding::EightBit) : uint8_t(id[0] >> 6);
    std::string text = decodeId(id);
    if (io.reads() || encoding != uint8_t(IdEncoding::EightBit))
        io.choice("encoding", encoding, SdrWords::encodings);
    io.text("name", text, [encoding](const std::string& value) {
        return encodeId(value, IdEncoding(encoding))
                   ? ""
                   : "more than 30 characters, or some that the encoding lacks";
    });
    record.resize(std::min(at, record.size()));
    append(record, encodeId(text, IdEncoding(encoding)).value_or(Bytes{0xC0}));
}

void describeFields(Fields& io, SdrRecord& record)
{
    constexpr size_t lengthAt = 4;
    uint32_t type = record.bytes.size() > 3 ? record.bytes[3] : 0u;
    io.require("type");
    io.code("type", type, 0xFF, SdrWords::recordTypes);
    const SdrLayout* layout = findSdrLayout(uint8_t(type));
    if (!layout) {
        io.refuse("type", "such records are given as bytes, as \"record\"");
        return;
    }
    if (io.reads())
        record.bytes = layout->initial;
    layout->describe(io, record.bytes, layout->initial);
    if (layout->hasId)
        describeId(io, record.bytes, layout->initial.size());
    setByte(record.bytes, lengthAt, record.bytes.size() - sdr::header);
}

/// Whether the fields say all that the bytes do.
bool fieldsSuffice(const SdrRecord& record)
{
    if (record.bytes.size() < sdr::header || !findSdrLayout(record.bytes[3]))
        return false;
    SdrRecord copy = record;
    nlohmann::ordered_json written = nlohmann::ordered_json::object();
    FieldWriter writer{written};
    describeFields(writer, copy);
    Mistakes mistakes;
    const nlohmann::json json = nlohmann::json::parse(
        written.dump(-1, ' ', false, nlohmann::json::error_handler_t::replace));
    FieldReader reader{json, "", mistakes};
    SdrRecord again;
    describeFields(reader, again);
    setId(again, idInHeader(record.bytes));
    return mistakes.empty() && again.bytes == record.bytes;
}

void describeBytes(Fields& io, SdrRecord& record)
{
    io.bytes("record", record.bytes, 0, longestRecord);
    if (io.reads() && !io.has("id"))
        record.id = idInHeader(record.bytes);
}

void refuseMoreSensors(Fields& io, const SdrRecord& record)
{
    const size_t most = sensorsOf(record.bytes).size();
    if (record.sensors.size() > most)
        io.refuse("sensors",
                  "this record has " + std::to_string(most) + " sensors");
}

void describe(Fields& io, SdrRecord& record)
{
    if (io.reads())
        record.id = noId;
    const bool inHeader = record.id == idInHeader(record.bytes);
    const bool asBytes =
        io.reads() ? io.has("record") : !inHeader || !fieldsSuffice(record);
    if (io.reads() || !asBytes || !inHeader)
        io.number("id", record.id, Fields::Base::Hexadecimal);
    if (asBytes)
        describeBytes(io, record);
    else
        describeFields(io, record);
    if (io.reads())
        record.sensors = sensorsOf(record.bytes);
    io.list("sensors", record.sensors, describeBehaviour);
    refuseMoreSensors(io, record);
    if (io.reads() && !asBytes && record.id != noId)
        setId(record, record.id);
}

constexpr Word operations[] = {
    {"allocation-info", 0x01}, {"reserve", 0x02},   {"partial-add", 0x04},
    {"delete", 0x08},          {"non-modal", 0x20}, {"modal", 0x40},
    {"overflow", 0x80},
};

void numberRecords(std::vector<SdrRecord>& records)
{
    uint16_t last = 0;
    for (SdrRecord& record : records) {
        if (record.id == noId)
            setId(record, uint16_t(last + 1));
        last = record.id;
    }
}

} // namespace

void describe(Fields& io, Repository& repository)
{
    constexpr auto decimal = Fields::Base::Decimal;
    io.number("version", repository.version, Fields::Base::Hexadecimal);
    io.number("freeSpace", repository.freeSpace, decimal);
    io.number("added", repository.added, decimal);
    io.number("erased", repository.erased, decimal);
    io.bits("operations", repository.operations, operations);
    io.number("readLimit", repository.readLimit, decimal);
    io.list("records", repository.records, describe);
    if (io.reads())
        numberRecords(repository.records);
}

Repository makeRepository(const std::vector<std::string>& records)
{
    Repository repository;
    for (const std::string& text : records) {
        repository.records.emplace_back();
        readObject(
            text, [&](Fields& io) { describe(io, repository.records.back()); });
    }
    numberRecords(repository.records);
    return repository;
}

} // namespace Sim

#include "tools/collect/record.h"

#include <algorithm>

#include <vek-ipmi/IpmiIfc.h>

namespace Tool
{

namespace
{

// IPMI v2.0, section 43: record types, and where those that are no sensor's
// keep the type/length byte of their name, if they have one.
struct RecordType
{
    uint8_t type;
    const char* name;
    size_t nameAt;
    LeftOut leftOut;
};

constexpr RecordType recordTypes[] = {
    {0x01, "full sensor", 0, LeftOut::no},
    {0x02, "compact sensor", 0, LeftOut::no},
    {0x03, "event-only sensor", 0, LeftOut::no},
    {0x08, "entity association", 0, LeftOut::association},
    {0x09, "device-relative entity association", 0, LeftOut::association},
    {0x10, "generic device locator", 15, LeftOut::locator},
    {0x11, "FRU device locator", 15, LeftOut::locator},
    {0x12, "management controller locator", 15, LeftOut::locator},
    {0x13, "management controller confirmation", 0, LeftOut::other},
    {0x14, "BMC message channel info", 0, LeftOut::other},
    {0xC0, "OEM", 0, LeftOut::oem},
};

constexpr RecordType unknownType = {0, "reserved", 0, LeftOut::other};

const RecordType& rowOf(uint8_t type)
{
    const auto found =
        std::find_if(std::begin(recordTypes), std::end(recordTypes),
                     [&](const RecordType& row) { return row.type == type; });
    return found == std::end(recordTypes) ? unknownType : *found;
}

bool isSensor(uint8_t type)
{
    return type >= record_types::full && type <= record_types::eventOnly;
}

constexpr uint8_t threshold = 0x01;

// The library decodes the names of sensors: a name of another record goes to
// where an event-only record has its own.
std::string nameOf(const Bytes& record, size_t nameAt)
{
    constexpr size_t header = 5, eventOnlyNameAt = 16;
    if (nameAt == 0 || record.size() <= nameAt)
        return "";
    Bytes bytes(record.begin(), record.begin() + header);
    bytes[3] = record_types::eventOnly;
    bytes.resize(eventOnlyNameAt);
    const size_t rest = Ipmi::IpmiSdrRecord::capacity - eventOnlyNameAt;
    const size_t count = std::min(rest, record.size() - nameAt);
    const auto first = record.begin() + static_cast<ptrdiff_t>(nameAt);
    bytes.insert(bytes.end(), first, first + static_cast<ptrdiff_t>(count));
    return makeSensor(bytes)->getIdString();
}

bool isKnownEventType(uint8_t type)
{
    constexpr uint8_t genericLast = 0x0C, sensorSpecific = 0x6F, oemLast = 0x7F;
    return (type >= threshold && type <= genericLast) ||
           (type >= sensorSpecific && type <= oemLast);
}

// The rules by which the library makes no sensor of a record.
LeftOut ruleFor(const Sensor& sensor, size_t length)
{
    constexpr unsigned unspecified = 0x00, bios = 0x22;
    if (length > Ipmi::IpmiSdrRecord::capacity)
        return LeftOut::tooLong;
    if (!isKnownEventType(sensor.eventReadingType))
        return LeftOut::eventType;
    if (sensor.discrete &&
        (sensor.entityId == unspecified || sensor.entityId == bios))
        return LeftOut::entity;
    return LeftOut::other;
}

Sensor withoutReading(const Bytes& bytes)
{
    Sensor sensor = collectSensor(*makeSensor(bytes));
    sensor.condition = Condition::leftOut;
    sensor.health = Health::none;
    sensor.reading.reset();
    sensor.states.clear();
    return sensor;
}

void fillSensor(Record& record, const std::vector<Sensor>& sensors)
{
    const auto found =
        std::find_if(sensors.begin(), sensors.end(), [&](const Sensor& sensor) {
            return sensor.record == record.bytes;
        });
    if (found != sensors.end()) {
        record.sensor = *found;
    } else {
        record.sensor = withoutReading(record.bytes);
        record.leftOut = ruleFor(*record.sensor, record.bytes.size());
    }
    record.name = record.sensor->idString;
}

void fillHeader(Record& record, const Ipmi::IpmiSdrEntry& entry)
{
    constexpr size_t versionAt = 2;
    const RecordType& row = rowOf(entry.recordType);
    record.bytes = entry.bytes;
    // The first record is read as 0; its own id stands in it.
    record.id = entry.bytes.size() > 1 ? entry.bytes[0] | entry.bytes[1] << 8
                                       : entry.recordId;
    record.version =
        entry.bytes.size() > versionAt ? entry.bytes[versionAt] : uint8_t{0};
    record.type = entry.recordType;
    record.typeName = row.name;
    record.leftOut = row.leftOut;
    record.name = nameOf(entry.bytes, row.nameAt);
}

// A list holds what was read last first.
void restoreOrder(std::vector<Record>& records)
{
    auto first = records.begin();
    while (first != records.end()) {
        const auto next =
            std::find_if(first, records.end(), [&](const Record& record) {
                return record.type != first->type;
            });
        std::reverse(first, next);
        first = next;
    }
}

} // namespace

uint8_t typeOf(const Bytes& record)
{
    constexpr size_t typeAt = 3;
    return record.size() > typeAt ? record[typeAt] : uint8_t{0};
}

std::string nameOf(const Bytes& record)
{
    return nameOf(record, rowOf(typeOf(record)).nameAt);
}

std::unique_ptr<Ipmi::IpmiSensor> makeSensor(Bytes record)
{
    record.resize(
        std::min<size_t>(record.size(), Ipmi::IpmiSdrRecord::capacity));
    const int length = static_cast<int>(record.size());
    auto discrete =
        std::make_unique<Ipmi::IpmiDiscreteSensor>(length, record.data(), 0);
    if (discrete->getEventReadingType() != threshold)
        return discrete;
    return std::make_unique<Ipmi::IpmiThresholdSensor>(length, record.data(),
                                                       0);
}

std::vector<Record> collectRecords()
{
    std::vector<Record> records;
    const std::vector<Sensor> sensors = collectSensors();
    for (const Ipmi::IpmiSdrEntry& entry : Ipmi::IpmiIfc::getSdrRecords()) {
        Record record;
        fillHeader(record, entry);
        if (isSensor(record.type))
            fillSensor(record, sensors);
        records.push_back(std::move(record));
    }
    restoreOrder(records);
    return records;
}

} // namespace Tool

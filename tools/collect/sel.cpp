#include "tools/collect/sel.h"

#include <cstring>

#include <vek-ipmi/IpmiEvent.h>
#include <vek-ipmi/IpmiHealth.h>

#include "tools/collect/sensor.h"
#include "tools/collect/unit.h"
#include "tools/print/value.h"

namespace Tool
{

namespace
{

constexpr uint8_t threshold = 0x01;

struct Rank
{
    int number;
    Severity severity;
};

// IpmiSelData::severity of a threshold event, and CIM HealthStates.
constexpr Rank thresholdRanks[] = {
    {5, Severity::warning},
    {6, Severity::critical},
    {7, Severity::nonRecoverable},
};
constexpr Rank healthRanks[] = {
    {5, Severity::info},      {10, Severity::warning},
    {15, Severity::warning},  {20, Severity::critical},
    {25, Severity::critical}, {30, Severity::nonRecoverable},
};

template <size_t count>
Severity find(const Rank (&ranks)[count], int number)
{
    for (const Rank& rank : ranks)
        if (rank.number == number)
            return rank.severity;
    return Severity::unknown;
}

// What ends is no reason to act, whatever it was.
Severity severityOf(const Ipmi::IpmiSelData& data, const SelRecord& record)
{
    const auto& bytes = record.bytes;
    const auto state = static_cast<unsigned short>(1u << record.offset());
    const Severity severity =
        record.eventType() == threshold
            ? find(thresholdRanks, data.severity())
            : find(healthRanks, Ipmi::getSensorHealthState(
                                    record.eventType(), bytes.sensorType,
                                    bytes.sensorNumber, state));
    return severity == Severity::unknown || record.asserted ? severity
                                                            : Severity::info;
}

std::string dataOf(const Ipmi::sel_event_record& bytes)
{
    char text[24];
    snprintf(text, sizeof text, "data %02X %02X %02X", bytes.eventData1,
             bytes.eventData2, bytes.eventData3);
    return text;
}

// Others have factors for each reading, which only the controller knows.
bool hasFixedFactors(const Ipmi::IpmiSensor& sensor)
{
    constexpr size_t linearisationAt = 23;
    constexpr uint8_t nonLinear = 0x70;
    return sensor.isConvertible() &&
           (sensor.getSdr()[linearisationAt] & 0x7F) < nonLinear;
}

// The values by the sensor's record, with as many digits as everywhere else:
// so the log reads the same whether or not the node holds the sensor.
std::string thresholdDetails(const SelRecord& record,
                             const Ipmi::IpmiSensor& sensor)
{
    const Unit unit = unitOf(sensor);
    const struct
    {
        const char* name;
        int kind; ///< What event data 1 says of the byte; 1: the value.
        uint8_t raw;
    } values[] = {
        {"reading", record.bytes.eventData1 >> 6, record.bytes.eventData2},
        {"threshold", record.bytes.eventData1 >> 4 & 3,
         record.bytes.eventData3},
    };
    std::string text;
    for (const auto& value : values)
        if (value.kind == 1)
            text += (text.empty() ? "" : ", ") + std::string{value.name} + " " +
                    valueText(valueOf(sensor, value.raw), unit);
    return text;
}

void describe(const Ipmi::IpmiSelData& data, const Ipmi::IpmiSensor* sensor,
              SelRecord& record)
{
    record.event = Ipmi::DescFromEvent(
        record.eventType(), record.bytes.sensorType, record.offset());
    constexpr uint8_t knownRevision = 4;
    const bool inUnits = record.eventType() == threshold &&
                         record.bytes.evmRevision == knownRevision && sensor &&
                         sensor->getEventReadingType() == threshold &&
                         hasFixedFactors(*sensor);
    record.details =
        inUnits ? thresholdDetails(record, *sensor) : data.details();
    if (!record.event.empty())
        return;
    constexpr uint8_t firstOem = 0x70;
    record.event = (record.eventType() >= firstOem ? "OEM event " : "event ") +
                   hexNumber(record.eventType()) + ", offset " +
                   std::to_string(record.offset());
    if (record.details.empty())
        record.details = dataOf(record.bytes);
}

void fillEvent(const Ipmi::IpmiSelData& data, const KnownSensors& sensors,
               SelRecord& record)
{
    const auto& bytes = record.bytes;
    record.asserted = !(bytes.eventType & 0x80);
    record.typeName = Ipmi::DescFromType(bytes.sensorType);
    record.deviceId = std::to_string(bytes.sensorNumber) + "." +
                      std::to_string(bytes.generatorId[1]) + "." +
                      std::to_string(bytes.generatorId[0]);
    const Ipmi::IpmiSensor* sensor = sensors.find(record.deviceId);
    // A log outlives the firmware that numbered the sensors.
    if (sensor && sensor->getSensorType() != bytes.sensorType)
        sensor = nullptr;
    if (sensor) {
        record.sensorName = sensor->getName();
        record.idString = sensor->getIdString();
    }
    describe(data, sensor, record);
    record.severity = severityOf(data, record);
}

} // namespace

SelBytes bytesOf(const Ipmi::sel_event_record& record)
{
    SelBytes bytes;
    memcpy(bytes.data(), &record, bytes.size());
    return bytes;
}

Ipmi::sel_event_record recordOf(const SelBytes& bytes)
{
    Ipmi::sel_event_record record;
    memcpy(&record, bytes.data(), bytes.size());
    return record;
}

SelRecord collectSelRecord(const Ipmi::IpmiSelData& data,
                           const KnownSensors& sensors)
{
    constexpr uint8_t firstOem = 0xC0;
    SelRecord record;
    record.bytes = data.record();
    record.id = data.recordId();
    record.time.raw = data.messageTimeStamp();
    record.isEvent = data.isSelEventRecord();
    if (record.isEvent) {
        fillEvent(data, sensors, record);
        return record;
    }
    record.event =
        (data.recordType() >= firstOem ? "OEM record " : "record of type ") +
        hexNumber(data.recordType());
    record.details = data.details();
    return record;
}

} // namespace Tool

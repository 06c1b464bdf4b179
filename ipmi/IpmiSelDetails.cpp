// What event data 2 and 3 mean beyond the event itself: IPMI v2.0, tables 29-6
// and 42-3. A byte says something only where event data 1 says that the
// standard defines it: firmware puts all kinds of things into the others.
#include <algorithm>
#include <cstring>
#include <iterator>
#include <sstream>
#include <vector>

#include <vek-ipmi/IpmiEvent.h>
#include <vek-ipmi/IpmiIfc.h>
#include <vek-ipmi/IpmiSensor.h>

#include "ipmi/IpmiEventLookup.h"
#include "ipmi/IpmiSelRecord.h"
#include "ipmi/IpmiText.h"
#include "ipmi/RecordView.h"

namespace Ipmi
{

namespace
{

/// Of event data 1, bits 7..6 for event data 2 and 5..4 for event data 3.
enum Usage
{
    unspecified = 0,
    standard = 1, ///< Reading and threshold, or previous state.
    oemCode = 2,
    extension = 3 ///< What the sensor's type defines.
};

Usage usageOf2(const sel_event_record& record)
{
    return Usage(record.eventData1 >> 6 & 3);
}

Usage usageOf3(const sel_event_record& record)
{
    return Usage(record.eventData1 >> 4 & 3);
}

// How event data say that they say nothing, whatever their usage.
constexpr uint8_t notGiven = 0xff;

/// Parts of a sentence; empty ones are left out.
using Parts = std::vector<std::string>;

std::string joined(const Parts& parts)
{
    std::string text;
    for (const std::string& part : parts)
        if (!part.empty())
            text += (text.empty() ? "" : ", ") + part;
    return text;
}

// Empty where the table has no word.
template <size_t count>
std::string wordOf(const char* const (&words)[count], size_t value,
                   const char* before = "")
{
    return value < count && words[value] ? std::string{before} + words[value]
                                         : "";
}

// Thresholds.

bool isOwnedBy(const IpmiSensor& sensor, const sel_event_record& record)
{
    return sensor.getOwnerId() == record.generatorId[0] &&
           sensor.getLun() == (record.generatorId[1] & 3) &&
           sensor.getChannel() == record.generatorId[1] >> 4;
}

// A log outlives the firmware that numbered the sensors.
bool isOfSameType(const IpmiSensor& sensor, const sel_event_record& record)
{
    return sensor.getSensorType() == record.sensorType &&
           sensor.getEventReadingType() == eventTypeOf(record);
}

// Others have factors for each reading, which only the controller knows.
bool hasFixedFactors(const IpmiSensor& sensor)
{
    constexpr uint8_t nonLinear = 0x70;
    return (sensor.getSdr()[at::linearization] & 0x7f) < nonLinear;
}

// Null unless its record has factors that hold for every reading.
std::shared_ptr<IpmiSensor> findSensor(const sel_event_record& record, int node)
{
    for (const auto& sensor : IpmiIfc::getSensors(node))
        if (sensor->getSensorNumber() == record.sensorNumber &&
            isOwnedBy(*sensor, record) && isOfSameType(*sensor, record) &&
            sensor->isConvertible() && hasFixedFactors(*sensor))
            return sensor;
    return nullptr;
}

std::string unitOf(const IpmiSensor& sensor)
{
    constexpr unsigned short percentage = 1 << 12;
    constexpr const char* uses[] = {nullptr, " / ", " * "};
    constexpr const char* rates[] = {
        nullptr,       " per microsecond", " per millisecond", " per second",
        " per minute", " per hour",        " per day"};
    if (sensor.getFlags() & percentage)
        return " %";
    constexpr unsigned char noUnit = 0;
    if (sensor.getBaseUnit() == noUnit)
        return "";
    const std::string use = wordOf(uses, sensor.getModifierUnitUse());
    return " " + DescFromUnit(sensor.getBaseUnit()) +
           (use.empty() ? "" : use + DescFromUnit(sensor.getModifierUnit())) +
           wordOf(rates, sensor.getRateUnit());
}

std::string valueText(const IpmiSensor* sensor, const char* what, uint8_t raw)
{
    if (!sensor)
        return std::string{"raw "} + what + " " + hexText(raw);
    std::ostringstream text;
    text << what << " " << sensor->convertRawValue(raw) << unitOf(*sensor);
    return text.str();
}

std::string thresholdDetails(const sel_event_record& record, int node)
{
    const auto sensor = findSensor(record, node);
    Parts parts;
    if (usageOf2(record) == standard && record.eventData2 != notGiven)
        parts.push_back(valueText(sensor.get(), "reading", record.eventData2));
    if (usageOf3(record) == standard && record.eventData3 != notGiven)
        parts.push_back(
            valueText(sensor.get(), "threshold", record.eventData3));
    return joined(parts);
}

// What sensor types define, one function a type. A reserved value is empty.

constexpr const char* moduleWords = "memory module ";

std::string memoryModule(uint8_t value)
{
    return moduleWords + std::to_string(value);
}

std::string percentFull(uint8_t value)
{
    constexpr unsigned most = 100;
    return value <= most ? std::to_string(value) + "% full" : "";
}

std::string networkController(uint8_t value)
{
    return "network controller " + std::to_string(value);
}

std::string configurationError(uint8_t value)
{
    constexpr const char* words[] = {
        "vendor mismatch", "revision mismatch", "processor missing",
        "power supply rating mismatch", "voltage rating mismatch"};
    return wordOf(words, value);
}

std::string eventTypeDisabled(uint8_t value)
{
    return "event/reading type " + hexText(value);
}

std::string whichEventsDisabled(uint8_t value)
{
    if (value & 0x20)
        return "all events";
    return std::string{value & 0x10 ? "assertions" : "deassertions"} +
           " of offset " + std::to_string(value & 0x0f);
}

std::string processorKind(uint8_t value)
{
    return value & 0x80 ? "numbered by the vendor" : "numbered by entity";
}

std::string processorNumber(uint8_t value)
{
    return "processor " + std::to_string(value);
}

std::string auxiliaryLog(uint8_t value)
{
    constexpr const char* actions[] = {
        "entry added",
        "entry added for an event that is no standard one",
        "entry added beside others in this log",
        "log cleared",
        "log disabled",
        "log enabled"};
    constexpr const char* logs[] = {"MCA log", "OEM log 1", "OEM log 2"};
    return joined({wordOf(logs, value & 0x0f), wordOf(actions, value >> 4)});
}

std::string filterActions(uint8_t value)
{
    constexpr const char* words[] = {"alert",      "power off",
                                     "reset",      "power cycle",
                                     "OEM action", "diagnostic interrupt"};
    Parts parts;
    for (size_t bit = 0; bit < std::size(words); ++bit)
        if (value >> bit & 1)
            parts.push_back(words[bit]);
    return joined(parts);
}

std::string clockSynch(uint8_t value)
{
    constexpr const char* words[] = {"SEL clock", "SDR clock"};
    return joined({value & 0x80 ? "after the change" : "before the change",
                   wordOf(words, value & 0x0f)});
}

constexpr const char* powerStates[] = {
    "S0/G0",          "S1",        "S2",         "S3",           "S4",
    "S5/G2",          "S4 or S5",  "G3",         "S1, S2 or S3", "G1",
    "S5 by override", "legacy on", "legacy off",
};

std::string requestedState(uint8_t value)
{
    return wordOf(powerStates, value, "requested ");
}

std::string stateAtRequest(uint8_t value)
{
    return wordOf(powerStates, value, "while in ");
}

std::string restartCause(uint8_t value)
{
    // IPMI v2.0, 28.11.
    constexpr const char* words[] = {
        nullptr,
        "Chassis Control command",
        "reset by push-button",
        "power-up by push-button",
        "watchdog expiration",
        "OEM",
        "power-up by restore policy (always)",
        "power-up by restore policy (previous state)",
        "reset by event filter",
        "power cycle by event filter",
        "soft reset",
        "power-up by real-time clock",
    };
    return wordOf(words, value & 0x0f, "cause: ");
}

std::string channelNumber(uint8_t value)
{
    return "channel " + std::to_string(value & 0x0f);
}

std::string slotType(uint8_t value)
{
    constexpr const char* words[] = {
        "PCI",
        "drive array",
        "external peripheral connector",
        "docking",
        "other internal expansion slot",
        "slot of the sensor's entity",
        "AdvancedTCA",
        "DIMM/memory device",
        "fan",
        "PCI Express",
        "SCSI (parallel)",
        "SATA/SAS",
        "USB",
    };
    return wordOf(words, value & 0x7f);
}

std::string slotNumber(uint8_t value)
{
    return "slot " + std::to_string(value);
}

std::string watchdogUse(uint8_t value)
{
    constexpr const char* uses[] = {nullptr,   "BIOS FRB2", "BIOS/POST",
                                    "OS load", "SMS/OS",    "OEM"};
    constexpr const char* interrupts[] = {"none", "SMI", "NMI",
                                          "messaging interrupt"};
    return joined({wordOf(uses, value & 0x0f, "timer use: "),
                   wordOf(interrupts, value >> 4, "interrupt: ")});
}

std::string failedSensor(uint8_t value)
{
    return "sensor " + hexText(value);
}

std::string user(uint8_t value)
{
    const unsigned id = value & 0x3f;
    return id ? "user " + std::to_string(id) : "";
}

std::string sessionEnd(uint8_t value)
{
    constexpr const char* causes[] = {nullptr, "closed by Close Session",
                                      "timed out",
                                      "closed by a configuration change"};
    return joined({channelNumber(value), wordOf(causes, value >> 4 & 3)});
}

std::string versionChanged(uint8_t value)
{
    constexpr const char* words[] = {
        nullptr,
        "controller: device id",
        "controller: firmware revision",
        "controller: device revision",
        "controller: manufacturer id",
        "controller: IPMI version",
        "controller: auxiliary firmware id",
        "controller: firmware boot block",
        "controller: other firmware",
        "system firmware",
        "SMBIOS",
        "operating system",
        "operating system loader",
        "service or diagnostic partition",
        "management software agent",
        "management software application",
        "management software middleware",
        "programmable hardware",
        "board or FRU module",
        "board or FRU component",
        "board or FRU replaced by an equivalent version",
        "board or FRU replaced by a newer version",
        "board or FRU replaced by an older version",
        "board or FRU hardware configuration",
    };
    return wordOf(words, value);
}

std::string fruStateCause(uint8_t value)
{
    constexpr const char* words[] = {
        nullptr, // a normal change
        "commanded by software",
        "handle latch",
        "push button",
        "programmatic action",
        "communication lost",
        "communication lost locally",
        "unexpected extraction",
        "operator intervention",
        "IPMB address not computed",
        "unexpected deactivation",
    };
    return wordOf(words, value >> 4, "cause: ");
}

constexpr uint16_t upTo(unsigned offset)
{
    return uint16_t((2u << offset) - 1);
}

constexpr uint16_t only(unsigned offset)
{
    return uint16_t(1u << offset);
}

struct Definition
{
    uint8_t sensorType;
    uint16_t offsets;
    std::string (*of2)(uint8_t value);
    std::string (*of3)(uint8_t value);
    bool with2 = false; ///< Event data 3 says more of event data 2.
};

constexpr Definition definitions[] = {
    {0x05, only(4), networkController, nullptr},
    {0x08, only(6), nullptr, configurationError},
    {0x0c, upTo(10), nullptr, memoryModule},
    {0x10, only(0), memoryModule, nullptr},
    {0x10, only(1), eventTypeDisabled, whichEventsDisabled, true},
    {0x10, only(5), nullptr, percentFull},
    {0x10, only(6), processorNumber, processorKind, true},
    {0x12, only(3), auxiliaryLog, nullptr},
    {0x12, only(4), filterActions, nullptr},
    {0x12, only(5), clockSynch, nullptr},
    {0x19, only(0), requestedState, stateAtRequest},
    {0x1d, only(7), restartCause, channelNumber},
    {0x21, upTo(9), slotType, slotNumber},
    {0x23, upTo(3) | only(8), watchdogUse, nullptr},
    {0x28, only(0) | only(4), failedSensor, nullptr},
    {0x2a, upTo(3), user, sessionEnd},
    {0x2b, upTo(7), versionChanged, nullptr},
    {0x2c, upTo(7), fruStateCause, nullptr},
};

// The standard numbers what POST was at, or what went wrong with it, in event
// data 2; the texts stand in the table of events.
std::string postCode(const sel_event_record& record)
{
    constexpr uint8_t systemFirmware = 0x0f;
    if (record.sensorType != systemFirmware)
        return "";
    const auto row = std::find_if(
        ipmi_sel_data.begin(), ipmi_sel_data.end(), [&](const EventText& text) {
            return text.eventClass == EventText::sensorSpecific &&
                   text.type == systemFirmware &&
                   text.offset == (record.eventData1 & offsetMask) &&
                   text.data3 == record.eventData2;
        });
    const std::string text = row == ipmi_sel_data.end() ? "" : row->description;
    return text == "Reserved" ? "" : text;
}

// The state before, where a controller does not know it, is the present one.
std::string fruStateBefore(const sel_event_record& record)
{
    constexpr uint8_t fruState = 0x2c;
    const unsigned before = record.eventData2 & offsetMask;
    if (record.sensorType != fruState ||
        before == (record.eventData1 & offsetMask))
        return "";
    const std::string text =
        DescFromEvent(sensorSpecificEventType, fruState, before);
    return text.empty() ? "" : "before: " + text;
}

std::string definedDetails(const sel_event_record& record)
{
    Parts parts;
    const bool has2 =
        usageOf2(record) == extension && record.eventData2 != notGiven;
    const bool has3 =
        usageOf3(record) == extension && record.eventData3 != notGiven;
    if (has2) {
        parts.push_back(postCode(record));
        parts.push_back(fruStateBefore(record));
    }
    for (const Definition& row : definitions) {
        if (row.sensorType != record.sensorType ||
            !(row.offsets >> (record.eventData1 & offsetMask) & 1))
            continue;
        if (has2 && row.of2)
            parts.push_back(row.of2(record.eventData2));
        if (has3 && row.of3 && (has2 || !row.with2))
            parts.push_back(row.of3(record.eventData3));
    }
    return joined(parts);
}

// Bits 3..0 of event data 2 are an offset of the event's own type, bits 7..4
// one of the severity type's.
std::string previousState(const sel_event_record& record)
{
    constexpr uint8_t severityType = 0x07;
    if (usageOf2(record) != standard)
        return "";
    const std::string before = DescFromEvent(
        eventTypeOf(record), record.sensorType, record.eventData2 & offsetMask);
    const std::string severity =
        DescFromEvent(severityType, record.sensorType, record.eventData2 >> 4);
    return joined({before.empty() ? "" : "before: " + before,
                   severity.empty() ? "" : "severity: " + severity});
}

std::string discreteDetails(const sel_event_record& record)
{
    Parts parts{previousState(record)};
    if (eventTypeOf(record) == sensorSpecificEventType)
        parts.push_back(definedDetails(record));
    if (usageOf2(record) == oemCode && record.eventData2 != notGiven)
        parts.push_back("OEM data 2 " + hexText(record.eventData2));
    if (usageOf3(record) == oemCode && record.eventData3 != notGiven)
        parts.push_back("OEM data 3 " + hexText(record.eventData3));
    return joined(parts);
}

std::string eventDetails(const sel_event_record& record, int node)
{
    constexpr uint8_t knownRevision = 4;
    if (record.evmRevision != knownRevision)
        return "";
    const uint8_t type = eventTypeOf(record);
    if (type == thresholdEventType)
        return thresholdDetails(record, node);
    return isGenericType(type) || type == sensorSpecificEventType
               ? discreteDetails(record)
               : "";
}

std::string oemDetails(const sel_event_record& record)
{
    constexpr size_t timeAt = 3, manufacturerAt = 7, dataAt = 10;
    uint8_t copy[sizeof record];
    memcpy(copy, &record, sizeof copy);
    const RecordView bytes{copy, sizeof copy};
    if (!isTimedOem(record))
        return "data " + hexBytes(bytes.part(timeAt, bytes.size()));
    const unsigned manufacturer = bytes.u16(manufacturerAt) |
                                  unsigned(bytes.u8(manufacturerAt + 2)) << 16;
    return "manufacturer " + std::to_string(manufacturer) + ", data " +
           hexBytes(bytes.part(dataAt, bytes.size()));
}

} // namespace

std::string IpmiSelData::details() const
{
    constexpr uint8_t firstOem = 0xc0;
    if (isEvent(record_))
        return eventDetails(record_, node_);
    return record_.recordType >= firstOem ? oemDetails(record_) : "";
}

} // namespace Ipmi

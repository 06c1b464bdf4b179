#include <vek-ipmi/IpmiSelData.h>

#include <algorithm>

#include <vek-ipmi/IpmiCommandLine.h>
#include <vek-ipmi/IpmiIfc.h>
#include <vek-ipmi/IpmiSensor.h>

#include "ipmi/IpmiEventTexts.h"
#include "ipmi/IpmiSelRecord.h"

namespace Ipmi
{

namespace
{

enum SensorType : uint8_t
{
    temperature = 0x01,
    physicalSecurity = 0x05,
    platformSecurity = 0x06,
    eventLoggingDisabled = 0x10
};

// By threshold, of which an event's offset has two: going low, going high.
constexpr int severities[THRESHOLD_COUNT] = {
    5, 6, 7, // lower non-critical, critical, non-recoverable
    5, 6, 7, // upper
};

bool isListed(const IpmiSensor& sensor)
{
    constexpr unsigned char unspecified = 0x00, bios = 0x22;
    const auto entity = sensor.getEntity().getId();
    return entity != unspecified && entity != bios &&
           sensor.getSensorType() != eventLoggingDisabled;
}

// Null in the table's last row, and for a row that does not fit.
template <typename Rows>
const EventTypeRow* findRow(const Rows& rows, uint8_t code, int offset)
{
    for (const EventTypeRow& row : rows)
        if (row.name && row.code == code &&
            (offset < 0 || row.offset == offset))
            return &row;
    return nullptr;
}

std::string genericCaption(const sel_event_record& record)
{
    constexpr int anyOffset = -1;
    std::string text;
    if (const EventTypeRow* type =
            findRow(sensor_specific_types, record.sensorType, anyOffset))
        text = std::string{type->name} + " ";
    const EventTypeRow* const event =
        findRow(generic_event_types, eventTypeOf(record),
                record.eventData1 & offsetMask);
    return event && event->detail ? text + event->detail : text;
}

std::string specificCaption(const sel_event_record& record)
{
    const EventTypeRow* const row =
        findRow(sensor_specific_types, record.sensorType,
                record.eventData1 & offsetMask);
    if (!row)
        return "";
    return row->detail ? std::string{row->name} + " " + row->detail : row->name;
}

// Decimal fields between "*"; the elements of an array between blanks.
class DataString
{
public:
    DataString& field(const std::string& text)
    {
        text_ += "*" + text;
        return *this;
    }
    DataString& field(unsigned value) { return field(std::to_string(value)); }
    DataString& element(unsigned value)
    {
        text_ += " " + std::to_string(value);
        return *this;
    }
    std::string end() { return text_ + "*1*"; }

private:
    std::string text_;
};

constexpr uint8_t storage = 0x0a;
constexpr uint8_t deleteEntry = 0x46;

// The completion code; C1h and CDh, which mean that there is no such command,
// become 1.
int sendDelete(int node, uint8_t* data, uint16_t size, uint8_t (&answer)[4])
{
    uint16_t length = sizeof answer;
    const int code = IpmiIfc::sendCmd(node, deleteEntry, storage, size, data,
                                      &length, answer);
    return code == 0xc1 || code == 0xcd ? 1 : code;
}

} // namespace

unsigned short IpmiSelData::recordId() const
{
    return word(record_.recordId);
}

std::string IpmiSelData::recordId(int) const
{
    const uint16_t id = recordId();
    return id == firstRecord || id == lastRecord ? "Invalid"
                                                 : std::to_string(id);
}

bool IpmiSelData::isSelEventRecord() const
{
    return isEvent(record_);
}

unsigned short IpmiSelData::getGeneratorId() const
{
    return isEvent(record_) ? word(record_.generatorId) : uint16_t{0};
}

unsigned IpmiSelData::messageTimeStamp() const
{
    constexpr unsigned none = 0xffffffff;
    return isEvent(record_) || isTimedOem(record_) ? longWord(record_.timeStamp)
                                                   : none;
}

int IpmiSelData::eventType() const
{
    return isEvent(record_) ? eventTypeOf(record_) : -1;
}

int IpmiSelData::severity() const
{
    const unsigned threshold = (record_.eventData1 & offsetMask) / 2;
    return eventType() == thresholdEventType && threshold < THRESHOLD_COUNT
               ? severities[threshold]
               : 0;
}

int IpmiSelData::alertType() const
{
    constexpr int device = 5, environmental = 6, security = 8;
    if (!isEvent(record_) || eventTypeOf(record_) > sensorSpecificEventType)
        return 0;
    switch (record_.sensorType) {
    case temperature:
        return environmental;
    case physicalSecurity:
    case platformSecurity:
        return security;
    default:
        return device;
    }
}

unsigned char IpmiSelData::getSensorNumber() const
{
    const unsigned char number = record_.sensorNumber;
    if (!isEvent(record_) || number == 0)
        return 0;
    auto sensors = IpmiIfc::getSensors(node_);
    if (sensors.empty()) {
        IpmiIfcSdrGetInfo(0);
        sensors = IpmiIfc::getSensors(node_);
    }
    const auto found =
        std::find_if(sensors.rbegin(), sensors.rend(), [&](const auto& sensor) {
            return sensor->getSensorNumber() == number;
        });
    return found != sensors.rend() && isListed(**found) ? number : uint8_t{0};
}

std::string IpmiSelData::caption() const
{
    constexpr uint8_t leastRevision = 4;
    if (!isEvent(record_) || record_.evmRevision < leastRevision)
        return "";
    const std::string prefix =
        isDeassertion(record_) ? "Deassert + " : "Assert + ";
    const uint8_t type = eventTypeOf(record_);
    if (isGenericType(type))
        return prefix + genericCaption(record_);
    return type == sensorSpecificEventType ? prefix + specificCaption(record_)
                                           : "";
}

std::string IpmiSelData::messageFormat() const
{
    if (!isEvent(record_))
        return "";
    return "*string CIM_Sensor.DeviceID"
           "*uint8[2] IPMI_RecordID"
           "*uint8 IPMI_RecordType"
           "*uint8[4] IPMI_Timestamp"
           "*uint8[2] IPMI_GeneratorID"
           "*uint8 IPMI_EvMRev"
           "*uint8 IPMI_SensorType"
           "*uint8 IPMI_SensorNumber"
           "*boolean IPMI_AssertionEvent"
           "*uint8 IPMI_EventType"
           "*uint8 IPMI_EventData1"
           "*uint8 IPMI_EventData2"
           "*uint8 IPMI_EventData3"
           "*uint32 IANA*";
}

std::string IpmiSelData::recordDataString() const
{
    if (!isEvent(record_))
        return "";
    const unsigned number = getSensorNumber();
    const uint8_t(&generator)[2] = record_.generatorId;
    const uint8_t(&time)[4] = record_.timeStamp;
    return DataString{}
        .field(std::to_string(number) + "." + std::to_string(generator[1]) +
               "." + std::to_string(generator[0]))
        .field(record_.recordId[0])
        .element(record_.recordId[1])
        .field(record_.recordType)
        .field(time[0])
        .element(time[1])
        .element(time[2])
        .element(time[3])
        .field(generator[0])
        .element(generator[1])
        .field(record_.evmRevision)
        .field(record_.sensorType)
        .field(number)
        // In this sense: callers read it so.
        .field(isDeassertion(record_) ? "true" : "false")
        .field(eventTypeOf(record_))
        .field(record_.eventData1)
        .field(record_.eventData2)
        .field(record_.eventData3)
        .end();
}

int IpmiSelData::reserve(unsigned short& id) const
{
    uint8_t answer[4] = {};
    const int result = sendDelete(node_, nullptr, 0, answer);
    if (result != 1)
        id = uint16_t(answer[1] | answer[2] << 8);
    return result;
}

int IpmiSelData::clear() const
{
    unsigned short reservation = 0;
    reserve(reservation);
    uint8_t data[4] = {uint8_t(reservation & 0xff), uint8_t(reservation >> 8),
                       record_.recordId[0], 0};
    uint8_t answer[4] = {};
    return sendDelete(node_, data, sizeof data, answer);
}

} // namespace Ipmi

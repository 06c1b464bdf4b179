#include "ipmi/IpmiIfcSensor.h"

#include <algorithm>
#include <exception>
#include <new>
#include <syslog.h>

#include "ipmi/IpmiSensorRecord.h"

namespace Ipmi
{

namespace
{

constexpr uint8_t sensorEvent = 0x04;
constexpr uint8_t getSensorReading = 0x2d;
constexpr uint8_t getSensorThresholds = 0x27;

enum : uint8_t
{
    timedOut = 0xc3,
    notPresent = 0xcb,
    illegalForSensor = 0xcd
};

constexpr int notSent = -1;
constexpr int noRecord = -2;
constexpr int refused = -3;

bool hasSoftwareOwner(RecordView record)
{
    return record.u8(at::owner) & 0x01;
}

// Asks the controller that owns the record's sensor.
Response askOwner(IpmiNode& node, RecordView record, uint8_t command)
{
    uint8_t number = record.u8(at::number);
    ipmiifc_req request{};
    request.netfn = sensorEvent;
    request.cmd = command;
    request.data = &number;
    request.data_len = 1;
    const uint8_t where = record.u8(at::ownerLun);
    // Only the address is put back: callers find the channel and LUN of the
    // last sensor in the node record.
    TargetUse owner{record.u8(at::owner), uint8_t(where >> 4),
                    uint8_t(where & 3), TargetUse::Restore::addressOnly};
    request.msgid = node.msgSeq++;
    return Response{IpmiIfcSend(numberOf(node), &request, 0)};
}

bool isQuiet(uint8_t code)
{
    return code == notPresent || code == illegalForSensor;
}

} // namespace

namespace
{

// One Get Sensor Reading into the request, whatever its link.
int requestReading(IpmiNode& node, RecordView record,
                   ipmiifc_sensor_reading_list& request)
{
    if (hasSoftwareOwner(record))
        return notSent;
    const Response resp = askOwner(node, record, getSensorReading);
    if (!resp) {
        syslog(LOG_DEBUG,
               "IpmiIfcSensorGetReading: failed send to get reading.");
        return notSent;
    }
    if (resp->cc != 0) {
        if (!isQuiet(resp->cc))
            syslog(LOG_WARNING,
                   "IpmiIfcSensorGetReading: Sensor Number 0x%x, failed send "
                   "cc = 0x%x",
                   record.u8(at::number), resp->cc);
        return resp->cc;
    }
    std::copy_n(resp->data, sizeof request.data, request.data);
    request.length = resp->data_len;
    return 0;
}

// Asks for a reading and keeps what came of it.
int readInto(IpmiNode& node, RecordView record, IpmiSensor& sensor)
{
    ipmiifc_sensor_reading_list request{};
    const int result = requestReading(node, record, request);
    sensor.noteResult(result);
    if (result == 0) {
        sensor.setReading(request.data);
        sensor.setReadingLength(request.length);
    }
    return result;
}

} // namespace

int IpmiIfcSensorGetReading(int number, ipmiifc_sensor_reading_list* entry)
{
    IpmiNode* const node = nodeRecord(number);
    if (!node)
        return notSent;
    if (!entry->sdr) {
        syslog(LOG_DEBUG, "IpmiIfcSensorGetReading: sreading->sdr not valid");
        return noRecord;
    }
    return requestReading(*node, viewOf(*entry->sdr), *entry);
}

namespace
{

void fetchHysteresis(IpmiThresholdSensor& sensor)
{
    constexpr char name[] = "IpmiIfcSensorGetThresholds";
    unsigned char positive = 0;
    unsigned char negative = 0;
    try {
        const unsigned code = sensor.getHysteresis(positive, negative, true);
        if (code != 0)
            syslog(LOG_ERR, "%s: getHysteresis(%u, %u, true) returned cc = %u",
                   name, positive, negative, code);
    } catch (const std::exception&) {
        syslog(LOG_DEBUG, "%s: failed to cache hysteresis.", name);
    }
}

int getThresholds(IpmiNode& node, RecordView record, IpmiSensor& sensor)
{
    if (hasSoftwareOwner(record))
        return notSent;
    const Response resp = askOwner(node, record, getSensorThresholds);
    if (!resp)
        return notSent;
    if (resp->cc != 0) {
        if (!isQuiet(resp->cc))
            syslog(
                LOG_WARNING, "%s: Sensor Number = 0x%x, failed send cc = 0x%x",
                "IpmiIfcSensorGetThresholds", record.u8(at::number), resp->cc);
        return refused;
    }
    sensor.setThresholdReading(resp->data);
    auto* const threshold = dynamic_cast<IpmiThresholdSensor*>(&sensor);
    if (threshold && threshold->getHysteresisSupport())
        fetchHysteresis(*threshold);
    return 0;
}

} // namespace

int IpmiIfcSensorGetThresholds(int number, ipmiifc_sdr_list* entry,
                               std::shared_ptr<IpmiSensor> sensor)
{
    IpmiNode* const node = nodeRecord(number);
    if (!node)
        return notSent;
    if (!entry)
        return noRecord;
    return getThresholds(*node, viewOf(*entry), *sensor);
}

namespace
{

bool isDiscreteEventType(uint8_t type)
{
    return (type >= 0x02 && type <= 0x0c) || type == sensorSpecificEventType;
}

bool isOemEventType(uint8_t type)
{
    return type >= 0x70 && type <= 0x7f;
}

// What belongs to no entity and what belongs to the firmware of the host is
// none of the platform's own sensors.
bool isUnlistedEntity(uint8_t entity)
{
    return entity == 0x00 || entity == 0x22;
}

bool isMemoryEvents(uint8_t recordType, RecordView record)
{
    constexpr uint8_t memory = 0x0c;
    if (recordType == eventOnlyRecord)
        return record.u8(at::eventOnlySensorType) == memory;
    return record.u8(at::sensorType) == memory &&
           (record.u16(at::assertionMask) || record.u16(at::deassertionMask));
}

} // namespace

SensorKind sensorKindOf(uint8_t recordType, RecordView record)
{
    const bool eventOnly = recordType == eventOnlyRecord;
    const uint8_t type =
        record.u8(eventOnly ? at::eventOnlyEventType : at::eventType);
    if (type == thresholdEventType)
        return SensorKind::threshold;
    // Byte 13 holds something else in an event-only record; callers know the
    // sensors that come of looking there.
    if (!isDiscreteEventType(type) && !isOemEventType(record.u8(at::eventType)))
        return SensorKind::none;
    return isUnlistedEntity(record.u8(at::entity)) ? SensorKind::unlisted
                                                   : SensorKind::discrete;
}

namespace
{

void logDropped(const ipmiifc_sdr_list& entry)
{
    const unsigned type = viewOf(entry).u8(at::eventType);
    if (entry.recordType == fullRecord)
        syslog(LOG_DEBUG,
               "dropping sdr, full event_type %x (ID: %x, Type %x)\n", type,
               entry.recordId, entry.recordType);
    // One type in two places: the line is known as it is.
    if (entry.recordType == compactRecord)
        syslog(LOG_DEBUG,
               "dropping sdr, compact event_type %d, full event_type %d\n",
               int(type), int(type));
}

std::shared_ptr<IpmiSensor> build(IpmiNode& node, const ipmiifc_sdr_list& entry,
                                  SensorKind kind)
{
    const int length = entry.totalLength;
    if (kind == SensorKind::threshold)
        return std::make_shared<IpmiThresholdSensor>(length, entry.bytes.get(),
                                                     numberOf(node));
    return std::make_shared<IpmiDiscreteSensor>(length, entry.bytes.get(),
                                                numberOf(node));
}

// One record, which may turn out to be no sensor.
void discover(IpmiNode& node, ipmiifc_sdr_list& entry)
    VEK_REQUIRES(node.sdrLock)
{
    const RecordView record = viewOf(entry);
    if (isMemoryEvents(entry.recordType, record))
        node.memoryEventsFlag = true;
    const SensorKind kind = sensorKindOf(entry.recordType, record);
    if (kind == SensorKind::none) {
        logDropped(entry);
        return;
    }
    const std::shared_ptr<IpmiSensor> sensor = build(node, entry, kind);
    if (kind == SensorKind::threshold)
        IpmiIfcSensorGetThresholds(numberOf(node), &entry, sensor);
    if (kind != SensorKind::unlisted)
        node.sensors->push_back(sensor);
    if (entry.recordType != eventOnlyRecord)
        readInto(node, record, *sensor);
}

// A record that no sensor can be made of leaves the others alone.
void discoverGuarded(IpmiNode& node, ipmiifc_sdr_list& entry)
    VEK_REQUIRES(node.sdrLock)
{
    try {
        discover(node, entry);
        return;
    } catch (const CmpiStatus&) { // too long
    } catch (const std::bad_alloc&) {
    }
    syslog(LOG_WARNING,
           "IpmiIfcSensorInstantiateAll: no sensor made of record 0x%x, %u "
           "bytes",
           entry.recordId, entry.totalLength);
}

} // namespace

// The lock is held throughout, so that callers never see half of the sensors.
int IpmiIfcSensorInstantiateAll(int number)
{
    IpmiNode* const record = nodeRecord(number);
    if (!record)
        return -1;
    IpmiNode& node = *record;
    VEK::WriteLock lock{node.sdrLock};
    node.sensors->clear();
    node.memoryEventsFlag = false;
    for (const IpmiSdrClass list : {SDR_FULL, SDR_COMPACT, SDR_EVENT_ONLY})
        for (ipmiifc_sdr_list* entry = node.sdrLists[list]; entry;
             entry = entry->next)
            discoverGuarded(node, *entry);
    return 0;
}

namespace
{

// A sensor that is absent answers after seconds on some controllers. One that
// timed out gets three more chances.
bool isPassedOver(const IpmiSensorReading& last)
{
    if (last.lastResult == timedOut)
        return last.repeatCount > 2;
    return last.lastResult == notPresent || last.lastResult == illegalForSensor;
}

enum class Refresh
{
    done,
    passedOver,
    nothingSent
};

Refresh refreshReading(IpmiNode& node, RecordView record, IpmiSensor& sensor)
{
    if (isPassedOver(sensor.lastReading())) {
        syslog(LOG_DEBUG,
               "Skipping reading update for previous failed sensor 0x%x",
               sensor.getSensorNumber());
        return Refresh::passedOver;
    }
    const int result = readInto(node, record, sensor);
    if (result == notSent && !hasSoftwareOwner(record)) {
        syslog(LOG_DEBUG,
               "IpmiIfcSensorUpdateReading: failed send to get reading.");
        return Refresh::nothingSent;
    }
    return Refresh::done;
}

bool hasThresholds(RecordView record)
{
    switch (record.u8(at::recordType)) {
    case fullRecord:
    case compactRecord:
        return record.u8(at::eventType) == thresholdEventType;
    case eventOnlyRecord:
        return record.u8(at::eventOnlyEventType) == thresholdEventType;
    default:
        return false;
    }
}

/// False ends the pass.
bool refresh(IpmiNode& node, IpmiSensor& sensor)
{
    const unsigned char* bytes;
    int length;
    sensor.RawRecord(bytes, length);
    const RecordView record{bytes, size_t(length)};
    const uint8_t type = record.u8(at::recordType);
    if (type == fullRecord || type == compactRecord)
        switch (refreshReading(node, record, sensor)) {
        case Refresh::nothingSent:
            return false;
        case Refresh::passedOver:
            return true;
        case Refresh::done:
            break;
        }
    if (hasThresholds(record))
        getThresholds(node, record, sensor);
    return true;
}

} // namespace

// Works on a copy, without the lock.
int IpmiIfcSensorUpdateReading(int number)
{
    syslog(LOG_DEBUG, "Entering IpmiIfcSensorUpdateReading");
    IpmiNode* const node = nodeRecord(number);
    if (!node)
        return -1;
    for (const auto& sensor : IpmiIfc::getSensors(number))
        if (!refresh(*node, *sensor))
            break;
    return 0;
}

std::vector<std::shared_ptr<IpmiSensor>> IpmiIfc::getSensors(int number)
{
    IpmiNode* const node = nodeRecord(number);
    if (!node)
        return {};
    VEK::ReadLock lock{node->sdrLock};
    return *node->sensors;
}

std::vector<std::shared_ptr<IpmiSensor>> IpmiIfc::getSensors()
{
    return getSensors(0);
}

std::shared_ptr<IpmiSensor> IpmiIfc::getSensor(int number, unsigned sensor,
                                               unsigned owner)
{
    IpmiNode* const node = nodeRecord(number);
    if (!node)
        return nullptr;
    VEK::ReadLock lock{node->sdrLock};
    const auto found =
        std::find_if(node->sensors->begin(), node->sensors->end(),
                     [&](const auto& candidate) {
                         return candidate->getSensorNumber() == sensor &&
                                candidate->getOwnerId() == (owner & 0xff);
                     });
    return found == node->sensors->end() ? nullptr : *found;
}

std::shared_ptr<IpmiSensor> IpmiIfc::getSensor(unsigned sensor, unsigned owner)
{
    return getSensor(0, sensor, owner);
}

bool IpmiIfc::generatesMemoryEvents(int number)
{
    const IpmiNode* const node = nodeRecord(number);
    return node && node->memoryEventsFlag;
}

bool IpmiIfc::generatesMemoryEvents()
{
    return generatesMemoryEvents(0);
}

} // namespace Ipmi

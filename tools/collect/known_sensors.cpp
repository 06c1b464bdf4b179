#include "tools/collect/known_sensors.h"

#include <vek-ipmi/IpmiIfc.h>

#include "tools/collect/record.h"

namespace Tool
{

namespace
{

// Where a record says how many sensors share it, and behind that how their
// names count (IPMI v2.0, 43.2 and 43.3).
struct Sharing
{
    uint8_t recordType;
    size_t at;
};

constexpr Sharing sharings[] = {{record_types::compact, 23},
                                {record_types::eventOnly, 12}};

// Adds to the bits of a mask, within the mask.
void add(uint8_t& byte, int number, uint8_t mask)
{
    byte = static_cast<uint8_t>((byte & ~mask) | ((byte + number) & mask));
}

// The record of the next sensor that shares it, as the node makes them; false
// when there is none.
bool countOn(Bytes& record)
{
    constexpr size_t numberAt = 7, instanceAt = 9;
    constexpr uint8_t count = 0x0F, offset = 0x7F, entitiesCount = 0x80;
    for (const Sharing& sharing : sharings) {
        if (typeOf(record) != sharing.recordType ||
            record.size() <= sharing.at + 1 || (record[sharing.at] & count) < 2)
            continue;
        add(record[sharing.at], -1, count);
        add(record[numberAt], 1, 0xFF);
        add(record[sharing.at + 1], 1, offset);
        if (record[sharing.at + 1] & entitiesCount)
            add(record[instanceAt], 1, 0x7F);
        return true;
    }
    return false;
}

} // namespace

KnownSensors::KnownSensors(const std::vector<Bytes>& records)
{
    for (const uint8_t type :
         {record_types::full, record_types::compact, record_types::eventOnly})
        for (const Bytes& record : records)
            if (typeOf(record) == type)
                addAll(record);
}

void KnownSensors::addAll(Bytes record)
{
    do {
        auto sensor = makeSensor(record);
        std::string deviceId = sensor->getDeviceId();
        sensors_.emplace(std::move(deviceId), std::move(sensor));
    } while (countOn(record));
}

const Ipmi::IpmiSensor* KnownSensors::find(const std::string& deviceId) const
{
    const auto found = sensors_.find(deviceId);
    return found == sensors_.end() ? nullptr : found->second.get();
}

std::vector<Bytes> sensorRecordsOfNode()
{
    std::vector<Bytes> records;
    for (Ipmi::IpmiSdrEntry& entry : Ipmi::IpmiIfc::getSdrRecords())
        records.push_back(std::move(entry.bytes));
    return records;
}

} // namespace Tool

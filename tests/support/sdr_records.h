/// Sensor data records for tests, with the fields that a test is about.
#ifndef VEK_TESTS_SUPPORT_SDR_RECORDS_H
#define VEK_TESTS_SUPPORT_SDR_RECORDS_H

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

using RecordBytes = std::vector<uint8_t>;
using RecordFields = std::vector<std::pair<unsigned, uint8_t>>;

/// A record of a type (IPMI v2.0, 43) with this many bytes: version 1.5, owner
/// 20h, sensor `number` of entity 7.1, event/reading type 01h; then `fields`,
/// byte and value.
inline RecordBytes sensorRecord(uint8_t type, uint8_t number,
                                const RecordFields& fields = {},
                                const std::string& name = "")
{
    const size_t idString = type == 1 ? 47 : type == 2 ? 31 : 16;
    RecordBytes bytes(idString + 1);
    bytes[2] = 0x51;
    bytes[3] = type;
    bytes[5] = 0x20;
    bytes[7] = number;
    bytes[8] = 7;
    bytes[9] = 1;
    bytes[type == 3 ? 11 : 13] = 0x01;
    bytes[idString] = uint8_t(0xc0 | name.size());
    for (const auto& [at, value] : fields)
        bytes[at] = value;
    bytes.insert(bytes.end(), name.begin(), name.end());
    bytes[4] = uint8_t(bytes.size() - 5);
    return bytes;
}

#endif

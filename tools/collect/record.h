/// Sensor data records of every type (IPMI v2.0, section 43).
#ifndef VEK_TOOLS_COLLECT_RECORD_H
#define VEK_TOOLS_COLLECT_RECORD_H

#include <optional>

#include "tools/collect/sensor.h"

namespace Tool
{

/// Why a record is no sensor of the listing.
enum class LeftOut
{
    no,
    entity,      ///< A discrete sensor of entity 00h or 22h.
    eventType,   ///< An event/reading type that IPMI v2.0 does not define.
    tooLong,     ///< More than 64 bytes.
    locator,     ///< Says where a device is.
    association, ///< Says which entities belong together.
    oem,
    other
};

struct Record
{
    unsigned id = 0;
    uint8_t version = 0, type = 0;
    std::string typeName, name;
    LeftOut leftOut = LeftOut::no;
    std::optional<Sensor> sensor; ///< Of a sensor record; without a reading
                                  ///< when it was left out.
    Bytes bytes;
};

/// Its type byte; 0 when it is too short for one.
uint8_t typeOf(const Bytes& record);

/// Its name as text; empty for a type that has none.
std::string nameOf(const Bytes& record);

/// The library's object for a full, compact or event-only record; of a longer
/// one than it takes the beginning.
std::unique_ptr<Ipmi::IpmiSensor> makeSensor(Bytes record);

/// All that the node has read, in the order of the library's lists, within
/// one in the order of the controller. Sends nothing.
std::vector<Record> collectRecords();

} // namespace Tool

#endif

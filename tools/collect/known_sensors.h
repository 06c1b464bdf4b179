/// Sensors that sensor data records tell of, for naming those of events.
#ifndef VEK_TOOLS_COLLECT_KNOWN_SENSORS_H
#define VEK_TOOLS_COLLECT_KNOWN_SENSORS_H

#include <map>
#include <memory>
#include <string>
#include <vector>

#include <vek-ipmi/IpmiSensor.h>

#include "tools/print/text.h"

namespace Tool
{

class KnownSensors
{
public:
    using Map = std::map<std::string, std::unique_ptr<const Ipmi::IpmiSensor>>;

    KnownSensors() = default;
    /// @param records of any types. Of several records of one sensor those
    ///     with a reading go before event-only ones.
    explicit KnownSensors(const std::vector<Bytes>& records);

    /// By device id: owner, LUN, channel and number. Null when no record
    /// tells of it.
    const Ipmi::IpmiSensor* find(const std::string& deviceId) const;
    const Map& all() const { return sensors_; }

private:
    /// A record may be shared by several sensors.
    void addAll(Bytes record);

    Map sensors_;
};

/// The bytes of all records that the node has read. Sends nothing.
std::vector<Bytes> sensorRecordsOfNode();

} // namespace Tool

#endif

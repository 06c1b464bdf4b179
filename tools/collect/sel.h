/// Records of the event log (IPMI v2.0, section 32).
#ifndef VEK_TOOLS_COLLECT_SEL_H
#define VEK_TOOLS_COLLECT_SEL_H

#include <string>
#include <vector>

#include <vek-ipmi/IpmiSelData.h>

#include "tools/collect/known_sensors.h"

namespace Tool
{

/// In ascending order.
enum class Severity
{
    unknown, ///< Nothing says how bad it is.
    info,
    warning,
    critical,
    nonRecoverable
};

/// A time as the log has it (IPMI v2.0, section 37).
struct SelTime
{
    static constexpr uint32_t none = 0xFFFFFFFF, lastSinceStart = 0x20000000;

    uint32_t raw = none;

    /// In seconds since the controller's start: its clock was not set then.
    bool sinceStart() const { return raw <= lastSinceStart; }
    /// In seconds since 1970.
    bool isDate() const { return raw != none && !sinceStart(); }
};

struct SelRecord
{
    Ipmi::sel_event_record bytes{};
    unsigned id = 0;
    SelTime time;
    bool isEvent = false;
    std::string event; ///< "Upper Critical going high", "OEM record C1h"
    std::string details;
    Severity severity = Severity::unknown;

    // Of events alone.
    bool asserted = false;
    std::string deviceId;   ///< As Sensor has it.
    std::string sensorName; ///< Empty: no sensor data record tells of it.
    std::string idString;   ///< May be empty.
    std::string typeName;

    uint8_t eventType() const { return bytes.eventType & 0x7F; }
    uint8_t offset() const { return bytes.eventData1 & 0x0F; }
};

using SelBytes = std::array<uint8_t, sizeof(Ipmi::sel_event_record)>;

SelBytes bytesOf(const Ipmi::sel_event_record& record);
Ipmi::sel_event_record recordOf(const SelBytes& bytes);

/// Needs a loaded health table; sends nothing.
SelRecord collectSelRecord(const Ipmi::IpmiSelData& data,
                           const KnownSensors& sensors);

} // namespace Tool

#endif

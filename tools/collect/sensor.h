/// One sensor as it was last read.
#ifndef VEK_TOOLS_COLLECT_SENSOR_H
#define VEK_TOOLS_COLLECT_SENSOR_H

#include <array>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include <vek-ipmi/IpmiSensor.h>

#include "tools/print/text.h"

namespace Tool
{

constexpr uint8_t controllersAddress = 0x20;

namespace record_types
{
constexpr uint8_t full = 0x01, compact = 0x02, eventOnly = 0x03,
                  fruLocator = 0x11;
} // namespace record_types

/// Why there is a reading, or none.
enum class Condition
{
    read,
    noReading,    ///< The controller has none at the moment.
    scanningOff,  ///< Scanning of this sensor is disabled.
    absent,       ///< CBh
    notAnswering, ///< C3h, or no answer at all.
    refused,      ///< Any other completion code.
    eventOnly,    ///< Never read.
    software,     ///< Owned by software, which cannot be asked.
    otherLun,     ///< The controller's own, not at LUN 0.
    leftOut       ///< No sensor of the library's.
};

enum class Health
{
    well,
    degraded,
    critical,
    unknown, ///< It ought to be known, and is not.
    noRule,  ///< The health table says nothing about its states.
    none     ///< Nothing to judge: absent, or never read.
};

/// A raw byte and what it means.
struct Value
{
    uint8_t raw = 0;
    std::optional<double> real; ///< None without conversion, or not finite.
    double step = 0; ///< Distance of neighbouring real values around it.
};

struct Threshold
{
    bool readable = false; ///< As the record says, and so below.
    bool settable = false;
    std::optional<Value> value;        ///< As the controller says.
    std::optional<Value> defaultValue; ///< Of a full record.
};

struct Unit
{
    uint8_t base = 0, modifier = 0;
    uint8_t modifierUse = 0; ///< 1: base / modifier; 2: base * modifier.
    uint8_t rate = 0;        ///< 1 to 6: per microsecond ... per day.
    bool percentage = false;
    std::string text; ///< "degrees C", "%", "Volts / second"; may be empty.
};

/// What a full record says about values to expect.
struct Limits
{
    std::optional<Value> minimum, maximum, normalMinimum, normalMaximum,
        nominal;
};

struct Hysteresis
{
    uint8_t positive = 0, negative = 0; ///< Raw.
};

struct Sensor
{
    std::string deviceId, name, idString, description, typeName, entityName;
    uint16_t recordId = 0;
    uint8_t recordType = 0, number = 0, owner = 0, lun = 0, channel = 0,
            type = 0, eventReadingType = 0;
    unsigned entityId = 0, entityInstance = 0;
    bool discrete = false;
    bool convertible = false;
    double rawStep = 0; ///< What a raw 1 makes; 0 unless that is constant.
    Unit unit;
    std::string direction;
    uint8_t hysteresisSupport = 0, thresholdAccess = 0, eventSupport = 0;
    unsigned flags = 0; ///< As IpmiSensor::getFlags.
    unsigned assertionMask = 0, deassertionMask = 0;
    unsigned readingMask = 0; ///< States that a discrete sensor can report.
    uint8_t readableMask = 0, settableMask = 0;
    Limits limits;
    Bytes record;

    Condition condition = Condition::read;
    int lastResult = 0; ///< 0, a completion code, -1: nothing was sent.
    Bytes answer;       ///< Get Sensor Reading's, completion code first.
    std::string time;   ///< Of the reading, ISO 8601; may be empty.
    std::optional<Value> reading;
    unsigned stateBits = 0;
    std::vector<std::string> states; ///< The highest first: what matters.
    std::array<Threshold, Ipmi::THRESHOLD_COUNT> thresholds;
    std::optional<Hysteresis> hysteresis;

    Health health = Health::none;
    int healthNumber = 0; ///< 5 well, 10 degraded, 25 critical, ...

    bool isSatellite() const { return owner != controllersAddress || lun != 0; }
};

/// Sends nothing.
Sensor collectSensor(const Ipmi::IpmiSensor& sensor);

/// The node's sensors in the order of their records. Sends nothing.
std::vector<Sensor> collectSensors();

/// The library's object for it; null when there is none any more.
std::shared_ptr<Ipmi::IpmiSensor> objectOf(const Sensor& sensor);

/// A raw distance of values, as a hysteresis is one.
Value differenceOf(const Sensor& sensor, uint8_t raw);

/// Converts as the sensor's record says.
Value valueOf(const Ipmi::IpmiSensor& sensor, uint8_t raw);

} // namespace Tool

#endif

#include "tools/collect/threshold_plan.h"

#include <algorithm>
#include <cmath>

#include "tools/print/state.h"
#include "tools/print/value.h"
#include "tools/status.h"

namespace Tool
{

namespace
{

[[noreturn]] void refuse(const Sensor& sensor, const std::string& why,
                         const std::string& next = "")
{
    throw Failure{Status::usage,
                  "thresholds of '" + sensor.name + "' not set: " + why, next};
}

// Threshold access support (IPMI v2.0, 43.1, byte 12).
constexpr uint8_t noAccess = 0, readableOnly = 1, fixedAccess = 3;

void checkAccess(const Sensor& sensor)
{
    if (sensor.discrete)
        refuse(sensor, "the sensor has states instead of thresholds");
    switch (sensor.thresholdAccess) {
    case noAccess:
        refuse(sensor, "the sensor has no thresholds");
    case readableOnly:
        refuse(sensor, "they can be read but not set");
    case fixedAccess:
        refuse(sensor, "they are fixed in the controller");
    default:
        break;
    }
    if (sensor.settableMask == 0)
        refuse(sensor, "none of them can be set");
}

std::string settableOnes(const Sensor& sensor)
{
    std::string text;
    for (unsigned i = 0; i < sensor.thresholds.size(); ++i)
        if (sensor.thresholds[i].settable)
            text += std::string{text.empty() ? "" : ", "} + thresholdName(i);
    return "These can be: " + text;
}

struct Range
{
    const Value *least = nullptr, *most = nullptr;
};

Range rangeOf(const Conversion& conversion)
{
    Range range;
    for (const Value& value : conversion) {
        if (!value.real)
            continue;
        if (!range.least || *value.real < *range.least->real)
            range.least = &value;
        if (!range.most || *value.real > *range.most->real)
            range.most = &value;
    }
    return range;
}

std::string rangeText(const Conversion& conversion, const Sensor& sensor)
{
    const Range range = rangeOf(conversion);
    if (!range.least)
        return "The sensor's values cannot be converted.";
    return "Its values go from " + valueText(*range.least, sensor.unit) +
           " to " + valueText(*range.most, sensor.unit) + ".";
}

PlannedThreshold planOne(const Sensor& sensor, const Conversion& conversion,
                         unsigned threshold, double wanted)
{
    const std::string name = thresholdName(threshold);
    if (!sensor.thresholds[threshold].settable)
        refuse(sensor, "its " + name + " threshold cannot be set",
               settableOnes(sensor));
    const std::optional<Value> value = nearest(conversion, wanted);
    if (!value)
        refuse(sensor,
               "no raw byte says " + numberText(wanted, 0) + " for " + name,
               rangeText(conversion, sensor));
    return {threshold, wanted, *value};
}

// What will hold afterwards, upwards; a threshold that is neither read nor
// set is passed over.
void checkOrder(const Sensor& sensor,
                const std::vector<PlannedThreshold>& planned)
{
    using namespace Ipmi;
    std::array<std::optional<Value>, THRESHOLD_COUNT> after;
    std::array<bool, THRESHOLD_COUNT> isNew{};
    for (unsigned i = 0; i < after.size(); ++i)
        after[i] = sensor.thresholds[i].value;
    for (const PlannedThreshold& plan : planned) {
        after[plan.threshold] = plan.value;
        isNew[plan.threshold] = true;
    }
    int below = -1;
    for (const int i :
         {LOWER_NON_RECOVERABLE, LOWER_CRITICAL, LOWER_NON_CRITICAL,
          UPPER_NON_CRITICAL, UPPER_CRITICAL, UPPER_NON_RECOVERABLE})
    {
        if (!after[i] || !after[i]->real)
            continue;
        if (below >= 0 && (isNew[i] || isNew[below]) &&
            *after[i]->real < *after[below]->real)
            refuse(sensor,
                   std::string{thresholdName(static_cast<unsigned>(i))} + " (" +
                       valueText(*after[i], sensor.unit) + ") would be below " +
                       thresholdName(static_cast<unsigned>(below)) + " (" +
                       valueText(*after[below], sensor.unit) + ")",
                   "Set both.");
        below = i;
    }
}

// IPMI v2.0, 35.5: such a sensor has factors for each reading.
bool isNonLinear(const Sensor& sensor)
{
    constexpr size_t linearisationAt = 23;
    return sensor.record.size() > linearisationAt &&
           (sensor.record[linearisationAt] & 0x7F) >= 0x70;
}

} // namespace

bool PlannedThreshold::isExact() const
{
    return std::fabs(*value.real - wanted) <=
           1e-9 * std::max(1.0, std::fabs(wanted));
}

Conversion conversionOf(const Ipmi::IpmiSensor& sensor)
{
    Conversion conversion;
    for (unsigned raw = 0; raw < conversion.size(); ++raw)
        conversion[raw] = valueOf(sensor, static_cast<uint8_t>(raw));
    return conversion;
}

std::optional<Value> nearest(const Conversion& conversion, double wanted)
{
    const Range range = rangeOf(conversion);
    if (!range.least || !std::isfinite(wanted))
        return std::nullopt;
    const auto distance = [&](const Value& value) {
        return std::fabs(*value.real - wanted);
    };
    const Value* best = range.least;
    for (const Value& value : conversion)
        if (value.real && distance(value) < distance(*best))
            best = &value;
    const bool inside =
        wanted >= *range.least->real && wanted <= *range.most->real;
    if (!inside && distance(*best) > best->step / 2)
        return std::nullopt;
    return *best;
}

std::vector<PlannedThreshold> planThresholds(const Sensor& sensor,
                                             const Conversion& conversion,
                                             const WantedThresholds& wanted)
{
    checkAccess(sensor);
    if (!sensor.convertible)
        refuse(sensor, "its record has no factors to convert values with");
    if (isNonLinear(sensor))
        refuse(sensor, "its factors vary with the reading (linearisation 70h "
                       "to 7Fh)");
    std::vector<PlannedThreshold> planned;
    for (unsigned i = 0; i < wanted.size(); ++i)
        if (wanted[i])
            planned.push_back(planOne(sensor, conversion, i, *wanted[i]));
    checkOrder(sensor, planned);
    return planned;
}

void checkRestorable(const Sensor& sensor)
{
    checkAccess(sensor);
    if (sensor.recordType != record_types::full)
        refuse(sensor, "only a full record holds defaults, and it has none");
}

} // namespace Tool

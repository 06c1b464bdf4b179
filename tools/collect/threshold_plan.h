/// What setting thresholds will do.
#ifndef VEK_TOOLS_COLLECT_THRESHOLD_PLAN_H
#define VEK_TOOLS_COLLECT_THRESHOLD_PLAN_H

#include "tools/collect/sensor.h"

namespace Tool
{

/// By Ipmi::IpmiThreshold.
using WantedThresholds =
    std::array<std::optional<double>, Ipmi::THRESHOLD_COUNT>;

struct PlannedThreshold
{
    unsigned threshold; ///< Ipmi::IpmiThreshold
    double wanted;
    Value value; ///< The nearest that a raw byte can say.

    bool isExact() const;
};

/// Each of the 256 raw values, converted.
using Conversion = std::array<Value, 256>;
Conversion conversionOf(const Ipmi::IpmiSensor& sensor);

/// The raw value whose real value is nearest; none for what lies beyond all
/// of them by more than half a step.
std::optional<Value> nearest(const Conversion& conversion, double wanted);

/// @throws Failure, with the reason, unless all of them can be set: the
///     sensor has no such threshold, no byte says the value, or the thresholds
///     would not rise from lower non-recoverable to upper non-recoverable.
std::vector<PlannedThreshold> planThresholds(const Sensor& sensor,
                                             const Conversion& conversion,
                                             const WantedThresholds& wanted);

/// @throws Failure, with the reason, when the sensor's thresholds have no
///     defaults to go back to, or cannot be set.
void checkRestorable(const Sensor& sensor);

} // namespace Tool

#endif

/// Reading a sensor's settings back, and writing them.
#ifndef VEK_TOOLS_COLLECT_SETTING_H
#define VEK_TOOLS_COLLECT_SETTING_H

#include "tools/collect/sensor.h"
#include "tools/collect/threshold_plan.h"
#include "tools/device.h"

namespace Tool
{

// All of these go to the controller itself, at LUN 0, and throw Failure when
// it refuses.

/// Set Sensor Thresholds (IPMI v2.0, 35.8).
void writeThresholds(Device& device, const Sensor& sensor,
                     const std::vector<PlannedThreshold>& planned);

/// The record's defaults.
void restoreThresholds(Device& device, const Sensor& sensor);

/// Get Sensor Thresholds (35.9), into the sensor.
/// @param failed what a refusal means.
void readThresholds(Device& device, Sensor& sensor, const std::string& failed);

/// Get and Set Sensor Hysteresis (35.6, 35.7).
Hysteresis readHysteresis(Device& device, const Sensor& sensor);
void writeHysteresis(Device& device, const Sensor& sensor, Hysteresis value);

/// Sensor Event Enable (35.10, 35.11).
struct EventEnable
{
    bool messages = false, scanning = false;
    /// Which events are on; none while messages are off.
    std::optional<unsigned> assertion, deassertion;
};

EventEnable readEventEnable(Device& device, const Sensor& sensor);

enum class EventChange
{
    none,
    enable,
    disable
};

/// Messages and scanning as given; of the events those in the masks.
void writeEventEnable(Device& device, const Sensor& sensor,
                      const EventEnable& enable, EventChange change);

/// Re-arm Sensor Events (35.12): all of the sensor's.
void rearmEvents(Device& device, const Sensor& sensor);

} // namespace Tool

#endif

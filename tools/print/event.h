/// The events that a sensor can send.
#ifndef VEK_TOOLS_PRINT_EVENT_H
#define VEK_TOOLS_PRINT_EVENT_H

#include "tools/collect/sensor.h"
#include "tools/collect/setting.h"
#include "tools/print/json.h"

namespace Tool
{

/// Offsets that an event mask has for a sensor.
unsigned eventCount(const Sensor& sensor);

/// "lc-low" for a threshold, the number of a discrete state.
std::string eventKey(const Sensor& sensor, unsigned offset);

/// "lower critical going low", "Redundancy Lost".
std::string eventName(const Sensor& sensor, unsigned offset);

std::string eventsTable(const Sensor& sensor, const EventEnable& enable);
Json eventsJson(const Sensor& sensor, const EventEnable& enable);

} // namespace Tool

#endif

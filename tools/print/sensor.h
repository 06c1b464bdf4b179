/// One sensor: everything about it.
#ifndef VEK_TOOLS_PRINT_SENSOR_H
#define VEK_TOOLS_PRINT_SENSOR_H

#include "tools/collect/sensor.h"
#include "tools/print/json.h"
#include "tools/print/table.h"

namespace Tool
{

std::string toTable(const Sensor& sensor);

/// One stable object a sensor (docs/JSON.md).
Json toJson(const Sensor& sensor);

/// The rows of its thresholds, from the lowest to the highest.
void addThresholds(Table& table, const Sensor& sensor);

/// The rows of its hysteresis.
void addHysteresis(Table& table, const Sensor& sensor);

/// {"lnc": {...}, ...}
Json thresholdsJson(const Sensor& sensor);

/// {"support", "positive", "negative"}
Json hysteresisJson(const Sensor& sensor);

} // namespace Tool

#endif

/// States and health of sensors in words.
#ifndef VEK_TOOLS_PRINT_STATE_H
#define VEK_TOOLS_PRINT_STATE_H

#include <string>

#include "tools/collect/sensor.h"
#include "tools/print/terminal.h"

namespace Tool
{

/// "lower non-critical"
const char* thresholdName(unsigned threshold);
/// "lnc", as options and columns have it.
const char* thresholdKey(unsigned threshold);

/// "ok" (no threshold is passed), the asserted states, "none" (a discrete
/// sensor without one), or why there is no reading.
std::string stateText(const Sensor& sensor);

/// "absent": one or two words.
std::string conditionWord(const Sensor& sensor);

/// A sentence on why there is no reading; empty when there is one.
std::string conditionInWords(const Sensor& sensor);

const char* healthWord(Health health);

Colour colourOf(Health health);

} // namespace Tool

#endif

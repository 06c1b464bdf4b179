/// Values of sensors as text.
#ifndef VEK_TOOLS_PRINT_VALUE_H
#define VEK_TOOLS_PRINT_VALUE_H

#include <string>

#include "tools/collect/sensor.h"
#include "tools/print/json.h"

namespace Tool
{

/// Three decimals, or as many as tell a value from its neighbours, without
/// zeros at the end.
std::string numberText(double value, double step);

/// "12.096", or "raw 2Ah" for a value without conversion.
std::string valueText(const Value& value);

/// The same with the unit behind it: "12.096 Volts".
std::string valueText(const Value& value, const Unit& unit);

/// {"raw": 42, "value": 12.096}; value is null without conversion, the whole
/// without a value.
Json toJson(const std::optional<Value>& value);

} // namespace Tool

#endif

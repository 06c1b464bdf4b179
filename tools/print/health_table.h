/// What a sensor health table means and what is wrong in it.
#ifndef VEK_TOOLS_PRINT_HEALTH_TABLE_H
#define VEK_TOOLS_PRINT_HEALTH_TABLE_H

#include <string>

#include "tools/collect/health_table.h"
#include "tools/print/json.h"

namespace Tool
{

/// Line by line, problems below their line, and a count at the end.
std::string toText(const HealthTable& table);

/// A whole document of the schema "vek-ipmi/health-table".
Json toJson(const HealthTable& table);

} // namespace Tool

#endif

/// The health of the machine, in the way of monitoring plug-ins.
#ifndef VEK_TOOLS_PRINT_HEALTH_H
#define VEK_TOOLS_PRINT_HEALTH_H

#include <string>

#include "tools/collect/overall.h"
#include "tools/print/json.h"

namespace Tool
{

/// "VEK-IPMI DEGRADED - ..." and a line for each sensor that is not well.
std::string toText(const Overall& overall);
Json toJson(const Overall& overall);

/// The first line when there is nothing to judge.
std::string unknownLine(const std::string& why);

} // namespace Tool

#endif

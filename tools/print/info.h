/// The controller's identity.
#ifndef VEK_TOOLS_PRINT_INFO_H
#define VEK_TOOLS_PRINT_INFO_H

#include <string>

#include "tools/collect/info.h"
#include "tools/print/json.h"

namespace Tool
{

std::string toTable(const Info& info);
Json toJson(const Info& info);

} // namespace Tool

#endif

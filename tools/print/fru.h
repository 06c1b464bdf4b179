/// FRU devices and what they hold.
#ifndef VEK_TOOLS_PRINT_FRU_H
#define VEK_TOOLS_PRINT_FRU_H

#include "tools/collect/fru.h"
#include "tools/print/json.h"
#include "tools/print/terminal.h"

namespace Tool
{

/// A block of lines for each device with a blank line between two.
std::string toTable(const std::vector<FruDevice>& devices,
                    const Terminal& terminal);

/// A line for each, of the first area that tells what it is.
std::string toSummary(const std::vector<FruDevice>& devices,
                      const Terminal& terminal);

/// "12 FRU devices, 2 not present"
std::string countText(const std::vector<FruDevice>& devices);

/// The areas of an image from a file.
std::string toTable(const std::string& path,
                    const Ipmi::IpmiFruContents& contents,
                    const Terminal& terminal);

/// An array of stable objects (docs/JSON.md).
Json toJson(const std::vector<FruDevice>& devices);

/// {"size", "problems", "areas"}
Json toJson(const Ipmi::IpmiFruContents& contents);

} // namespace Tool

#endif

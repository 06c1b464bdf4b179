/// The host operating system's name and version.
#ifndef VEK_TOOLS_PRINT_OS_H
#define VEK_TOOLS_PRINT_OS_H

#include <string>

#include "tools/collect/os.h"
#include "tools/print/json.h"
#include "tools/print/table.h"

namespace Tool
{

void addRows(Table& table, const OsInfo& os);

/// {"name": {"text", "supported", "completion"}, "version": {...}}; text is
/// null when it was not read.
Json toJson(const OsInfo& os);

} // namespace Tool

#endif

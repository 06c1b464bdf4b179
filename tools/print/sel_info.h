/// State and clock of the event log.
#ifndef VEK_TOOLS_PRINT_SEL_INFO_H
#define VEK_TOOLS_PRINT_SEL_INFO_H

#include "tools/collect/sel_info.h"
#include "tools/print/json.h"
#include "tools/print/table.h"

namespace Tool
{

std::string toTable(const SelInfo& info, bool utc);
Json toJson(const SelInfo& info);

/// The rows, and the members, of the clock and how far it is from the host's.
void addRows(Table& table, const SelClock& clock, bool utc);
Json toJson(const SelClock& clock);

} // namespace Tool

#endif

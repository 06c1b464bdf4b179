/// Dates and times.
#ifndef VEK_TOOLS_PRINT_TIME_H
#define VEK_TOOLS_PRINT_TIME_H

#include <string>

#include "tools/collect/sel.h"
#include "tools/print/json.h"

namespace Tool
{

/// "2026-01-31T12:00:00Z", or in local time "2026-01-31T13:00:00+01:00".
std::string dateText(int64_t secondsSince1970, bool utc);

/// The same; "+12 s, clock not set" for a time since the controller's start,
/// "-" for none.
std::string timeText(const SelTime& time, bool utc);

/// {"time": "2026-01-31T12:00:00Z" or null, "timeRaw", "sinceStart"}
Json toJson(const SelTime& time);

} // namespace Tool

#endif

/// Dates and times on the command line.
#ifndef VEK_TOOLS_COMMANDS_WHEN_H
#define VEK_TOOLS_COMMANDS_WHEN_H

#include <cstdint>
#include <optional>
#include <string>

namespace Tool
{

constexpr char dateHelp[] =
    "2026-01-31, 2026-01-31T12:00, 2026-01-31T12:00:30, with Z or +01:00 "
    "behind the time for other than local time";

/// Seconds since 1970. No value for what is no date.
/// @param utc how a text without a zone is read.
std::optional<int64_t> readDate(const std::string& text, bool utc);

/// Of "30s", "5m", "2h", "3d", "1w". No value for anything else.
std::optional<int64_t> readDuration(const std::string& text);

} // namespace Tool

#endif

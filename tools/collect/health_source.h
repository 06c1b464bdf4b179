/// Where the rules for discrete sensors come from.
#ifndef VEK_TOOLS_COLLECT_HEALTH_SOURCE_H
#define VEK_TOOLS_COLLECT_HEALTH_SOURCE_H

namespace Tool
{

constexpr char healthTablePath[] = "/etc/sfcb/vek/sensor_health";

enum class HealthSource
{
    file,    ///< The one at healthTablePath.
    packaged ///< That is missing or empty: the one built in.
};

/// Sees to it that the library has a table.
HealthSource loadHealthTable();

} // namespace Tool

#endif

/// What the subcommands of vek-ipmi sel share.
#ifndef VEK_TOOLS_COMMANDS_SEL_H
#define VEK_TOOLS_COMMANDS_SEL_H

#include <functional>
#include <string>
#include <vector>

#include "tools/collect/sel_log.h"
#include "tools/options.h"

namespace CLI
{
class App;
}

namespace Tool
{

void addSelInfo(CLI::App& sel, Run& run);
void addSelTime(CLI::App& sel, Run& run);
void addSelClear(CLI::App& sel, Run& run);
void addSelDelete(CLI::App& sel, Run& run);
void addSelSave(CLI::App& sel, Run& run);
void addSelWatch(CLI::App& sel, Run& run);

constexpr char utcHelp[] = "Times in UTC instead of local time";

/// A log, and what its sensors are named by.
struct SelContents
{
    SelLog log;
    std::vector<Bytes> sensorRecords; ///< May be empty.
    bool hasAllSensors = true;        ///< Of those that are wished for.
    std::vector<Failure> gaps;        ///< What could not be read of both.
};

/// Whether a record's sensor is to be named.
using SelWish = std::function<bool(const Ipmi::IpmiSelData&)>;

/// Reads the log, and the sensor data records if one of its events is among
/// those wished for, or always.
/// @throws Failure without a log.
SelContents readContents(const SelWish& named, bool always = false);

/// Reads saved ones.
/// @param sensors path of the sensor data records; may be empty.
/// @throws Failure when one of them cannot be read.
SelContents loadContents(const std::string& log, const std::string& sensors);

/// Where "sel save" puts the sensor data records of a log.
std::string sensorsBeside(const std::string& log);

} // namespace Tool

#endif

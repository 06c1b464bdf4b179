/// A sensor health table (sensor_health(5)), read line by line as the library
/// reads it, with what it means and what is wrong in it.
#ifndef VEK_TOOLS_COLLECT_HEALTH_TABLE_H
#define VEK_TOOLS_COLLECT_HEALTH_TABLE_H

#include <cstddef>
#include <cstdint>
#include <iosfwd>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace Tool
{

struct HealthRule
{
    uint16_t sensorClass = 0;
    std::optional<uint16_t> type;  ///< None: "*".
    std::optional<uint16_t> state; ///< None: "*".
    uint8_t digitalValue = 0;
    std::optional<uint16_t> health; ///< None: not given or no number.
};

struct HealthProblem
{
    const char* code; ///< A word for programs.
    std::string words;
};

struct HealthLine
{
    size_t number = 0; ///< From 1 on.
    std::string text;
    std::optional<HealthRule> rule; ///< None: the library leaves the line out.
    std::string meaning;            ///< Empty without a rule.
    std::vector<HealthProblem> problems;
};

struct HealthTable
{
    std::vector<HealthLine> lines;
    size_t rules = 0;
    size_t problems = 0;
};

HealthTable checkHealthTable(std::istream& in);

/// "major failure" for 20; empty for what is no CIM HealthState.
const char* healthInWords(unsigned health);

/// The table that is installed with the program, as it was built.
std::string_view packagedHealthTable();

} // namespace Tool

#endif

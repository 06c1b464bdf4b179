/// Choosing sensors by words.
#ifndef VEK_TOOLS_COMMANDS_FILTER_H
#define VEK_TOOLS_COMMANDS_FILTER_H

#include "tools/collect/sensor.h"

namespace Tool
{

/// An empty word chooses all.
struct Filter
{
    std::string type, entity, state;
};

/// What --state takes besides the states themselves.
std::string stateWords();

/// @throws Failure with status usage for a word that names nothing here; it
///     lists the right ones.
std::vector<Sensor> choose(const std::vector<Sensor>& sensors,
                           const Filter& filter);

} // namespace Tool

#endif

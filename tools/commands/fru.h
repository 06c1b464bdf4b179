/// What the subcommands of vek-ipmi fru share.
#ifndef VEK_TOOLS_COMMANDS_FRU_H
#define VEK_TOOLS_COMMANDS_FRU_H

#include <utility>

#include "tools/collect/fru.h"
#include "tools/options.h"

namespace CLI
{
class App;
class Option;
} // namespace CLI

namespace Tool
{

void addFruSave(CLI::App& fru, Run& run);
void addFruDecode(CLI::App& fru, Run& run);

/// How a command line says which FRU device, and whether its name is wanted.
struct FruChoice
{
    std::string device; ///< Empty: all.
    bool noNames = false;
    bool isShort = false; ///< A line each.
};

/// DEVICE, which must not be empty, and --no-names.
std::pair<CLI::Option*, CLI::Option*> addChoice(CLI::App& app,
                                                FruChoice& choice);

/// @throws CLI::ValidationError for no names where only they would tell.
void checkChoice(const FruChoice& choice);

/// Where the chosen devices are; what could not be read of the records goes to
/// `gaps`.
/// @throws Failure with status usage for a word that fits none of the devices,
///     or several; status failed for none while records are missing.
std::vector<FruLocator> locate(Device& device, const FruChoice& choice,
                               std::vector<Failure>& gaps);

/// A failure for each device that was not read to its end.
std::vector<Failure> gapsOf(const std::vector<FruDevice>& devices);

} // namespace Tool

#endif

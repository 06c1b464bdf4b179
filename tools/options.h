/// The command line.
#ifndef VEK_TOOLS_OPTIONS_H
#define VEK_TOOLS_OPTIONS_H

#include <functional>
#include <string>

#include "tools/status.h"

namespace Tool
{

/// Options that every subcommand has.
struct Options
{
    bool json = false;
    bool verbose = false;
    bool simulate = false;
    std::string profile; ///< Empty: the simulated controller's own.
    /// A subcommand with the statuses of monitoring plug-ins.
    bool monitoring = false;
};

/// What the subcommand on the command line does.
using Run = std::function<Status(const Options&)>;

/// Fills both. Returns false, with the program's exit status, when there is
/// nothing to run: help, version, or a mistake, which was then printed.
bool parse(int argc, char** argv, Options& options, Run& run, Status& status);

} // namespace Tool

#endif

/// The command line of vek-ipmi-sim.
#ifndef VEK_SIM_PROGRAM_OPTIONS_H
#define VEK_SIM_PROGRAM_OPTIONS_H

#include <string>
#include <vector>

#include "sim/controller.h"
#include "sim/program/import.h"

namespace Sim
{

struct Options
{
    Setup setup;
    bool count = false;
    bool realUserId = false;
    std::string serve;                ///< HOST:PORT; empty: run a command.
    std::string check;                ///< A profile; empty: do not check.
    std::string dump;                 ///< A file to import; empty: none.
    Import import = nullptr;          ///< What kind of file it is.
    std::string output;               ///< Empty: standard output.
    std::vector<std::string> command; ///< With its arguments.
};

/// Throws Failure. False when help was asked for and has been printed.
bool readOptions(int argc, char** argv, Options& options);

} // namespace Sim

#endif

/// Whether a preloaded library gets into a command.
#ifndef VEK_SIM_PROGRAM_REACH_H
#define VEK_SIM_PROGRAM_REACH_H

#include <string>

namespace Sim
{

/// The file that a shell would run for this word. Throws Failure (126, 127)
/// when there is none.
std::string findCommandFile(const std::string& word);

/// Throws Failure (126) for a file that a preloaded library would not be
/// part of: it would reach the machine's own controller.
void requireReachable(const std::string& file);

} // namespace Sim

#endif

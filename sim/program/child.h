/// A command as a child that has its parent's place.
#ifndef VEK_SIM_PROGRAM_CHILD_H
#define VEK_SIM_PROGRAM_CHILD_H

#include <string>
#include <vector>

namespace Sim
{

/// Runs it to its end and hands signals on to it meanwhile.
/// @return its exit status, or 128 and the signal that ended it. Throws
///     Failure (126) when it does not start.
int runChild(const std::string& file, const std::vector<std::string>& words);

} // namespace Sim

#endif

/// The environment in which a command meets the simulated device.
#ifndef VEK_SIM_PROGRAM_PRELOAD_H
#define VEK_SIM_PROGRAM_PRELOAD_H

#include <string>

namespace Sim
{

/// libvek-ipmi-sim.so: beside this program or where it is installed. Throws
/// Failure (125) when it is missing or does not load.
std::string findPreloadLibrary();

/// Into the environment of this process.
void preload(const std::string& library);

} // namespace Sim

#endif

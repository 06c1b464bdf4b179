/// vek-ipmi --simulate
#ifndef VEK_TOOLS_SIMULATE_H
#define VEK_TOOLS_SIMULATE_H

#include "tools/options.h"

namespace Tool
{

/// Returns once the program runs on the simulated device, which it starts
/// itself under when it does not. A simulated run must never reach a real
/// controller, so nothing is opened before this.
/// @throws Failure when the simulated device does not answer for itself.
void simulate(const Options& options, char** argv);

} // namespace Tool

#endif

/// What vek-ipmi-sim prints.
#ifndef VEK_SIM_PROGRAM_REPORT_H
#define VEK_SIM_PROGRAM_REPORT_H

#include <string>

#include "sim/counters.h"
#include "sim/profile/mistake.h"

namespace Sim
{

/// One command on a line, and their sum.
std::string describe(const Counts& counts);

/// One mistake on a line: place and reason.
std::string describe(const Mistakes& mistakes);

} // namespace Sim

#endif

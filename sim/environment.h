/// What vek-ipmi-sim tells the library that it preloads.
#ifndef VEK_SIM_ENVIRONMENT_H
#define VEK_SIM_ENVIRONMENT_H

#include <string>

#include "sim/controller.h"

namespace Sim
{

struct Environment
{
    Setup setup;
    std::string countFile; ///< Empty: nobody counts.
    bool realUserId = false;
};

/// Into the environment of this process; what an outer run left there goes.
void writeEnvironment(const Environment& environment);

Environment readEnvironment();

} // namespace Sim

#endif

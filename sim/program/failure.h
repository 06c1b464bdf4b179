/// Why vek-ipmi-sim itself ends, as env(1) has the statuses.
#ifndef VEK_SIM_PROGRAM_FAILURE_H
#define VEK_SIM_PROGRAM_FAILURE_H

#include <string>

namespace Sim
{

namespace status
{
constexpr int ownFailure = 125;    ///< Options, profile, rules, installation.
constexpr int cannotInvoke = 126;  ///< The command is there.
constexpr int noSuchCommand = 127; ///< It is not.
constexpr int signalled = 128;     ///< Plus the signal that ended it.
} // namespace status

/// Thrown before anything has started.
struct Failure
{
    int status;
    std::string text; ///< May hold several lines.
};

} // namespace Sim

#endif

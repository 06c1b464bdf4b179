#ifndef VEK_SIM_PROFILE_BUILTIN_H
#define VEK_SIM_PROFILE_BUILTIN_H

#include <vector>

namespace Sim
{

struct BuiltinProfile
{
    const char* name;
    const char* text;
};

/// The files of sim/profiles, embedded when the library is built.
const std::vector<BuiltinProfile>& builtinProfiles();

} // namespace Sim

#endif

/// What is wrong with a profile or a fault rule, and where.
#ifndef VEK_SIM_PROFILE_MISTAKE_H
#define VEK_SIM_PROFILE_MISTAKE_H

#include <string>
#include <vector>

namespace Sim
{

struct Mistake
{
    std::string place; ///< JSON pointer, or line:column of a syntax error.
    std::string reason;
};
using Mistakes = std::vector<Mistake>;

} // namespace Sim

#endif

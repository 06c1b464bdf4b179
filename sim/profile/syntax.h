#ifndef VEK_SIM_PROFILE_SYNTAX_H
#define VEK_SIM_PROFILE_SYNTAX_H

#include <nlohmann/json_fwd.hpp>

#include "sim/profile/mistake.h"

namespace Sim
{

/// Null when the text is not JSON. A key that an object has twice, which
/// JSON readers pass over, is a mistake too.
nlohmann::json parseJson(const std::string& text, Mistakes& mistakes);

/// A key as a part of a JSON pointer (RFC 6901, 3).
std::string escapePointer(const std::string& key);

} // namespace Sim

#endif
